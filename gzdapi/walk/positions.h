// Moves the walk to places that were remembered or searched for.
#ifndef GZDAPI_POSITIONS_H
#define GZDAPI_POSITIONS_H

#include <unordered_map>
#include <vector>

#include "index/index.h"
#include "walk/trials.h"
#include "walk/walk.h"

namespace gzd {

// The bookmarks of a file, in the order in which they were set. All functions return 0, or -1 when
// they can do nothing. Finding a bookmark is logarithmic, removing one linear at worst.
class Bookmarks {
 public:
  // All are borrowed and must outlive this.
  Bookmarks(const Index& items, Walk& position, LogMerge& logMerge)
      : index_(items), walk_(position), merge_(logMerge) {}

  // Marks the position of the walk. One that is marked already leaves `bm` as it was.
  int setBookMark(BOOKMARK* bm);
  int gotoBookMark(const BOOKMARK* bm);
  int removeBookMark(const BOOKMARK* bm);
  int gotoNextBookMark();
  int gotoPreviousBookMark();

 private:
  static constexpr std::size_t nowhere = static_cast<std::size_t>(-1);

  // A bookmark with its running number, by which its place is found after removals.
  struct Entry {
    BOOKMARK mark;
    UINT64 serial;
  };

  [[nodiscard]] std::size_t placeOf(const BOOKMARK* bm) const;
  int moveTo(UINT32 place);

  const Index& index_;
  Walk& walk_;
  LogMerge& merge_;
  std::vector<Entry> bookmarks_;                 // ascending serials
  std::unordered_map<UINT32, UINT64> serialOf_;  // by id
  UINT64 nextSerial_ = 0;
};

// The index of the sample with stamp `find_time` within items startIndex ... endIndex of the sorted
// index, or -1. Logarithmic. Where several items share the stamp it may miss the sample.
int findIndex(const Index& index, UINT32 find_time, int startIndex, int endIndex);

// Moves the walk to an item; an index out of range is ignored. A collected trial that starts at
// `itemIndex` becomes the current one.
void gotoIndex(const Index& index, Walk& walk, const Trials& trials, int itemIndex);

}  // namespace gzd

#endif
