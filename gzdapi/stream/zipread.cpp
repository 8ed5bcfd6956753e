#include "stream/zipread.h"

#include <zlib.h>

#include <cstring>
#include <memory>

#include "gzd_data.h"

namespace gzd {

namespace {

// Of a damaged stream, what the piece at hand has produced is lost.
constexpr std::size_t chunk_size = 16384;
// Pieces are written together: the system takes much at a time faster, at multiples of the size.
constexpr std::size_t written_at_once = 128 * 1024;
// Records are read up to 2147400000; the longest that begins there ends well before this.
constexpr INT64 largest_output = INT64{2147400000} + 1024 * 1024;

class Inflater {
 public:
  Inflater(FILE* source, FILE* target)
      : in(source),
        out(target),
        input(std::make_unique_for_overwrite<byte[]>(chunk_size)),
        output(std::make_unique_for_overwrite<byte[]>(written_at_once + chunk_size)) {
    startResult = inflateInit(&stream);
  }
  Inflater(const Inflater&) = delete;
  Inflater& operator=(const Inflater&) = delete;
  ~Inflater() {
    if (startResult == Z_OK) inflateEnd(&stream);
  }

  int run() {
    if (startResult == Z_MEM_ERROR) return uncompress_no_memory;
    if (startResult != Z_OK) return startResult;
    const int result = inflateAll();
    return write(filled) ? result : uncompress_io_error;
  }

 private:
  int inflateAll() {
    while (!ended) {
      stream.avail_in = static_cast<uInt>(std::fread(input.get(), 1, chunk_size, in));
      if (std::ferror(in) != 0) return uncompress_io_error;
      if (stream.avail_in == 0) return uncompress_data_error;
      stream.next_in = input.get();
      const int result = inflateInput();
      if (result != uncompress_ok) return result;
    }
    return uncompress_ok;
  }

  // Inflates what lies in the input buffer, in as many pieces as it takes.
  int inflateInput() {
    do {
      stream.avail_out = chunk_size;
      stream.next_out = output.get() + filled;
      const int result = inflate(&stream, Z_NO_FLUSH);
      if (result == Z_NEED_DICT || result == Z_DATA_ERROR) return uncompress_data_error;
      if (result == Z_MEM_ERROR) return uncompress_no_memory;
      const std::size_t produced = chunk_size - stream.avail_out;
      filled += produced;
      if (filled >= written_at_once && !write(written_at_once)) return uncompress_io_error;
      inflated += static_cast<INT64>(produced);
      ended = result == Z_STREAM_END || inflated > largest_output;
    } while (!ended && stream.avail_out == 0);
    return uncompress_ok;
  }

  // Writes the first `count` bytes of the output buffer; the others move up. When it fails they are
  // dropped: nothing is to follow a hole. Returns whether it was done.
  bool write(std::size_t count) {
    const bool done = std::fwrite(output.get(), 1, count, out) == count && std::ferror(out) == 0;
    filled = done ? filled - count : 0;
    std::memmove(output.get(), output.get() + count, filled);
    return done;
  }

  FILE* in;
  FILE* out;
  z_stream stream{};
  int startResult;
  std::unique_ptr<byte[]> input;
  std::unique_ptr<byte[]> output;
  std::size_t filled = 0;  // bytes of `output`
  INT64 inflated = 0;
  bool ended = false;
};

}  // namespace

int do_uncompress(FILE* in, FILE* out) {
  return Inflater(in, out).run();
}

}  // namespace gzd
