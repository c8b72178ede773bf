#!/usr/bin/env bash
# Makes the README's stills: one frame of every scene, played by the program
# itself on the fixed clock at 320x180 with the shipped script, written as
# docs/stills/<ms>.png. Needs a build (scripts/build.sh).
set -euo pipefail
cd "$(dirname "$0")/.."
out=$PWD/docs/stills
mkdir -p "$out"
rm -f "$out"/shot-*.png
shots=4000,30500,48800,79000,105000,124000,139000,169000,191300,221500,250000
run() {
  if [ -n "${DISPLAY:-}" ]; then "$@"; else xvfb-run -a -s "-screen 0 1280x1024x24 -noreset" "$@"; fi
}
(cd build/run && run ./ostravine -nomusic --windowed --size 320x180 --fixed-fps 5 --capture "$out" --shots "$shots" >/dev/null)
for f in "$out"/shot-*.png; do mv "$f" "$out/${f##*/shot-}"; done
ls "$out"
