#!/usr/bin/env bash
# In a fresh Debian: builds everything but the tests. compile.sh ROOT
set -euo pipefail
. "$(dirname "$0")/inside.sh"

cp -r build/packages/source "$root/tmp/adp"
inside g++ --version
inside cmake -S /tmp/adp -B /tmp/build -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo -DADP_BUILD_TESTS=OFF -DADP_WERROR=ON
inside cmake --build /tmp/build -- -k 0
inside /tmp/build/vdevctl --version
