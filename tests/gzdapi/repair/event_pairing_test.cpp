#include "repair/event_pairing.h"

#include <gtest/gtest.h>

#include "index/index_edits.h"
#include "support/index_builder.h"

using namespace gzd;

namespace {

constexpr int SB = GZD_START_BLINK, EB = GZD_END_BLINK;
constexpr int SF = GZD_START_FIXATION, EF = GZD_END_FIXATION;

// The times of the item's record, which was recorded as sttime ... entime, as they are shown.
std::pair<UINT32, UINT32> shown(const Index& index, UINT32 i, UINT32 sttime, UINT32 entime) {
  FEVENT event{};
  event.sttime = sttime;
  event.entime = entime;
  EventPairing::build(index).apply(i, index.gzdItemList[i], event);
  return {event.sttime, event.entime};
}

using Times = std::pair<UINT32, UINT32>;

void retime(Index& index, std::size_t place, UINT64 stamp) {
  index.gzdItemList.change(place, [=](GZDItem& item) { item.setFixedTimeStamp(stamp); });
}

TEST(EventPairing, UntouchedEventsShowTheirRecords) {
  IndexBuilder b;
  b.start(1).event(SF, 10).event(EF, 20);
  EXPECT_EQ(shown(b.index, 1, 10, 10), Times(10, 10));
  EXPECT_EQ(shown(b.index, 2, 7, 20), Times(7, 20));
}

TEST(EventPairing, ReTimedStartsReachTheirEnds) {
  IndexBuilder b;
  b.start(1)
      .event(SF, 10)
      .event(SF, 11, SIDE_RIGHT)
      .event(SB, 12)
      .event(EF, 20)
      .event(EF, 21, SIDE_RIGHT);
  retime(b.index, 1, stamp_of_time(15));
  EXPECT_EQ(shown(b.index, 1, 10, 10).first, 15u);
  EXPECT_EQ(shown(b.index, 4, 10, 20), Times(15, 20));
  EXPECT_EQ(shown(b.index, 5, 11, 21), Times(11, 21));
}

TEST(EventPairing, AStartAtOrBehindItsEndIsNotShown) {
  IndexBuilder b;
  b.start(1).event(SF, 10).event(EF, 20);
  retime(b.index, 1, stamp_of_time(20));
  EXPECT_EQ(shown(b.index, 2, 10, 20), Times(10, 20));
}

TEST(EventPairing, AReTimedEndDoesNotEndBeforeItsStart) {
  IndexBuilder b;
  b.start(1).event(SF, 10).event(EF, 20);
  retime(b.index, 2, stamp_of_time(15));
  EXPECT_EQ(shown(b.index, 2, 10, 20), Times(10, 15));
  EXPECT_EQ(shown(b.index, 2, 18, 20), Times(15, 15));
}

TEST(EventPairing, InsertedStartsAndMergedBlinksReachTheirEnds) {
  IndexBuilder b;
  b.start(1).event(EB, 20).event(SB, 30).event(EB, 40).event(SF, 50).event(EF, 60);
  IndexEdits edits;
  edits.insertBefore(1, GZDItem(POSITION_OF_DUMMY, SB, SIDE_LEFT, 0xFFFF, 2));
  edits.apply(b.index.gzdItemList);
  for (const std::size_t end : {4u, 6u})
    b.index.gzdItemList.change(end, [](GZDItem& item) { item.markBlinkMerged(); });
  EXPECT_EQ(shown(b.index, 2, 18, 20), Times(1, 20));
  EXPECT_EQ(shown(b.index, 4, 38, 40), Times(30, 40));
  EXPECT_EQ(shown(b.index, 6, 55, 60), Times(55, 60));  // only blinks are merged
}

TEST(EventPairing, EachStartServesOneEndAndSamplesAreLeftAlone) {
  IndexBuilder b;
  b.start(1).event(SF, 10).event(EF, 20).event(EF, 30).sample(40);
  retime(b.index, 1, stamp_of_time(5));
  b.index.gzdItemList.change(4,
                             [](GZDItem& sample) { sample.markSampleInsideBlink(GZD_LEFT_EYE); });
  EXPECT_EQ(shown(b.index, 2, 10, 20), Times(5, 20));
  EXPECT_EQ(shown(b.index, 3, 25, 30), Times(25, 30));
  EXPECT_EQ(shown(b.index, 4, 1, 2), Times(1, 2));
}

}  // namespace
