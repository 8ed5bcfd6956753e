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

  // Puts the entries from `first` up to `last`, at least one, into the only possible order: of any
  // two, one comes first. Returns false, and changes nothing, when there is more than one, when too
  // many share one stamp, or when it is far from the one they have.
  bool make(std::size_t first, std::size_t last);
  // The first place at which the last make() changed anything; `last` when it has not.
  [[nodiscard]] std::size_t firstChange() const { return lowestPlace_; }

 private:
  static constexpr std::size_t nowhere = ~std::size_t{0};

  struct Move {
    std::size_t from;
    std::size_t to;
  };

  using Cursor = ItemList::Cursor;

  // What decides between entries of one stamp.
  struct Standing {
    std::size_t sortClass;
    INT64 filePos;
  };
  static Standing standingOf(const Cursor& at) {
    const GZDItem item = at.item();
    const SortClass sortClass = at.isLandmark() ? sort_class_of(item) : SortClass::Sample;
    return {static_cast<std::size_t>(sortClass), item.getFilePos()};
  }
  static bool comesBefore(const Standing& a, const Standing& b) {
    const Precedence precedence = precedence_table[a.sortClass][b.sortClass];
    return precedence == Precedence::ByFile ? a.filePos < b.filePos
                                            : precedence == Precedence::Always;
  }

  bool insertAll(std::size_t first, std::size_t last);
  void undo();
  void passRise(Cursor& at, std::size_t last) const;
  static void goBackOverLater(Cursor& at, UINT64 stamp, std::size_t first);
  [[nodiscard]] std::size_t placeOf(const Cursor& entry, UINT64 stamp, std::size_t first) const;

  ItemList& items_;
  std::vector<Move> moved_;
  std::size_t lowestPlace_ = 0;
  std::size_t orderedUpTo_ = 0;  // those before have been put into the only order
};

}  // namespace gzd

#endif
