// A word that does not go on with the run before it begins a new one, which takes its step from the
// word after it. Where words are to change, their pages hold the words themselves.
#include "index/sample_words.h"

#include <algorithm>
#include <bit>

namespace gzd {

const SampleWords::Piece& SampleWords::pieceAt(const Page& page, std::size_t place) {
  const auto next =
      std::upper_bound(page.pieces.begin(), page.pieces.end(), place,
                       [](std::size_t wanted, const Piece& piece) { return wanted < piece.begin; });
  return *(next - 1);
}

SampleWords::Run SampleWords::runAt(std::size_t page, const Piece& piece) const {
  const std::size_t end = &piece == &pages_[page].pieces.back() ? countIn(page) : (&piece)[1].begin;
  return {nullptr, piece.first, piece.step, end - piece.begin};
}

SampleWords::Run SampleWords::runFrom(std::size_t number) const {
  if (number - newestFirst_ >= newest_.count) static_cast<void>(lookUp(number));
  const std::size_t behind = number - newestFirst_;
  Run run = newest_;
  run.count -= behind;
  if (run.words != nullptr)
    run.words += behind;
  else
    run.first += behind * run.step;
  return run;
}

// Looks at the neighbours of the run looked up last first.
UINT64 SampleWords::lookUp(std::size_t number) const {
  const std::size_t place = number % page_size, page = number / page_size;
  const std::vector<Piece>& pieces = pages_[page].pieces;
  if (pieces.empty()) {
    newestFirst_ = number - place;
    newest_ = {pages_[page].words.data(), 0, 0, countIn(page)};
    return newest_[place];
  }
  const auto holds = [&](std::size_t piece) {
    return piece < pieces.size() && pieces[piece].begin <= place &&
           (piece + 1 == pieces.size() || place < pieces[piece + 1].begin);
  };
  if (holds(newestPiece_ + 1))
    ++newestPiece_;
  else if (holds(newestPiece_ - 1))
    --newestPiece_;
  else
    newestPiece_ = static_cast<std::size_t>(&pieceAt(pages_[page], place) - pieces.data());
  const Piece& piece = pieces[newestPiece_];
  newestFirst_ = number - place + piece.begin;
  newest_ = runAt(page, piece);
  return newest_[number - newestFirst_];
}

// ---- adding -------------------------------------------------------------------------------------

void SampleWords::begin(UINT64 word) {
  const std::size_t place = size_ % page_size;
  if (place == 0) {
    closePage();
    pages_.emplace_back();
    bytes_ += sizeof(Page);
  }
  Page& page = pages_.back();
  const bool followsSingle =
      place != 0 && !page.pieces.empty() && page.pieces.back().begin + 1 == place;
  if (followsSingle)
    giveStep(page.pieces.back(), word);
  else
    add(page, place, word);
  ++size_;
}

void SampleWords::giveStep(Piece& single, UINT64 second) {
  single.step = step_ = second - single.first;
  next_ = second + step_;
}

void SampleWords::add(Page& page, std::size_t place, UINT64 word) {
  next_ = no_word;
  bytes_ -= page.bytes();
  if (page.pieces.size() == most_pieces) expand(pages_.size() - 1);
  if (page.words.empty())
    page.pieces.push_back({word, 0, place});
  else
    page.words.push_back(word);
  bytes_ += page.bytes();
}

// Gives back the room that the last page has left.
void SampleWords::closePage() {
  if (pages_.empty()) return;
  Page& page = pages_.back();
  bytes_ -= page.bytes();
  page.pieces.shrink_to_fit();
  bytes_ += page.bytes();
}

void SampleWords::append(const Run& run) {
  for (std::size_t i = 0; i < run.count;) {
    push_back(run[i++]);
    const std::size_t room = (page_size - size_ % page_size) % page_size;
    if (run.words != nullptr || i == run.count || room == 0 || next_ != run[i]) continue;
    const std::size_t count = std::min(run.count - i, room);
    size_ += count;
    next_ += count * step_;
    i += count;
  }
}

// A full one.
void SampleWords::addPage(const Page& page) {
  closePage();
  pages_.push_back(page);
  bytes_ += pages_.back().bytes();
  size_ += page_size;
  next_ = no_word;
}

// What a regular run has in common up to the highest of these bits, all its words have.
void SampleWords::append(const SampleWords& other, std::size_t first, std::size_t last,
                         UINT64 bits) {
  const UINT64 above = bits == 0 ? 1 : 2 * std::bit_floor(bits);
  while (first < last) {
    if (bits == 0 && size_ % page_size == 0 && first % page_size == 0 &&
        last - first >= page_size) {
      addPage(other.pages_[first / page_size]);
      first += page_size;
      continue;
    }
    Run run = other.runFrom(first);
    run.count = std::min(run.count, last - first);
    first += run.count;
    if (bits == 0 || (run.words == nullptr && run.step % above == 0)) {
      run.first |= bits;
      append(run);
    } else {
      for (std::size_t i = 0; i < run.count; ++i) push_back(run[i] | bits);
    }
  }
}

// ---- changing -----------------------------------------------------------------------------------

// The page holds its words themselves from now on.
void SampleWords::expand(std::size_t number) {
  Page& page = pages_[number];
  if (!page.words.empty()) return;
  const std::size_t count = countIn(number);
  std::vector<UINT64> words;
  words.reserve(page_size);
  while (words.size() < count) {
    const Run run = runFrom(number * page_size + words.size());
    for (std::size_t i = 0; i < run.count; ++i) words.push_back(run[i]);
  }
  page.words = std::move(words);
  newest_ = Run();
  page.pieces = std::vector<Piece>();
  if (number + 1 == pages_.size()) next_ = no_word;
}

void SampleWords::replace(std::size_t first, const std::vector<UINT64>& words) {
  for (std::size_t i = 0; i < words.size(); ++i) {
    if ((*this)[first + i] == words[i]) continue;
    const std::size_t page = (first + i) / page_size;
    bytes_ -= pages_[page].bytes();
    expand(page);
    bytes_ += pages_[page].bytes();
    wordAt(first + i) = words[i];
  }
}

}  // namespace gzd
