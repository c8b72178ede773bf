#!/usr/bin/env bash
# The settings dialog through the real program (--settings), driven with
# xdotool on an X display of its own (Xvfb), with a mode list of the test's
# own in OSTRAVINE_DISPLAY_MODES (the test display offers a single mode):
#   begin  the list dropped and 1280x800 chosen, "Exact pixels" clicked off,
#          "Begin" pressed: the production starts with what was chosen and
#          ends at 100 ms of the timeline (--to);
#   keys   the down arrow chooses the size after the preselected one
#          (640x480), return is "Begin";
#   end    "End" pressed: the program ends at once. This run also writes the
#          dialog's picture, WORK_DIR/shots/settings-dialog.png.
# Usage: settings_dialog.sh RUN_DIR WORK_DIR [RUN...]   (RUN: begin, keys, end;
# all three when none is named)
# Writes WORK_DIR/<run>.log and WORK_DIR/<run>.status for each run.
set -euo pipefail
if [ -z "${SETTINGS_DIALOG_DISPLAY:-}" ]; then
  export SETTINGS_DIALOG_DISPLAY=1
  exec xvfb-run -a -s "-screen 0 1280x1024x24 -noreset" bash "$0" "$@"
fi
run_dir=$1
work=$2
shift 2
runs=" ${*:-begin keys end} "
wants() { [[ "$runs" == *" $1 "* ]]; }
rm -rf "$work"
mkdir -p "$work/shots"
for d in images models music; do ln -s "$run_dir/$d" "$work/$d"; done
cp "$run_dir/ostravine.scr" "$work/"
cd "$work"

# Offered in this order: 1280x1024 1280x800 1024x768 800x600 800x576 640x480
# 320x240 (the 16-bit mode and the second 1024x768 are left out). Both
# 800x600 and 800x576 are there, so 800x576 is preselected.
export OSTRAVINE_DISPLAY_MODES=1280x1024,1280x800x32,1024x768,800x600x16,800x600,800x576,640x480,1024x768x32,320x240
program=("$run_dir/ostravine" -nomusic --windowed --settings --trace)

pid=
cleanup() { if [ -n "$pid" ] && kill -0 "$pid" 2>/dev/null; then kill "$pid"; wait "$pid" || true; fi; }
trap cleanup EXIT

# Waits until the log has at least $2 lines matching $1 (by polling; the
# program may be slow on a busy machine).
wait_for() {
  for _ in $(seq 1 1500); do
    [ "$(grep -c -- "$1" "$work/$log" || true)" -ge "${2:-1}" ] && return 0
    if ! kill -0 "$pid" 2>/dev/null; then
      [ "$(grep -c -- "$1" "$work/$log" || true)" -ge "${2:-1}" ] && return 0
      echo "the program ended before '$1'"; cat "$work/$log"; exit 1
    fi
    sleep 0.1
  done
  echo "no '$1' for 150 s"; cat "$work/$log"; exit 1
}
commands() { grep -c '^trace: settings control' "$work/$log" || true; }

# Starts the program and waits until the dialog stands on the screen.
start() {
  log=$1.log
  shift
  "${program[@]}" "$@" >"$work/$log" 2>&1 &
  pid=$!
  wait_for '^trace: settings dialog shown'
  window=
  for _ in $(seq 1 100); do
    window=$(xdotool search --onlyvisible --name '^Kestrin - Ostravine$' 2>/dev/null | head -1) || true
    [ -n "$window" ] && break
    sleep 0.2
  done
  [ -n "$window" ] || { echo "no dialog window"; exit 1; }
  # Without a window manager the keyboard follows the pointer: keep it inside.
  xdotool mousemove --window "$window" 300 40
}
# A click at a point of the dialog (pixels from its top left).
click() {
  xdotool mousemove --window "$window" "$1" "$2"
  xdotool click 1
}
# Waits for the program's end and keeps its exit status.
finish() {
  local status=0
  wait "$pid" || status=$?
  pid=
  echo "$status" >"$work/${log%.log}.status"
}

# Where the controls are: centres, in pixels of the dialog.
list_x=172; list_y=82            # the closed size list
entry_x=150; entry_1_y=115       # the second entry of the dropped list (rows of 14 pixels)
exact_x=249; exact_y=115         # "Exact pixels"
begin_x=86; begin_y=207
end_x=256; end_y=207

# ---- begin: a size from the list, a check box, "Begin" ----
if wants begin; then
  start begin --to 100
  click $list_x $list_y
  wait_for '^trace: settings list dropped'
  click $entry_x $entry_1_y
  wait_for '^trace: settings control 1005 notification 1'
  n=$(commands)
  click $exact_x $exact_y
  wait_for '^trace: settings control' $((n + 1))
  click $begin_x $begin_y
  wait_for '^Settings dialog: Begin'
  finish
fi

# ---- keys: the down arrow and return ----
if wants keys; then
  start keys --to 100
  xdotool key Down
  wait_for '^trace: settings control 1005 notification 1'
  xdotool key Return
  wait_for '^Settings dialog: Begin'
  finish
fi

# ---- end: "End" ----
if wants end; then
  start end --capture "$work/shots" --shots 1000
  click $end_x $end_y
  finish
fi
echo "session done"
