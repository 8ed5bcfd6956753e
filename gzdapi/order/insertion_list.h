// A list into which entries are inserted, each after the last entry that it does not come before.
// The list is held in chunks, each with a summary that tells whether it holds such an entry, so
// that an insertion glances at chunks instead of stepping over entries.
#ifndef GZDAPI_INSERTION_LIST_H
#define GZDAPI_INSERTION_LIST_H

#include <array>
#include <vector>

#include "order/sort_entry.h"

namespace gzd {

class InsertionList {
 public:
  // Replaces the list, as it is.
  void assign(const SortEntry* first, const SortEntry* last, const ItemOrder& before);
  void insert(const SortEntry& entry, const ItemOrder& before);
  // Writes all entries, in order, to where there is room for them.
  void copyTo(SortEntry* target) const;

 private:
  static constexpr std::size_t chunk_room = 128;

  // Of the entries of the earliest stamp in a chunk: which classes there are, and the smallest
  // place in the file within each.
  struct Summary {
    UINT64 stamp = ~UINT64{0};
    UINT64 classes = 0;
    std::array<INT64, sort_classes> filePos;

    void add(const SortEntry& entry, INT64 place);
    [[nodiscard]] bool stops(const SortEntry& entry, INT64 place) const;
  };
  struct Chunk {
    std::size_t count = 0;
    std::array<SortEntry, chunk_room> entries;
    Summary summary;

    void insertAt(std::size_t place, const SortEntry& entry, const ItemOrder& before);
    // The place after the last entry that stops the given one.
    [[nodiscard]] std::size_t placeOf(const SortEntry& entry, const ItemOrder& before) const;
  };

  std::size_t newChunk();
  void split(std::size_t position, const ItemOrder& before);

  std::vector<Chunk> chunks_;
  std::vector<std::size_t> order_;  // of the chunks in use, which are the first ones
};

}  // namespace gzd

#endif
