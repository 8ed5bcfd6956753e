// What limit reads from and writes to: one buffer each, handed out as bare bytes.
#ifndef BENCH_LIMIT_BUFFERS_H
#define BENCH_LIMIT_BUFFERS_H

#include <fcntl.h>
#include <unistd.h>

#include <bit>
#include <cstdint>
#include <cstring>
#include <stdexcept>
#include <vector>

using Byte = unsigned char;
static_assert(std::endian::native == std::endian::little);

inline unsigned word_at(const Byte* p) {
  std::uint16_t word;
  std::memcpy(&word, p, sizeof word);
  return __builtin_bswap16(word);
}

inline std::uint32_t integer_at(const Byte* p) {
  std::uint32_t value;
  std::memcpy(&value, p, sizeof value);
  return __builtin_bswap32(value);
}

[[noreturn]] inline void refuse(const char* what) {
  throw std::runtime_error(what);
}

// ---- input --------------------------------------------------------------------------------------

inline constexpr std::size_t read_size = std::size_t{256} * 1024;
inline constexpr std::size_t longest_record = 4096;

// A window of the file. As long as `next` lies before stop(), a whole record follows it; behind the
// end of the file follow zeros, which end the record stream.
class Input {
 public:
  explicit Input(const char* path) : file_(open(path, O_RDONLY | O_CLOEXEC)), buffer_(room) {
    if (file_ < 0) refuse("cannot open the recording");
    next = buffer_.data();
    refill();
  }
  ~Input() { close(file_); }
  Input(const Input&) = delete;
  Input& operator=(const Input&) = delete;

  [[nodiscard]] const Byte* stop() const { return at_end_ ? end() : end() - longest_record; }
  // Brings more behind `next`; false at the end of the file.
  bool refill() {
    if (at_end_) return false;
    filled_ -= static_cast<std::size_t>(next - buffer_.data());
    std::memmove(buffer_.data(), next, filled_);
    next = buffer_.data();
    const ssize_t count = read(file_, buffer_.data() + filled_, read_size);
    if (count < 0) refuse("cannot read the recording");
    at_end_ = count == 0;
    filled_ += static_cast<std::size_t>(count);
    if (at_end_) std::memset(buffer_.data() + filled_, 0, longest_record);
    return true;
  }

  const Byte* next;

 private:
  static constexpr std::size_t room = read_size + 2 * longest_record;

  [[nodiscard]] const Byte* end() const { return buffer_.data() + filled_; }

  int file_;
  std::vector<Byte> buffer_;
  std::size_t filled_ = 0;
  bool at_end_ = false;
};

// ---- output -------------------------------------------------------------------------------------

inline constexpr std::size_t write_size = std::size_t{128} * 1024;
inline constexpr std::size_t longest_line = 128;

class Output {
 public:
  explicit Output(const char* path)
      : file_(open(path, O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666)),
        buffer_(write_size + longest_line) {
    if (file_ < 0) refuse("cannot open the output file");
  }
  ~Output() { close(file_); }
  Output(const Output&) = delete;
  Output& operator=(const Output&) = delete;

  char* begin() { return buffer_.data(); }
  [[nodiscard]] const char* full() const { return buffer_.data() + write_size; }
  // Writes a full piece, so that all pieces lie at offsets of their size, and returns where the
  // text up to `end` goes on.
  char* write_piece(const char* end) {
    write_up_to(full());
    const auto rest = static_cast<std::size_t>(end - full());
    std::memcpy(begin(), full(), rest);
    return begin() + rest;
  }
  // Writes what lies before `end`.
  void write_up_to(const char* end) {
    for (const char* from = begin(); from != end;) {
      const ssize_t count = write(file_, from, static_cast<std::size_t>(end - from));
      if (count < 0) refuse("cannot write the output file");
      from += count;
    }
  }

 private:
  int file_;
  std::vector<char> buffer_;
};

#endif
