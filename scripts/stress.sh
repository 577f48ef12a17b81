#!/usr/bin/env bash
# The registry under load at full length: a minute each with eight processes and eight threads, a thousand kills,
# every point where the disk can fail, forks beside threads; then the threads under the thread sanitizer. The tests run
# the short form.
set -euo pipefail
cd "$(dirname "$0")/.."
. scripts/packages.sh

cmake --preset release > /dev/null
cmake --build --preset release --target test-stress test-platform-registry
cmake --preset tsan > /dev/null
cmake --build --preset tsan --target test-stress test-platform-registry

stress=build/release/bin/test-stress
MOXEL_STRESS_SECONDS=60 "$stress" --gtest_filter='*ManyHands*'
MOXEL_STRESS_KILLS=1000 "$stress" --gtest_filter='Killing*'
MOXEL_STRESS_STRIDE=1 MOXEL_STRESS_DAMAGES=2000 "$stress" --gtest_filter='Faults*'
build/release/bin/test-platform-registry --gtest_filter='RegistrySharing.*'
MOXEL_STRESS_SECONDS=60 build/tsan/bin/test-stress --gtest_filter='*Threads*'
build/tsan/bin/test-platform-registry
