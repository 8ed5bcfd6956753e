// Inflates the body of a compressed recording to /dev/null: the least that any reader of such files
// has to do.
#include <zlib.h>

#include <cstdio>
#include <cstring>
#include <memory>
#include <vector>

namespace {

constexpr std::size_t piece = std::size_t{128} * 1024;

struct Closer {
  void operator()(std::FILE* file) const { std::fclose(file); }
};
using File = std::unique_ptr<std::FILE, Closer>;

bool skip_preamble(std::FILE* in) {
  char line[256];
  while (std::fgets(line, sizeof line, in) != nullptr)
    if (std::strcmp(line, "ENDP:\n") == 0) return true;
  return false;
}

bool inflate_all(z_stream& stream, std::FILE* in, std::FILE* out) {
  std::vector<Bytef> packed(piece), plain(piece);
  int result = Z_OK;
  while (result == Z_OK) {
    if (stream.avail_in == 0) {
      stream.next_in = packed.data();
      stream.avail_in = static_cast<uInt>(std::fread(packed.data(), 1, piece, in));
      if (stream.avail_in == 0) return false;
    }
    stream.next_out = plain.data();
    stream.avail_out = piece;
    result = inflate(&stream, Z_NO_FLUSH);
    std::fwrite(plain.data(), 1, piece - stream.avail_out, out);
  }
  return result == Z_STREAM_END;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) {
    std::fprintf(stderr, "Usage: inflate_only RECORDING.gzd\n");
    return 2;
  }
  const File in(std::fopen(argv[1], "rb"));
  const File out(std::fopen("/dev/null", "wb"));
  z_stream stream{};
  if (!in || !out || !skip_preamble(in.get()) || inflateInit(&stream) != Z_OK) return 1;
  const bool done = inflate_all(stream, in.get(), out.get());
  inflateEnd(&stream);
  return done ? 0 : 1;
}
