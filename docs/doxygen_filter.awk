# Turns the plain comments of the public headers into Doxygen's, line for line:
#   the comment that begins the file      describes the file
#   a title between dashes                begins a group of members, with the text that follows it
#   a comment right before a declaration  describes it, and those that follow without a blank line
#   a comment behind a declaration        describes it, or each of the fields it declares

{ line[NR] = $0 }

# The name of the function that a line declares, empty if none.
function function_of(text, name) {
  if (text !~ /^GZD_API /) return ""
  name = text
  sub(/\(.*/, "", name)
  sub(/.*[ *]/, "", name)
  return name
}

# "float a, b[2];" and a comment as one declaration after the other, each with the comment.
function split_fields(text, comment, fields, count, type, i, result) {
  sub(/;.*/, "", text)
  count = split(text, fields, /, /)
  type = fields[1]
  sub(/[^ ]+$/, "", type)
  result = fields[1] "; " comment
  for (i = 2; i <= count; ++i) result = result type fields[i] "; " comment
  return result
}

function end_of_comment(i) {
  while (line[i] !~ /\*\//) ++i
  return i
}

function title_of(i, text) {
  text = line[i]
  gsub(/^\/\* -+ | *-*( \*\/)?$/, "", text)
  return text
}

# A title, and the comment behind it that stands alone, as the head of a group.
function print_group(i, last, next_one) {
  last = end_of_comment(i)
  next_one = last + 2
  if (line[last + 1] == "" && line[next_one] ~ /^\/\*$/ && line[end_of_comment(next_one) + 1] == "")
    last = end_of_comment(next_one)
  printf "%s/** @name %s%s", in_group ? "/** @} */ " : "", title_of(i), i == last ? " */ /** @{ */\n" : "\n"
  in_group = 1
  for (++i; i < last; ++i) print (line[i] ~ /^ \* [^-]/ ? line[i] : " *")
  if (i == last) print " */ /** @{ */"
  return last
}

function print_comment(i, last, opening) {
  last = end_of_comment(i)
  opening = i == 1 ? "/** @file" : "/**"
  if (i > 1 && line[last + 1] == "") opening = "/*"
  sub(/^\/\*/, opening, line[i])
  for (; i <= last; ++i) print line[i]
  return last
}

function print_code(i, name) {
  name = function_of(line[i])
  if (name != "" && line[i - 1] !~ /\*\/$/ && described != "" && !blank_since) {
    print "/** @copydoc " described " */ " line[i]
    return
  }
  if (name != "") described = name
  if (line[i] ~ /^  [^ ].*;.*\/\* .*\*\/$/) {
    comment = line[i]
    sub(/.*\/\* /, "/**< ", comment)
    print split_fields(line[i], comment)
  } else {
    sub(/[^ ] *\/\* /, "&@", line[i])
    sub(/\/\* @/, "/**< ", line[i])
    print line[i]
  }
}

END {
  for (i = 1; i <= NR; ++i) {
    if (line[i] ~ /^\/\* -+ /) i = print_group(i)
    else if (line[i] ~ /^\/\*/) i = print_comment(i)
    else print_code(i)
    blank_since = line[i] == ""
  }
  if (in_group) print "/** @} */"
}
