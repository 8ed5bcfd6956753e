// Escapes of the three formats.
#include "sinks/escape.h"

#include <cstdint>

namespace gzdtool {

namespace {

constexpr std::string_view null_text = "n/a";
constexpr std::string_view escaped_null_text = "n\\/a";
constexpr unsigned char lead_of_c1 = 0xC2;  // U+0080 to U+009F are this and 80 to 9F

char hex(unsigned value) {
  return "0123456789abcdef"[value & 0xF];
}

void append_hex(std::string& to, const char* prefix, unsigned char byte) {
  to.append(prefix).push_back(hex(byte >> 4));
  to.push_back(hex(byte));
}

bool is_control(unsigned char byte) {
  return byte < 0x20 || byte == 0x7F;
}

// Whether a control character beyond ASCII begins at `place`.
bool is_c1(std::string_view text, std::size_t place) {
  return static_cast<unsigned char>(text[place]) == lead_of_c1 && place + 1 < text.size() &&
         static_cast<unsigned char>(text[place + 1]) < 0xA0;
}

std::string shown_on_terminal(std::string_view text) {
  std::string shown;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const auto byte = static_cast<unsigned char>(text[i]);
    if (is_c1(text, i))
      append_hex(shown, "\\x", static_cast<unsigned char>(text[++i]));
    else if (is_control(byte))
      append_hex(shown, "\\x", byte);
    else
      shown.push_back(text[i]);
  }
  return shown;
}

// The letter behind the backslash, or 0 for a character that stays.
char tsv_escape(char c) {
  switch (c) {
    case '\t':
      return 't';
    case '\n':
      return 'n';
    case '\r':
      return 'r';
    case '\\':
      return '\\';
    default:
      return 0;
  }
}

void append_tsv_character(std::string& to, char c, bool is_for_terminal) {
  if (const char letter = tsv_escape(c)) {
    to.push_back('\\');
    to.push_back(letter);
  } else if (is_for_terminal && is_control(static_cast<unsigned char>(c))) {
    append_hex(to, "\\x", static_cast<unsigned char>(c));
  } else {
    to.push_back(c);
  }
}

char json_escape(char c) {
  switch (c) {
    case '"':
    case '\\':
      return c;
    case '\n':
      return 'n';
    case '\r':
      return 'r';
    case '\t':
      return 't';
    default:
      return 0;
  }
}

}  // namespace

void append_tsv(std::string& to, std::string_view text, bool is_for_terminal) {
  if (text == null_text) {
    to.append(escaped_null_text);
    return;
  }
  for (std::size_t i = 0; i < text.size(); ++i)
    if (is_for_terminal && is_c1(text, i))
      append_hex(to, "\\x", static_cast<unsigned char>(text[++i]));
    else
      append_tsv_character(to, text[i], is_for_terminal);
}

void append_csv(std::string& to, std::string_view text, bool is_for_terminal) {
  const std::string_view told = text == null_text ? escaped_null_text : text;
  const std::string shown = is_for_terminal ? shown_on_terminal(told) : std::string(told);
  if (shown.find_first_of(",\"\r\n") == std::string::npos) {
    to.append(shown);
    return;
  }
  to.push_back('"');
  for (const char c : shown) to.append(c == '"' ? 2 : 1, c);
  to.push_back('"');
}

void append_shown(std::string& to, std::string_view text) {
  to.append(shown_on_terminal(text));
}

void append_json(std::string& to, std::string_view text, bool) {
  to.push_back('"');
  for (std::size_t i = 0; i < text.size(); ++i) {
    const auto byte = static_cast<unsigned char>(text[i]);
    if (const char letter = json_escape(text[i]))
      to.append(1, '\\').push_back(letter);
    else if (is_c1(text, i))
      append_hex(to, "\\u00", static_cast<unsigned char>(text[++i]));
    else if (is_control(byte))
      append_hex(to, "\\u00", byte);
    else
      to.push_back(text[i]);
  }
  to.push_back('"');
}

}  // namespace gzdtool
