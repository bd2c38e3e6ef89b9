#!/bin/bash
# The tray app end to end, the way a desktop sees it: under Xvfb, on the private session bus
# this script runs in (dbus-run-session), with a fake tray watcher and notification server.
# Checks the tray item, the launch check's status file, the test notification, one instance
# per user, and the tour on the first launch only; writes screenshots to OUTPUT_FOLDER.
# Usage: tray_app_e2e.sh TOVRIN OUTPUT_FOLDER
set -euo pipefail
tovrin=$1
out=$2
mkdir -p "$out"
# Only this run's own pictures: the widget tests write theirs into the same folder.
rm -f "$out"/window-*.png "$out"/tour-*.png "$out"/tray-icon.png
source "$(dirname "$0")/fake_session.sh" "$out/tray-icon.png"

# $1: the status file, then the arguments. Starts tovrin in the background; sets $app.
start_tovrin() {
  local name=$1; shift
  "$tovrin" "$@" >"$scratch/$name.log" 2>&1 &
  app=$!
  pids+=($app)
}
expect_status() {  # status file, expected text
  wait_for 20 test -s "$1" || fail "no status file $1"
  [ "$(cat "$1")" = "$2" ] || fail "status file $1 was:
$(cat "$1")
expected:
$2"
}
visible_window() {  # title: prints the window id when it is on screen
  xdotool search --onlyvisible --name "^$1\$" 2>/dev/null | head -n1
}
# For wait_for, which runs its command again on each try.
shown() { test -n "$(visible_window "$1")"; }
hidden() { test -z "$(visible_window "$1")"; }
snap() {  # window id, file name
  import -window "$1" "$out/$2"
}
sidebar_print() {  # file: a fingerprint of the sidebar, which changes only when the pick does
  convert "$1" -crop 180x600+0+0 +repage rgb:- | md5sum
}

# 1. First launch: the window with the tour, the dot, and the test notification.
start_tovrin first --status "$scratch/status-1" --test-notification
expect_status "$scratch/status-1" "login-item: notRegistered
notifications: authorized
windows-visible: Tovrin, Welcome to Tovrin
test-notification: delivered"
grep -q '"item-registered"' "$desktop_log" || fail "no tray item registered with the watcher"
grep -q '"summary": "Tovrin notifications work", "body": "This is the test from the launch check.", "desktop_entry": "com.pellwin.Pellwin"' \
  "$desktop_log" || fail "the test notification did not reach the server"
grep -q 'com.pellwin.Pellwin.hasLaunched=true' "$XDG_CONFIG_HOME/tovrin/tovrin.conf" ||
  fail "the first launch was not recorded"

kill -USR1 "$fake"
wait_for 5 grep -q '"event": "icon"' "$desktop_log" || fail "the tray icon could not be read"
grep '"event": "icon"' "$desktop_log" | grep -Eq '"centre": "#(26a69a|f2a63b|ee6a5c)"' ||
  fail "the tray icon is not one dot in a health colour: $(grep '"icon"' "$desktop_log")"

tour=$(visible_window "Welcome to Tovrin")
[ -n "$tour" ] || fail "no tour window"
xdotool windowfocus --sync "$tour"
for page in 1 2 3 4; do
  snap "$tour" "tour-$page.png"
  # Next, and Done on the last page, which closes the window before the key comes up.
  xdotool key --window "$tour" Return 2>/dev/null || true
  sleep 0.3
done
wait_for 5 hidden "Welcome to Tovrin" || fail "Done did not close the tour"

# Every screen of the window: walk the sidebar with the Down key until the pick stops moving.
window=$(visible_window Tovrin)
[ -n "$window" ] || fail "no main window"
xdotool windowfocus --sync "$window"
xdotool mousemove --window "$window" 90 20 click 1
xdotool key --window "$window" Home
sleep 0.5
screen=1
snap "$window" "window-$screen.png"
while [ $screen -lt 10 ]; do
  xdotool key --window "$window" Down
  sleep 0.7
  snap "$window" next.png
  if [ "$(sidebar_print "$out/next.png")" = "$(sidebar_print "$out/window-$screen.png")" ]; then
    rm "$out/next.png"
    break
  fi
  screen=$((screen + 1))
  mv "$out/next.png" "$out/window-$screen.png"
done

# 2. One instance per user: a second start opens the running one's window and exits 0.
xdotool key --window "$window" ctrl+w
wait_for 5 hidden Tovrin || fail "closing did not hide the window"
"$tovrin" >"$scratch/second.log" 2>&1 || fail "the second start exited with $?"
wait_for 5 shown Tovrin || fail "the second start did not open the window"
kill "$app"
wait "$app" 2>/dev/null || true

# 3. A later launch: no tour, the dot alone; the login item as the user left it.
mkdir -p "$XDG_CONFIG_HOME/autostart"
printf '[Desktop Entry]\nType=Application\nName=Tovrin\nExec=%s\n' "$tovrin" \
  >"$XDG_CONFIG_HOME/autostart/com.pellwin.Pellwin.desktop"
start_tovrin later --status "$scratch/status-2"
expect_status "$scratch/status-2" "login-item: enabled
notifications: authorized
windows-visible: none"
kill "$app"
wait "$app" 2>/dev/null || true

# 4. "--capture" keeps the window on a later launch, still without the tour.
start_tovrin capture --status "$scratch/status-3" --capture
expect_status "$scratch/status-3" "login-item: enabled
notifications: authorized
windows-visible: Tovrin"
echo "PASS: screenshots in $out"
