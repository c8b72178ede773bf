#!/usr/bin/env bash
# The whole film under AddressSanitizer and UndefinedBehaviorSanitizer: the
# sanitizer build of scripts/test.sh (build-sanitize/) plays the timeline on
# the fixed clock at a small size, rewind and end included, and the script
# fails on the first report. Too long for CI: at the defaults (160x90, 10
# frames a second, 2636 frames) it took a few minutes on a 2-core machine
# with Mesa's software renderer (134 s, besides a fuzzing run).
#
#   bash scripts/sanitize-film.sh                          # the whole film
#   SIZE=320x180 FPS=25 bash scripts/sanitize-film.sh      # larger, finer
#   bash scripts/sanitize-film.sh --from 120000 --to 140000   # a stretch
#
# Arguments go to the program. Runs under Xvfb unless DISPLAY is set.
set -euo pipefail
cd "$(dirname "$0")/.."
if [ "${SKIP_BUILD:-0}" != 1 ]; then
  bash scripts/install-deps.sh
  BUILD_DIR=build-sanitize BUILD_TYPE=Debug bash scripts/build.sh -DOSTRAVINE_SANITIZE=ON
fi
size=${SIZE:-160x90}
fps=${FPS:-10}
cd build-sanitize/run
log=$(mktemp /tmp/ostravine-sanitize-XXXXXX.log)
run() {
  if [ -n "${DISPLAY:-}" ]; then "$@"; else xvfb-run -a -s "-screen 0 1280x1024x24 -noreset" "$@"; fi
}
echo "sanitized film at $size, $fps frames a second; log $log"
start=$(date +%s)
set +e
# Leaks are not looked for: the production ends with exit() from inside its
# loop and leaves its long-lived objects to the process end, on purpose.
ASAN_OPTIONS=detect_leaks=0:halt_on_error=1 UBSAN_OPTIONS=print_stacktrace=1:halt_on_error=1 \
  run ./ostravine -nomusic --windowed --size "$size" --fixed-fps "$fps" --benchmark "$@" >"$log" 2>&1
status=$?
set -e
frames=$(sed -n 's/^benchmark: all frames \([0-9]*\).*/\1/p' "$log")
echo "status $status, ${frames:-?} frames in $(( $(date +%s) - start )) s"
if [ $status -ne 0 ] || grep -qE 'Sanitizer|runtime error' "$log"; then
  grep -E -A12 'ERROR: AddressSanitizer|runtime error|SUMMARY' "$log" | head -40
  echo "sanitizer report or failure: see $log"
  exit 1
fi
echo "no sanitizer report"
