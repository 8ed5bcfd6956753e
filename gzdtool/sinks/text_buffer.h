// A buffer of text in front of a byte sink, and the pieces that are copied into it.
#ifndef GZDTOOL_TEXT_BUFFER_H
#define GZDTOOL_TEXT_BUFFER_H

#include <array>
#include <cstddef>
#include <cstring>
#include <memory>
#include <string>
#include <string_view>

#include "sinks/byte_sink.h"

namespace gzdtool {

// Writers of cells move a place in it along; room is asked for once a row, and for texts of any
// length as they come.
class TextBuffer {
 public:
  explicit TextBuffer(ByteSink& sink) : sink_(sink), bytes_(new char[capacity]) {}

  [[nodiscard]] char* begin() { return bytes_.get(); }
  // `place`, or the beginning when there is no room for so many bytes behind it.
  [[nodiscard]] char* reserve(char* place, std::size_t bytes) {
    return static_cast<std::size_t>(place - begin()) + bytes <= capacity ? place : flush(place);
  }
  [[nodiscard]] char* append(char* place, std::string_view text) {
    if (text.size() <= capacity) {
      place = reserve(place, text.size());
      return put(place, text);
    }
    place = flush(place);
    sink_.write(text);
    return place;
  }
  char* flush(const char* place) {
    sink_.write({begin(), static_cast<std::size_t>(place - begin())});
    return begin();
  }
  // Where room is known to be.
  [[nodiscard]] static char* put(char* place, std::string_view text) {
    std::memcpy(place, text.data(), text.size());
    return place + text.size();
  }

 private:
  static constexpr std::size_t capacity = 1 << 18;

  ByteSink& sink_;
  std::unique_ptr<char[]> bytes_;
};

// A short text that is copied whole, whatever its length: a jump costs more than a few bytes.
class Snippet {
 public:
  explicit Snippet(std::string_view text) : size_(text.size()) {
    if (size_ <= bytes_.size())
      text.copy(bytes_.data(), size_);
    else
      long_ = text;
  }
  [[nodiscard]] std::size_t size() const { return size_; }
  // Writes up to 16 bytes more than it counts.
  [[nodiscard]] char* put(char* place) const {
    if (size_ > bytes_.size()) [[unlikely]]
      return TextBuffer::put(place, long_);
    std::memcpy(place, bytes_.data(), bytes_.size());
    return place + size_;
  }

 private:
  std::array<char, 16> bytes_{};
  std::size_t size_;
  std::string long_;
};

}  // namespace gzdtool

#endif
