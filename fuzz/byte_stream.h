// Two streams over the same bytes: one shows them all, the other a byte more each time it is asked,
// so that reads of several bytes never find them in its window.
#ifndef FUZZ_BYTE_STREAM_H
#define FUZZ_BYTE_STREAM_H

#include "fuzz_support.h"
#include "support/memory_stream.h"

using namespace gzd;

namespace fuzz {

enum class Window { Whole, Narrow };

class ByteStream : public MemoryStream {
 public:
  ByteStream(Input content, Window window)
      : MemoryStream({content.begin(), content.end()}, ALL, ALL),
        narrow_(window == Window::Narrow) {}

 protected:
  bool refill(std::size_t count) override {
    if (!narrow_) return MemoryStream::refill(count);
    show(1);
    return static_cast<std::size_t>(limit - cursor) >= count;
  }

 private:
  bool narrow_;
};

}  // namespace fuzz

#endif
