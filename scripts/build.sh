#!/usr/bin/env bash
# Configures and builds into ./build (or $CVD_BUILD_DIR). Extra arguments go to the CMake configure step.
set -euo pipefail
cd "$(dirname "$0")/.."
build_dir=${CVD_BUILD_DIR:-build}
cmake -S . -B "$build_dir" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo "$@" >/dev/null
cmake --build "$build_dir" -j "$(nproc)"
