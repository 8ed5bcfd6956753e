#include "asc/output.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cctype>
#include <cerrno>
#include <cstdarg>

#include "cli/console.h"
#include "cli/options.h"
#include "cli/text.h"

namespace gzdconv {

LineBuffer lpbuffer;

namespace {

constexpr int answer_room = 10;  // up to nine characters and a NUL
constexpr std::string_view utf8_mark = "\xEF\xBB\xBF";

std::string open_path;        // of options.out_file
char overwrite_answer = 'N';  // the last one, for the whole run

// The probe does not wait for a writer when a pipe has that name.
bool is_readable(const std::string& path) {
  const int file = open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
  if (file < 0) return false;
  close(file);
  return true;
}

void ask_to_overwrite(const std::string& path) {
  std::printf("%s already exists. Do you want to overwrite ? [Y/N/A]", path.c_str());
  std::fflush(stdout);
  char answer[answer_room] = "N";
  if (std::fgets(answer, sizeof answer, stdin) == nullptr) answer[0] = 'N';
  overwrite_answer = static_cast<char>(std::toupper(static_cast<unsigned char>(answer[0])));
}

bool may_write(const std::string& path) {
  if (options.overwrite || !is_readable(path) || overwrite_answer == 'A') return true;
  ask_to_overwrite(path);
  return overwrite_answer == 'A' || overwrite_answer == 'Y';
}

void remove_regular_file(const std::string& path) {
  struct stat status;
  if (lstat(path.c_str(), &status) == 0 && S_ISREG(status.st_mode)) unlink(path.c_str());
}

int fail_to_open(const std::string& path, int reason) {
  report("Could not open output file %s \n", path.c_str());
  report_reason(path, reason);
  return 1;
}

std::string format_text(const char* fmt, std::va_list arguments, std::size_t length) {
  std::string text(length + 1, '\0');
  std::vsnprintf(text.data(), text.size(), fmt, arguments);
  text.resize(length);
  return text;
}

}  // namespace

void LineBuffer::write(std::string_view text) {
  if (text.size() > line_room) {
    flush();
    send(text.data(), text.size());
    return;
  }
  begin_line();
  append(text);
  begin_line();
}

void LineBuffer::flush() {
  send(bytes_, size());
  cursor_ = bytes_;
}

void LineBuffer::send_whole_pieces() {
  const std::size_t rest = (sent_ + size()) % flush_size;
  const std::size_t whole = size() - rest;
  send(bytes_, whole);
  std::memmove(bytes_, bytes_ + whole, rest);
  cursor_ = bytes_ + rest;
}

void LineBuffer::send(const char* text, std::size_t length) {
  FILE* const file = options.out_file != nullptr ? options.out_file : stdout;
  if (failed_ || length == 0) return;
  errno = 0;
  if (std::fwrite(text, 1, length, file) != length) fail(errno);
  sent_ += length;
}

void print(const char* fmt, ...) {
  lpbuffer.begin_line();
  std::va_list arguments, again;
  va_start(arguments, fmt);
  va_copy(again, arguments);
  char* const place = lpbuffer.cursor();
  const int length = std::vsnprintf(place, LineBuffer::line_room, fmt, arguments);
  if (length < 0) lpbuffer.fail(errno);
  const auto count = static_cast<std::size_t>(length < 0 ? 0 : length);
  if (count < LineBuffer::line_room) {
    lpbuffer.set_cursor(place + count);
    lpbuffer.begin_line();
  } else {
    lpbuffer.write(format_text(fmt, again, count));
  }
  va_end(again);
  va_end(arguments);
  if (options.out_file == nullptr) lpbuffer.flush();
}

bool is_same_file(const std::string& one, const std::string& other) {
  struct stat first, second;
  return stat(one.c_str(), &first) == 0 && stat(other.c_str(), &second) == 0 &&
         first.st_dev == second.st_dev && first.st_ino == second.st_ino;
}

std::string output_path(const std::string& name) {
  std::string path =
      options.output_dir.empty() ? name : options.output_dir + std::string(path_tail(name));
  const std::size_t dot = rfind(path, '.');
  if (dot == std::string::npos) return path + ".asc";
  return path.replace(dot + 1, std::string::npos, "asc");
}

int open_output_file(const std::string& name, const std::string& input) {
  close_output_file();
  const std::string path = output_path(name);
  if (is_same_file(path, input)) return fail_to_open(path, 0);
  if (!may_write(path)) return 1;
  open_path = path;  // before the file is there: this may fail
  options.out_file = std::fopen(path.c_str(), "w");
  if (options.out_file == nullptr) return fail_to_open(path, errno);
  lpbuffer.begin_file();
  std::setvbuf(options.out_file, nullptr, _IONBF, 0);  // lpbuffer collects the lines
  if (!options.utf8) return 0;
  lpbuffer.write(utf8_mark);
  lpbuffer.flush();
  return lpbuffer.failed() && close_output_file() != 0 ? 1 : 0;
}

int close_output_file() {
  if (options.out_file == nullptr) return 0;
  lpbuffer.flush();
  const bool closed = std::fclose(options.out_file) == 0;
  const int reason = lpbuffer.failed() ? lpbuffer.reason() : errno;
  options.out_file = nullptr;
  if (closed && !lpbuffer.failed()) return 0;
  lpbuffer.forget_failure();
  report("Failed write to output file %s \n", open_path.c_str());
  report_reason(open_path, reason);
  remove_regular_file(open_path);
  return -1;
}

void discard_output_file() {
  if (options.out_file == nullptr) return;
  lpbuffer.forget_text();
  std::fclose(options.out_file);
  options.out_file = nullptr;
  lpbuffer.forget_failure();
  remove_regular_file(open_path);
}

}  // namespace gzdconv
