# SPDX-License-Identifier: MIT
# What Doxygen reads in place of a header or a page.
#
# Of a header: plain comments become documentation. The first one is the file's, one behind a
# declaration is that declaration's, any other belongs to what follows it. Their text means what it
# says, so outside of `code` the characters are escaped that Doxygen takes for commands or HTML.
#
# Of a page: links to other files, which the reference does not hold, become plain text.

function plain(text,    parts, count, i) {
  count = split(text, parts, "`")
  for (i = 1; i <= count; i += 2) gsub(/[\\@<>&#%$"]/, "\\\\&", parts[i])
  text = parts[1]
  for (i = 2; i <= count; i++) text = text "`" parts[i]
  return text
}

FILENAME ~ /\.md$/ {
  while (match($0, /\[[^]]+\]\([^): ]+\)/)) {
    words = substr($0, RSTART + 1, index(substr($0, RSTART), "]") - 2)
    $0 = substr($0, 1, RSTART - 1) words substr($0, RSTART + RLENGTH)
  }
  print
  next
}

/^\/\/ SPDX/ { print "/// @file"; next }
/^}.*\/\/ namespace/ { print; next }
# Code in a comment is indented.
/^\/\/   / { print "///    " substr($0, 3); next }
match($0, /^ *\/\//) {
  print substr($0, 1, RLENGTH) "/" plain(substr($0, RLENGTH + 1))
  next
}
match($0, /  \/\/ /) {
  print substr($0, 1, RSTART + 3) "/< " plain(substr($0, RSTART + RLENGTH))
  next
}
{ print }
