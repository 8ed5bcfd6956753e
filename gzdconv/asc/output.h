// The one writer of ASC text: a buffer of lines in front of the output file.
//
// Cold lines go through print(). Hot lines are built by straight appends:
//
//     lpbuffer.begin_line();
//     lpbuffer.append_unsigned(sample.time);
//     print_value(1, x);
//     lpbuffer.append('\n');
//
// A write that fails is remembered, later text is dropped, and close_output_file() tells.
#ifndef GZDCONV_OUTPUT_H
#define GZDCONV_OUTPUT_H

#include <cassert>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <string>
#include <string_view>
#include <type_traits>

namespace gzdconv {

class LineBuffer {
 public:
  // Pieces of this size, and at offsets of this size, cost the system a quarter less than others.
  static constexpr std::size_t flush_size = 131072;
  static constexpr std::size_t line_room = 32768;  // guaranteed after begin_line()

  // Makes room for a line of up to `line_room` bytes.
  void begin_line() {
    if (size() >= flush_size) send_whole_pieces();
  }

  // The appends do not check: all of one line together must fit into `line_room`.
  void append(char c) { *advance(1) = c; }
  void append(std::string_view text) { text.copy(advance(text.size()), text.size()); }
  void append_unsigned(std::uint64_t value);
  // The first `length` of the characters.
  void append(const char (&cell)[16], std::size_t length) {
    std::memcpy(cursor_, cell, sizeof cell);
    set_cursor(cursor_ + length);
  }

  // Direct access for number writers: write from cursor() on, then hand back the new end.
  char* cursor() { return cursor_; }
  void set_cursor(char* end) {
    assert(end >= bytes_ && end <= bytes_ + sizeof bytes_);
    cursor_ = end;
  }

  // Text of any length; makes its own room.
  void write(std::string_view text);

  // Hands everything to the open output file, or to standard output.
  void flush();

  // Takes `file`, borrowed, as the output file: nothing has gone there, nothing has failed.
  void begin_file(FILE* file) {
    forget_failure();
    file_ = file;
    sent_ = 0;
  }
  // Goes back to standard output.
  void end_file() { file_ = nullptr; }
  // The output file, or null.
  [[nodiscard]] FILE* file() const { return file_; }

  // Drops what has not been handed on.
  void forget_text() { cursor_ = bytes_; }

  // True when a write has failed since the last call of forget_failure().
  [[nodiscard]] bool failed() const { return failed_; }
  // The system's reason, a value of errno, or 0.
  [[nodiscard]] int reason() const { return reason_; }
  // To be called when text cannot be made or written, with the system's reason.
  void fail(int reason) {
    failed_ = true;
    reason_ = reason;
  }
  void forget_failure() {
    failed_ = false;
    reason_ = 0;
  }

 private:
  [[nodiscard]] std::size_t size() const { return static_cast<std::size_t>(cursor_ - bytes_); }
  char* advance(std::size_t count) {
    char* const place = cursor_;
    set_cursor(place + count);
    return place;
  }
  void send_whole_pieces();
  void send(const char* text, std::size_t length);

  static constexpr std::size_t overshoot = 16;  // number writers store whole words

  char bytes_[flush_size + line_room + overshoot];
  char* cursor_ = bytes_;
  FILE* file_ = nullptr;  // null: standard output
  std::size_t sent_ = 0;  // bytes of the output file so far
  bool failed_ = false;
  int reason_ = 0;
};

extern LineBuffer lpbuffer;

// Writes `fmt` with its arguments to the output file, or to standard output when none is open.
// Text of any length.
void print(const char* fmt, ...) __attribute__((format(printf, 1, 2)));

// Begins a line, or goes on with it, and appends texts, characters and unsigned numbers.
template <class... Parts>
void print_parts(const Parts&... parts) {
  const auto append = [](const auto& part) {
    if constexpr (std::is_same_v<std::decay_t<decltype(part)>, std::uint32_t>)
      lpbuffer.append_unsigned(part);
    else
      lpbuffer.append(part);
  };
  lpbuffer.begin_line();
  (append(parts), ...);
}

// The path of the ASC file for `name`: moved to options.output_dir, "asc" after its last ".".
std::string output_path(const std::string& name);

// Forgets the answers and the texts of the run before.
void begin_run();

// Opens the ASC file for `name`, asking before it overwrites; `input` is the recording itself,
// which is never overwritten, nor is any other. Returns 0, or 1 when no file was opened: declined,
// or a failure that has been printed, a text made of another recording of this run among them.
int open_output_file(const std::string& name, const std::string& input);

// Writes out what is left and closes the file, which takes its name. Returns 0, also when none is
// open, or -1 when any of it failed: that has been printed, and what was written is removed.
int close_output_file();

// Closes the file without writing out what is left, and removes what was written. Does nothing when
// none is open.
void discard_output_file();

}  // namespace gzdconv

#endif
