// Insertions and removals collected during a walk over the index and carried out in one pass.
#ifndef GZDAPI_INDEX_EDITS_H
#define GZDAPI_INDEX_EDITS_H

#include <vector>

#include "index/item_list.h"

namespace gzd {

// Places are those of the list as it stands before apply(). What is inserted before one place
// stands there in the order of the calls; a place may be removed once.
class IndexEdits {
 public:
  // `place` may be one past the end.
  void insertBefore(UINT32 place, const GZDItem& item) { insertions_.push_back({place, item}); }
  void remove(UINT32 place) {
    if (!removals_.empty() && removals_.back().end == place) {
      ++removals_.back().end;
    } else {
      removals_.push_back({place, place + 1});
    }
  }
  // At most linear in the list, nothing at all without edits. Forgets the edits. Returns whether
  // there were any.
  bool apply(ItemList& items);

 private:
  struct Insertion {
    UINT32 place;
    GZDItem item;
  };

  // Places from `first` on, up to `end`.
  struct Removal {
    UINT32 first;
    UINT32 end;
  };

  void sortByPlace();

  std::vector<Insertion> insertions_;
  std::vector<Removal> removals_;
};

}  // namespace gzd

#endif
