#!/usr/bin/env bash
# Runs clang-tidy over the library, the virtual device and the tools (not over tests and generated code). The static
# analyzer is for the library alone: it takes half of the time, and what it says of the rest is mostly about libraries.
set -euo pipefail
cd "$1"
compile_commands=$2

find_sources() {
    find "$@" -name '*.cpp' ! -name '*_test.cpp' | sort
}
tidy() {
    xargs -P "$(nproc)" -n 4 clang-tidy-14 -p "$compile_commands" --quiet --warnings-as-errors='*' "$@" 2>/dev/null
}

mapfile -t library < <(find_sources port pkt agg l2 fp qos stg vlan)
mapfile -t rest < <(find_sources vdevice platform adpsh)
if [ "${#library[@]}" = 0 ] || [ "${#rest[@]}" = 0 ]; then
    echo "no sources found"
    exit 1
fi
printf '%s\n' "${library[@]}" | tidy
printf '%s\n' "${rest[@]}" | tidy '--checks=-clang-analyzer-*'
echo "ok: $((${#library[@]} + ${#rest[@]})) files are clean"
