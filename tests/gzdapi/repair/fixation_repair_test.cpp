#include "repair/fixation_repair.h"

#include <gtest/gtest.h>

#include "support/recording_fixture.h"

using namespace gzd;

namespace {

// Fixation records as a scan meets them.
class Fixations {
 public:
  Index index;
  FixationRepair repair;

  Fixations& block(UINT32 time) {
    auto start = std::make_unique<Recording>();
    start->state = GZD_BLOCK_START;
    start->updateTime(2 * UINT64{time});
    index.gzdItemList.push_back(GZDItem(start.get()));
    index.allRecordings.push_back(std::move(start));
    return *this;
  }
  Fixations& start(UINT32 time, int eye = GZD_LEFT_EYE) {
    return add(GZD_START_FIXATION, time, time, eye);
  }
  Fixations& end(UINT32 start, UINT32 end, int eye = GZD_LEFT_EYE) {
    return add(GZD_END_FIXATION, start, end, eye);
  }
  // What a repair prints; `index` is repaired.
  std::string repaired() {
    return standard_output_of([this] { repair.repair(index); });
  }
  [[nodiscard]] UINT64 timeOf(std::size_t item) const {
    return index.gzdItemList[item].getTimeStamp() / 2;
  }
  [[nodiscard]] bool isMarked(std::size_t item) const {
    return index.gzdItemList[item].isTimeChanged();
  }

 private:
  Fixations& add(int type, UINT32 start, UINT32 end, int eye) {
    FEVENT e{};
    e.type = static_cast<INT16>(type);
    e.eye = static_cast<INT16>(eye);
    e.sttime = start;
    e.entime = end;
    repair.follow(e, index);
    const UINT16 side = eye == GZD_LEFT_EYE ? SIDE_LEFT : SIDE_RIGHT;
    index.gzdItemList.push_back({5, type, side, UINT16{0}, 2 * UINT64{end}});
    return *this;
  }
};

TEST(FixationRepair, StartsGoToTheTimeThatTheEndTells) {
  Fixations f;
  EXPECT_EQ(standard_output_of([&] { f.block(100).start(500).end(300, 400); }),
            "ORIGINAL SFIX time is later than end fix time sfix.sttime=400 efix.entime=500 "
            "efix.sttime=300 rec_start_time=100\n");
  EXPECT_EQ(f.repaired(),
            "FIXING: SFIX later than endfix sfix_index=1 sfix.sttime=500 efix.entime=400\n"
            "FIXED (A - Inside of recoding block): SFIX later than endfix sfix_index=1 "
            "sfix.sttime=300 efix.entime=400\n");
  EXPECT_EQ(f.timeOf(1), 300u);
  EXPECT_TRUE(f.isMarked(1));
  EXPECT_FALSE(f.isMarked(2));
}

TEST(FixationRepair, OrToTheStartOfTheirBlock) {
  Fixations f;
  standard_output_of([&] { f.block(350).start(500).end(300, 400); });
  EXPECT_EQ(f.repaired(),
            "FIXING: SFIX later than endfix sfix_index=1 sfix.sttime=500 efix.entime=400\n"
            "FIXED (A - Outside of recoding block): SFIX later than endfix sfix_index=1 "
            "sfix.sttime=350 efix.entime=400\n");
  EXPECT_EQ(f.timeOf(1), 350u);
}

TEST(FixationRepair, WithoutABlockTheTimeOfTheEndHolds) {
  Fixations f;
  EXPECT_EQ(standard_output_of([&] { f.start(500).end(300, 400); }),
            "ERROR: No start rec \nORIGINAL SFIX time is later than end fix time sfix.sttime=400 "
            "efix.entime=500 efix.sttime=300 rec_start_time=0\n");
  f.repaired();
  EXPECT_EQ(f.timeOf(0), 300u);
}

TEST(FixationRepair, EyesAreFollowedApart) {
  Fixations f;
  EXPECT_EQ(standard_output_of([&] {
              f.block(100).start(500, GZD_LEFT_EYE).end(300, 400, GZD_RIGHT_EYE);
              f.start(510, GZD_RIGHT_EYE).end(510, 520, GZD_RIGHT_EYE).end(500, 500);
            }),
            "");
  EXPECT_EQ(f.repaired(), "");
}

TEST(FixationRepair, OnlyAHundredAreRemembered) {
  Fixations f;
  standard_output_of([&] {
    f.block(1);
    for (UINT32 i = 0; i < 102; ++i) f.start(10'000 + i).end(100, 200);
  });
  f.repaired();
  EXPECT_EQ(f.timeOf(1 + 2 * 99), 100u);
  EXPECT_EQ(f.timeOf(1 + 2 * 100), 10'100u);
  EXPECT_TRUE(f.isMarked(1 + 2 * 100));
}

}  // namespace
