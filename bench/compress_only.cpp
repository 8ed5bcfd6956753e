// compress_only zlib|gzdtool TEXT: compresses a file in pieces of a megabyte, by zlib at level 6 or
// as gzdtool writes .gz, and throws the result away.
#include <zlib.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string>

#include "sinks/gzip_sink.h"

namespace {

constexpr std::size_t piece = 1 << 20;

class NoSink final : public gzdtool::ByteSink {
 public:
  void write(std::string_view) override {}
  void close() override {}
};

void by_gzdtool(std::string_view text) {
  const auto sink = gzdtool::make_gzip_sink(std::make_unique<NoSink>());
  for (; !text.empty(); text.remove_prefix(std::min(piece, text.size())))
    sink->write(text.substr(0, piece));
  sink->close();
}

void by_zlib(std::string_view text) {
  constexpr int level = 6;
  std::string to(compressBound(piece), '\0');
  for (; !text.empty(); text.remove_prefix(std::min(piece, text.size()))) {
    uLongf size = to.size();
    compress2(reinterpret_cast<Bytef*>(to.data()), &size,
              reinterpret_cast<const Bytef*>(text.data()), std::min(piece, text.size()), level);
  }
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 3) {
    std::fputs("Usage: compress_only zlib|gzdtool TEXT\n", stderr);
    return 2;
  }
  std::string text(std::filesystem::file_size(argv[2]), '\0');
  std::ifstream(argv[2], std::ios::binary)
      .read(text.data(), static_cast<std::streamsize>(text.size()));
  std::string_view(argv[1]) == "zlib" ? by_zlib(text) : by_gzdtool(text);
  return 0;
}
