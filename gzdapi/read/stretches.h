// Which entries of the index lie between two recording entries, and so in one block or in none.
#ifndef GZDAPI_STRETCHES_H
#define GZDAPI_STRETCHES_H

#include "index/index.h"

namespace gzd {

// Entries between two recording entries, and their block, null outside blocks.
struct Stretch {
  UINT32 begin = 0;
  UINT32 end = 0;
  const Recording* block = nullptr;
};

class Stretches {
 public:
  // Borrowed, and to have found its boundaries before the first look-up.
  explicit Stretches(const Index& items) : index_(items) {}

  // To be called when the boundaries have changed.
  void forget() { newest_ = Stretch(); }

  // The stretch of an entry; valid until the next call. Asked in order it costs next to nothing.
  const Stretch& at(UINT32 itemIndex) {
    const bool isInNewest = itemIndex >= newest_.begin && itemIndex < newest_.end;
    return isInNewest ? newest_ : find(itemIndex);
  }

 private:
  const Stretch& find(UINT32 itemIndex);

  const Index& index_;
  Stretch newest_;
};

}  // namespace gzd

#endif
