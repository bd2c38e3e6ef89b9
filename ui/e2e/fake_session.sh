# A desktop session of its own for running the tray app in tests and benchmarks, to be sourced
# by a bash script that runs on a private session bus (dbus-run-session): a scratch home and
# runtime folder, Xvfb on a free display, and the fake desktop (tray watcher and notification
# server) logging to $desktop_log. Sets $scratch, $fake, $desktop_log, DISPLAY and the XDG
# variables; `cleanup` ends everything it started, and runs on exit.
# Arguments: the PNG the fake saves the tray icon to.

fake_session_here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
scratch=$(mktemp -d /tmp/tovrin-session-XXXXXX)
pids=()
cleanup() {
  for pid in "${pids[@]}"; do kill "$pid" 2>/dev/null || true; done
  wait 2>/dev/null || true
  rm -rf "$scratch"
}
trap cleanup EXIT
fail() {
  echo "FAIL: $*" >&2
  for f in "$scratch"/*.log; do echo "--- $f" >&2; cat "$f" >&2; done
  exit 1
}
# Waits up to $1 seconds for the command after it to succeed.
wait_for() {
  local seconds=$1; shift
  for _ in $(seq $((seconds * 10))); do "$@" >/dev/null 2>&1 && return 0; sleep 0.1; done
  return 1
}

[ -n "${DBUS_SESSION_BUS_ADDRESS:-}" ] || fail "no session bus: run this under dbus-run-session"

# A home of its own: settings, autostart entry, history and the single-instance lock.
export HOME=$scratch/home XDG_CONFIG_HOME=$scratch/config XDG_DATA_HOME=$scratch/data
export XDG_CACHE_HOME=$scratch/cache XDG_RUNTIME_DIR=$scratch/runtime
mkdir -p "$HOME" "$XDG_RUNTIME_DIR"
chmod 700 "$XDG_RUNTIME_DIR"
unset WAYLAND_DISPLAY
export QT_QPA_PLATFORM=xcb

# Xvfb picks a free display and writes its number.
Xvfb -displayfd 3 -screen 0 1280x800x24 -nolisten tcp 3>"$scratch/display" 2>"$scratch/xvfb.log" &
pids+=($!)
wait_for 10 test -s "$scratch/display" || fail "Xvfb did not start"
export DISPLAY=:$(head -n1 "$scratch/display")

desktop_log=$scratch/desktop.log
/usr/bin/python3 "$fake_session_here/fake_desktop.py" "$desktop_log" "$1" 2>"$scratch/fake.log" &
fake=$!
pids+=($fake)
wait_for 10 grep -q '"ready"' "$desktop_log" || fail "the fake desktop did not start"
