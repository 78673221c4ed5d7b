#!/usr/bin/env bash
# Sets up a fresh Debian 12 machine, builds with warnings as errors, and runs every test.
# The tests build apart from the program (build-check/, or $CVD_CHECK_DIR), without optimisation: quick to
# compile, assertions on.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/install-deps.sh
export CVD_BUILD_DIR=${CVD_CHECK_DIR:-build-check}
scripts/build.sh -DCMAKE_BUILD_TYPE=Check -DCVD_WERROR=ON -DCVD_BUILD_TESTS=ON -DCVD_BUILD_BENCH=ON
# Most tests wait on files, sockets and child programs rather than the processor, so more run at once than
# there are cores.
LANG=C.UTF-8 LC_ALL=C.UTF-8 TZ=Europe/Berlin QT_QPA_PLATFORM=offscreen \
    ctest --test-dir "$CVD_BUILD_DIR" --output-on-failure -j "$(($(nproc) * 2))"
