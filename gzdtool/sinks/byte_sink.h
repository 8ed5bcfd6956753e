// Where bytes go: standard output, or a file that appears under its name when it is whole,
// compressed when the name says so.
#ifndef GZDTOOL_BYTE_SINK_H
#define GZDTOOL_BYTE_SINK_H

#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>

namespace gzdtool {

// Output that cannot be written. `what()` is a sentence for the user.
class WriteError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

class ByteSink {
 public:
  ByteSink() = default;
  virtual ~ByteSink() = default;
  ByteSink(const ByteSink&) = delete;
  ByteSink& operator=(const ByteSink&) = delete;

  // Throw WriteError.
  virtual void write(std::string_view bytes) = 0;
  // Makes what was written whole; nothing is written behind it. A sink that goes without it leaves
  // nothing under the name of its file.
  virtual void close() = 0;
};

// "-" is standard output; a name that ends in ".gz" is compressed. A file that exists is replaced
// when the new one is whole; what is no ordinary file (a device, a pipe) is written in place.
[[nodiscard]] std::unique_ptr<ByteSink> open_byte_sink(const std::string& name);

// Writes a whole file, or whatever else the name stands for. Throws WriteError.
void write_file(const std::string& name, std::string_view text);

// Makes a folder and those that it lies in, where they are not there yet. Throws WriteError.
void make_folder(const std::string& path);

// Whether the name stands for standard output and that is a terminal.
[[nodiscard]] bool is_terminal(const std::string& name);

}  // namespace gzdtool

#endif
