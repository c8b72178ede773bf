#!/usr/bin/env bash
# Installs what is needed, builds, and plays the production from the run
# directory. Arguments go to the program (try --help). Without a display
# there is nothing to watch: it says so and renders the film instead, with
# its music, to ostravine.mp4 in the folder it was started from, at
# 1280x720, with a progress bar (arguments still go to the program).
set -euo pipefail
here=$PWD
cd "$(dirname "$0")/.."
bash scripts/install-deps.sh
bash scripts/build.sh
cd build/run
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
