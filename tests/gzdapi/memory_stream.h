// A stream over bytes in memory. It can end early, and show its bytes in small windows.
#ifndef TESTS_GZDAPI_MEMORY_STREAM_H
#define TESTS_GZDAPI_MEMORY_STREAM_H

#include <algorithm>
#include <cstdint>
#include <utility>
#include <vector>

#include "MVIO.h"

class MemoryStream : public InputStream {
 public:
  static constexpr std::size_t ALL = SIZE_MAX;

  // Holds the first `end` of the bytes. Each refill shows `step` more bytes at least.
  explicit MemoryStream(std::vector<std::uint8_t> content, std::size_t end = ALL,
                        std::size_t step = 64)
      : bytes(std::move(content)), readAhead(step) {
    bytes.resize(std::min(end, bytes.size()));
    bytes.shrink_to_fit();  // so that a read behind the end is noticed
    windowStart = cursor = limit = bytes.data();
  }

  int getFileSize() override { return static_cast<int>(bytes.size()); }

  void seek(INT64 offset) override {
    hitEnd = false;
    const INT64 inside = std::clamp<INT64>(offset, 0, static_cast<INT64>(bytes.size()));
    windowStart = cursor = limit = bytes.data() + inside;
    limitPos = offset;
  }

 protected:
  bool refill(std::size_t count) override {
    const byte* const end = bytes.data() + bytes.size();
    const std::size_t unread = static_cast<std::size_t>(limit - cursor);
    const std::size_t missing = count > unread ? count - unread : 0;
    const std::size_t got =
        std::min(std::max(missing, readAhead), static_cast<std::size_t>(end - limit));
    limit += got;
    limitPos += static_cast<INT64>(got);
    return unread + got >= count;
  }

 private:
  std::vector<std::uint8_t> bytes;
  std::size_t readAhead;
};

#endif
