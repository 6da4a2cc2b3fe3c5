# What the tests that are shell scripts share. Sourced: gives them an empty directory, $work, that is gone with them.
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

# fail WHAT [FILE]: ends the test; the file tells more.
fail() {
  echo "FAILED: $1"
  if [ $# -gt 1 ]; then cat "$2"; fi
  exit 1
}

# quietly WHAT COMMAND...: its output is shown only when it fails.
quietly() {
  what=$1
  shift
  "$@" >"$work/log" 2>&1 || fail "$what" "$work/log"
}
