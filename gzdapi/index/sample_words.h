// Words of 64 bits in order, each of which most often lies a step above the one before, the step of
// the one before that: the index holds its samples so. Such words take next to no memory.
//
// They lie in pages. A page holds its regular runs, a few dozen bytes each, or, where there are too
// many of these, the words themselves.
#ifndef GZDAPI_SAMPLE_WORDS_H
#define GZDAPI_SAMPLE_WORDS_H

#include <cstddef>
#include <vector>

#include "gzd_data.h"

namespace gzd {

class SampleWords {
 public:
  // Some words that follow one another. Valid until the words change.
  struct Run {
    const UINT64* words = nullptr;  // null when they are regular
    UINT64 first = 0;
    UINT64 step = 0;
    std::size_t count = 0;

    UINT64 operator[](std::size_t i) const {
      return words != nullptr ? words[i] : first + i * step;
    }
  };

  SampleWords() = default;
  SampleWords(SampleWords&&) = default;
  SampleWords& operator=(SampleWords&&) = default;

  [[nodiscard]] std::size_t size() const { return size_; }
  // Of memory that the words take.
  [[nodiscard]] UINT64 bytes() const { return bytes_; }
  [[nodiscard]] UINT64 operator[](std::size_t number) const {
    const std::size_t behind = number - newestFirst_;
    return behind < newest_.count ? newest_[behind] : lookUp(number);
  }
  // The words from this one on, at least one, as far as they can be told together.
  [[nodiscard]] Run runFrom(std::size_t number) const;

  void push_back(UINT64 word) {
    if (word == next_ && size_ % page_size != 0) {
      ++size_;
      next_ += step_;
    } else {
      begin(word);
    }
  }
  void append(const Run& run);
  // Adds words of another list, from `first` up to `last`, with these bits set.
  void append(const SampleWords& other, std::size_t first, std::size_t last, UINT64 bits = 0);
  // Puts words in the place of as many, from `first` on.
  void replace(std::size_t first, const std::vector<UINT64>& words);

 private:
  static constexpr std::size_t page_size = 1024;
  static constexpr UINT64 no_word = ~UINT64{0};  // is never added

  struct Piece {
    UINT64 first;
    UINT64 step;        // 0 for a single word
    std::size_t begin;  // its place in the page
  };
  // Beyond it the words themselves take less.
  static constexpr std::size_t most_pieces = page_size * sizeof(UINT64) / sizeof(Piece);
  // Either list is empty.
  struct Page {
    std::vector<Piece> pieces;
    std::vector<UINT64> words;

    [[nodiscard]] UINT64 bytes() const {
      return sizeof(Page) + sizeof(Piece) * pieces.capacity() + sizeof(UINT64) * words.capacity();
    }
  };

  // The piece that a place of a page lies in.
  static const Piece& pieceAt(const Page& page, std::size_t place);
  [[nodiscard]] Run runAt(std::size_t page, const Piece& piece) const;
  [[nodiscard]] std::size_t countIn(std::size_t page) const {
    const std::size_t behind = size_ - page * page_size;
    return behind < page_size ? behind : page_size;
  }
  UINT64 lookUp(std::size_t number) const;
  void begin(UINT64 word);
  void giveStep(Piece& single, UINT64 second);
  void add(Page& page, std::size_t place, UINT64 word);
  void addPage(const Page& page);
  void closePage();
  void expand(std::size_t number);
  UINT64& wordAt(std::size_t number) {
    return pages_[number / page_size].words[number % page_size];
  }

  std::vector<Page> pages_;
  std::size_t size_ = 0;
  UINT64 bytes_ = 0;
  UINT64 next_ = no_word;  // goes on with the last piece
  UINT64 step_ = 0;
  // The run looked up last, from this number on, and its piece when it has one.
  mutable Run newest_;
  mutable std::size_t newestFirst_ = 0;
  mutable std::size_t newestPiece_ = 0;
};

}  // namespace gzd

#endif
