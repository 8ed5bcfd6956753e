// Bytes written as hexadecimal digits, for expectations worked out by hand.
#ifndef TESTS_GZDSYNTH_HEX_BYTES_H
#define TESTS_GZDSYNTH_HEX_BYTES_H

#include <string>
#include <string_view>

#include "GzdWriter.h"

namespace gzdsynth {

// Digits in upper or lower case, blanks anywhere.
inline Bytes hex(std::string_view digits) {
  Bytes out;
  std::string pair;
  for (const char c : digits) {
    if (c == ' ') continue;
    pair.push_back(c);
    if (pair.size() < 2) continue;
    out.push_back(static_cast<std::uint8_t>(std::stoul(pair, nullptr, 16)));
    pair.clear();
  }
  return out;
}

// The records of a writer that does not compress, the end tag included.
inline Bytes bodyOf(const GzdWriter& writer) {
  Bytes file = writer.bytes();
  file.erase(file.begin(), file.begin() + static_cast<std::ptrdiff_t>(writer.header().size()));
  return file;
}

}  // namespace gzdsynth

#endif
