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
logs=$(mktemp -d)
trap 'rm -rf "$logs"' EXIT
for program in "${programs[@]}"; do
  echo "== $(basename "$program")"
  valgrind --quiet --error-exitcode=99 --leak-check=full --errors-for-leak-kinds=none --fair-sched=yes \
    --log-file="$logs/%p" "$program" --gtest_brief=1 &
  process=$!
  result=0
  wait "$process" || result=$?
  # A child that was forked beside other threads has lost what those held.
  if [ "$result" -ne 0 ] || grep -q 'lost in loss record' "$logs/$process"; then
    cat "$logs"/*
    echo "valgrind.sh: $program failed ($result)" >&2
    exit 1
  fi
  rm -f "$logs"/*
done
