#!/usr/bin/env bash
# Sets up a fresh Debian 12 machine, builds with warnings as errors, and runs every test.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/install-deps.sh
scripts/build.sh -DCVD_WERROR=ON -DCVD_BUILD_TESTS=ON -DCVD_BUILD_BENCH=ON
LANG=C.UTF-8 LC_ALL=C.UTF-8 TZ=Europe/Berlin QT_QPA_PLATFORM=offscreen \
    ctest --test-dir "${CVD_BUILD_DIR:-build}" --output-on-failure -j "$(nproc)"
