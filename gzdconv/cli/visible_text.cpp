// Names as a terminal can show them.
#include "cli/visible_text.h"

#include <bit>
#include <cstdio>

namespace gzdconv {

namespace {

constexpr unsigned char delete_character = 0x7F;
constexpr unsigned char last_c1 = 0x9F;  // of the control characters of eight bits
constexpr char c1_lead = '\xC2';         // in front of those in UTF-8

unsigned char byte_of(char c) {
  return static_cast<unsigned char>(c);
}

bool is_continuation(char c) {
  return (byte_of(c) & 0xC0U) == 0x80;
}

// The length of the UTF-8 character of several bytes that `text` begins with; 0 when there is none,
// or one that is a control character.
std::size_t printable_length(std::string_view text) {
  const auto length = static_cast<std::size_t>(std::countl_one(byte_of(text[0])));
  if (length < 2 || length > 4 || text.size() < length) return 0;
  for (const char c : text.substr(1, length - 1))
    if (!is_continuation(c)) return 0;
  return text[0] == c1_lead && byte_of(text[1]) <= last_c1 ? 0 : length;
}

std::string shown_byte(char c) {
  const unsigned char byte = byte_of(c);
  if (byte < ' ' || byte == delete_character) return {'^', static_cast<char>(byte ^ 0x40U)};
  char hexadecimal[8];
  std::snprintf(hexadecimal, sizeof hexadecimal, "\\x%02x", byte);
  return hexadecimal;
}

bool is_plain(char c) {
  return byte_of(c) >= ' ' && byte_of(c) < delete_character;
}

}  // namespace

std::string visible(std::string_view text, std::string_view kept) {
  std::string shown;
  while (!text.empty()) {
    const bool stays = is_plain(text[0]) || kept.find(text[0]) != std::string_view::npos;
    const std::size_t length = stays ? 1 : printable_length(text);
    shown += length != 0 ? std::string(text.substr(0, length)) : shown_byte(text[0]);
    text.remove_prefix(length != 0 ? length : 1);
  }
  return shown;
}

}  // namespace gzdconv
