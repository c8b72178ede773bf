#!/usr/bin/env bash
# Installs what is needed, builds, and runs every test: first the normal
# build, then a build with AddressSanitizer and UndefinedBehaviorSanitizer.
# Tests that need a display run under Xvfb with Mesa's software renderer.
# Last, every fuzz target runs for 20 seconds (SKIP_FUZZ=1 skips that).
# -noreset: otherwise the server resets whenever its last client leaves, and
# a test starting at that moment finds no display.
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/install-deps.sh
jobs=$(nproc)
export SDL_AUDIODRIVER=dummy

echo "== build"
bash scripts/build.sh
echo "== tests"
(cd build && xvfb-run -a -s "-screen 0 1280x1024x24 -noreset" ctest --output-on-failure -j"$jobs")

echo "== player without the editor"
# Built with OSTRAVINE_EDITOR=OFF, the player leaves editor/ out and still
# plays the whole production: here one frame a second of fixed clock, small,
# on the normal build's assets, to the end of the music.
cmake -S . -B build-player -DCMAKE_BUILD_TYPE=RelWithDebInfo -DOSTRAVINE_EDITOR=OFF -DOSTRAVINE_TESTS=OFF \
  -DOSTRAVINE_ASSETS=OFF >/dev/null
cmake --build build-player -j"$jobs" --target ostravine
# The shipped script's charts still drive the scenes' parameters there.
(cd build/run && xvfb-run -a -s "-screen 0 1280x1024x24 -noreset" ../../build-player/run/ostravine \
  -nomusic --windowed --size 64x48 --fixed-fps 1 --trace >../player-trace.txt)
grep '^trace: position' build/player-trace.txt | tail -n 1 | grep -E '^trace: position 26[3-9][0-9]{3} '
[ "$(grep '^trace: parameter performe\.cameraFOV ' build/player-trace.txt | sort -u | wc -l)" -gt 1 ]
echo "the player without the editor played to the end, its charts driving the parameters"
# The settings dialog is drawn by the editor: without it, --settings is
# refused with one line and status 2, before any display opens.
status=0
build-player/run/ostravine --settings >build/player-settings.txt 2>&1 || status=$?
if [ "$status" != 2 ] || [ "$(wc -l <build/player-settings.txt)" != 1 ] || ! grep -q -- '--settings' build/player-settings.txt; then
  echo "the player without the editor answered --settings with status $status:"; cat build/player-settings.txt; exit 1
fi
echo "the player without the editor refuses --settings: $(cat build/player-settings.txt)"

if [ "${SKIP_SANITIZERS:-0}" != 1 ]; then
  echo "== sanitizer build (ASan + UBSan)"
  BUILD_DIR=build-sanitize BUILD_TYPE=Debug bash scripts/build.sh -DOSTRAVINE_SANITIZE=ON
  echo "== sanitizer tests"
  # Reference-image renders through the whole program are left to the normal
  # build: under the sanitizers they take many minutes and prove nothing new.
  (cd build-sanitize && ASAN_OPTIONS=detect_leaks=0 UBSAN_OPTIONS=print_stacktrace=1 \
    xvfb-run -a -s "-screen 0 1280x1024x24 -noreset" ctest --output-on-failure -j"$jobs" -LE slow)
fi

if [ "${SKIP_FUZZ:-0}" != 1 ]; then
  echo "== fuzz targets, 20 s each (scripts/fuzz.sh runs long campaigns)"
  FUZZ_SECONDS=20 SKIP_DEPS=1 bash scripts/fuzz.sh script a3d ac3d png
fi
