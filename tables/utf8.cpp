// A walk over bytes by the table of well-formed UTF-8: the first byte tells the length and the
// range of the second.
#include "utf8.h"

#include <algorithm>
#include <cstdint>

namespace gzdtables {

namespace {

constexpr std::string_view replacement = "\xEF\xBF\xBD";

struct Lead {
  std::size_t length;            // bytes of the character; 0 when no character begins so
  std::uint8_t lowest, highest;  // of the second byte
};

Lead lead_of(std::uint8_t first) {
  if (first < 0x80) return {1, 0, 0};
  if (first < 0xC2) return {0, 0, 0};
  if (first < 0xE0) return {2, 0x80, 0xBF};
  if (first == 0xE0) return {3, 0xA0, 0xBF};
  if (first == 0xED) return {3, 0x80, 0x9F};
  if (first < 0xF0) return {3, 0x80, 0xBF};
  if (first == 0xF0) return {4, 0x90, 0xBF};
  if (first < 0xF4) return {4, 0x80, 0xBF};
  if (first == 0xF4) return {4, 0x80, 0x8F};
  return {0, 0, 0};
}

struct Piece {
  std::size_t length;  // at least 1
  bool is_character;
};

Piece first_piece(std::string_view bytes) {
  const Lead lead = lead_of(static_cast<std::uint8_t>(bytes[0]));
  const std::size_t end = std::min(lead.length, bytes.size());
  std::size_t place = 1;
  for (; place < end; ++place) {
    const auto byte = static_cast<std::uint8_t>(bytes[place]);
    if (byte < (place == 1 ? lead.lowest : 0x80) || byte > (place == 1 ? lead.highest : 0xBF))
      break;
  }
  return {place, lead.length != 0 && place == lead.length};
}

}  // namespace

std::string as_utf8(std::string_view bytes) {
  std::string text;
  text.reserve(bytes.size());
  while (!bytes.empty()) {
    const Piece piece = first_piece(bytes);
    text.append(piece.is_character ? bytes.substr(0, piece.length) : replacement);
    bytes.remove_prefix(piece.length);
  }
  return text;
}

bool is_utf8(std::string_view bytes) {
  while (!bytes.empty()) {
    const Piece piece = first_piece(bytes);
    if (!piece.is_character) return false;
    bytes.remove_prefix(piece.length);
  }
  return true;
}

}  // namespace gzdtables
