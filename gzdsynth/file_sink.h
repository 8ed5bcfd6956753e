// A file that bytes are poured into, as they are or as one zlib stream.
#ifndef GZDSYNTH_FILE_SINK_H
#define GZDSYNTH_FILE_SINK_H

#include <zlib.h>

#include <cstdio>
#include <memory>
#include <string>

#include "byte_layout.h"

namespace gzdsynth {

// Every function throws std::runtime_error with a text for the user when the file fails.
class FileSink {
 public:
  // Creates the file or empties it.
  explicit FileSink(std::string path);
  ~FileSink();
  FileSink(const FileSink&) = delete;
  FileSink& operator=(const FileSink&) = delete;

  void write(const Bytes& bytes);

  // Deflates all that is written from now on.
  void begin_compression();

  // Ends the zlib stream and closes the file. A sink that is destroyed without it leaves an
  // incomplete file.
  void close();

 private:
  void store(const std::uint8_t* data, std::size_t size);
  void deflate_input(const Bytes& bytes, int flush);
  [[noreturn]] void fail(const std::string& what) const;

  std::string path_;
  std::FILE* file_;
  std::unique_ptr<z_stream> zip_;
  Bytes zipped_;
};

// The zlib stream of `plain`.
[[nodiscard]] Bytes deflated(const Bytes& plain);

}  // namespace gzdsynth

#endif
