#include "item_list.h"

ItemList::Packed ItemList::pack(const GZDItem& item) {
  constexpr UINT16 BLINKS = GZDItem::LEFT_INSIDE_BLINK | GZDItem::RIGHT_INSIDE_BLINK;
  if ((item.getDetailedType() & ~BLINKS) == GZD_SAMPLE) {
    const UINT64 stamp = item.getTimeStamp();
    if (base == NO_BASE) base = stamp - std::min(stamp, STAMPS_BEFORE_FIRST);
    if (fits(item.getFilePos(), stamp)) {
      Packed entry = plain(item.getFilePos(), stamp);
      if (item.isSampleInsideBlink(GZD_LEFT_EYE)) entry.word |= IN_LEFT_BLINK;
      if (item.isSampleInsideBlink(GZD_RIGHT_EYE)) entry.word |= IN_RIGHT_BLINK;
      return entry;
    }
  }
  others.push_back(item);
  return {UINT64{others.size() - 1} << OTHER_SHIFT | OTHER};
}

void ItemList::set(std::size_t place, const GZDItem& item) {
  const Packed entry = entries[place];
  if (isPlain(entry)) {
    entries[place] = pack(item);
  } else {
    others[entry.word >> OTHER_SHIFT] = item;
  }
}
