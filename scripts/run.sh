#!/usr/bin/env bash
# Sets up a fresh Debian 12 machine, builds, and starts Corvane Desk. Arguments go to cvd.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/install-deps.sh
scripts/build.sh -DCVD_BUILD_TESTS=OFF -DCVD_BUILD_BENCH=OFF
# The console windows are not part of the program yet: it runs as the dispatcher without windows,
# with display or without one.
echo "Starting cvd --headless (stop it with Ctrl-C)."
exec "${CVD_BUILD_DIR:-build}/bin/cvd" --headless "$@"
