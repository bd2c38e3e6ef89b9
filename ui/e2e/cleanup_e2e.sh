#!/bin/bash
# Disk cleanup and Quick clean end to end, in the real program under Xvfb, on the private
# session bus this script runs in (dbus-run-session), over a scratch home: caches, a JavaScript
# project with node_modules, a Rust project with its target folder, documents, and ~/.ssh.
# The map is shown after a scan of that home; the projects' rebuildable folders and a file
# under ~/.ssh are added to the delete list (the last one refused, with the reason shown); the
# list goes to the Trash, checked with trash-cli; quick clean runs to its summary while a
# stand-in "yarn" keeps its cache in use. Widgets are found by name through the accessibility
# bus (accessible.py) and clicked with xdotool. Screenshots to OUTPUT_FOLDER as cleanup-*.png.
# Usage: cleanup_e2e.sh TOVRIN OUTPUT_FOLDER
set -euo pipefail
tovrin=$1
out=$2
here=$(cd "$(dirname "$0")" && pwd)
mkdir -p "$out"
# Only this run's own pictures: the widget tests and the tray app's run write theirs beside them.
rm -f "$out"/cleanup-*.png
source "$here/fake_session.sh" "$out/cleanup-tray-icon.png"
# The caches where most homes keep them, so the map shows them under ~/.cache too.
export XDG_CACHE_HOME=$HOME/.cache

# The accessibility bus, which a desktop session starts and this private bus does not.
/usr/libexec/at-spi-bus-launcher --launch-immediately >"$scratch/atspi.log" 2>&1 &
pids+=($!)
wait_for 10 dbus-send --session --print-reply --dest=org.a11y.Bus /org/a11y/bus \
  org.a11y.Bus.GetAddress || fail "the accessibility bus did not start"

fill() {  # relative path under home, bytes
  mkdir -p "$(dirname "$HOME/$1")"
  head -c "$2" /dev/zero >"$HOME/$1"
}
fill .cache/pip/wheels/numpy.whl 3400000
fill .npm/_cacache/content-v2/sha512/ab 2600000
fill .cache/yarn/v6/react.tgz 2200000
fill .cache/thumbnails/large/a.png 1800000
fill code/web/package.json 400
fill code/web/src/app.js 90000
fill code/web/node_modules/react/index.js 6500000
fill code/web/node_modules/typescript/lib/tsc.js 4200000
fill code/tool/Cargo.toml 300
fill code/tool/src/main.rs 40000
fill code/tool/target/debug/tool 9000000
fill Documents/report.pdf 4100000
fill Videos/trip.mkv 14000000
fill .ssh/id_ed25519 400
fill .ssh/keys-backup.tar 1300000
chmod 700 "$HOME/.ssh"

# A later launch (no tour) that opens the window.
mkdir -p "$XDG_CONFIG_HOME/tovrin"
printf '[General]\ncom.pellwin.Pellwin.hasLaunched=true\n' >"$XDG_CONFIG_HOME/tovrin/tovrin.conf"
# A program named like the tool whose cache it keeps: quick clean leaves that cache alone.
mkdir -p "$scratch/bin"
ln -s "$(command -v sleep)" "$scratch/bin/yarn"
"$scratch/bin/yarn" 600 &
pids+=($!)

QT_LINUX_ACCESSIBILITY_ALWAYS_ON=1 "$tovrin" --capture >"$scratch/tovrin.log" 2>&1 &
pids+=($!)

where() { /usr/bin/python3 "$here/accessible.py" where "$@"; }
names() { /usr/bin/python3 "$here/accessible.py" names "$1"; }
shows() {  # role, exact name: the widget is on screen and can be used
  where "$1" "$2" >/dev/null
}
click() {  # role, name[, clicks]
  local point
  point=$(where "$1" "$2") || fail "no \"$2\" ($1) on screen"
  # shellcheck disable=SC2086
  xdotool mousemove $point click --repeat "${3:-1}" --delay 120 1
  sleep 0.3
}
label_with() {  # text a label of the screen shown contains
  local shown
  shown=$(names label)
  grep -qF -- "$1" <<<"$shown"
}
main_window() {
  xdotool search --onlyvisible --name '^Tovrin$' 2>/dev/null | head -n1
}
snap() {
  sleep 0.5
  import -window "$window" "$out/cleanup-$1.png"
}

has_main_window() {
  test -n "$(main_window)"
}
wait_for 20 has_main_window || fail "no main window"
window=$(main_window)
wait_for 20 shows "list item" "Disk cleanup" || fail "the sidebar is not accessible"

# 1. The map: the first opening scans home, saves the cache and draws the rings.
click "list item" "Disk cleanup"
wait_for 30 label_with "Scanned $HOME" || fail "the scan of home did not finish: $(names label)"
test -s "$XDG_DATA_HOME/Tovrin/space-map.json" || fail "the scan was not saved to the cache"
snap disk-map

# 2. The delete list: both projects' rebuildable folders, then a file under ~/.ssh, refused.
click "page tab" "Developer projects"
wait_for 5 shows "table cell" "node_modules" || fail "node_modules is not among the projects"
shows "table cell" "target" || fail "target is not among the projects"
click "push button" "Add to delete list"
wait_for 5 label_with "2 items" || fail "the projects did not reach the delete list: $(names label)"
click "page tab" "Biggest items"
wait_for 5 shows "table cell" "keys-backup.tar" || fail "no keys-backup.tar among the biggest items"
click "table cell" "keys-backup.tar" 2
wait_for 5 label_with "keys-backup.tar: It holds your security keys" ||
  fail "no refusal shown for the file under ~/.ssh: $(names label)"
label_with "2 items" || fail "the refused file was added to the delete list"
snap disk-delete-list

# 3. To the Trash, after the confirmation.
click "push button" "Move to Trash…"
wait_for 5 shows "push button" "Move to Trash" || fail "no confirmation"
snap disk-confirm
click "push button" "Move to Trash"
wait_for 20 label_with "Nothing picked yet" || fail "the removal did not finish: $(names label)"
snap disk-trashed
trashed=$(trash-list)
for gone in code/web/node_modules code/tool/target; do
  [ ! -e "$HOME/$gone" ] || fail "$gone is still in home"
  grep -qF " $HOME/$gone" <<<"$trashed" || fail "trash-list does not show $gone: $trashed"
done
[ -e "$HOME/.ssh/keys-backup.tar" ] || fail "the refused file went"

# 4. Quick clean: the caches found, the one in use skipped, the run, its summary.
click "list item" "Quick clean"
wait_for 30 shows "push button" "Clean up…" || fail "quick clean found nothing: $(names label)"
snap quick-clean
click "push button" "Clean up…"
wait_for 5 shows "push button" "Clean up" || fail "no confirmation for quick clean"
snap quick-clean-confirm
click "push button" "Clean up"
wait_for 30 label_with "Freed " || fail "quick clean showed no summary: $(names label)"
[ ! -e "$HOME/.cache/pip/wheels/numpy.whl" ] || fail "the pip cache is still there"
[ -e "$HOME/.cache/yarn/v6/react.tgz" ] || fail "the cache of the running yarn was cleaned"
snap quick-clean-done
echo "PASS: screenshots in $out/cleanup-*.png"
