// Inflates piece by piece; what a damaged stream gave before the damage is kept.
#include "stream/zipread.h"

#include <zlib.h>

#include <cstring>
#include <memory>

#include "stream/MVIO.h"

namespace gzd {

namespace {

// Of a damaged stream, what the piece at hand has produced is lost.
constexpr std::size_t chunk_size = 16384;
// Pieces are written together: the system takes much at a time faster, at multiples of the size.
constexpr std::size_t written_at_once = 128 * 1024;
// The longest record that begins at the last place ends well before this.
constexpr INT64 largest_output = last_record_place + 1024 * 1024;

class Inflater {
 public:
  Inflater(FILE* source, FILE* target)
      : in_(source),
        out_(target),
        input_(std::make_unique_for_overwrite<byte[]>(chunk_size)),
        output_(std::make_unique_for_overwrite<byte[]>(written_at_once + chunk_size)) {
    startResult_ = inflateInit(&stream_);
  }
  Inflater(const Inflater&) = delete;
  Inflater& operator=(const Inflater&) = delete;
  ~Inflater() {
    if (startResult_ == Z_OK) inflateEnd(&stream_);
  }

  int run() {
    if (startResult_ == Z_MEM_ERROR) return uncompress_no_memory;
    if (startResult_ != Z_OK) return startResult_;
    const int result = inflateAll();
    if (stream_.avail_in != 0) std::fseek(in_, -static_cast<long>(stream_.avail_in), SEEK_CUR);
    return write(filled_) ? result : uncompress_io_error;
  }

 private:
  int inflateAll() {
    while (!ended_) {
      stream_.avail_in = static_cast<uInt>(std::fread(input_.get(), 1, chunk_size, in_));
      if (std::ferror(in_) != 0) return uncompress_io_error;
      if (stream_.avail_in == 0) return uncompress_data_error;
      stream_.next_in = input_.get();
      const int result = inflateInput();
      if (result != uncompress_ok) return result;
    }
    return uncompress_ok;
  }

  // Inflates what lies in the input buffer, in as many pieces as it takes.
  int inflateInput() {
    do {
      stream_.avail_out = chunk_size;
      stream_.next_out = output_.get() + filled_;
      const int result = inflate(&stream_, Z_NO_FLUSH);
      if (result == Z_NEED_DICT || result == Z_DATA_ERROR) return uncompress_data_error;
      if (result == Z_MEM_ERROR) return uncompress_no_memory;
      const std::size_t produced = chunk_size - stream_.avail_out;
      filled_ += produced;
      if (filled_ >= written_at_once && !write(written_at_once)) return uncompress_io_error;
      inflated_ += static_cast<INT64>(produced);
      ended_ = result == Z_STREAM_END || inflated_ > largest_output;
    } while (!ended_ && stream_.avail_out == 0);
    return uncompress_ok;
  }

  // Writes the first `count` bytes of the output buffer; the others move up. When it fails they are
  // dropped: nothing is to follow a hole. Returns whether it was done.
  bool write(std::size_t count) {
    const bool done = std::fwrite(output_.get(), 1, count, out_) == count && std::ferror(out_) == 0;
    filled_ = done ? filled_ - count : 0;
    std::memmove(output_.get(), output_.get() + count, filled_);
    return done;
  }

  FILE* in_;
  FILE* out_;
  z_stream stream_{};
  int startResult_;
  std::unique_ptr<byte[]> input_;
  std::unique_ptr<byte[]> output_;
  std::size_t filled_ = 0;  // bytes of `output_`
  INT64 inflated_ = 0;
  bool ended_ = false;
};

}  // namespace

int do_uncompress(FILE* in, FILE* out) {
  return Inflater(in, out).run();
}

}  // namespace gzd
