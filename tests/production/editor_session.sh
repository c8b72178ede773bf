#!/usr/bin/env bash
# A scripted editor session through the real program, driven with xdotool on
# an X display of its own (Xvfb):
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
# A display of its own, so that no other program's window takes the keys or
# the pointer, and no other test sees the session's.
if [ -z "${EDITOR_SESSION_DISPLAY:-}" ]; then
  export EDITOR_SESSION_DISPLAY=1
  exec xvfb-run -a -s "-screen 0 1024x768x24 -noreset" bash "$0" "$@"
fi
run_dir=$1
work=$2
shot=${3:-}
rm -rf "$work"
mkdir -p "$work"
for d in images models music; do ln -s "$run_dir/$d" "$work/$d"; done
cd "$work"

# --trace prints a line each frame: the session waits for frames, not for time.
program=("$run_dir/ostravine" -nomusic --windowed --size 800x600 --edit --trace)

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
  settle
  # Without a window manager the keyboard follows the pointer: keep it inside.
  xdotool mousemove --window "$window" 400 300
  settle
}

# The program reads key and mouse state once a frame (software GL under Xvfb
# on a busy machine may draw only one frame a second, or fewer), so after
# each step the session waits until three more frames have been drawn: the
# frame that may have been under way, one that saw the step from its start,
# and the one whose trace line shows that one finished.
frames() { grep -c '^trace:' "$work/$log" || true; }
settle() {
  local target=$(( $(frames) + ${1:-3} ))
  for _ in $(seq 1 1500); do
    [ "$(frames)" -ge "$target" ] && return 0
    kill -0 "$pid" 2>/dev/null || { echo "the program ended early"; tail -5 "$work/$log"; exit 1; }
    sleep 0.1
  done
  echo "no frames for 150 s"; exit 1
}
key() {
  xdotool keydown "$@"
  settle
  xdotool keyup "$@"
  settle
}
click() {
  xdotool mousemove --window "$window" "$1" "$2"
  settle
  xdotool mousedown 1
  settle
  xdotool mouseup 1
  settle
}
drag() {  # x0 y0 x1 y1
  xdotool mousemove --window "$window" "$1" "$2"
  settle
  xdotool mousedown 1
  settle
  xdotool mousemove --window "$window" $(( ($1 + $3) / 2 )) $(( ($2 + $4) / 2 ))
  settle
  xdotool mousemove --window "$window" "$3" "$4"
  settle
  xdotool mouseup 1
  settle
}
save() {
  xdotool keydown Control_L Shift_L
  settle
  key s
  xdotool keyup Shift_L Control_L
  settle
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
settle
drag 400 300 550 400   # from DEMO TIME to the sink: a connection
xdotool keyup Control_L
settle
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
settle 5
save
cp ostravine.scr fresh2.scr
cleanup
pid=
echo "session done"
