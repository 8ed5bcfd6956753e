// Texts (UTF-8) as cells.
#ifndef GZDTOOL_ESCAPE_H
#define GZDTOOL_ESCAPE_H

#include <string>
#include <string_view>

namespace gzdtool {

// All append the text to `to`. With `is_for_terminal`, control characters come as \xHH.

// TSV: tab, newline, carriage return and backslash as \t, \n, \r, \\, and the text "n/a" as n\/a.
void append_tsv(std::string& to, std::string_view text, bool is_for_terminal);

// CSV: in quotes where a comma, a quote or the end of a line asks for it, quotes doubled; the text
// "n/a" as n\/a.
void append_csv(std::string& to, std::string_view text, bool is_for_terminal);

// A string of JSON, quotes included. Control characters are always escaped.
void append_json(std::string& to, std::string_view text, bool is_for_terminal);

// Words for people: control characters as \xHH always.
void append_shown(std::string& to, std::string_view text);

}  // namespace gzdtool

#endif
