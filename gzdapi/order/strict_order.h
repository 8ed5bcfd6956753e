// Puts a window of the index in order whose entries are nearly all in order: the few that come
// late, such as the ends of events, are moved back one by one. Where the samples of the list rise,
// those between two landmarks are not even looked at.
#ifndef GZDAPI_STRICT_ORDER_H
#define GZDAPI_STRICT_ORDER_H

#include <vector>

#include "index/item_list.h"

namespace gzd {

class StrictOrder {
 public:
  using Comparison = bool (*)(const GZDItem&, const GZDItem&);

  // `comparison` tells whether an entry comes before another one.
  StrictOrder(ItemList& list, Comparison comparison) : items_(list), comesBefore_(comparison) {}

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

  bool insertAll(std::size_t first, std::size_t last);
  void undo(std::size_t first, std::size_t last);
  [[nodiscard]] std::size_t placeOf(std::size_t entry, std::size_t first) const;
  [[nodiscard]] bool runIsStrict(std::size_t first, std::size_t last) const;

  ItemList& items_;
  Comparison comesBefore_;
  std::vector<Move> moved_;
  std::size_t lowestPlace_ = 0;
};

}  // namespace gzd

#endif
