#!/usr/bin/env bash
# Feeds the targets of fuzz/ with what libFuzzer makes of their corpora and stops at the first finding.
#
#   scripts/fuzz.sh [--fast] [SECONDS|-runs=N] [TARGET...]      60 seconds for each of all targets by default
#
# --fast leaves the address and undefined-behaviour sanitizers out: what a target compares with its model, at twice
# the speed.
set -euo pipefail
cd "$(dirname "$0")/.."
more_packages="clang libclang-rt-dev llvm"
. scripts/packages.sh

preset=fuzz
if [ "${1-}" = --fast ]; then preset=fuzz-fast && shift; fi
limit=-max_total_time=60
case "${1-}" in
  -runs=*) limit=$1 && shift ;;
  [0-9]*) limit=-max_total_time=$1 && shift ;;
esac
targets=("$@")
[ $# -gt 0 ] || for source in fuzz/*_fuzz.cpp; do targets+=("$(basename "$source" _fuzz.cpp)"); done

cmake --preset "$preset" > /dev/null
cmake --build --preset "$preset"

# What a target finds worth keeping goes into a copy of its corpus; registry files lie in memory where there is some.
memory=/dev/shm
[ -w "$memory" ] || memory=${TMPDIR:-/tmp}
work=$(mktemp -d "$memory/moxel-fuzz-XXXXXX")
trap 'rm -rf "$work"' EXIT
findings=build/$preset/findings
mkdir -p "$findings"
export TMPDIR=$work UBSAN_OPTIONS=print_stacktrace=1
# Half the time of a run is the allocator's otherwise.
export ASAN_OPTIONS=quarantine_size_mb=1:thread_local_quarantine_size_kb=64:malloc_context_size=2

for target in "${targets[@]}"; do
  echo "== $target"
  cp -r "fuzz/corpus/$target" "$work/$target"
  if ! build/$preset/bin/fuzz-"$target" "$work/$target" "$limit" -max_len=512 -timeout=60 -entropic=0 -print_final_stats=1 \
    -artifact_prefix="$findings/$target-" > "$work/log" 2>&1; then
    grep -vE '^#[0-9]+\s+(NEW|REDUCE|pulse)' "$work/log" | tail -n 60
    finding=$(sed -n 's/.*Test unit written to //p' "$work/log")
    echo "fuzz.sh: $target failed. Run it again with:  build/$preset/bin/fuzz-$target $finding" >&2
    exit 1
  fi
  grep -E 'DONE|average_exec_per_sec' "$work/log"
done
