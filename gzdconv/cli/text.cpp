// Small work on names: extensions, paths, tokens.
#include "cli/text.h"

#include <algorithm>
#include <cstdio>

namespace gzdconv {

namespace {

constexpr std::size_t extension_length = 4;  // with its "."

bool has_extension(const std::string& name) {
  return name.size() >= extension_length && name[name.size() - extension_length] == '.';
}

}  // namespace

std::size_t rfind(std::string_view text, char c) {
  return text.rfind(c);
}

void replace(std::string& text, char from, char to) {
  std::replace(text.begin(), text.end(), from, to);
}

void lowerstring(std::string& text) {
  for (char& c : text)
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
}

std::size_t counttoken(std::string_view text, char c) {
  return static_cast<std::size_t>(std::count(text.begin(), text.end(), c));
}

void add_extension(std::string& destination, const std::string& name) {
  destination = has_extension(name) ? name : name + ".gzd";
}

bool is_gzd_file(const std::string& name) {
  if (name.size() <= extension_length) return false;
  std::string extension = name.substr(name.size() - extension_length);
  lowerstring(extension);
  return extension == ".gzd";
}

int rename_extension(std::string& destination, const std::string& name) {
  if (!has_extension(name)) return -1;
  destination = name.substr(0, name.size() - extension_length) + "_rep.gzd";
  return 0;
}

int set_file_name(std::string& destination, const std::string& name, bool check) {
  if (check && !is_gzd_file(name)) {
    std::printf("\nERROR: file is not .GZD file\n");
    return -1;
  }
  destination = name;
  replace(destination, '\\', '/');
  return 0;
}

std::string_view path_tail(std::string_view path) {
  for (const char separator : {'/', '\\'}) {
    const std::size_t place = rfind(path, separator);
    if (place != std::string_view::npos) return path.substr(place);
  }
  return path;
}

}  // namespace gzdconv
