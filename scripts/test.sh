#!/usr/bin/env bash
# Installs what is missing, builds everything and runs all tests.
set -euo pipefail
. "$(dirname "$0")/prepare.sh"

cmake --preset dev
cmake --build --preset dev
ctest --preset dev -j "$(nproc)"
