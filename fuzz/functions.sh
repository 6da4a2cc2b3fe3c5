#!/bin/sh
# Sourced by run and replay in the root of the source tree. Runs the fuzzers, which are CMake targets, and reports
# results.

fuzzers=$PWD/fuzz
# shellcheck disable=SC2034  # The callers use it.
corpora=$fuzzers/corpus

# The targets write their files here while they run, in memory if possible.
scratch=$(mktemp -d /dev/shm/zn_udf_fuzz.XXXXXX 2>/dev/null || mktemp -d)
trap 'rm -rf "$scratch"' EXIT
trap 'exit 1' HUP INT TERM

processors=$(getconf _NPROCESSORS_ONLN 2>/dev/null || echo 1)

# targets_of BUILD_DIR: prints the names of the targets, one per line.
targets_of() {
  cat "$1/fuzz/targets.txt"
}

# run_targets BUILD_DIR LOGS FINDINGS ARGUMENTS TARGET...: runs the targets, one per processor at a time. ARGUMENTS are
# the arguments of each target, in which {} stands for its name. LOGS and FINDINGS are directories.
run_targets() {
  build=$1 logs=$2 findings=$3 arguments=$4
  shift 4
  mkdir -p "$logs" "$findings"
  # shellcheck disable=SC2016  # The inner shell expands them.
  printf '%s\n' "$@" | xargs -P "$processors" -I{} env TMPDIR="$scratch" sh -c '
    cd "$TMPDIR"
    dictionary=$4/dictionaries/{}.dict
    [ -f "$dictionary" ] || dictionary=
    "$1/fuzz/{}" ${dictionary:+"-dict=$dictionary"} -artifact_prefix="$3/{}-" -timeout=20 -rss_limit_mb=2048 \
      -print_final_stats=1 '"$arguments"' >"$2/{}.log" 2>&1 || touch "$2/{}.failed"
  ' sh "$build" "$logs" "$findings" "$fuzzers"
}

# inputs_of LOG: prints the number of inputs that a target has run.
inputs_of() {
  # A target that crashes writes no statistics.
  sed -n 's/^stat::number_of_executed_units: *//p; s/^#\([0-9]*\).*/\1/p' "$1" | sort -n | tail -n 1 | grep . || echo 0
}

# report LOGS FINDINGS TARGET...: prints a row for each target and the output of failed ones. Fails if any target
# failed.
report() {
  logs=$1 findings=$2
  shift 2
  failed=0
  printf '%-22s %12s %9s %9s\n' fuzzer inputs coverage findings
  for target in "$@"; do
    log=$logs/$target.log
    coverage=$(sed -n 's/^#.* cov: \([0-9]*\).*/\1/p' "$log" | tail -n 1)
    count=0
    [ ! -e "$logs/$target.failed" ] || count=1
    printf '%-22s %12s %9s %9s\n' "$target" "$(inputs_of "$log")" "${coverage:-0}" "$count"
    failed=$((failed + count))
  done
  for target in "$@"; do
    [ -e "$logs/$target.failed" ] || continue
    echo
    echo "== $target"
    grep -vE '^(INFO:|#[0-9]+[[:space:]]|stat::)' "$logs/$target.log" | tail -n 40
  done
  [ "$failed" -eq 0 ] || { echo; echo "Failing inputs: $findings"; }
  [ "$failed" -eq 0 ]
}
