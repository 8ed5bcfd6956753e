#include "stream/zipread.h"

#include <zlib.h>

#include <cstring>
#include <memory>

#include "gzd_data.h"

namespace gzd {

namespace {

// Of a damaged stream, what the piece at hand has produced is lost.
constexpr std::size_t CHUNK = 16384;
// Pieces are written together: the system takes much at a time faster, at multiples of the size.
constexpr std::size_t WRITTEN_AT_ONCE = 128 * 1024;
// Records are read up to 2147400000; the longest that begins there ends well before this.
constexpr INT64 LARGEST_OUTPUT = INT64{2147400000} + 1024 * 1024;

class Inflater {
 public:
  Inflater(FILE* source, FILE* target)
      : in(source),
        out(target),
        input(std::make_unique_for_overwrite<byte[]>(CHUNK)),
        output(std::make_unique_for_overwrite<byte[]>(WRITTEN_AT_ONCE + CHUNK)) {
    startResult = inflateInit(&stream);
  }
  Inflater(const Inflater&) = delete;
  Inflater& operator=(const Inflater&) = delete;
  ~Inflater() {
    if (startResult == Z_OK) inflateEnd(&stream);
  }

  int run() {
    if (startResult == Z_MEM_ERROR) return UNCOMPRESS_NO_MEMORY;
    if (startResult != Z_OK) return startResult;
    const int result = inflateAll();
    return write(filled) ? result : UNCOMPRESS_IO_ERROR;
  }

 private:
  int inflateAll() {
    while (!ended) {
      stream.avail_in = static_cast<uInt>(std::fread(input.get(), 1, CHUNK, in));
      if (std::ferror(in) != 0) return UNCOMPRESS_IO_ERROR;
      if (stream.avail_in == 0) return UNCOMPRESS_DATA_ERROR;
      stream.next_in = input.get();
      const int result = inflateInput();
      if (result != UNCOMPRESS_OK) return result;
    }
    return UNCOMPRESS_OK;
  }

  // Inflates what lies in the input buffer, in as many pieces as it takes.
  int inflateInput() {
    do {
      stream.avail_out = CHUNK;
      stream.next_out = output.get() + filled;
      const int result = inflate(&stream, Z_NO_FLUSH);
      if (result == Z_NEED_DICT || result == Z_DATA_ERROR) return UNCOMPRESS_DATA_ERROR;
      if (result == Z_MEM_ERROR) return UNCOMPRESS_NO_MEMORY;
      const std::size_t produced = CHUNK - stream.avail_out;
      filled += produced;
      if (filled >= WRITTEN_AT_ONCE && !write(WRITTEN_AT_ONCE)) return UNCOMPRESS_IO_ERROR;
      inflated += static_cast<INT64>(produced);
      ended = result == Z_STREAM_END || inflated > LARGEST_OUTPUT;
    } while (!ended && stream.avail_out == 0);
    return UNCOMPRESS_OK;
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
