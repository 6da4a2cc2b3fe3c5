# Functions of the tests that are shell scripts, which source this file. Creates the directory $work, which is removed
# when the test ends.
# shellcheck shell=sh
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

# fail WHAT [FILE]: ends the test with a message and the contents of the file.
fail() {
  echo "FAILED: $1"
  if [ $# -gt 1 ]; then cat "$2"; fi
  exit 1
}

# quietly WHAT COMMAND...: shows the output of the command only if it fails.
quietly() {
  what=$1
  shift
  "$@" >"$work/log" 2>&1 || fail "$what" "$work/log"
}

# code_block FILE LANGUAGE NUMBER [HEADING]: prints a code block of a Markdown file in this language, counted from 1 in
# the file or, with a heading, in the section below it.
code_block() {
  awk -v start="\`\`\`$2" -v number="$3" -v heading="${4:+## $4}" '
    BEGIN {counts = heading == ""}
    /^## / && heading != "" {counts = $0 == heading}
    $0 == "```" {inside = 0}
    inside
    $0 == start && counts {inside = ++count == number}' "$1"
}
