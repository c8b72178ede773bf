#!/usr/bin/env bash
# Installs what is needed, builds, and plays the production from the run
# directory. Arguments go to the program (try --help). Without a display
# there is nothing to watch: it says so and renders the film instead, with
# its music, to ostravine.mp4 in the folder it was started from, at
# 1280x720, with a progress bar (arguments still go to the program).
# SKIP_DEPS=1 and SKIP_BUILD=1 leave out the first two steps; BUILD_DIR names
# another build folder (as for build.sh).
set -euo pipefail
here=$PWD
cd "$(dirname "$0")/.."
[ "${SKIP_DEPS:-0}" = 1 ] || bash scripts/install-deps.sh
[ "${SKIP_BUILD:-0}" = 1 ] || bash scripts/build.sh
cd "${BUILD_DIR:-build}/run"
if [ -n "${DISPLAY:-}" ]; then
  exec ./ostravine "$@"
fi
args=("$@")
case " $* " in
  *" --video "* | *" --help "*) ;;
  *)
    echo "No display (DISPLAY is not set): rendering the film to $here/ostravine.mp4 at 1280x720 instead of playing it."
    args=("$@" -res:1280720 --video "$here/ostravine.mp4")
    ;;
esac
exec xvfb-run -a -s "-screen 0 1280x1024x24 -noreset" ./ostravine "${args[@]}"
