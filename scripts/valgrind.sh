#!/usr/bin/env bash
# Runs the test programs under valgrind: no read of what was never written, no access outside, no leak.
#
#   scripts/valgrind.sh [PROGRAM...]      all of build/debug/bin/test-* and build/debug/bin/fuzz-* by default
#
# Left out are the tests that are no C++ programs of their own (the Python client, the documentation, the installation)
# and that of an interrupt at a terminal, whose signal valgrind holds back.
set -euo pipefail
cd "$(dirname "$0")/.."
more_packages=valgrind
. scripts/packages.sh

cmake --preset debug > /dev/null
cmake --build --preset debug

programs=("$@")
[ $# -gt 0 ] || programs=(build/debug/bin/test-* build/debug/bin/fuzz-*)
# Everything is some thirty times slower here: fewer rounds say as much.
export MOXEL_STRESS_SECONDS=${MOXEL_STRESS_SECONDS-1} MOXEL_STRESS_KILLS=${MOXEL_STRESS_KILLS-5}
export MOXEL_STRESS_STRIDE=${MOXEL_STRESS_STRIDE-60} MOXEL_STRESS_DAMAGES=${MOXEL_STRESS_DAMAGES-20}
logs=$(mktemp -d)
trap 'rm -rf "$logs"' EXIT
for program in "${programs[@]}"; do
  name=$(basename "$program")
  echo "== $name"
  arguments=(--gtest_brief=1 '--gtest_filter=-*AnInterruptGives*')
  [[ $name != fuzz-* ]] || arguments=(-runs=500 "fuzz/corpus/${name#fuzz-}")
  result=0
  (echo "$BASHPID" > "$logs/main" && exec valgrind --quiet --log-file="$logs/%p.log" --error-exitcode=99 --fair-sched=yes \
    --leak-check=full --show-leak-kinds=definite,indirect --errors-for-leak-kinds=none \
    "$program" "${arguments[@]}") || result=$?
  # Children that were forked beside other threads have lost what those held; every other finding counts.
  if [ "$result" -ne 0 ] || grep -q 'lost in loss record' "$logs/$(cat "$logs/main").log" ||
    grep -qE 'Invalid|ninitialised|unaddressable|Mismatched|overlap|fishy|Jump to|signal (4|6|7|8|11) ' "$logs"/*.log; then
    cat "$logs"/*.log
    echo "valgrind.sh: $program failed ($result)" >&2
    exit 1
  fi
  rm -f "$logs"/*.log
done
