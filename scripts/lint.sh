#!/usr/bin/env bash
# Checks formatting and the linter's findings over the whole tree.
set -euo pipefail
cd "$(dirname "$0")/.."
git ls-files '*.h' '*.cpp' | xargs clang-format --dry-run --Werror
cmake --preset debug > /dev/null
git ls-files 'src/*.cpp' 'tools/*.cpp' 'examples/*.cpp' 'fuzz/*.cpp' | xargs -P "$(nproc)" -n 4 clang-tidy -p build/debug --quiet --extra-arg=-Wno-unknown-warning-option
