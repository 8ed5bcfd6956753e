#include "zipread.h"

#include <zlib.h>

#include <memory>

#include "gzd_data.h"

namespace {

// Of a damaged stream, what the piece at hand has produced is lost.
constexpr std::size_t CHUNK = 16384;
// Records are read up to 2147400000; the longest that begins there ends well before this.
constexpr INT64 LARGEST_OUTPUT = INT64{2147400000} + 1024 * 1024;

class Inflater {
 public:
  Inflater() : buffers(std::make_unique_for_overwrite<byte[]>(2 * CHUNK)) {
    startResult = inflateInit(&stream);
  }
  Inflater(const Inflater&) = delete;
  Inflater& operator=(const Inflater&) = delete;
  ~Inflater() {
    if (startResult == Z_OK) inflateEnd(&stream);
  }

  int run(FILE* in, FILE* out) {
    if (startResult != Z_OK) return startResult;
    while (!ended) {
      stream.avail_in = static_cast<uInt>(std::fread(input(), 1, CHUNK, in));
      if (std::ferror(in) != 0) return UNCOMPRESS_IO_ERROR;
      if (stream.avail_in == 0) return UNCOMPRESS_DATA_ERROR;
      stream.next_in = input();
      const int result = inflateInput(out);
      if (result != UNCOMPRESS_OK) return result;
    }
    return UNCOMPRESS_OK;
  }

 private:
  // Inflates what lies in the input buffer, in as many pieces as it takes.
  int inflateInput(FILE* out) {
    do {
      stream.avail_out = CHUNK;
      stream.next_out = output();
      const int result = inflate(&stream, Z_NO_FLUSH);
      if (result == Z_NEED_DICT || result == Z_DATA_ERROR) return UNCOMPRESS_DATA_ERROR;
      if (result == Z_MEM_ERROR) return UNCOMPRESS_NO_MEMORY;
      const std::size_t produced = CHUNK - stream.avail_out;
      if (std::fwrite(output(), 1, produced, out) != produced || std::ferror(out) != 0) {
        return UNCOMPRESS_IO_ERROR;
      }
      written += static_cast<INT64>(produced);
      ended = result == Z_STREAM_END || written > LARGEST_OUTPUT;
    } while (!ended && stream.avail_out == 0);
    return UNCOMPRESS_OK;
  }

  byte* input() { return buffers.get(); }
  byte* output() { return buffers.get() + CHUNK; }

  z_stream stream{};
  int startResult;
  std::unique_ptr<byte[]> buffers;
  INT64 written = 0;
  bool ended = false;
};

}  // namespace

int do_uncompress(FILE* in, FILE* out) {
  return Inflater().run(in, out);
}
