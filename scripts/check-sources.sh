#!/usr/bin/env bash
# The checks CI runs besides the tests: the include layers, the formatting, and clang-tidy's bugprone and
# performance checks over the sources (with the compile commands of the build in ${CVD_BUILD_DIR:-build}).
set -euo pipefail
cd "$(dirname "$0")/.."
build_dir=${CVD_BUILD_DIR:-build}

scripts/check-layers.sh
echo "layers: every include points down"

git ls-files '*.cpp' '*.h' | xargs clang-format --dry-run --Werror
echo "format: every source as .clang-format has it"

# Only our own sources; the generated files of the build are not ours to fix.
mapfile -t sources < <(git ls-files 'src/*.cpp')
run-clang-tidy -quiet -p "$build_dir" -j "$(nproc)" "${sources[@]}" >"$build_dir/clang-tidy.log" 2>&1 || true
if grep -E '(warning|error): ' "$build_dir/clang-tidy.log" | grep -v 'warnings generated'; then
    echo "clang-tidy: the findings above must be fixed"
    exit 1
fi
echo "clang-tidy: no findings"
