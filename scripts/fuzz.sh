#!/bin/bash
# Feeds the library records, texts and sequences of calls, and the companion program files, that nobody would think of.
#
#   scripts/fuzz.sh [SECONDS]        # each fuzzer runs this long; 600 by default
#
# Starts from fuzz/corpus and from what earlier runs found worth keeping (build/fuzz/corpus). An input that breaks a
# promise is put into fuzz/corpus, where it stays once the fault is mended.
cd "$(dirname "${BASH_SOURCE[0]}")/.." || exit 1
source scripts/setup.sh

SUBJECTS=(records texts calls files logs)
export ASAN_OPTIONS="malloc_context_size=8" UBSAN_OPTIONS="print_stacktrace=1"

# Runs one fuzzer and prints what it did; the output is kept.
fuzz() { # subject seconds
  local kept="build/fuzz/corpus/$1" output="build/fuzz/$1.txt"
  mkdir -p "$kept"
  build/fuzz/bin/"$1"_fuzzer -close_fd_mask=1 -max_total_time="$2" -timeout=25 -print_final_stats=1 \
    -artifact_prefix="fuzz/corpus/$1/" "$kept" "fuzz/corpus/$1" >"$output" 2>&1
  local status=$?
  awk -v subject="$1" '
    match($0, /cov: [0-9]+/) { edges = substr($0, RSTART + 5, RLENGTH - 5) }
    /number_of_executed_units/ { inputs = $2 }
    END { printf "  %-8s %9d inputs, %d edges reached\n", subject, inputs, edges }' "$output"
  if [ $status -ne 0 ]; then
    grep -E "broken promise|answered|ERROR|SUMMARY|runtime error|Test unit written" "$output"
    echo "  $1: failed; all of it: $output"
  fi
  return $status
}

build_fuzzers() {
  local log=build/fuzz-build.txt
  mkdir -p build
  if ! { cmake --preset fuzz && cmake --build --preset fuzz --target "${SUBJECTS[@]/%/_fuzzer}" -- -j2; } \
    >"$log" 2>&1; then
    tail -n 40 "$log"
    echo "fuzz: the build failed; all of it: $log" >&2
    return 1
  fi
}

if [ "${BASH_SOURCE[0]}" = "$0" ]; then
  setup fuzz || exit 1
  build_fuzzers || exit 1
  failed=0
  for subject in "${SUBJECTS[@]}"; do
    fuzz "$subject" "${1:-600}" || failed=1
  done
  exit $failed
fi
