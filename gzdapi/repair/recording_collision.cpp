// The tracker writes a block's configuration message ("RECCFG ") just before the block starts. When
// the block before ends within the same milliseconds, time order puts that message inside it.
//
// 1. Is there a collision at all?
// 2. Walk the index: from the first configuration message of a block on, its messages are held
//    back, and put down again right after the end of the block.

#include "repair/recording_collision.h"

#include <vector>

#include "index/index_edits.h"

namespace gzd {

namespace {

constexpr UINT64 collision_stamps = 6;
constexpr std::string_view configuration_mark = "RECCFG ";

bool boundaries_collide(const Index& index) {
  const auto& boundaries = index.allRecordings;
  for (std::size_t i = 1; i < boundaries.size(); ++i) {
    if (stamp_distance(boundaries[i - 1]->getTime(), boundaries[i]->getTime()) < collision_stamps) {
      return true;
    }
  }
  return false;
}

class ConfigurationMove {
 public:
  ConfigurationMove(Index& list, const MessageReader& reader)
      : items_(list.gzdItemList), findings_(list.findings), messageText_(reader) {}

  // Returns whether anything moved.
  bool run() {
    for (const Landmark mark : items_.landmarks()) examine(mark);
    return edits_.apply(items_);
  }

 private:
  void examine(Landmark mark) {
    const UINT32 place = mark.place;
    const GZDItem item = items_[mark];
    if (item.isRecordingStart()) {
      collected_.clear();
      watching_ = true;
    } else if (item.isRecording()) {
      putDownBehind(place);
      watching_ = false;
    } else if (watching_ && item.getItemType() == GZD_MESSAGE && belongsToNextBlock(place)) {
      collected_.push_back(place);
    }
  }

  [[nodiscard]] bool belongsToNextBlock(UINT32 place) const {
    return !collected_.empty() ||
           messageText_(place).find(configuration_mark) != std::string_view::npos;
  }

  void putDownBehind(UINT32 blockEnd) {
    if (collected_.empty()) return;
    note(blockEnd);
    for (const UINT32 place : collected_) {
      edits_.remove(place);
      edits_.insertBefore(blockEnd + 1, items_[place]);
    }
    collected_.clear();
  }

  void note(UINT32 blockEnd) {
    Finding moved = finding_of(GZD_FINDING_MESSAGES_MOVED, items_[collected_.front()]);
    moved.detail = 0;
    moved.count = static_cast<INT64>(collected_.size());
    moved.end = found_at(items_.stampAt(blockEnd));
    findings_.add(moved);
  }

  ItemList& items_;
  Findings& findings_;
  const MessageReader& messageText_;
  IndexEdits edits_;
  std::vector<UINT32> collected_;
  bool watching_ = false;
};

}  // namespace

void move_colliding_configurations(Index& index, const MessageReader& messageText) {
  if (!boundaries_collide(index)) return;
  if (ConfigurationMove(index, messageText).run()) index.itemsChanged();
}

}  // namespace gzd
