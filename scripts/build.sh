#!/usr/bin/env bash
# Configures and builds the program, its assets and its tests into build/
# (or the folder named by BUILD_DIR). Extra arguments go to cmake's configure step.
set -euo pipefail
cd "$(dirname "$0")/.."
build=${BUILD_DIR:-build}
cmake -S . -B "$build" -DCMAKE_BUILD_TYPE=${BUILD_TYPE:-RelWithDebInfo} "$@" >/dev/null
cmake --build "$build" -j"$(nproc)"
