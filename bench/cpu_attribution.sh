#!/bin/sh
# The app lines' share of the machine's CPU under two workloads made of short-lived processes:
# a parallel build of this project (compiled for real, without ccache) and a shell loop of
# python3 -c runs. Five windows of 20 s each.
# Usage: bench/cpu_attribution.sh BUILD_DIR   (a build with -DPELLWIN_BENCH=ON)
set -eu
tool="$1/bench/cpu_attribution"
source_dir=$(cd "$(dirname "$0")/.." && pwd)
scratch=$(mktemp -d)
workload=""
finish() {
  [ -n "$workload" ] && kill -- "-$workload" 2>/dev/null || true
  rm -rf "$scratch"
}
trap finish EXIT

# Each workload runs in its own process group so that all of it stops at once.
echo "== cmake --build -j2 of this project"
cmake -S "$source_dir" -B "$scratch/build" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo \
  >/dev/null
setsid cmake --build "$scratch/build" -j2 >/dev/null 2>&1 &
workload=$!
sleep 5
"$tool" 20 5 2
kill -- "-$workload" 2>/dev/null || true
wait "$workload" 2>/dev/null || true

echo "== while :; do python3 -c ...; done"
setsid sh -c 'while :; do python3 -c "sum(range(300000))"; done' &
workload=$!
sleep 2
"$tool" 20 5 2
