#!/usr/bin/env bash
# Damage run for the AC3D converter: writes thousands of damaged copies of
# every model source in assets/models/ and converts each one twice: with
# a3dconv built with AddressSanitizer and UndefinedBehaviorSanitizer (RSS and
# single allocations limited), and with the normal build under an
# address-space limit (ulimit -v). Then it prints the figures: variants run,
# outcomes by exit status, failures, peak memory.
#
#   bash scripts/damage-converter.sh              # 1000 variants per model
#   bash scripts/damage-converter.sh 3000         # more
#   SEED=7 bash scripts/damage-converter.sh       # another set of variants
#   MEMORY_MB=128 bash scripts/damage-converter.sh
#
# Variants, one kind after the other, with offsets and values from bash's
# seeded generator (the same seed gives the same files):
#   cut       truncated at a random byte
#   bytes     1 to 8 bytes changed, to a random value or to one that matters
#             to the grammar (line ends, blank, tab, quote, digits, minus, x, NUL)
#   count     one count (numvert, numsurf, refs, kids, mat, data) multiplied by
#             10 to 10^18, increased by one, or set to a value at an integer limit
#   line      one line deleted or doubled
#   keyword   one letter of a line's first word (a keyword) changed
#   mixed     a count multiplied, then the file cut
# Each is converted in turn to the float, 16-bit and 8-bit binary forms and
# to the source dump.
#
# A run fails when the converter dies of a signal, a sanitizer report, the
# memory or time limit; when its status is not 0, 1 or 3; when the two builds
# disagree; when a message line is longer than 300 bytes or holds a byte
# outside printable ASCII; or when a failed conversion leaves a target file.
# Failing variants are kept with their messages in build-sanitize/damage/kept/
# (with KEEP_ALL=1 every variant is also kept, in build-sanitize/damage/all/).
# Exit status 1 when any run failed.
#
# Uses build-sanitize/ (configured with OSTRAVINE_SANITIZE=ON, as
# scripts/test.sh does) and build/; only the a3dconv target is built in each.
set -euo pipefail
cd "$(dirname "$0")/.."

per_model=${1:-1000}
seed=${SEED:-1}
memory_mb=${MEMORY_MB:-256}
sanitize_dir=${SANITIZE_BUILD_DIR:-build-sanitize}
plain_dir=${BUILD_DIR:-build}

if [ "${SKIP_BUILD:-0}" != 1 ]; then
  [ -f "$sanitize_dir/CMakeCache.txt" ] ||
    cmake -S . -B "$sanitize_dir" -DCMAKE_BUILD_TYPE=Debug -DOSTRAVINE_SANITIZE=ON >/dev/null
  cmake --build "$sanitize_dir" -j"$(nproc)" --target a3dconv >/dev/null
  [ -f "$plain_dir/CMakeCache.txt" ] || cmake -S . -B "$plain_dir" >/dev/null
  cmake --build "$plain_dir" -j"$(nproc)" --target a3dconv >/dev/null
fi
sanitized=$(find "$sanitize_dir" -name a3dconv -type f -perm -u+x | head -n 1)
plain=$(find "$plain_dir" -name a3dconv -type f -perm -u+x | head -n 1)
[ -n "$sanitized" ] && [ -n "$plain" ] || { echo "a3dconv not built" >&2; exit 2; }

out=$sanitize_dir/damage
rm -rf "$out"
mkdir -p "$out/kept"
[ "${KEEP_ALL:-0}" = 1 ] && mkdir -p "$out/all"
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

# Peak memory comes from GNU time where it is installed.
measure=()
[ -x /usr/bin/time ] && measure=(/usr/bin/time -f %M -o "$work/rss")

export ASAN_OPTIONS="detect_leaks=1:exitcode=86:hard_rss_limit_mb=$memory_mb:max_allocation_size_mb=$memory_mb:allocator_may_return_null=0"
export UBSAN_OPTIONS="print_stacktrace=1:halt_on_error=1:exitcode=87"

R=0
random30() { R=$(( (RANDOM << 15) | RANDOM )); }

kinds=(cut bytes count line keyword mixed)
forms=("-p 0 -t 0" "-p 1 -t 2" "-p 2 -t 1" "-c")
special_bytes=(10 13 32 9 34 48 57 45 120 0)
limits=(2147483647 2147483648 4294967295 4294967296 9223372036854775807 9223372036854775808
        18446744073709551615 -1 -9223372036854775808 0x7fffffffffffffff 0xffffffffffffffff 0)

# One count line of $1 changed by operation $2 (zN: N zeros appended; inc;
# or a literal value).
change_count() {
  awk -v L="$2" -v op="$3" 'NR == L {
      if (op ~ /^z/) $2 = $2 substr("000000000000000000", 1, substr(op, 2) + 0)
      else if (op == "inc") $2 = $2 + 1
      else $2 = op
    } { print }' "$1"
}

count_change() {  # one of the model's count lines of file $1 changed, to standard output
  random30
  local line=${count_lines[R % ${#count_lines[@]}]}
  local op
  case $((RANDOM % 4)) in
    0 | 1) op=z$((1 + RANDOM % 18)) ;;
    2) op=${limits[RANDOM % ${#limits[@]}]} ;;
    *) op=inc ;;
  esac
  change_count "$1" "$line" "$op"
}

make_variant() {  # source, kind, target
  local source=$1 kind=$2 target=$3
  local size
  size=$(stat -c %s "$source")
  case $kind in
    cut)
      random30
      head -c $((R % size)) "$source" >"$target" ;;
    bytes)
      cp "$source" "$target"
      local k
      for ((k = 0; k <= RANDOM % 8; ++k)); do
        random30
        local at=$((R % size)) value
        if ((RANDOM % 2)); then value=$((RANDOM % 256)); else value=${special_bytes[RANDOM % ${#special_bytes[@]}]}; fi
        # shellcheck disable=SC2059
        printf "\\$(printf %03o "$value")" |
          dd of="$target" bs=1 seek="$at" count=1 conv=notrunc status=none
      done ;;
    count)
      count_change "$source" >"$target" ;;
    line)
      local total
      total=$(wc -l <"$source")
      random30
      awk -v L=$((1 + R % total)) -v twice=$((RANDOM % 2)) \
        'NR == L { if (twice) print; else next } { print }' "$source" >"$target" ;;
    keyword)
      random30
      awk -v L="${word_lines[R % ${#word_lines[@]}]}" -v pick=$RANDOM -v letter=$((RANDOM % 52)) '
        NR == L && match($0, /^[A-Za-z]+/) {
          alphabet = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ"
          at = 1 + pick % RLENGTH
          $0 = substr($0, 1, at - 1) substr(alphabet, letter + 1, 1) substr($0, at + 1)
        } { print }' "$source" >"$target" ;;
    mixed)
      count_change "$source" >"$work/half"
      size=$(stat -c %s "$work/half")
      random30
      head -c $((R % (size + 1))) "$work/half" >"$target" ;;
  esac
}

# A message line longer than 300 bytes or with a byte outside printable
# ASCII breaks the message rules.
messages_bad() {
  LC_ALL=C awk 'length($0) > 300 || /[^\t -~]/ { bad = 1 } END { exit !bad }' "$1"
}

declare -A status_count=()
declare -A kind_status=()
failures=0
disagreements=0
ran=0
peak_sanitized=0 peak_sanitized_at="" peak_plain=0 peak_plain_at=""
started=$(date +%s)

keep() {  # variant name, why
  failures=$((failures + 1))
  cp "$work/v.ac" "$out/kept/$1.ac"
  { echo "$2"; echo "--- sanitized build, standard error:"; cat "$work/err";
    echo "--- normal build, standard error:"; cat "$work/err2"; } >"$out/kept/$1.txt"
  echo "FAIL $1: $2"
}

model_index=0
for source in assets/models/*.ac; do
  model=$(basename "$source" .ac)
  mapfile -t count_lines < <(grep -n -E '^(numvert|numsurf|refs|kids|mat|data) ' "$source" | cut -d: -f1)
  mapfile -t word_lines < <(grep -n -E '^[A-Za-z]' "$source" | cut -d: -f1)
  for ((i = 0; i < per_model; ++i)); do
    RANDOM=$((seed * 1000003 + model_index * 100003 + i))
    kind=${kinds[i % ${#kinds[@]}]}
    form=${forms[(i / ${#kinds[@]}) % ${#forms[@]}]}
    name=$model-$i-$kind
    make_variant "$source" "$kind" "$work/v.ac"
    [ "${KEEP_ALL:-0}" = 1 ] && cp "$work/v.ac" "$out/all/$name.ac"
    rm -f "$work/v.out" "$work/v2.out" "$work/rss"

    # shellcheck disable=SC2086
    set +e
    timeout 30 "${measure[@]}" "$sanitized" $form "$work/v.ac" "$work/v.out" >"$work/out" 2>"$work/err"
    status=$?
    rss=$(cat "$work/rss" 2>/dev/null | tail -n 1)
    rm -f "$work/rss"
    (ulimit -v $((memory_mb * 1024)); exec timeout 30 "${measure[@]}" "$plain" $form "$work/v.ac" "$work/v2.out") \
      >"$work/out2" 2>"$work/err2"
    status2=$?
    rss2=$(cat "$work/rss" 2>/dev/null | tail -n 1)
    set -e
    ran=$((ran + 1))
    ((ran % 500)) || echo "... $ran variants" >&2
    # GNU time adds its own line to the file on a signal; the number is last.
    rss=${rss##* }; rss2=${rss2##* }
    if [[ $rss =~ ^[0-9]+$ ]] && ((rss > peak_sanitized)); then peak_sanitized=$rss peak_sanitized_at=$name; fi
    if [[ $rss2 =~ ^[0-9]+$ ]] && ((rss2 > peak_plain)); then peak_plain=$rss2 peak_plain_at=$name; fi
    status_count[$status]=$(( ${status_count[$status]:-0} + 1 ))
    kind_status[$kind.$status]=$(( ${kind_status[$kind.$status]:-0} + 1 ))

    case $status in
      0 | 1 | 3) ;;
      *) keep "$name" "sanitized build: exit status $status"; continue ;;
    esac
    if grep -q -E 'AddressSanitizer|LeakSanitizer|runtime error:' "$work/err"; then
      keep "$name" "sanitizer report"; continue
    fi
    if [ "$status2" != "$status" ]; then
      disagreements=$((disagreements + 1))
      keep "$name" "normal build under ulimit -v: exit status $status2, sanitized $status"; continue
    fi
    if messages_bad "$work/err"; then keep "$name" "a message line too long or not printable"; continue; fi
    if [ "$status" != 0 ] && [ -e "$work/v.out" ]; then keep "$name" "status $status and a target written"; continue; fi
    if [ "$status" = 0 ] && [ ! -s "$work/v.out" ]; then keep "$name" "status 0 and no target"; continue; fi
  done
  model_index=$((model_index + 1))
done

{
  echo "damage run: seed $seed, $per_model variants for each of $(ls assets/models/*.ac | wc -l) models," \
       "memory limit $memory_mb MiB, $(( $(date +%s) - started )) s"
  echo "variants run: $ran (each converted by the sanitized and the normal build)"
  printf 'outcomes by exit status (sanitized build):'
  for s in $(printf '%s\n' "${!status_count[@]}" | sort -n); do printf ' %s: %s' "$s" "${status_count[$s]}"; done
  echo
  for kind in "${kinds[@]}"; do
    printf '  %-8s' "$kind"
    for s in $(printf '%s\n' "${!status_count[@]}" | sort -n); do printf ' %s: %s' "$s" "${kind_status[$kind.$s]:-0}"; done
    echo
  done
  echo "failures: $failures (builds disagreeing: $disagreements); kept in $out/kept/"
  if [ ${#measure[@]} -gt 0 ]; then
    echo "peak RSS: sanitized build $((peak_sanitized / 1024)) MiB ($peak_sanitized_at)," \
         "normal build $((peak_plain / 1024)) MiB ($peak_plain_at)"
  else
    echo "peak RSS: not measured (GNU time is not installed)"
  fi
} | tee "$out/summary.txt"
[ "$failures" = 0 ]
