# Makes the plain comments of a header those that Doxygen reads: awk -f docs/reference_filter.awk HEADER
#
# - A comment holds for all declarations after it, up to the next comment or empty line.
# - A comment with an empty line after it holds for all of the rest of its section of the class, after each one's own;
#   outside of classes it describes the file.
# - A comment behind a declaration or an enumerator comes before that of its group.
# - Copies, moves and destructors have their usual meaning, unless a comment stands right before them.
# - A row of a list of causes, "  5  text     7  text", and a line "Term   Text" become items of a list; what is indented
#   by five or more is taken as it is.

function flushed(text, lines, n, i) {
  n = split(text, lines, "\n")
  for (i = 1; i <= n; ++i) print "/// " lines[i]
}

# What Markdown and the commands of Doxygen would read otherwise. Code in backticks stays.
function escaped(text, parts, n, i, out) {
  n = split(text, parts, "`")
  for (i = 1; i <= n; ++i) {
    if (i % 2 == 1) gsub(/[\\<>&#@%*]/, "\\\\&", parts[i])
    out = out (i > 1 ? "`" : "") parts[i]
  }
  return out
}

function isRow(text) { return text ~ /^ +[0-9][0-9, ]*  [^ ]/ }

# The items of a row: numbers, two or more spaces, text; four or more spaces between items.
function items(text, out, at) {
  sub(/^ +/, "", text)
  while (match(text, /    +[0-9]/)) {
    at = RSTART
    out = out "\n" item(substr(text, 1, at - 1))
    text = substr(text, at)
    sub(/^ +/, "", text)
  }
  return substr(out "\n" item(text), 2)
}
function item(text, numbers) {
  if (!match(text, /^[0-9][0-9, ]*  +/)) return "- " escaped(text)
  numbers = substr(text, 1, RLENGTH)
  sub(/ +$/, "", numbers)
  return "- **" numbers "** " escaped(substr(text, RLENGTH + 1))
}

# One more line of the comment that is being read.
function take(text, term) {
  if (!inRows && text ~ /^     +[^ ]/) {
    add(substr(text, 2))
  } else if (text ~ /^ [A-Z][a-z]+  +[A-Z`]/) {
    term = text
    sub(/^ /, "", term)
    sub(/ .*/, "", term)
    sub(/^ [A-Z][a-z]+ +/, "", text)
    add((inRows ? "" : "\n") "- **" term "** " escaped(text))
    inRows = 1
  } else if (isRow(text)) {
    add((inRows || comment == "" ? "" : "\n") items(text))
    inRows = 1
  } else {
    if (inRows && text ~ /^ ?[^ ]/) add("")
    if (text ~ /^ ?[^ ]/) inRows = 0
    indent = text
    sub(/[^ ].*/, "", indent)
    sub(/^ +/, "", text)
    add((length(indent) < 2 ? "" : inRows ? "  " : substr(indent, 2)) (text ~ /^- / ? "- " escaped(substr(text, 3)) : escaped(text)))
  }
}
function add(text) { comment = comment == "" ? text : comment "\n" text }

# A line of code without strings, characters and the comment behind it, which `behind` receives.
function bare(line, at) {
  gsub(/"([^"\\]|\\.)*"/, "\"\"", line)
  gsub(/'([^'\\]|\\.)'/, "0", line)
  behind = ""
  sub(/ *\/[*].*[*]\/ *$/, "", line)
  at = index(line, "//")
  if (at > 0) {
    behind = substr(line, at + 2)
    sub(/^ +/, "", behind)
    line = substr(line, 1, at - 1)
  }
  sub(/ +$/, "", line)
  return line
}

function count(text, pattern) { return gsub(pattern, "", text) }

# The usual meaning of a special member of the class that is being read, or nothing.
function usual(code, name) {
  name = scope[depth]
  if (name == "") return ""
  if (code ~ "~" name "\\(") return "Destroys the object."
  if (code ~ "(^|[ (])" name "\\((const " name "&|" name "&&)[ a-z]*\\)" || code ~ "operator=\\(") {
    if (code ~ "&&") return "Takes over the contents of the other, which is then only fit to be assigned to or destroyed."
    return "Copies the other."
  }
  return ""
}

function document(code, behind, special, text) {
  special = usual(code)
  if (hidden[depth] || code ~ /^ *(#[^d]|namespace |extern ""|using namespace|friend |(class|struct) [A-Za-z_]+;)/) return
  if (code ~ /^ *[}]/ || code ~ /^ *(public|protected|private):/) return
  text = comment != "" ? comment : special != "" ? special : group
  if (rest[depth] != "" && (special == "" || comment != "")) text = text (text == "" ? "" : "\n\n") rest[depth]
  if (behind != "" && special == "") text = escaped(behind) (text == "" ? "" : "\n\n" text)
  if (text != "") flushed(text)
}

function endGroup() {
  comment = ""
  group = ""
  inRows = 0
}

BEGIN { depth = 0; fresh = 1; hidden[0] = 0 }

fresh && (block || /^ *\/\*/) {
  if (!reading) endGroup()
  reading = 1
  text = $0
  sub(block ? "^  " : "^ */[*]", "", text)
  block = text !~ /[*]\//
  sub(/ *[*]\/.*/, "", text)
  take(text)
  print ""
  next
}

/^ *\/\// && fresh {
  if (!reading) endGroup()
  reading = 1
  text = $0
  sub(/^ *\/\//, "", text)
  take(text)
  print ""
  next
}

/^ *$/ && fresh {
  if (reading && !hidden[depth]) {
    if (scope[depth] != "") rest[depth] = rest[depth] (rest[depth] == "" ? "" : "\n\n") comment
    else if (!inEnum) flushed("\\file\n" comment)
  }
  reading = 0
  endGroup()
  print
  next
}

# What a class takes over from its base is described there.
fresh && scope[depth] != "" && /^ *using [A-Za-z_:]+;/ {
  print ""
  next
}

{
  code = bare($0)
  if (inEnum) {
    # Enumerators have comments before or behind them.
    if (reading) flushed(comment)
    if ($0 ~ /[*]\/ *$/ && sub(/  *\/[*] */, " ///< ")) sub(/ *[*]\/ *$/, "")
    else sub(/  *\/\/ */, " ///< ")
    print
    if (code ~ /[}];/) { inEnum = 0; --depth }
    reading = 0
    endGroup()
    next
  }
  if (fresh) {
    document(code, behind)
    if (reading) group = comment
    comment = ""
    reading = 0
    opens = code ~ /^ *(enum|namespace|extern ""|(template.*> *)?(class|struct)) .*[^;]$/ && code !~ /[}];?$/
    if (code ~ /^ *(public|protected|private):/) {
      hidden[depth] = code ~ /private:/
      rest[depth] = ""
      endGroup()
    }
  }
  if (!fresh && /; *\/[*].*[*]\/ *$/) {
    sub(/ *\/[*] */, " ///< ")
    sub(/ *[*]\/ *$/, "")
  }
  print
  if (fresh && opens && code ~ /[{]$/) {
    ++depth
    inEnum = code ~ /^ *enum/
    scope[depth] = ""
    rest[depth] = ""
    hidden[depth] = hidden[depth - 1] || code ~ /^ *class/
    if (match(code, /(class|struct) (NU_EXPORT )?[A-Za-z_]+/)) {
      name = substr(code, RSTART, RLENGTH)
      sub(/.* /, "", name)
      scope[depth] = name
    }
    endGroup()
    next
  }
  if (fresh && code ~ /^ *[}]/) {
    --depth
    endGroup()
    next
  }
  if (code ~ /^ *(#|(public|protected|private):)/) next
  # A declaration ends where all that it opened is closed, with a semicolon or the brace of a body.
  open += count(code, "[({\\[]") - count(code, "[])}]")
  fresh = open == 0 && code ~ /[;}]$/
}
