#!/usr/bin/env bash
# Runs clang-tidy over the library, the virtual device and the tools (not over tests and generated code).
set -euo pipefail
cd "$1"
compile_commands=$2
mapfile -t sources < <(find port pkt agg l2 fp qos stg vlan vdevice platform adpsh -name '*.cpp' ! -name '*_test.cpp' 2>/dev/null | sort)
[ "${#sources[@]}" -gt 0 ] || { echo "no sources found"; exit 1; }
printf '%s\n' "${sources[@]}" | xargs -P "$(nproc)" -n 4 clang-tidy-14 -p "$compile_commands" --quiet --warnings-as-errors='*' 2>/dev/null
echo "ok: ${#sources[@]} files are clean"
