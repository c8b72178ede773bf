#!/usr/bin/env bash
# Makes the README's picture of the flow chart screen (docs/editor.png) with
# the program itself: a small script with one chart is loaded with --edit in
# a virtual display, xdotool opens the flow chart screen, unfolds two panels,
# scrolls the chart into view, opens the pulse's properties and moves them
# aside; the program's --capture takes the picture, which is halved to
# 400 x 300. Needs a built run directory, Xvfb, xdotool and Python 3.
# Usage: scripts/editor-screenshot.sh [RUN_DIR]
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
run_dir=${1:-$root/build/run}
# A virtual display of its own: no other window takes the keys or the pointer.
if [ -z "${EDITOR_SCREENSHOT_DISPLAY:-}" ]; then
  export EDITOR_SCREENSHOT_DISPLAY=1
  exec xvfb-run -a -s "-screen 0 1024x768x24 -noreset" bash "$0" "$run_dir"
fi
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
for d in images models music; do ln -s "$run_dir/$d" "$work/$d"; done
cat >"$work/ostravine.scr" <<'EOF'
parameter_defaults {
}
pulses {
 pulse[ 0 ] = ( 0.25, 0.5, 0.25, 0, 0, 2 )
}
parameters {
 in.performe.cameraFOV = sum ( float ( 75 ) , mul ( float ( 5 ) , pulse[ 0 ] ( demotime (  )  )  )  )  
}
EOF
mkdir "$work/shots"
cd "$work"
"$run_dir/ostravine" -nomusic --windowed --size 800x600 --edit --from 20000 --capture "$work/shots" --shots 80000 \
  >"$work/log" 2>&1 &
pid=$!
for _ in $(seq 1 600); do grep -q '^start\.' "$work/log" && break; sleep 0.2; done
sleep 2
# A window that goes away while xdotool looks at it fails the search: try again.
  window=
  for _ in $(seq 1 100); do
    window=$(xdotool search --onlyvisible --name '^Ostravine$' 2>/dev/null | head -1) || true
    [ -n "$window" ] && break
    sleep 0.2
  done
hold=1.5
at() { xdotool mousemove --window "$window" "$1" "$2"; sleep "$hold"; }
press() { xdotool mousedown "$1"; sleep "$hold"; }
release() { xdotool mouseup "$1"; sleep "$hold"; }
at 400 300
xdotool keydown F3; sleep "$hold"; xdotool keyup F3; sleep "$hold"
at 135 69; press 1; release 1     # unfold "Add Source"
at 300 69; press 1; release 1     # unfold "Add Function"
at 600 450; press 2; at 655 400; at 710 350; release 2   # scroll the area: the chart into view
xdotool keydown Shift_L; sleep "$hold"
at 235 325; press 1; release 1    # the pulse's properties
xdotool keyup Shift_L; sleep "$hold"
at 235 366; press 1; at 400 330; at 560 300; release 1   # moved aside by their title
at 795 595
wait "$pid"
python3 "$root/scripts/halve-png.py" "$work/shots/shot-80000.png" "$root/docs/editor.png"
echo "wrote docs/editor.png"
