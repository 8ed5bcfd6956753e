// What all fuzz targets share: assertions, choices drawn from the input, files in memory.
#ifndef FUZZ_FUZZ_SUPPORT_H
#define FUZZ_FUZZ_SUPPORT_H

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <span>
#include <string>
#include <string_view>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

// Ends the process, which is a finding, unless `condition` holds.
#define FUZZ_REQUIRE(condition) \
  ((condition) ? void(0) : fuzz::fail_requirement(#condition, __FILE__, __LINE__))

namespace fuzz {

using Input = std::span<const std::uint8_t>;

[[noreturn]] void fail_requirement(const char* condition, const char* file, int line);

// Sends standard output nowhere; to be called once, before the first input.
void silence_standard_output();

// Lets the library log into nothing, after a check that the message is whole.
void swallow_log();

inline std::string_view text_of(Input bytes) {
  return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

// Takes values off the end of an input, so that what is left begins like the file it stands for.
// Values behind the beginning are 0.
class Tail {
 public:
  explicit Tail(Input bytes) : rest_(bytes) {}

  std::uint8_t byte() {
    if (rest_.empty()) return 0;
    const std::uint8_t value = rest_.back();
    rest_ = rest_.first(rest_.size() - 1);
    return value;
  }
  std::uint16_t word() {
    const unsigned high = byte();
    return static_cast<std::uint16_t>(high << 8 | byte());
  }
  std::uint32_t integer() {
    const std::uint32_t high = word();
    return high << 16 | word();
  }
  // The last `count` bytes, or all there are.
  Input block(std::size_t count) {
    const Input taken = rest_.last(std::min(count, rest_.size()));
    rest_ = rest_.first(rest_.size() - taken.size());
    return taken;
  }
  [[nodiscard]] Input rest() const { return rest_; }

 private:
  Input rest_;
};

// A file in memory with a path by which others open it.
class MemoryFile {
 public:
  explicit MemoryFile(const char* name);
  MemoryFile(const MemoryFile&) = delete;
  MemoryFile& operator=(const MemoryFile&) = delete;
  ~MemoryFile();

  // Replaces the content.
  void set(Input bytes);
  [[nodiscard]] std::string content() const;
  [[nodiscard]] const std::string& path() const { return path_; }

 private:
  int descriptor_;
  std::string path_;
};

// A digest of values that may hold padding between, but not in them.
class Digest {
 public:
  template <class T>
  Digest& add(const T& value) {
    return addBytes(&value, sizeof value);
  }
  Digest& addBytes(const void* bytes, std::size_t count) {
    const auto* p = static_cast<const unsigned char*>(bytes);
    for (std::size_t i = 0; i < count; ++i) value_ = (value_ ^ p[i]) * 0x100000001b3u;
    return *this;
  }
  [[nodiscard]] std::uint64_t value() const { return value_; }

 private:
  std::uint64_t value_ = 0xcbf29ce484222325u;
};

// Numbers that follow from a seed.
class Random {
 public:
  explicit Random(std::uint64_t seed) : state_(seed * 2 + 1) {}
  std::uint32_t next() {
    state_ ^= state_ << 13;
    state_ ^= state_ >> 7;
    state_ ^= state_ << 17;
    return static_cast<std::uint32_t>(state_ >> 16);
  }
  // From 0 up to below `limit`, which must not be 0.
  std::size_t below(std::size_t limit) { return next() % limit; }
  bool oneIn(unsigned count) { return below(count) == 0; }

 private:
  std::uint64_t state_;
};

}  // namespace fuzz

#endif
