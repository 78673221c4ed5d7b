#!/usr/bin/env bash
# The checks CI runs besides the tests: the include layers, the formatting, and clang-tidy's bugprone and
# performance checks over the sources.
set -euo pipefail
cd "$(dirname "$0")/.."

scripts/check-layers.sh
echo "layers: every include points down"

git ls-files '*.cpp' '*.h' | xargs clang-format --dry-run --Werror
echo "format: every source as .clang-format has it"

# clang-tidy parses every source with clang, so it gets a configuration of its own, compiled by the clang of
# its own version, whose precompiled headers it can read (those of the gcc build it cannot). Only the
# precompiled headers are built there, not the program.
tidy_dir=${CVD_TIDY_DIR:-build-tidy}
tidy_version=$(clang-tidy --version | sed -n 's/.*LLVM version \([0-9]*\).*/\1/p')
clangxx=$(command -v "clang++-$tidy_version" || command -v clang++)
cmake -S . -B "$tidy_dir" -G Ninja -DCMAKE_CXX_COMPILER="$clangxx" -DCMAKE_BUILD_TYPE=Check \
    -DCVD_BUILD_TESTS=OFF -DCVD_BUILD_BENCH=OFF >/dev/null
mapfile -t headers < <(ninja -C "$tidy_dir" -t targets all | sed -n 's/^\([^:]*cmake_pch\.hxx\.pch\):.*/\1/p' | sort -u)
ninja -C "$tidy_dir" "${headers[@]}" >/dev/null

# Only our own sources; the generated files of the build are not ours to fix.
mapfile -t sources < <(git ls-files 'src/*.cpp')
run-clang-tidy -quiet -p "$tidy_dir" -j "$(nproc)" "${sources[@]}" >"$tidy_dir/clang-tidy.log" 2>&1 || true
if grep -E '(warning|error): ' "$tidy_dir/clang-tidy.log" | grep -v 'warnings generated'; then
    echo "clang-tidy: the findings above must be fixed"
    exit 1
fi
echo "clang-tidy: no findings"
