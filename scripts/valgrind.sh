#!/usr/bin/env bash
# Runs the test programs under valgrind: no read of what was never written, no access outside, no leak.
#
#   scripts/valgrind.sh [PROGRAM...]      all of build/debug/bin/test-* by default
set -euo pipefail
cd "$(dirname "$0")/.."
more_packages=valgrind
. scripts/packages.sh

cmake --preset debug > /dev/null
cmake --build --preset debug

programs=("$@")
[ $# -gt 0 ] || programs=(build/debug/bin/test-*)
# Everything is some thirty times slower here: fewer rounds say as much.
export MOXEL_STRESS_SECONDS=${MOXEL_STRESS_SECONDS-1} MOXEL_STRESS_KILLS=${MOXEL_STRESS_KILLS-5}
export MOXEL_STRESS_STRIDE=${MOXEL_STRESS_STRIDE-60} MOXEL_STRESS_DAMAGES=${MOXEL_STRESS_DAMAGES-20}
for program in "${programs[@]}"; do
  echo "== $(basename "$program")"
  valgrind --quiet --error-exitcode=99 --leak-check=full --errors-for-leak-kinds=definite,indirect \
    --show-leak-kinds=definite,indirect --fair-sched=yes "$program" --gtest_brief=1
done
