// Puts a window of the index in order whose entries are nearly all in order: the few that come
// late, such as the ends of events, are moved back one by one. Where the samples of the list rise,
// those between two landmarks are not even looked at.
#ifndef GZDAPI_STRICT_ORDER_H
#define GZDAPI_STRICT_ORDER_H

#include <vector>

#include "index/item_list.h"
#include "order/sort_entry.h"

namespace gzd {

class StrictOrder {
 public:
  explicit StrictOrder(ItemList& list) : items_(list) {}

  // Whether the entries from `first` up to `last`, at least one, have only one possible order and
  // stand in it: of any two, one comes first. Also false when too many share one stamp.
  [[nodiscard]] bool isStrict(std::size_t first, std::size_t last) const;

  // Puts them into that order. Returns false, and changes nothing, when there is more than one, or
  // when it is far from the one they have.
  bool make(std::size_t first, std::size_t last);
  // The first place at which the last make() changed anything.
  [[nodiscard]] std::size_t firstChange() const { return lowestPlace_; }

 private:
  struct Move {
    std::size_t from;
    std::size_t to;
  };

  // Goes through a window from landmark to landmark.
  class Strides {
   public:
    Strides(const ItemList& list, std::size_t windowEnd)
        : items_(list), samplesRise_(list.samplesRise()), last_(windowEnd) {}
    // The last of the samples that are known to rise from `place` on; `place` itself when it is no
    // sample.
    [[nodiscard]] std::size_t from(std::size_t place) const;

   private:
    const ItemList& items_;
    const bool samplesRise_;
    const std::size_t last_;
  };

  // What decides between entries of one stamp.
  struct Standing {
    std::size_t sortClass;
    INT64 filePos;
  };
  static Standing standingOf(const GZDItem& item) {
    return {static_cast<std::size_t>(sort_class_of(item)), item.getFilePos()};
  }
  static bool comesBefore(const Standing& a, const Standing& b) {
    const Precedence precedence = precedence_table[a.sortClass][b.sortClass];
    return precedence == Precedence::ByFile ? a.filePos < b.filePos
                                            : precedence == Precedence::Always;
  }

  bool insertAll(std::size_t first, std::size_t last);
  void undo(std::size_t first, std::size_t last);
  [[nodiscard]] std::size_t placeOf(std::size_t entry, std::size_t first) const;
  [[nodiscard]] bool runIsStrict(std::size_t first, std::size_t last) const;

  ItemList& items_;
  std::vector<Move> moved_;
  std::size_t lowestPlace_ = 0;
};

}  // namespace gzd

#endif
