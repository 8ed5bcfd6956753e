// Banner, progress, warnings and failures on the console and in the log file.
#include "cli/console.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <string_view>

#include "cli/options.h"
#include "cli/visible_text.h"
#include "gzd.h"

namespace gzdconv {

namespace {

constexpr int box_width = 79;
constexpr int box_text_width = box_width - 2;
constexpr std::size_t preamble_mark = 2;  // the "**" of every preamble line
constexpr int bar_length = 10;

FILE* log_file = nullptr;
bool library_made_visible = false;  // what it logs goes to a terminal
int shown_percentage = -1;

void print_filling(int count) {
  for (; count > 0; --count) std::putchar('=');
}

void print_preamble_line(std::string_view line) {
  line.remove_prefix(std::min(preamble_mark, line.size()));
  std::printf("|%-*s|\n", box_text_width, shown_text(line).c_str());
}

void log_arguments(const char* fmt, std::va_list arguments) {
  if (log_file != nullptr) std::vfprintf(log_file, fmt, arguments);
}

bool is_terminal(int descriptor) {
  return isatty(descriptor) == 1;
}

// The text itself goes to the log data file; its lines stay lines on a terminal.
void log_library_message(const char* message) {
  std::fputs(library_made_visible ? visible(message, "\n\r\t").c_str() : message, stdout);
  if (log_file != nullptr) std::fputs(message, log_file);
}

}  // namespace

void print_banner() {
  std::printf("\nGZDCONV: Ovilo GZD file -> ASCII (text) file translator\n");
  print_version();
  std::printf("\n");
}

void print_version() {
  std::printf("GZDCONV version %s \n", gzd_get_version());
}

void print_box(const char* text) {
  const int length = static_cast<int>(std::min<std::size_t>(std::strlen(text), box_width));
  const int before = (box_width - length) / 2;
  print_filling(before);
  std::fputs(text, stdout);
  print_filling(box_width - length - before);
  std::printf("\n");
}

void print_preamble_text(const char* file_name, const char* text) {
  print_box(("Preamble of file " + shown_text(file_name)).c_str());
  std::string_view rest = text;
  while (!rest.empty()) {
    const std::size_t length = std::min(rest.find('\n'), rest.size());
    print_preamble_line(rest.substr(0, length));
    rest.remove_prefix(std::min(length + 1, rest.size()));
  }
  print_filling(box_width);
  std::printf("\n\n");
}

void print_percentage(int percent) {
  if (percent == shown_percentage) return;
  shown_percentage = percent;
  const int stars = std::clamp(percent / 10, 0, bar_length);
  std::printf("Processed [%-*.*s]%d%%\r", bar_length, stars, "**********", percent);
  std::fflush(stdout);
}

void Progress::show() {
  const std::uint64_t percent = 100 * seen_ / count_;
  next_ = ((percent + 1) * count_ + 99) / 100;
  print_percentage(static_cast<int>(percent));
}

void report(const char* fmt, ...) {
  std::va_list arguments, again;
  va_start(arguments, fmt);
  va_copy(again, arguments);
  std::vprintf(fmt, arguments);
  log_arguments(fmt, again);
  va_end(again);
  va_end(arguments);
}

void report_problem(const char* name, const char* problem) {
  std::fflush(stdout);  // what was said before comes first, wherever both go
  const bool raw = !is_terminal(STDERR_FILENO);
  std::fprintf(stderr, "gzdconv: %s: %s\n", raw ? name : visible(name).c_str(),
               raw ? problem : visible(problem).c_str());
}

void report_reason(const std::string& file_name, int error) {
  static std::string last_line;
  if (error == 0) return;
  const std::string line = file_name + ": " + std::strerror(error);
  if (line == last_line) return;
  last_line = line;
  report_problem(file_name.c_str(), std::strerror(error));
}

void warn(const char* fmt, ...) {
  std::va_list arguments, again;
  va_start(arguments, fmt);
  va_copy(again, arguments);
  if (!quiet) std::vprintf(fmt, arguments);
  log_arguments(fmt, again);
  va_end(again);
  va_end(arguments);
}

std::string shown_text(std::string_view text) {
  return is_terminal(STDOUT_FILENO) ? visible(text, "\t") : std::string(text);
}

void refuse_log_file(const std::string& name) {
  std::printf("Could not open log file %s \n", shown_text(name).c_str());
}

void hear_library() {
  library_made_visible = is_terminal(STDOUT_FILENO);
  const bool is_changed = library_made_visible || log_file != nullptr;
  gzd_set_log_function(is_changed ? reinterpret_cast<void*>(log_library_message) : nullptr);
}

bool open_log_file(const std::string& name) {
  close_log_file();
  log_file = std::fopen(name.c_str(), "w");
  if (log_file == nullptr) {
    const int reason = errno;
    refuse_log_file(name);
    report_reason(name, reason);
    return false;
  }
  std::setvbuf(log_file, nullptr, _IOLBF, BUFSIZ);  // complete also when the run ends early
  hear_library();
  return true;
}

void close_log_file() {
  if (log_file == nullptr) return;
  std::fclose(log_file);
  log_file = nullptr;
  hear_library();
}

}  // namespace gzdconv
