#!/usr/bin/env bash
# A scripted editor session through the real program, driven with xdotool on
# the current X display (the tests run under Xvfb):
#   1. play with --edit in an empty directory (no script: empty charts),
#   2. F3 opens the flow chart screen; unfold "Add Source" and "Add Parameter",
#   3. a DEMO TIME block from the toolbox, a sink from the parameter list's
#      first entry, the sink dragged aside, a control drag from the block to
#      the sink, then left ctrl + left shift + S saves "ostravine.scr",
#   4. a fresh run reads that script, and two saves a few seconds apart show
#      the parameter driven by demo time.
# Usage: editor_session.sh RUN_DIR WORK_DIR [SCREENSHOT.png]
# Writes WORK_DIR/first.scr, WORK_DIR/fresh1.scr, WORK_DIR/fresh2.scr and
# the log of each run; with a third argument, a picture of the flow chart
# screen at the end of the session.
set -euo pipefail
run_dir=$1
work=$2
shot=${3:-}
rm -rf "$work"
mkdir -p "$work"
for d in images models music; do ln -s "$run_dir/$d" "$work/$d"; done
cd "$work"

program=("$run_dir/ostravine" -nomusic --windowed --size 800x600 --edit)

pid=
cleanup() { if [ -n "$pid" ] && kill -0 "$pid" 2>/dev/null; then kill "$pid"; wait "$pid" || true; fi; }
trap cleanup EXIT

# Starts the program and waits until its window is mapped and the frame loop
# runs (the "start." line follows the loading). Sets pid and window.
start() {
  "${program[@]}" "$@" >"$work/$log" 2>&1 &
  pid=$!
  for _ in $(seq 1 600); do
    grep -q '^start\.' "$work/$log" 2>/dev/null && break
    kill -0 "$pid" || { echo "the program ended early"; cat "$work/$log"; exit 1; }
    sleep 0.2
  done
  # A window that goes away while xdotool looks at it fails the search: try again.
  window=
  for _ in $(seq 1 100); do
    window=$(xdotool search --onlyvisible --name '^Ostravine$' 2>/dev/null | head -1) || true
    [ -n "$window" ] && break
    sleep 0.2
  done
  sleep 2
  # Without a window manager the keyboard follows the pointer: keep it inside.
  xdotool mousemove --window "$window" 400 300
  sleep 0.5
}

# Each step is held for a while: the program reads key and mouse state once a
# frame, so a press shorter than a frame would go unseen (software GL under
# Xvfb on a busy machine may draw only one or two frames a second).
hold=${EDITOR_SESSION_HOLD:-1.5}
key() {
  xdotool keydown "$@"
  sleep "$hold"
  xdotool keyup "$@"
  sleep "$hold"
}
click() {
  xdotool mousemove --window "$window" "$1" "$2"
  sleep "$hold"
  xdotool mousedown 1
  sleep "$hold"
  xdotool mouseup 1
  sleep "$hold"
}
drag() {  # x0 y0 x1 y1
  xdotool mousemove --window "$window" "$1" "$2"
  sleep "$hold"
  xdotool mousedown 1
  sleep "$hold"
  xdotool mousemove --window "$window" $(( ($1 + $3) / 2 )) $(( ($2 + $4) / 2 ))
  sleep "$hold"
  xdotool mousemove --window "$window" "$3" "$4"
  sleep "$hold"
  xdotool mouseup 1
  sleep "$hold"
}
save() {
  xdotool keydown Control_L Shift_L
  sleep "$hold"
  key s
  xdotool keyup Shift_L Control_L
  sleep "$hold"
}

# ---- The session ----
log=first.log
if [ -n "$shot" ]; then
  mkdir -p "$work/shots"
  start --capture "$work/shots" --shots 60000
else
  start
fi
key F3
click 135 69      # "Add Source" title: unfold
click 560 69      # "Add Parameter" title: unfold
click 135 92      # DEMO TIME: a box at the middle of the area
click 560 109     # the first in. entry of the list: a sink box over it
click 560 67      # "Add Parameter" title again: fold, uncovering the area
drag 500 300 650 400   # the sink aside (a plain drag moves a box)
xdotool keydown Control_L
sleep "$hold"
drag 400 300 550 400   # from DEMO TIME to the sink: a connection
xdotool keyup Control_L
sleep "$hold"
save
cp ostravine.scr first.scr
if [ -n "$shot" ]; then
  # The program's own picture of the session's end, taken at 60 s of the
  # timeline: the up arrow seeks there.
  xdotool mousemove --window "$window" 795 595
  xdotool keydown Up
  for _ in $(seq 1 600); do [ -f "$work/shots/shot-60000.png" ] && break; sleep 0.2; done
  xdotool keyup Up
  sleep 1
  cp "$work/shots/shot-60000.png" "$shot"
fi
cleanup
pid=

# ---- A fresh run reads the script ----
log=fresh.log
start --from 5000
save
cp ostravine.scr fresh1.scr
sleep 3
save
cp ostravine.scr fresh2.scr
cleanup
pid=
echo "session done"
