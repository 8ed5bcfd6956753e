// SHA-256, to tell which bytes a table was made of.
#ifndef GZDTOOL_SHA256_H
#define GZDTOOL_SHA256_H

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace gzdtool {

class Sha256 {
 public:
  void add(std::string_view bytes);
  // 64 hexadecimal digits. Nothing is added behind it.
  [[nodiscard]] std::string finish();

 private:
  static constexpr std::size_t chunk_bytes = 64;

  void take_chunk(const unsigned char* chunk);

  std::array<std::uint32_t, 8> state_{0x6a09e667, 0xbb67ae85, 0x3c6ef372, 0xa54ff53a,
                                      0x510e527f, 0x9b05688c, 0x1f83d9ab, 0x5be0cd19};
  std::array<unsigned char, chunk_bytes> waiting_{};
  std::uint64_t bytes_ = 0;
};

// The digest of a file; empty when it cannot be read.
[[nodiscard]] std::string sha256_of_file(const std::string& path);

}  // namespace gzdtool

#endif
