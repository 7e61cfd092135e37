#!/bin/bash
# clang-tidy over the library and its companion program. Takes minutes, so it is not part of ./test.
cd "$(dirname "$0")/.." || exit 1
source scripts/setup.sh
setup lint || exit 1
cmake --preset native >/dev/null || exit 1
# The files of the other world have no native compile command.
find src host -name '*.cpp' ! -name '*_windows.cpp' -print0 | sort -z |
  xargs -0 -P "$(nproc)" -n 4 clang-tidy-14 -p build/native --quiet 2>/dev/null
status=$?
[ $status -eq 0 ] && echo "lint: nothing found"
exit $status
