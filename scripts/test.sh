#!/usr/bin/env bash
# Builds everything with the address and undefined-behaviour sanitizers and runs every test.
set -euo pipefail
cd "$(dirname "$0")/.."
. scripts/packages.sh

cmake --preset asan > /dev/null
cmake --build --preset asan
ctest --preset asan -j "$(nproc)" "$@"
