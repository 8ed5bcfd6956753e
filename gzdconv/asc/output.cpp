// Sends lines to the ASC file or standard output, and decides which file may be written.
#include "asc/output.h"

#include <cctype>
#include <cerrno>
#include <cstdarg>
#include <cstring>
#include <map>

#include "asc/asc_file.h"
#include "cli/console.h"
#include "cli/files.h"
#include "cli/options.h"
#include "cli/text.h"

namespace gzdconv {

LineBuffer lpbuffer;

namespace {

constexpr std::string_view utf8_mark = "\xEF\xBB\xBF";

AscFile asc_file;             // of lpbuffer
std::string open_input;       // the recording that it is made of
char overwrite_answer = 'N';  // the last one, for the whole run

// The texts of this run, and the recordings that they were made of.
std::map<FileId, std::string> finished_texts;

// The first character of a line, in capitals; 'N' at the end of input.
char read_answer() {
  const int first = std::getchar();
  for (int next = first; next != '\n' && next != EOF;) next = std::getchar();
  return first == EOF ? 'N' : static_cast<char>(std::toupper(first));
}

void ask_to_overwrite(const std::string& path) {
  std::printf("%s already exists. Do you want to overwrite ? [Y/N/A]", shown_text(path).c_str());
  std::fflush(stdout);
  overwrite_answer = read_answer();
}

bool may_write(const std::string& path) {
  if (options.overwrite || why_not_readable(path) != 0 || overwrite_answer == 'A') return true;
  ask_to_overwrite(path);
  return overwrite_answer == 'A' || overwrite_answer == 'Y';
}

int fail_to_open(const std::string& path, int reason) {
  report("Could not open output file %s \n", shown_text(path).c_str());
  if (reason == EWOULDBLOCK)
    report_problem(path.c_str(), "another process is writing this text");
  else if (reason == EEXIST)
    report_problem(path.c_str(), "the name with .part behind it is taken");
  else
    report_reason(path, reason);
  return 1;
}

// True when the text, or its part, would write over the recording or over another one.
bool is_recording(const std::string& path, const std::string& input) {
  return is_same_file(path, input) || is_same_file(path + AscFile::part_ending, input) ||
         kind_of_file(path) == FileKind::recording;
}

// The other recording that the text `path` was made of in this run, or null.
const std::string* made_of_another(const std::string& path, const std::string& input) {
  const std::optional<FileId> id = file_id(path);
  const auto text = id ? finished_texts.find(*id) : finished_texts.end();
  if (text == finished_texts.end() || is_same_place(text->second, input)) return nullptr;
  return &text->second;
}

int refuse(const std::string& path, const std::string& why) {
  fail_to_open(path, 0);
  report_problem(path.c_str(), why.c_str());
  return 1;
}

int fail_to_write(int reason) {
  asc_file.discard();
  lpbuffer.forget_failure();
  report("Failed write to output file %s \n", shown_text(asc_file.path()).c_str());
  report_reason(asc_file.path(), reason);
  return -1;
}

// Before it has its name: what fails here fails the text.
void remember_text() {
  if (const std::optional<FileId> before = file_id(asc_file.path())) finished_texts.erase(*before);
  if (const std::optional<FileId> id = asc_file.id()) finished_texts[*id] = open_input;
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
  FILE* const file = file_ != nullptr ? file_ : stdout;
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
  if (lpbuffer.file() == nullptr) lpbuffer.flush();
}

std::string output_path(const std::string& name) {
  std::string path =
      options.output_dir.empty() ? name : options.output_dir + std::string(path_tail(name));
  const std::size_t dot = rfind(path, '.');
  if (dot == std::string::npos) return path + ".asc";
  return path.replace(dot + 1, std::string::npos, "asc");
}

void begin_run() {
  finished_texts.clear();
  overwrite_answer = 'N';
}

int open_output_file(const std::string& name, const std::string& input) {
  close_output_file();
  const std::string path = output_path(name);
  if (is_recording(path, input)) return refuse(path, "is a recording");
  if (const std::string* const first = made_of_another(path, input))
    return refuse(path, "is the text of " + *first + " already");
  if (!may_write(path)) return 1;
  open_input = input;  // before the file is there: this may fail
  FILE* const file = asc_file.open(path);
  if (file == nullptr) return fail_to_open(path, errno);
  lpbuffer.begin_file(file);
  if (!options.utf8) return 0;
  lpbuffer.write(utf8_mark);
  lpbuffer.flush();
  return lpbuffer.failed() && close_output_file() != 0 ? 1 : 0;
}

int close_output_file() {
  if (lpbuffer.file() == nullptr) return 0;
  lpbuffer.flush();
  lpbuffer.end_file();
  if (lpbuffer.failed()) return fail_to_write(lpbuffer.reason());
  remember_text();
  return asc_file.finish() ? 0 : fail_to_write(errno);
}

void discard_output_file() {
  if (lpbuffer.file() != nullptr) lpbuffer.forget_text();
  lpbuffer.end_file();
  lpbuffer.forget_failure();
  asc_file.discard();
}

}  // namespace gzdconv
