#!/usr/bin/env bash
# Installs what is needed, builds, and plays the production from the run
# directory. Arguments go to the program (try --help). Without a display it
# plays into a virtual one (Xvfb) and you see nothing; give DISPLAY to watch.
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/install-deps.sh
bash scripts/build.sh
cd build/run
if [ -n "${DISPLAY:-}" ]; then
  exec ./ostravine "$@"
else
  exec xvfb-run -a -s "-screen 0 1280x1024x24 -noreset" ./ostravine "$@"
fi
