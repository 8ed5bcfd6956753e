// gzdconv as a process of its own.
#ifndef GZDTOOL_CONVERTER_H
#define GZDTOOL_CONVERTER_H

#include <sys/types.h>

#include <string>
#include <utility>
#include <vector>

namespace gzdtool {

// What is asked of the converter for every recording.
struct ConverterOptions {
  std::vector<std::string> words;  // its own options
  std::string program;             // its path; empty: the one beside this program, else of the PATH
  std::string directory;           // for the texts; empty: beside the recordings
  bool tells_findings = false;
};

// What it left behind.
struct ConverterResult {
  int status = 0;        // exit status, or 128 and the signal that ended it
  std::string messages;  // its standard error, and of a failed run its standard output
  std::string findings;  // JSON, when they are told
};

// Throws gzdtables::UsageError for options that the converter does not know, or that a run of many
// processes cannot have.
void check_converter_options(const ConverterOptions& options);

// The path of the text of a recording.
[[nodiscard]] std::string text_of_recording(const std::string& recording,
                                            const std::string& directory);

// A file of the process, closed by itself.
class Descriptor {
 public:
  explicit Descriptor(int number) : number_(number) {}
  ~Descriptor();
  Descriptor(Descriptor&& other) noexcept : number_(std::exchange(other.number_, -1)) {}
  Descriptor& operator=(Descriptor&&) = delete;
  [[nodiscard]] int number() const { return number_; }

 private:
  int number_;
};

// One conversion under way. Ends with the process that started it.
class Conversion {
 public:
  // Throws std::system_error when no process can be started.
  Conversion(const std::string& recording, const ConverterOptions& options);
  [[nodiscard]] pid_t process() const { return process_; }
  // When it has ended, with the status that wait gave.
  [[nodiscard]] ConverterResult result(int wait_status) const;

 private:
  Descriptor output_, errors_, findings_;
  pid_t process_ = -1;
};

}  // namespace gzdtool

#endif
