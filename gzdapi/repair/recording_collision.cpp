// The tracker writes a block's configuration message ("RECCFG ") just before the block starts. When
// the block before ends within the same milliseconds, time order puts that message inside it.
//
// 1. Is there a collision at all?
// 2. Walk the index: from the first configuration message of a block on, its messages are held
//    back, and put down again right behind the end of the block.

#include "repair/recording_collision.h"

#include <vector>

#include "index/index_edits.h"

namespace gzd {

namespace {

constexpr UINT64 collision_stamps = 6;
constexpr std::string_view configuration_mark = "RECCFG ";

UINT64 distance(UINT64 a, UINT64 b) {
  return a > b ? a - b : b - a;
}

bool boundaries_collide(const Index& index) {
  const auto& boundaries = index.allRecordings;
  for (std::size_t i = 1; i < boundaries.size(); ++i) {
    if (distance(boundaries[i - 1]->getTime(), boundaries[i]->getTime()) < collision_stamps) {
      return true;
    }
  }
  return false;
}

class ConfigurationMove {
 public:
  ConfigurationMove(Index& list, const MessageReader& reader)
      : items(list.gzdItemList), findings(list.findings), messageText(reader) {}

  // Returns whether anything moved.
  bool run() {
    for (const Landmark mark : items.landmarks()) examine(mark);
    return edits.apply(items);
  }

 private:
  void examine(Landmark mark) {
    const UINT32 place = mark.place;
    const GZDItem item = items[mark];
    if (item.isRecordingStart()) {
      collected.clear();
      watching = true;
    } else if (item.isRecording()) {
      putDownBehind(place);
      watching = false;
    } else if (watching && item.getItemType() == GZD_MESSAGE && belongsToNextBlock(place)) {
      collected.push_back(place);
    }
  }

  [[nodiscard]] bool belongsToNextBlock(UINT32 place) const {
    return !collected.empty() ||
           messageText(place).find(configuration_mark) != std::string_view::npos;
  }

  void putDownBehind(UINT32 blockEnd) {
    if (collected.empty()) return;
    note(blockEnd);
    for (const UINT32 place : collected) {
      edits.remove(place);
      edits.insertBefore(blockEnd + 1, items[place]);
    }
    collected.clear();
  }

  void note(UINT32 blockEnd) {
    Finding moved = finding_of(GZD_FINDING_MESSAGES_MOVED, items[collected.front()]);
    moved.detail = 0;
    moved.count = static_cast<INT64>(collected.size());
    moved.end = found_at(items.stampAt(blockEnd));
    findings.add(moved);
  }

  ItemList& items;
  Findings& findings;
  const MessageReader& messageText;
  IndexEdits edits;
  std::vector<UINT32> collected;
  bool watching = false;
};

}  // namespace

void move_colliding_configurations(Index& index, const MessageReader& messageText) {
  if (!boundaries_collide(index)) return;
  if (ConfigurationMove(index, messageText).run()) index.itemsChanged();
}

}  // namespace gzd
