#!/bin/sh
# Renders the sample report PDFs into docs/ from a seeded database: the sent-messages report by recipient and
# the carrier list. Run from the repository with a configured build folder (default build/).
set -eu
build="${1:-build}"
here="$(cd "$(dirname "$0")/.." && pwd)"
nice cmake --build "$build" --target render_report_samples -j2
program="$(find "$build" -name render_report_samples -type f -perm -u+x | head -n 1)"
XDG_RUNTIME_DIR="${XDG_RUNTIME_DIR:-$(mktemp -d)}" LANG=C.UTF-8 LC_ALL=C.UTF-8 TZ=Europe/Berlin QT_QPA_PLATFORM=offscreen "$program" "$here/docs"
