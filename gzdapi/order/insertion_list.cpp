// Looks for the last chunk that stops an entry, then for the place in it.
#include "order/insertion_list.h"

#include <algorithm>
#include <bit>

namespace gzd {

namespace {

// Classes of one stamp that stop an entry of a class: always, or when they lie before it in the
// file.
struct Stoppers {
  UINT64 always = 0;
  UINT64 byFile = 0;
};

std::array<Stoppers, sort_classes> make_stoppers() {
  std::array<Stoppers, sort_classes> stoppers{};
  for (std::size_t entry = 0; entry < sort_classes; ++entry) {
    for (std::size_t other = 0; other < sort_classes; ++other) {
      const Precedence precedence = precedence_table[entry][other];
      const UINT64 bit = UINT64{1} << other;
      if (precedence == Precedence::Never) stoppers[entry].always |= bit;
      if (precedence == Precedence::ByFile) stoppers[entry].byFile |= bit;
    }
  }
  return stoppers;
}

static_assert(sort_classes <= 64);
const std::array<Stoppers, sort_classes> stopper_table = make_stoppers();

}  // namespace

void InsertionList::Summary::add(const SortEntry& entry, INT64 place) {
  if (entry.stamp > stamp) return;
  if (entry.stamp < stamp) classes = 0;
  stamp = entry.stamp;
  const UINT64 bit = UINT64{1} << entry.number;
  INT64& smallest = filePos[entry.number];
  smallest = (classes & bit) != 0 ? std::min(smallest, place) : place;
  classes |= bit;
}

bool InsertionList::Summary::stops(const SortEntry& entry, INT64 place) const {
  if (stamp != entry.stamp) return stamp < entry.stamp;
  const Stoppers& stoppers = stopper_table[entry.number];
  if ((classes & stoppers.always) != 0) return true;
  for (UINT64 rest = classes & stoppers.byFile; rest != 0; rest &= rest - 1) {
    if (filePos[static_cast<std::size_t>(std::countr_zero(rest))] <= place) return true;
  }
  return false;
}

void InsertionList::Chunk::insertAt(std::size_t place, const SortEntry& entry,
                                    const ItemOrder& before) {
  SortEntry* const target = entries.data() + place;
  std::copy_backward(target, entries.data() + count, entries.data() + count + 1);
  *target = entry;
  ++count;
  summary.add(entry, before.filePos(entry));
}

std::size_t InsertionList::Chunk::placeOf(const SortEntry& entry, const ItemOrder& before) const {
  std::size_t place = count;
  while (place > 0 && before(entry, entries[place - 1])) --place;
  return place;
}

std::size_t InsertionList::newChunk() {
  const std::size_t number = order_.size();
  if (number == chunks_.size()) chunks_.emplace_back();
  chunks_[number].count = 0;
  chunks_[number].summary = {};
  return number;
}

void InsertionList::assign(const SortEntry* first, const SortEntry* last, const ItemOrder& before) {
  order_.clear();
  while (first != last) {
    const std::size_t number = newChunk();
    order_.push_back(number);
    const auto count = std::min<std::ptrdiff_t>(last - first, chunk_room / 2);
    for (const SortEntry* const end = first + count; first != end; ++first)
      chunks_[number].insertAt(chunks_[number].count, *first, before);
  }
}

void InsertionList::insert(const SortEntry& entry, const ItemOrder& before) {
  const INT64 filePos = before.filePos(entry);
  std::size_t position = order_.size() - 1;
  while (position > 0 && !chunks_[order_[position]].summary.stops(entry, filePos)) --position;
  if (chunks_[order_[position]].count == chunk_room) {
    split(position, before);
    if (chunks_[order_[position + 1]].summary.stops(entry, filePos)) ++position;
  }
  Chunk& chunk = chunks_[order_[position]];
  chunk.insertAt(chunk.placeOf(entry, before), entry, before);
}

// Moves the second half of a chunk to a new one after it.
void InsertionList::split(std::size_t position, const ItemOrder& before) {
  const std::size_t number = newChunk();
  Chunk& chunk = chunks_[order_[position]];
  const std::array<SortEntry, chunk_room> entries = chunk.entries;
  chunk.count = 0;
  chunk.summary = {};
  for (std::size_t i = 0; i < chunk_room; ++i) {
    Chunk& target = i < chunk_room / 2 ? chunk : chunks_[number];
    target.insertAt(target.count, entries[i], before);
  }
  order_.insert(order_.begin() + static_cast<std::ptrdiff_t>(position) + 1, number);
}

void InsertionList::copyTo(SortEntry* target) const {
  for (const std::size_t number : order_) {
    const Chunk& chunk = chunks_[number];
    target = std::copy_n(chunk.entries.begin(), chunk.count, target);
  }
}

}  // namespace gzd
