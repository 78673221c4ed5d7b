#!/usr/bin/env bash
# Sets up a fresh Debian 12 machine, builds, and starts Corvane Desk. Arguments go to cvd.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/install-deps.sh
scripts/build.sh -DCVD_BUILD_TESTS=OFF -DCVD_BUILD_BENCH=OFF
# With a display cvd opens its console; without one it says so and runs as the dispatcher without windows
# (stop it with Ctrl-C).
exec "${CVD_BUILD_DIR:-build}/bin/cvd" "$@"
