// What all fuzz targets share. A target is a file NAME_fuzzer.cpp with one
//
//   FUZZ_TARGET(name) { ... }     over `input`, the bytes at hand
//
// which becomes a program of its own under a fuzzing engine, and one of the targets of `replay`.
#ifndef FUZZ_HARNESS_H
#define FUZZ_HARNESS_H

#include <algorithm>
#include <cstdint>
#include <map>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "support/memory_stream.h"

// Ends the process, which is a finding, unless `condition` holds.
#define FUZZ_REQUIRE(condition) \
  ((condition) ? void(0) : fuzz::fail_requirement(#condition, __FILE__, __LINE__))

#define FUZZ_TARGET(name)                                                      \
  static void name##_target(fuzz::Input input);                                \
  static const bool name##_is_known = fuzz::add_target(#name, &name##_target); \
  static void name##_target(fuzz::Input input)

namespace fuzz {

using Input = std::span<const std::uint8_t>;
using Target = void (*)(Input);

bool add_target(const char* name, Target target);
const std::map<std::string, Target>& targets();

[[noreturn]] void fail_requirement(const char* condition, const char* file, int line);

// Sends standard output nowhere, and what the library logs after a check that it is whole.
void be_quiet();

inline std::string_view text_of(Input bytes) {
  return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

// Takes values off the end of an input, so that what is left begins like the file it stands for.
// Values after the beginning are 0.
class Tail {
 public:
  explicit Tail(Input bytes) : rest_(bytes) {}

  std::uint8_t byte() {
    const Input taken = block(1);
    return taken.empty() ? std::uint8_t{0} : taken[0];
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

struct CloseFile {
  void operator()(FILE* file) const { std::fclose(file); }
};
using File = std::unique_ptr<FILE, CloseFile>;

// A stream over bytes that shows them all, or one more each time it is asked, so that reads of
// several bytes never find them in its window.
class ByteStream : public MemoryStream {
 public:
  ByteStream(Input content, bool narrow)
      : MemoryStream({content.begin(), content.end()}, whole_content, whole_content),
        narrow_(narrow) {}

 protected:
  bool refill(std::size_t count) override {
    if (!narrow_) return MemoryStream::refill(count);
    show(1);
    return static_cast<std::size_t>(limit_ - cursor_) >= count;
  }

 private:
  bool narrow_;
};

// A recording from the rest of an input: its bytes as they are, or, as the next byte off its end
// decides, records of all sorts, whole and in a sound frame, that the bytes choose.
std::vector<std::uint8_t> recording_from(Tail& tail);

// True of recordings that are legal but slow: a few bytes can ask for very many elements, in gaps
// that repairs fill or inflated.
bool is_too_large(const std::string& path, std::uint64_t mostFilling);

}  // namespace fuzz

#endif
