// Names of files: extension, tail, letter case.
#ifndef GZDCONV_TEXT_H
#define GZDCONV_TEXT_H

#include <cstddef>
#include <string>
#include <string_view>

namespace gzdconv {

// Last position of `c` in `text`, or std::string_view::npos.
std::size_t rfind(std::string_view text, char c);

// Turns every `from` in `text` into `to`.
void replace(std::string& text, char from, char to);

// Lower-cases the letters A to Z of `text` in place.
void lowerstring(std::string& text);

// How often `c` stands in `text`.
std::size_t counttoken(std::string_view text, char c);

// Copies `name` to `destination`, with ".gzd" appended when its fourth character from the end is
// no ".".
void add_extension(std::string& destination, const std::string& name);

// True when the last four of at least five characters are ".gzd", in any case.
bool is_gzd_file(const std::string& name);

// Copies `name` with "_rep.gzd" in place of its extension of three letters. Returns 0, or -1 when
// it has none: `destination` then stays as it was.
int rename_extension(std::string& destination, const std::string& name);

// Copies `name` with every "\" turned into "/". Returns 0, or -1 when `check` is set and it is no
// name of a recording, which is printed.
int set_file_name(std::string& destination, const std::string& name, bool check);

// `path` from its last "/" on, that included; failing one from its last "\"; failing both, whole.
std::string_view path_tail(std::string_view path);

}  // namespace gzdconv

#endif
