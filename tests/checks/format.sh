#!/usr/bin/env bash
# Checks that all C and C++ sources are formatted as .clang-format says.
set -euo pipefail
cd "$1"
mapfile -t sources < <(git ls-files -- '*.h' '*.c' '*.cpp' 2>/dev/null || true)
if [ "${#sources[@]}" = 0 ]; then # a source tree without git, for instance an exported archive
    mapfile -t sources < <(find . -path ./build -prune -o \( -name '*.h' -o -name '*.c' -o -name '*.cpp' \) -print)
fi
[ "${#sources[@]}" -gt 0 ] || { echo "no sources found"; exit 1; }
clang-format-14 --dry-run -Werror "${sources[@]}"
echo "ok: ${#sources[@]} files formatted"
