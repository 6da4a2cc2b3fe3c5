# Doxygen's input filter. It adds links to the documentation, so that headers and tables stay readable as plain text.
# usage: awk -f reference_links.awk behaviour.md FILE
#
# If FILE is behaviour.md, each row of its tables gets an anchor. If FILE is a header, the line "\ingroup family_..." of
# its file comment names the family of everything that the header declares. The documentation of each declaration then
# ends with links to the header, to the page of the family, and to the rows of behaviour.md that name the declaration.

# row_number(): returns the number of this line's row in its table, or 0 if it is not in a table. Row 1 follows
# the two lines of the head.
function row_number() {
  lines_of_table = /^\| / ? lines_of_table + 1 : 0
  return lines_of_table > 2 ? lines_of_table - 2 : 0
}

# section(): returns the label of this heading or of the last one above.
function section() {
  if (match($0, /^## .*\{#/)) label = substr($0, RLENGTH + 1, length($0) - RLENGTH - 1)
  return label
}

# add_row(CELL, ANCHOR): records the row for each name in its first cell.
function add_row(cell, anchor,    name) {
  while (match(cell, /\\(zn|xml)\{[^}]*\}|\\ref [^"]*"[^"]*"|(zn_lib)?::[A-Za-z_0-9]+|XML[A-Za-z]+/)) {
    name = substr(cell, RSTART, RLENGTH)
    cell = substr(cell, RSTART + RLENGTH)
    sub(/^\\(zn|xml)\{/, "", name)
    sub(/^\\ref /, "", name)
    sub(/[}( ].*/, "", name)
    sub(/^(zn_lib)?::/, "", name)
    anchors[name] = anchors[name] " " anchor
  }
}

# name_of(LINE): returns the name that the line declares, or "" if it declares none.
function name_of(line) {
  if (match(line, /^ *(class|struct|enum) (ZN_UDF_API )?[A-Za-z_0-9]+/)) {
    line = substr(line, RSTART, RLENGTH)
  } else {
    sub(/ *[][(){}=;].*/, "", line)
  }
  return match(line, /~?[A-Za-z_0-9]+(<<)?$/) ? substr(line, RSTART) : ""
}

# rows_of(FIRST, LAST): returns numbered links to the rows that name a declaration in these lines.
function rows_of(first, last,    number, found, count, i, seen, result) {
  for (number = first; number <= last; ++number) {
    if (lines[number] ~ /^ *\/\//) continue
    count = split(anchors[scope name_of(lines[number])], found, " ")
    for (i = 1; i <= count; ++i) {
      if (!seen[found[i]]++) result = result (result == "" ? "" : ", ") "\\ref " found[i] " \"" ++seen["rows"] "\""
    }
  }
  return result
}

# see(INDENT, MARK, ROWS): prints the links of a declaration, as lines of its comment. The empty line ends a list or a
# code block of the comment.
function see(indent, mark, rows) {
  if (indent == "" || rows != "") print indent mark
  if (indent == "") {
    print mark " \\ingroup family_" family
    print mark " \\see " header ", \\ref family_" family ", \\ref behaviour_" family " \"Behaviour to know\"" \
      (rows == "" ? "" : ": " rows)
  } else if (rows != "") {
    print indent mark " \\see \\ref behaviour_" family " \"Behaviour to know\": " rows
  }
}

# declaration_after(NUMBER): returns the number of the line that the comment which ends there describes, or 0.
function declaration_after(number) {
  do ++number; while (lines[number] ~ /^ *template </)
  return lines[number] ~ /^ *$|^ *\/\/|^namespace |^ *@/ ? 0 : number
}

# end_of_members(NUMBER): returns the number of the line that ends the members from this line on.
function end_of_members(number) {
  while (number < total && lines[number] !~ /^ *\/\/\/ @}/) ++number
  return number
}

# write_header(): prints the lines of the header, with the links after the last line of each comment.
function write_header(    number, line, indent, declaration, is_file) {
  for (number = 1; number <= total; ++number) {
    line = lines[number]
    indent = line
    sub(/[^ ].*/, "", indent)
    if (line ~ /^(class|struct) .*\{$/) scope = name_of(line) "::"
    if (line ~ /^\};/) scope = ""
    if (line ~ /^ *\/\/\/ \\file/) is_file = 1

    if (line ~ /^ *\/\/\/ @\{/) see(indent, "///", rows_of(number + 1, end_of_members(number)))
    print line
    if (line ~ /\/\/\/</ && lines[number + 1] !~ /^ *\/\/\/</) see(indent, "///<", rows_of(number, number))
    if (line !~ /^ *\/\/\/( |$)/ || lines[number + 1] ~ /^ *\/\/\//) continue
    if (is_file) {
      print "/// \\see \\ref family_" family ", \\ref behaviour_" family " \"Behaviour to know\""
      is_file = 0
    } else if (line !~ /^ *\/\/\/ [@\\]/) {
      declaration = declaration_after(number)
      if (declaration) see(indent, "///", rows_of(declaration, declaration))
    }
  }
}

NR == FNR {
  row = row_number()
  if (row) {
    split($0, cells, / \| /)
    add_row(cells[1], section() "_" row)
  } else {
    section()
  }
  next
}

FILENAME ~ /\.h$/ {
  lines[++total] = $0
  if (match($0, /^\/\/\/ \\ingroup family_/)) family = substr($0, RLENGTH + 1)
  next
}

{
  row = row_number()
  if (row) {
    $0 = "| \\anchor " section() "_" row " " substr($0, 3)
  } else {
    section()
  }
  print
}

END {
  if (total > 0) {
    header = FILENAME
    sub(/.*\//, "", header)
    write_header()
  }
}
