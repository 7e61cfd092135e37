#!/bin/bash
# Tells how much of src/ the native tests execute, in lines and in branches, and names what they leave.
#
#   scripts/coverage.sh
cd "$(dirname "$0")/.." || exit 1
source scripts/setup.sh
setup coverage || exit 1

LEAST_LINES=97
LEAST_BRANCHES=92
FOLDER=build/coverage
mkdir -p "$FOLDER"

if ! { cmake --preset coverage && cmake --build --preset coverage --target native_tests -- -j2; } \
  >"$FOLDER/build.txt" 2>&1; then
  tail -n 40 "$FOLDER/build.txt"
  echo "coverage: the build failed; all of it: $FOLDER/build.txt" >&2
  exit 1
fi
rm -f "$FOLDER"/tests.prof*
if ! LLVM_PROFILE_FILE="$FOLDER/tests.profraw" "$FOLDER/bin/native_tests" >"$FOLDER/tests.txt" 2>&1; then
  tail -n 20 "$FOLDER/tests.txt"
  echo "coverage: the tests failed; all of it: $FOLDER/tests.txt" >&2
  exit 1
fi
llvm-profdata merge -o "$FOLDER/tests.profdata" "$FOLDER/tests.profraw" &&
  llvm-cov export -instr-profile="$FOLDER/tests.profdata" "$FOLDER/bin/native_tests" 2>"$FOLDER/export.txt" \
    >"$FOLDER/tests.json" &&
  scripts/coverage_report.py "$FOLDER/tests.json" $LEAST_LINES $LEAST_BRANCHES
