// What the user sees while files are converted, and the log data file that keeps a copy of it.
#ifndef GZDCONV_CONSOLE_H
#define GZDCONV_CONSOLE_H

#include <cstdint>
#include <string>
#include <string_view>

namespace gzdconv {

void print_banner();

// The banner's second line.
void print_version();

// The usage text, with the program's own name in it.
void print_usage(const char* program);

// The usage text, and where the manual is.
void print_help(const char* program);

// Prints a line of 79 "=" with `text` in its middle.
void print_box(const char* text);

// Shows the preamble of a recording as a box.
void print_preamble_text(const char* file_name, const char* text);

// Shows the progress, unless that percentage is the one last shown.
void print_percentage(int percent);

// Counts the elements of one recording and shows the progress. Quiet when `element_count` is 0.
class Progress {
 public:
  explicit Progress(std::uint64_t element_count) : count_(element_count) {}
  void step() {
    if (++seen_ >= next_ && count_ != 0) show();
  }

 private:
  void show();

  std::uint64_t count_;
  std::uint64_t seen_ = 0;
  std::uint64_t next_ = 1;  // the element at which the percentage changes
};

// A failure or finding: to the console and to the log data file.
void report(const char* fmt, ...) __attribute__((format(printf, 1, 2)));

// `text` as standard output may have it: control characters are made visible for a terminal.
std::string shown_text(std::string_view text);

// What is wrong with a file or a word of the command line: one line on standard error. Allocates
// nothing, so that it can also tell that memory has run out.
void report_problem(const char* name, const char* problem);

// The system's reason, a value of errno, why something could not be done with a file: one line on
// standard error. Nothing when it is 0, there being none, or when that line was the last one.
void report_reason(const std::string& file_name, int error);

// Ends the conversion of a file whose surroundings fail it in the middle.
struct SystemFailure {
  int reason;  // a value of errno
};

// A warning of the run: the same, but a quiet run keeps it off the console.
void warn(const char* fmt, ...) __attribute__((format(printf, 1, 2)));

// Takes over what the library logs, when that goes to a terminal or to the log data file.
void hear_library();

// Tells that the log data file is none; why, a line on standard error is to tell.
void refuse_log_file(const std::string& name);

// Opens the log data file, which from then on also receives what the library logs. Returns false
// when it cannot be opened, which has been printed.
bool open_log_file(const std::string& name);
void close_log_file();

}  // namespace gzdconv

#endif
