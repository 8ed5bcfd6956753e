// Puts a window of the index in order whose samples rise, as nearly all do, and whose other
// entries, the landmarks, are nearly in order: their order is found among themselves, then their
// places among the samples. Of the samples only those next to a landmark are looked at.
#ifndef GZDAPI_STRICT_ORDER_H
#define GZDAPI_STRICT_ORDER_H

#include <vector>

#include "index/item_list.h"
#include "order/sort_entry.h"

namespace gzd {

class StrictOrder {
 public:
  explicit StrictOrder(ItemList& list) : items_(list) {}

  // Puts the entries from `first` up to `last`, at least one, into the only possible order: of any
  // two, one comes first. Returns false, and changes nothing, when there is more than one, when too
  // many share one stamp, when samples do not rise, or when the order is far from the one they
  // have.
  bool make(std::size_t first, std::size_t last);
  // The first place at which the last make() changed anything; `last` when it has not.
  [[nodiscard]] std::size_t firstChange() const { return firstChange_; }

 private:
  // What decides between entries of one stamp.
  struct Standing {
    std::size_t sortClass;
    INT64 filePos;
  };
  static bool comesBefore(const Standing& a, const Standing& b) {
    const Precedence precedence = precedence_table[a.sortClass][b.sortClass];
    return precedence == Precedence::ByFile ? a.filePos < b.filePos
                                            : precedence == Precedence::Always;
  }

  struct Entry {
    UINT64 stamp;
    Standing standing;
    Landmark landmark;  // where it stood
    UINT32 samples;     // of the list before it
  };
  [[nodiscard]] Entry entryOf(Landmark landmark) const;

  bool makeAnew(std::size_t first, std::size_t last);
  bool sortLandmarks(std::size_t number, std::size_t count, std::size_t mostMoves);
  bool findPlace(const Entry& entry, std::size_t& place) const;
  class RisingSamples;
  bool placeAmongSamples(UINT32 first, UINT32 last);
  bool placeAmongSamples(Entry& entry, RisingSamples& samples) const;
  void carryOut(std::size_t number);

  ItemList& items_;
  std::vector<Entry> sorted_;
  std::vector<Landmark> arranged_;
  std::size_t firstChange_ = 0;
  std::size_t orderedUpTo_ = 0;  // those before have been put into the only order
};

}  // namespace gzd

#endif
