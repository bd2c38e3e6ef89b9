#!/bin/bash
# Whole-process figures of the tray app, in a session of its own (Xvfb, fake tray watcher and
# notification server, private session bus), with about 500 extra idle processes:
#   - start to dot: from exec to the tray item registered with the watcher (median of 5);
#   - idle with the window closed (a later launch, 5 s period): CPU per tick, per thread, against
#     the live tick's own threads in the same run, and resident memory;
#   - beside it, the live tick alone at the same process count (bench/live_tick_bench), and the
#     ratio of the two.
# Usage: bench/tray_app_idle.sh [BUILD_FOLDER [SECONDS]]   (built with -DPELLWIN_BENCH=ON)
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
build=$(cd "${1:-$root/build}" && pwd)
seconds=${2:-60}
if [ -z "${TOVRIN_BENCH_ON_BUS:-}" ]; then
  TOVRIN_BENCH_ON_BUS=1 exec dbus-run-session \
    --config-file="$root/app/desktop/testdata/private-session-bus.conf" -- "$0" "$build" "$seconds"
fi
tovrin=$build/tovrin
tick_bench=$build/bench/live_tick_bench
[ -x "$tovrin" ] && [ -x "$tick_bench" ] || {
  echo "build tovrin and live_tick_bench first (cmake -DPELLWIN_BENCH=ON)" >&2
  exit 2
}
source "$root/ui/e2e/fake_session.sh" /dev/null

# A later launch: the dot alone, the window closed.
mkdir -p "$XDG_CONFIG_HOME/tovrin"
printf '[General]\ncom.pellwin.Pellwin.hasLaunched=true\n' >"$XDG_CONFIG_HOME/tovrin/tovrin.conf"

children=()
for _ in $(seq 500); do
  sleep 100000 &
  children+=($!)
done
sleep 3  # past the age at which the reader re-reads a young process's cgroup
echo "processes: $(ls -d /proc/[0-9]* | wc -l)"

registered() { grep -c '"item-registered"' "$desktop_log" || true; }
registered_since() { [ "$(registered)" -gt "$1" ]; }
start_times=()
for run in 1 2 3 4 5; do
  before=$(registered)
  t0=$(date +%s.%N)
  "$tovrin" >"$scratch/start-$run.log" 2>&1 &
  app=$!
  wait_for 10 registered_since "$before" || fail "run $run: no tray item"
  t1=$(grep '"item-registered"' "$desktop_log" | tail -n1 | /usr/bin/python3 -c \
    'import json,sys; print(json.load(sys.stdin)["time"])')
  start_times+=("$(/usr/bin/python3 -c "print(round(($t1 - $t0) * 1000))")")
  kill "$app"
  wait "$app" 2>/dev/null || true
done
sorted=($(printf '%s\n' "${start_times[@]}" | sort -n))
echo "start to dot: median ${sorted[2]} ms (runs: ${start_times[*]} ms)"

"$tovrin" >"$scratch/idle.log" 2>&1 &
app=$!
pids+=($app)
# CPU nanoseconds of each thread, by name (schedstat: exact, where stat counts clock ticks).
threads_cpu() {
  for task in /proc/$app/task/*; do
    printf '%s\t%s\n' "$(cat "$task/comm")" "$(cut -d' ' -f1 "$task/schedstat")"
  done
}
sleep 12
threads_cpu >"$scratch/cpu-before"
sleep "$seconds"
threads_cpu >"$scratch/cpu-after"
rss=$(awk '/^VmRSS/ { print $2 }' "/proc/$app/status")
hwm=$(awk '/^VmHWM/ { print $2 }' "/proc/$app/status")
ticks=$((seconds / 5))
read -r idle_ms own_ms < <(/usr/bin/python3 - "$scratch/cpu-before" "$scratch/cpu-after" $ticks <<'PY'
import sys
def load(path):
    out = {}
    for line in open(path):
        name, ns = line.rstrip("\n").split("\t")
        out.setdefault(name, []).append(int(ns))
    return {k: sum(v) for k, v in out.items()}
before, after, ticks = load(sys.argv[1]), load(sys.argv[2]), int(sys.argv[3])
used = {k: (after[k] - before.get(k, 0)) / 1e6 / ticks for k in after}
# The live tick's own work: the sampler's reading and judging, the timer, the history write.
tick = sum(v for k, v in used.items() if "sampler" in k or "history" in k or "ticker" in k)
for name, ms in sorted(used.items(), key=lambda kv: -kv[1]):
    if ms >= 0.005:
        print(f"    {name:16} {ms:7.2f} ms per tick", file=sys.stderr)
print(round(sum(used.values()), 2), round(tick, 2))
PY
)
echo "idle, window closed: ${idle_ms} ms CPU per tick over $ticks ticks, of which the live tick's" \
  "own threads ${own_ms} ms (ratio $(/usr/bin/python3 -c "print(round($idle_ms / $own_ms, 2))"))"
echo "resident $((rss / 1024)) MB (peak $((hwm / 1024)) MB)"
kill "$app"
wait "$app" 2>/dev/null || true

# The peer, at the same process count: the benchmark starts its own 500 idle children.
kill "${children[@]}" 2>/dev/null || true
wait "${children[@]}" 2>/dev/null || true
"$tick_bench" --benchmark_filter='^BM_LiveTick/' --benchmark_repetitions=3 \
  --benchmark_report_aggregates_only=true --benchmark_format=json >"$scratch/tick.json" 2>/dev/null
tick_ms=$(/usr/bin/python3 -c '
import json, sys
runs = json.load(open(sys.argv[1]))["benchmarks"]
print(round(next(r["real_time"] for r in runs if r.get("aggregate_name") == "median"), 2))' \
  "$scratch/tick.json")
echo "live tick alone: ${tick_ms} ms CPU per tick (median of 3)"
echo "ratio to the live tick alone: $(/usr/bin/python3 -c "print(round($idle_ms / $tick_ms, 2))")" \
  "(target at most 1.15; the benchmark ticks back to back, so fewer processes ran in between)"
