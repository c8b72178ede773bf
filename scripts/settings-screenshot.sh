#!/usr/bin/env bash
# Makes the README's picture of the settings dialog (docs/settings-dialog.png)
# with the program itself: --settings in a virtual display with a mode list
# of its own, xdotool drops the size list, return begins, and the dialog's
# picture as it stood then is kept (--capture writes it). Needs a built run
# directory, Xvfb and xdotool.
# Usage: scripts/settings-screenshot.sh [RUN_DIR]
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
run_dir=${1:-$root/build/run}
# A virtual display of its own: no other window takes the keys or the pointer.
if [ -z "${SETTINGS_SCREENSHOT_DISPLAY:-}" ]; then
  export SETTINGS_SCREENSHOT_DISPLAY=1
  exec xvfb-run -a -s "-screen 0 1280x1024x24 -noreset" bash "$0" "$run_dir"
fi
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
for d in images models music; do ln -s "$run_dir/$d" "$work/$d"; done
mkdir "$work/shots"
cd "$work"
export OSTRAVINE_DISPLAY_MODES=1920x1080,1680x1050,1280x1024,1280x800,1024x768,800x600,800x576,640x480
# --shots 0: after Begin the run ends with its first frame.
"$run_dir/ostravine" -nomusic --windowed --settings --trace --capture "$work/shots" --shots 0 >log 2>&1 &
pid=$!
wait_for() {  # pattern count
  for _ in $(seq 1 600); do
    [ "$(grep -c -- "$1" log || true)" -ge "$2" ] && return 0
    kill -0 "$pid" 2>/dev/null || { cat log; exit 1; }
    sleep 0.1
  done
  echo "no '$1'"; cat log; kill "$pid"; exit 1
}
wait_for '^trace: settings dialog shown' 1
window=$(xdotool search --onlyvisible --name '^Kestrin - Ostravine$' | head -1)
xdotool mousemove --window "$window" 172 82 click 1   # the size list
wait_for '^trace: settings list dropped' 1
wait_for '^trace: settings picture' 2
xdotool mousemove --window "$window" 300 20 key Return
wait "$pid"
cp "$work/shots/settings-dialog.png" "$root/docs/settings-dialog.png"
echo "wrote docs/settings-dialog.png"
