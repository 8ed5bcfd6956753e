// Puts a window of the index in order whose entries are nearly all in order: the few that are not,
// such as the ends of events, which are written late, are taken out and merged in again.
#ifndef GZDAPI_STRAY_MERGE_H
#define GZDAPI_STRAY_MERGE_H

#include <vector>

#include "item_list.h"

class StrayMerge {
 public:
  using Comparison = bool (*)(const GZDItem&, const GZDItem&);

  // `comparison` tells whether an entry comes before another one of the same stamp.
  StrayMerge(ItemList& list, Comparison comparison) : items(list), comesBefore(comparison) {}

  // Puts the entries from `first` up to `last` into their order. Returns false, and changes
  // nothing, when they have more than one: where of two entries both or neither come first. Also
  // when too many are out of order, or of one stamp.
  bool run(std::size_t first, std::size_t last);

  // Entries of one stamp are compared pair by pair; more than this are not.
  static constexpr std::size_t LONGEST_RUN = 32;

 private:
  struct Stray {
    UINT64 stamp;
    std::size_t place;
  };

  bool findStrays(std::size_t first, std::size_t last);
  bool merge(std::size_t first, std::size_t last);
  bool append(UINT64 stamp, ItemList::Packed entry);
  bool orderRun();
  [[nodiscard]] bool hasOneOrder(const std::vector<GZDItem>& entries) const;

  ItemList& items;
  Comparison comesBefore;
  std::vector<Stray> strays;                // in time order
  std::vector<std::size_t> placesOfStrays;  // ascending
  std::vector<ItemList::Packed> merged;
  std::size_t runStart = 0;  // of the newest stamp in `merged`
  UINT64 runStamp = 0;
  std::vector<GZDItem> run_items;
};

#endif
