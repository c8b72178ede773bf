#!/usr/bin/env bash
# Fuzzing: builds the libFuzzer targets of fuzz/ with clang, AddressSanitizer
# and UndefinedBehaviorSanitizer into build-fuzz/, then runs each target for
# a fixed time from the seed corpus in fuzz/corpus/<target>/.
#
#   bash scripts/fuzz.sh                      # a long campaign: an hour a target
#   FUZZ_SECONDS=20 bash scripts/fuzz.sh      # the short run of CI
#   FUZZ_JOBS=4 bash scripts/fuzz.sh a3d      # one target, four processes
#   FUZZ_CPU_SECONDS=3600 bash scripts/fuzz.sh script  # stop at a CPU hour
#
# FUZZ_CPU_SECONDS bounds each target's run by the CPU time of all its
# processes as well (the wall time of FUZZ_SECONDS still applies; on a busy
# machine the CPU bound is the one that gives comparable figures). A run
# stopped at that bound counts as a good end.
# The growing corpus is kept in build-fuzz/corpus/<target>/ (runs go on where
# the last stopped); inputs that crash are written to
# build-fuzz/crashes/<target>/ and make the script fail. Each target ends
# with one line: executions, coverage (edges), features, corpus size and
# crashes. The png target needs a display: it runs under Xvfb unless
# DISPLAY is set. Replay one input with build-fuzz/fuzz/fuzz_<target> FILE.
set -euo pipefail
cd "$(dirname "$0")/.."
[ "${SKIP_DEPS:-0}" = 1 ] || bash scripts/install-deps.sh
seconds=${FUZZ_SECONDS:-3600}
jobs=${FUZZ_JOBS:-1}
cpu_limit=${FUZZ_CPU_SECONDS:-0}
targets=("$@")
[ ${#targets[@]} -eq 0 ] && targets=(script a3d ac3d png)
build=build-fuzz

cmake -S . -B $build -DCMAKE_BUILD_TYPE=RelWithDebInfo -DCMAKE_C_COMPILER=clang -DCMAKE_CXX_COMPILER=clang++ \
  -DOSTRAVINE_FUZZ=ON -DOSTRAVINE_TESTS=OFF -DOSTRAVINE_ASSETS=OFF >/dev/null
if ! cmake --build $build -j"$(nproc)" --target "${targets[@]/#/fuzz_}" >$build/build.log 2>&1; then
  tail -30 $build/build.log
  exit 1
fi

failed=0
for t in "${targets[@]}"; do
  corpus=$build/corpus/$t
  crashes=$build/crashes/$t
  log=$build/fuzz-$t.log
  mkdir -p "$corpus" "$crashes"
  cp -n fuzz/corpus/$t/* "$corpus"/ 2>/dev/null || true
  run=()
  options=ASAN_OPTIONS=detect_leaks=1
  if [ $t = png ]; then
    [ -n "${DISPLAY:-}" ] || run=(xvfb-run -a -s "-screen 0 640x480x24 -noreset")
    options=ASAN_OPTIONS=detect_leaks=0  # the GL driver keeps memory to the end on purpose
  fi
  parallel=()
  [ "$jobs" -gt 1 ] && parallel=(-jobs="$jobs" -workers="$jobs")
  before=$(ls "$crashes" | wc -l)
  # -close_fd_mask=3: the readers' messages (and libpng's on stderr, a
  # line or two per input) would drown the log; libFuzzer's own lines and
  # the sanitizers' reports still reach it.
  # The run has a session of its own, so that the CPU time of all its
  # processes (workers, Xvfb) can be summed.
  set +e
  setsid env $options UBSAN_OPTIONS=print_stacktrace=1:halt_on_error=1 "${run[@]}" $build/fuzz/fuzz_$t \
    -max_total_time="$seconds" "${parallel[@]}" -close_fd_mask=3 -print_final_stats=1 \
    -artifact_prefix="$crashes/" "$corpus" >"$log" 2>&1 &
  session=$!
  stopped=0
  if [ "$cpu_limit" -gt 0 ]; then
    # At the bound every fuzzer of the run gets SIGTERM: it prints its final
    # figures and exits with 72.
    while ps -o stat= -p $session | grep -qv Z; do
      sleep 2
      used=$(ps -o times= -s $session | awk '{s += $1} END {print s + 0}')
      if [ "$used" -ge "$cpu_limit" ]; then
        kill -TERM $(ps -o pid=,comm= -s $session | awk -v c="fuzz_$t" '$2 == c {print $1}') 2>/dev/null
        stopped=1
        break
      fi
    done
  fi
  wait $session
  status=$?
  [ $stopped = 1 ] && [ $status = 72 ] && status=0
  set -e
  # With -jobs the workers write fuzz-N.log beside the script; gather them.
  for f in fuzz-[0-9]*.log; do [ -e "$f" ] && cat "$f" >>"$log" && rm -f "$f"; done
  found=$(( $(ls "$crashes" | wc -l) - before ))
  runs=$(grep -h 'stat::number_of_executed_units' "$log" | awk '{s += $2} END {print s + 0}')
  last=$(grep -E '^#[0-9]+' "$log" | tail -1)
  cov=$(echo "$last" | sed -n 's/.*cov: \([0-9]*\).*/\1/p')
  ft=$(echo "$last" | sed -n 's/.*ft: \([0-9]*\).*/\1/p')
  bound="${seconds}s x $jobs"
  [ $stopped = 1 ] && bound="${cpu_limit} CPU s"
  echo "fuzz $t: $bound, $runs executions, cov ${cov:-?}, ft ${ft:-?}," \
       "corpus $(ls "$corpus" | wc -l), new crashes $found (exit $status; log $log)"
  if [ "$found" -gt 0 ] || { [ $status -ne 0 ] && [ "$jobs" = 1 ]; }; then
    failed=1
    grep -E 'ERROR: |SUMMARY: |runtime error' "$log" | head -5 || true
  fi
done
exit $failed
