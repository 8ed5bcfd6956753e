// Keys of the sort: what the order of two items mostly depends on, their stamps and their classes.
// Their places in the file, which few comparisons ask for, stay where they are.
#ifndef GZDAPI_SORT_ENTRY_H
#define GZDAPI_SORT_ENTRY_H

#include <array>

#include "index/GZDItem.h"

namespace gzd {

// Items of one class stand alike to those of any other. The two guards lie before and after every
// item whatever its stamp; each eye's blinks are classes of their own, after the last of these.
enum class SortClass : byte {
  LowGuard,
  HighGuard,
  Other,
  BlockStart,
  BlockEnd,
  Sample,
  Message,
  FileOrdered,
  StartParse,
  EndParse,
  StartSaccade,
  EndSaccade,
  StartFixation,
  EndFixation,
  StartSamples,
  EndSamples,
  StartEvents,
  EndEvents,
  StartBlink,
  EndBlink = StartBlink + 16,  // one for each value that the side may have
};

constexpr std::size_t sort_classes = static_cast<std::size_t>(SortClass::EndBlink) + 16;

// Whether an item comes before another one of the same stamp.
enum class Precedence : byte { Never, Always, ByFile };

using PrecedenceTable = std::array<std::array<Precedence, sort_classes>, sort_classes>;
extern const PrecedenceTable precedence_table;

SortClass sort_class_of(const GZDItem& item);

inline Precedence precedence_at_one_stamp(const GZDItem& a, const GZDItem& b) {
  return precedence_table[static_cast<std::size_t>(sort_class_of(a))]
                         [static_cast<std::size_t>(sort_class_of(b))];
}

struct SortEntry {
  UINT64 stamp;
  UINT32 place;   // of the item in its window
  UINT32 number;  // of its class

  // cppcheck-suppress uninitMemberVar ; places of arrays are written before they are read
  SortEntry() = default;
  constexpr SortEntry(UINT64 itemStamp, UINT32 itemPlace, SortClass sortClass)
      : stamp(itemStamp), place(itemPlace), number(static_cast<UINT32>(sortClass)) {}
};

static_assert(sizeof(SortEntry) == 16);

inline SortEntry sort_entry_of(const GZDItem& item, UINT32 place) {
  if (item.isSample()) return {item.getTimeStamp(), place, SortClass::Sample};
  return {item.getTimeStamp(), place, sort_class_of(item)};
}

constexpr SortEntry low_guard{0, 0, SortClass::LowGuard};
constexpr SortEntry high_guard{~UINT64{0}, 0, SortClass::HighGuard};

// The comparison of the items of one window.
class ItemOrder {
 public:
  explicit ItemOrder(const GZDItem* window) : items_(window) {}

  [[nodiscard]] INT64 filePos(const SortEntry& entry) const {
    return items_[entry.place].getFilePos();
  }
  // True when a is to come before b. For a few pairs of one stamp the answer is true both ways.
  bool operator()(const SortEntry& a, const SortEntry& b) const {
    return a.stamp != b.stamp ? a.stamp < b.stamp : beforeAtOneStamp(a, b);
  }

 private:
  // Not inline: the loops over unlike stamps are to be short.
  [[nodiscard]] bool beforeAtOneStamp(const SortEntry& a, const SortEntry& b) const;

  const GZDItem* items_;
};

}  // namespace gzd

#endif
