// A recording's bytes in memory as the stream that decoders read from.
#ifndef BENCH_MEMORY_STREAM_H
#define BENCH_MEMORY_STREAM_H

#include <utility>
#include <vector>

#include "stream/MVIO.h"

using namespace gzd;

class MemoryStream : public InputStream {
 public:
  explicit MemoryStream(std::vector<byte> content) : bytes(std::move(content)) {
    windowStart_ = bytes.data();
    limit_ = bytes.data() + bytes.size();
    limitPos_ = static_cast<INT64>(bytes.size());
    MemoryStream::seek(0);
  }

  INT64 getFileSize() override { return static_cast<INT64>(bytes.size()); }
  void seek(INT64 offset) override {
    cursor_ = windowStart_ + offset;
    hitEnd_ = false;
  }

 protected:
  bool refill(std::size_t /*count*/) override {
    hitEnd_ = true;
    return false;
  }

 private:
  std::vector<byte> bytes;
};

#endif
