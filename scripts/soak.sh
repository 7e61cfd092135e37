#!/bin/bash
# Lets eight threads call everything that may run together, under the thread sanitizer.
#
#   scripts/soak.sh [SECONDS]        # 600 by default
cd "$(dirname "$0")/.." || exit 1
source scripts/setup.sh
setup native || exit 1

seconds=${1:-600}
mkdir -p build/thread
if ! { cmake --preset thread && cmake --build --preset thread --target native_tests -- -j2; } >build/thread/build.txt 2>&1
then
  tail -n 40 build/thread/build.txt
  echo "soak: the build failed; all of it: build/thread/build.txt" >&2
  exit 1
fi
echo "eight threads for $seconds seconds ..."
KORVANE_SOAK_SECONDS=$seconds TSAN_OPTIONS=halt_on_error=0 \
  build/thread/bin/native_tests --gtest_filter='ThreadsTest.*' >build/thread/soak.txt 2>&1
status=$?
# A program that broke off says why in its last lines.
[ $status -eq 0 ] || tail -n 5 build/thread/soak.txt
grep -E "rounds of calls|Failure|  FAILED  |PASSED" build/thread/soak.txt
echo "reports: $(grep -c 'WARNING: ThreadSanitizer' build/thread/soak.txt)"
exit $status
