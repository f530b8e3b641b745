#!/usr/bin/env bash
# Installs packages in a fresh Debian: install.sh ROOT PACKAGE...
set -euo pipefail
. "$(dirname "$0")/inside.sh"

inside apt-get update -qq
inside apt-get install -y --no-install-recommends "${@:2}"
inside apt-get clean
