// gzip by libdeflate where there is one, by zlib else. Members without a name and a time, so that
// equal tables are equal files.
#include "sinks/gzip_sink.h"

#include <string>

#ifdef GZDTOOL_HAS_LIBDEFLATE
#include <libdeflate.h>
#else
#include <zlib.h>
#endif

namespace gzdtool {

namespace {

constexpr std::size_t member_bytes = 1 << 20;

#ifdef GZDTOOL_HAS_LIBDEFLATE

// Tables of samples come out about as small as by zlib at its usual level 6, several times as fast;
// libdeflate's own level 6 makes them a twelfth smaller in more than twice the time.
constexpr int level = 2;

// Compresses one member at a time.
class Compressor {
 public:
  Compressor() : state_(libdeflate_alloc_compressor(level)) {
    if (state_ == nullptr) throw std::bad_alloc();
  }
  std::string_view compress(std::string_view bytes) {
    member_.resize(libdeflate_gzip_compress_bound(state_.get(), bytes.size()));
    const std::size_t size = libdeflate_gzip_compress(state_.get(), bytes.data(), bytes.size(),
                                                      member_.data(), member_.size());
    return std::string_view(member_).substr(0, size);
  }

 private:
  struct Free {
    void operator()(libdeflate_compressor* state) const { libdeflate_free_compressor(state); }
  };
  std::unique_ptr<libdeflate_compressor, Free> state_;
  std::string member_;
};

#else

constexpr int level = 6;

class Compressor {
 public:
  Compressor() {
    constexpr int gzip_window = 15 + 16;
    constexpr int memory = 8;
    if (deflateInit2(&state_, level, Z_DEFLATED, gzip_window, memory, Z_DEFAULT_STRATEGY) != Z_OK)
      throw std::bad_alloc();
  }
  ~Compressor() { deflateEnd(&state_); }
  Compressor(const Compressor&) = delete;
  Compressor& operator=(const Compressor&) = delete;

  std::string_view compress(std::string_view bytes) {
    deflateReset(&state_);
    member_.resize(deflateBound(&state_, bytes.size()));
    state_.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(bytes.data()));
    state_.avail_in = static_cast<uInt>(bytes.size());
    state_.next_out = reinterpret_cast<Bytef*>(member_.data());
    state_.avail_out = static_cast<uInt>(member_.size());
    if (deflate(&state_, Z_FINISH) != Z_STREAM_END) throw WriteError("cannot compress");
    return std::string_view(member_).substr(0, state_.total_out);
  }

 private:
  z_stream state_{};
  std::string member_;
};

#endif

class GzipSink final : public ByteSink {
 public:
  explicit GzipSink(std::unique_ptr<ByteSink> to) : to_(std::move(to)) {}

  void write(std::string_view bytes) override {
    waiting_.append(bytes);
    if (waiting_.size() >= member_bytes) flush();
  }
  void close() override {
    if (!waiting_.empty() || !has_member_) flush();
    to_->close();
  }

 private:
  void flush() {
    to_->write(compressor_.compress(waiting_));
    waiting_.clear();
    has_member_ = true;
  }

  std::unique_ptr<ByteSink> to_;
  Compressor compressor_;
  std::string waiting_;
  bool has_member_ = false;
};

}  // namespace

std::unique_ptr<ByteSink> make_gzip_sink(std::unique_ptr<ByteSink> to) {
  return std::make_unique<GzipSink>(std::move(to));
}

std::string gzipped(std::string_view bytes) {
  return std::string(Compressor().compress(bytes));
}

}  // namespace gzdtool
