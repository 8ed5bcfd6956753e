// Two streams over the same bytes: one shows them all, the other a byte more each time it is asked,
// so that reads of several bytes never find them in its window.
#ifndef FUZZ_BYTE_STREAM_H
#define FUZZ_BYTE_STREAM_H

#include <algorithm>
#include <vector>

#include "MVIO.h"
#include "fuzz_support.h"

namespace fuzz {

enum class Window { Whole, Narrow };

class ByteStream : public InputStream {
 public:
  ByteStream(Input content, Window window)
      : bytes_(content.begin(), content.end()), narrow_(window == Window::Narrow) {
    bytes_.shrink_to_fit();  // so that a read behind the end is noticed
    windowStart = cursor = limit = bytes_.data();
  }

  int getFileSize() override { return static_cast<int>(bytes_.size()); }

  void seek(INT64 offset) override {
    hitEnd = false;
    const INT64 inside = std::clamp<INT64>(offset, 0, static_cast<INT64>(bytes_.size()));
    windowStart = cursor = limit = bytes_.data() + inside;
    limitPos = offset;
  }

 protected:
  bool refill(std::size_t count) override {
    const byte* const end = bytes_.data() + bytes_.size();
    const auto left = static_cast<std::size_t>(end - limit);
    const std::size_t shown = narrow_ ? std::min<std::size_t>(left, 1) : left;
    limit += shown;
    limitPos += static_cast<INT64>(shown);
    return static_cast<std::size_t>(limit - cursor) >= count;
  }

 private:
  std::vector<byte> bytes_;
  bool narrow_;
};

}  // namespace fuzz

#endif
