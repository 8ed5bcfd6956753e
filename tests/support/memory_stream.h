// A stream over bytes in memory. It can end early, and show its bytes in small windows.
#ifndef TESTS_SUPPORT_MEMORY_STREAM_H
#define TESTS_SUPPORT_MEMORY_STREAM_H

#include <algorithm>
#include <cstdint>
#include <utility>
#include <vector>

#include "stream/MVIO.h"

using namespace gzd;

class MemoryStream : public InputStream {
 public:
  static constexpr std::size_t whole_content = SIZE_MAX;

  // Holds the first `end` of the bytes. Each refill shows `step` more bytes at least.
  explicit MemoryStream(std::vector<std::uint8_t> content, std::size_t end = whole_content,
                        std::size_t step = 64)
      : bytes(std::move(content)), readAhead(step) {
    bytes.resize(std::min(end, bytes.size()));
    bytes.shrink_to_fit();  // so that a read past the end is noticed
    windowStart_ = cursor_ = limit_ = bytes.data();
  }

  INT64 getFileSize() override { return static_cast<INT64>(bytes.size()); }

  void seek(INT64 offset) override {
    hitEnd_ = false;
    const INT64 inside = std::clamp<INT64>(offset, 0, static_cast<INT64>(bytes.size()));
    windowStart_ = cursor_ = limit_ = bytes.data() + inside;
    limitPos_ = offset;
  }

 protected:
  bool refill(std::size_t count) override {
    const auto unread = static_cast<std::size_t>(limit_ - cursor_);
    show(std::max(count > unread ? count - unread : 0, readAhead));
    return static_cast<std::size_t>(limit_ - cursor_) >= count;
  }

  // Brings so many more bytes into the window, or all that are left.
  void show(std::size_t count) {
    const std::size_t got =
        std::min(count, static_cast<std::size_t>(bytes.data() + bytes.size() - limit_));
    limit_ += got;
    limitPos_ += static_cast<INT64>(got);
  }

 private:
  std::vector<std::uint8_t> bytes;
  std::size_t readAhead;
};

#endif
