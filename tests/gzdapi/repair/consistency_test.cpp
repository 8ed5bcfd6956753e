#include "repair/consistency.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>

#include "index/index_edits.h"
#include "order/time_order.h"
#include "repair/blink_repair.h"
#include "support/index_builder.h"
#include "support/item_lists.h"

using namespace gzd;

namespace {

constexpr int SB = GZD_START_BLINK, EB = GZD_END_BLINK;
constexpr int SS = GZD_START_SACCADE, ES = GZD_END_SACCADE;
constexpr int SF = GZD_START_FIXATION, EF = GZD_END_FIXATION;
constexpr ItemSide R = SIDE_RIGHT;
constexpr bool CHECK = false, REPAIR = true;

std::string checked(IndexBuilder& b, bool repair) {
  EXPECT_EQ(checkConsistency(b.index, repair, [&b](UINT32 i) { return b.textAt(i); }), 0);
  return b.describe();
}

// ---- edits -------------------------------------------------------------------------------------

TEST(IndexEdits, InsertsAndRemovesByPlacesOfTheOldList) {
  IndexBuilder b;
  b.sample(0).sample(1).sample(2).sample(3);
  IndexEdits edits;
  edits.remove(3);
  edits.insertBefore(4, GZDItem(1, GZD_SAMPLE, 0, 0, 20));
  edits.insertBefore(1, GZDItem(1, GZD_SAMPLE, 0, 0, 22));
  edits.insertBefore(1, GZDItem(1, GZD_SAMPLE, 0, 0, 24));
  edits.remove(0);
  edits.apply(b.index.gzdItemList);
  EXPECT_EQ(b.describe(), "s11 s12 s1 s2 s10");
  edits.apply(b.index.gzdItemList);
  EXPECT_EQ(b.describe(), "s11 s12 s1 s2 s10");
}

TEST(IndexEdits, RemovesWithoutInsertions) {
  IndexBuilder b;
  b.sample(0).sample(1).sample(2).sample(3);
  IndexEdits edits;
  edits.remove(2);
  edits.remove(1);
  edits.apply(b.index.gzdItemList);
  EXPECT_EQ(b.describe(), "s0 s3");
}

// ---- eye events outside blocks -----------------------------------------------------------------

TEST(OutsideEvents, EndsGoBackAndStartsGoOn) {
  IndexBuilder b;
  b.start(100).event(SF, 110).event(SS, 120, R).end(200);
  b.event(EF, 210).event(ES, 220, R).event(SF, 230).event(SB, 240, R).start(300).sample(301);
  MergeEyeEventsOutsideOfTrials(b.index);
  EXPECT_EQ(b.describe(), "[100 SFL110 SSR120 ]200 EFL200! ESR200! SFL300! SBR300! [300 s301");
}

TEST(OutsideEvents, EventsAtTheBoundaryItselfAndBeforeAnyBlockStay) {
  IndexBuilder b;
  b.event(SF, 10).end(20).event(EF, 30).start(100).end(200).event(EF, 200).event(SF, 200);
  MergeEyeEventsOutsideOfTrials(b.index);
  EXPECT_EQ(b.describe(), "SFL10 ]20 EFL30 [100 ]200 EFL200 SFL200");
}

TEST(OutsideEvents, ABlinkThatLiesOutsideAltogetherIsMarked) {
  IndexBuilder b;
  b.start(100).end(200).event(SB, 210).event(EB, 220, R).event(EB, 230).start(300);
  MergeEyeEventsOutsideOfTrials(b.index);
  EXPECT_EQ(b.describe(), "[100 ]200 SBL300! EBR200!* EBL200! [300");
}

TEST(OutsideEvents, StartsWithoutAnotherBlockStay) {
  IndexBuilder b;
  b.start(100).end(200).event(SF, 210);
  MergeEyeEventsOutsideOfTrials(b.index);
  EXPECT_EQ(b.describe(), "[100 ]200 SFL210");
}

// ---- samples outside blocks --------------------------------------------------------------------

TEST(StraySamples, AreReportedAndRemovedAtEveryLevel) {
  for (const bool repair : {CHECK, REPAIR}) {
    IndexBuilder b;
    b.sample(5).start(10).sample(11).end(20).sample(25).start(30).sample(31);
    const LogCapture log;
    EXPECT_EQ(checked(b, repair), "[10 s11 ]20 [30 s31");
    EXPECT_EQ(log.text(),
              "WARNING: GZD FILE MAY BE CORRUPTED. Sample at 5 found without start recording. "
              "Skipping this sample \n"
              "WARNING: GZD FILE MAY BE CORRUPTED. Sample at 25 found without start recording. "
              "Skipping this sample \n");
  }
}

// In time order an end precedes a start of its time, except where entries between hide the two from
// each other.
TEST(StraySamples, BoundariesOfOneTimeChangePlaces) {
  for (const bool repair : {CHECK, REPAIR}) {
    IndexBuilder b;
    b.start(100).start(200).event(SF, 200).end(200).sample(201).end(300);
    const LogCapture log;
    EXPECT_EQ(checked(b, repair), "[100 ]200 [200 SFL200 s201 ]300");
    EXPECT_EQ(log.text(), "");
  }
}

TEST(StraySamples, ChangedPlacesShowInLoggedIndicesAndKeepTheOrder) {
  IndexBuilder b;
  b.start(100).start(200).event(SF, 200).event(EB, 200).end(200).sample(201).start(300);
  b.event(SB, 310);
  const LogCapture log;
  EXPECT_EQ(checked(b, REPAIR), "[100 ]200 [200 SFL200 EBL200 s201 [300 SBL200!");
  EXPECT_EQ(log.text(), "matching EBLINK found for SBLINK index 7 for 310 fix order 4 to 200 \n");
}

TEST(StraySamples, AMillionCostAboutWhatAMillionGoodOnesCost) {
  IndexBuilder b;
  for (UINT32 t = 0; t < 1000000; ++t) b.sample(t);
  b.start(2000000).sample(2000001);
  set_log_function([](const char*) {});
  EXPECT_EQ(checked(b, REPAIR), "[2000000 s2000001");
  set_log_function(nullptr);
}

// ---- blinks ------------------------------------------------------------------------------------

TEST(Blinks, WellPairedOnesStay) {
  IndexBuilder b;
  b.start(10).event(SB, 20).event(SB, 21, R).event(EB, 30).event(EB, 31, R).end(40);
  const LogCapture log;
  EXPECT_EQ(checked(b, REPAIR), "[10 SBL20 SBR21 EBL30 EBR31 ]40");
  EXPECT_EQ(log.text(), "");
}

TEST(Blinks, AnEndBeforeTheFirstStartGetsAStartAtTheBlocksBeginning) {
  IndexBuilder b;
  b.start(10).sample(11).event(EB, 20).sample(21).event(SB, 30).sample(31).event(EB, 40).sample(41);
  const LogCapture log;
  EXPECT_EQ(checked(b, REPAIR), "[10 dSBL10 s11l EBL20* s21 SBL30 s31l EBL40 s41");
  EXPECT_EQ(log.text(), "");
  const GZDItem inserted = b.index.gzdItemList[1];
  EXPECT_EQ(inserted.getFilePos(), -1);
  EXPECT_EQ(inserted.getLastTag(), 0xFFFF);
}

TEST(Blinks, LevelOneInsertsButLeavesTheOrder) {
  IndexBuilder b;
  b.start(10).event(EB, 20, R).sample(21).event(SB, 30, R);
  EXPECT_EQ(checked(b, CHECK), "[10 EBR20* s21 dSBR10 SBR30");
}

TEST(Blinks, ARightEndBeforeALeftStartIsOneEach) {
  // The counters serve both eyes.
  IndexBuilder b;
  b.start(10).event(EB, 20, R).event(SB, 30).event(EB, 40);
  const LogCapture log;
  EXPECT_EQ(checked(b, REPAIR), "[10 dSBR10 EBR20* SBL30 EBL40");
  EXPECT_EQ(log.text(), "");
}

TEST(Blinks, OneEachWithoutAPendingEndIsAnOpenStart) {
  // The start of the first block is still open when the second block's end comes.
  IndexBuilder b;
  b.start(10).event(SB, 20).end(30).start(40).event(EB, 50).event(SB, 60).event(EB, 70).end(80);
  const LogCapture log;
  EXPECT_EQ(checked(b, REPAIR), "[10 SBL20 ]30 [40 EBL50 SBL60 EBL70 ]80");
  EXPECT_EQ(log.text(), "");
}

TEST(Blinks, WithoutABlockNoStartIsInserted) {
  IndexBuilder b;
  b.event(EB, 20).event(SB, 30);
  EXPECT_EQ(checked(b, REPAIR), "EBL20 SBL30");
}

TEST(Blinks, UnpairedOnesAreReported) {
  IndexBuilder b;
  b.start(10).event(SB, 20).event(SB, 30).event(EB, 40).event(EB, 50).event(EB, 60);
  const LogCapture log;
  EXPECT_EQ(checked(b, CHECK), "[10 SBL20 SBL30 EBL40 EBL50 EBL60");
  EXPECT_EQ(log.text(),
            "No matching EBLINK found for SBLINK  30 \n"
            "found EBLINK  with no SBLINK 60 \n");
}

TEST(Blinks, APendingEndTakesAStartWithItWhenRepairing) {
  // Block 1 ends inside nothing but leaves an end pending; the first start of block 2 pairs.
  const auto build = [] {
    IndexBuilder b;
    b.start(10).event(EB, 20).end(30).start(40).event(SB, 50).event(EB, 60).end(70);
    return b;
  };
  const LogCapture log;
  IndexBuilder looked = build();
  EXPECT_EQ(checked(looked, CHECK), "[10 EBL20 ]30 [40 SBL50 EBL60 ]70");
  EXPECT_EQ(log.text(), "");
  IndexBuilder mended = build();
  EXPECT_EQ(checked(mended, REPAIR), "[10 SBL20! EBL20 ]30 [40 EBL60 ]70");
  EXPECT_EQ(log.text(), "matching EBLINK found for SBLINK index 4 for 50 fix order 1 to 20 \n");
}

TEST(Blinks, LoggedIndicesCountEarlierRemovalsAndInsertions) {
  IndexBuilder b;
  b.sample(1).sample(2).start(10).event(EB, 12).event(SB, 14).event(EB, 16).event(EB, 20);
  b.end(30).start(40).event(SB, 50);
  const LogCapture log;
  checkConsistency(b.index, REPAIR, [](UINT32) { return std::string_view(); });
  // Two samples less and one start more: the start at 50 was entry 9.
  EXPECT_EQ(log.lines().back(),
            "matching EBLINK found for SBLINK index 8 for 50 fix order 5 to 20 \n");
}

TEST(Blinks, MoreEndsThanStartsKeepTheStartAsPending) {
  // Two right ends, then a left end and a left start: an end was seen for the left eye, no start is
  // open, so the start waits; a block later a start pairs with it.
  IndexBuilder b;
  b.start(10).event(EB, 12, R).event(EB, 13, R).event(EB, 14).event(SB, 16).end(20);
  b.start(30).event(SB, 40);
  const LogCapture log;
  EXPECT_EQ(checked(b, REPAIR), "[10 EBR12 EBR13 EBL14 SBL16 SBL16! ]20 [30");
  EXPECT_EQ(log.lines().back(),
            "matching EBLINK found for SBLINK index 7 for 40 fix order 4 to 16 \n");
}

TEST(Blinks, AMillionUnpairedOnesAreNoBurden) {
  IndexBuilder b;
  for (UINT32 t = 0; t < 1500000; t += 5) {
    b.start(t).event(EB, t + 1).event(SB, t + 2).end(t + 4);
  }
  set_log_function([](const char*) {});
  checkConsistency(b.index, REPAIR, [](UINT32) { return std::string_view(); });
  set_log_function(nullptr);
  EXPECT_GT(b.index.size(), 1200000u);
}

// ---- the walk against the same edits made in place
// -----------------------------------------------

// The obvious form of the walk: every edit at once, in the list itself.
class InPlaceWalk {
 public:
  explicit InPlaceWalk(std::vector<GZDItem>& list) : items(list) {}

  void run() {
    for (int i = 0; i < static_cast<int>(items.size()); ++i) {
      const GZDItem item = at(i);
      const int e = item.getEye();
      if (item.isRecording()) {
        inside = item.isRecordingStart();
        (inside ? lastStart : lastEnd) = i;
        if (inside) starts = ends = 0;
      } else if (item.isSample() && !inside) {
        if (lastEnd > 0 && lastStart >= 0 &&
            at(lastEnd).getTimeStamp() == at(lastStart).getTimeStamp()) {
          std::rotate(items.begin() + lastStart, items.begin() + lastEnd,
                      items.begin() + lastEnd + 1);
          if (pending >= lastStart && pending < lastEnd) ++pending;
          std::swap(lastStart, lastEnd);
          lastStart = lastEnd + 1;
          inside = true;
          swapped = true;
        } else {
          print_log("stray %u\n", timeAt(i));
          items.erase(items.begin() + i--);
        }
      } else if (item.getItemType() == EB) {
        ++ends;
        if (seen[e]) print_log("end %u\n", timeAt(i));
        seen[e] = true;
        if (open[e]) {
          seen[e] = open[e] = false;
        } else {
          pending = i;
        }
      } else if (item.getItemType() == SB) {
        startBlink(i, e);
      }
    }
  }
  bool swapped = false;

 private:
  GZDItem& at(int i) { return items[static_cast<std::size_t>(i)]; }
  UINT32 timeAt(int i) { return time_of_stamp(at(i).getTimeStamp()); }

  // Behind an inserted start the one at hand comes next, and is examined again.
  void startBlink(int i, int e) {
    ++starts;
    if (starts > ends) {
      if (open[e]) print_log("start %u\n", timeAt(i));
      open[e] = true;
      if (!seen[e]) return;
      seen[e] = open[e] = false;
      if (pending < 0) return;
      print_log("%d %u %d %u\n", i, timeAt(i), pending, timeAt(pending));
      at(i).setFixedTimeStamp(at(pending).getTimeStamp());
      pending = -1;
    } else if (starts != 1 || ends != 1) {
      if (!seen[e]) return;
      if (open[e]) {
        seen[e] = open[e] = false;
      } else {
        pending = i;
      }
    } else if (pending >= 0 && lastStart >= 0) {
      at(pending).markBlinkMerged();
      items.insert(items.begin() + i,
                   GZDItem(-1, SB, at(pending).getSide(), 0xFFFF, at(lastStart).getTimeStamp()));
      pending = -1;
      seen[e] = false;
      starts = ends = 1;
    } else {
      open[e] = true;
    }
  }

  std::vector<GZDItem>& items;
  bool inside = false;
  int lastStart = -1, lastEnd = -1, pending = -1;
  int starts = 0, ends = 0;
  bool open[2] = {}, seen[2] = {};
};

IndexBuilder randomIndex(std::mt19937& random) {
  IndexBuilder b;
  UINT32 time = 100;
  const auto pick = [&random](UINT32 n) { return static_cast<UINT32>(random()) % n; };
  for (UINT32 i = 0, n = 5 + pick(40); i < n; ++i) {
    time += pick(2);
    const ItemSide side = pick(3) == 0 ? SIDE_RIGHT : SIDE_LEFT;
    switch (pick(8)) {
      case 0:
        b.start(time);
        break;
      case 1:
        b.end(time);
        break;
      case 2:
        b.event(SF, time, side);
        break;
      case 3:
      case 4:
        b.event(SB, time, side);
        break;
      case 5:
        b.event(EB, time, side);
        break;
      default:
        b.sample(time);
        break;
    }
  }
  return b;
}

// The numbers in a log line.
std::string numbersOf(const std::string& line) {
  std::string numbers;
  for (const char c : line) numbers += (c >= '0' && c <= '9') ? c : ' ';
  numbers.erase(std::unique(numbers.begin(), numbers.end(),
                            [](char a, char b) { return a == ' ' && b == ' '; }),
                numbers.end());
  return numbers.substr(numbers.find_first_not_of(' '));
}

TEST(BlockWalk, EqualsEditsMadeInPlace) {
  int swaps = 0;
  for (unsigned seed = 0; seed < 5000; ++seed) {
    std::mt19937 random(seed);
    IndexBuilder expected = randomIndex(random);
    random.seed(seed);
    IndexBuilder actual = randomIndex(random);
    std::vector<std::string> expectedLog;
    {
      const LogCapture log;
      sortItems(expected.index);
      MergeEyeEventsOutsideOfTrials(expected.index);
      sortItems(expected.index);
      std::vector<GZDItem> items = itemsOf(expected.index.gzdItemList);
      InPlaceWalk walk(items);
      walk.run();
      if (!walk.swapped) sortItems(items);
      swaps += walk.swapped;
      expected.index.gzdItemList = listOf(items);
      expected.index.itemsChanged();
      mergeBlinksInsideSaccade(expected.index);
      markSamplesInsideBlink(expected.index);
      expectedLog = log.lines();
    }
    const LogCapture log;
    ASSERT_EQ(checked(actual, REPAIR), expected.describe()) << "seed " << seed;
    ASSERT_EQ(log.lines().size(), expectedLog.size()) << "seed " << seed;
    for (std::size_t i = 0; i < expectedLog.size(); ++i) {
      ASSERT_EQ(numbersOf(log.lines()[i]), numbersOf(expectedLog[i])) << "seed " << seed;
    }
  }
  EXPECT_GT(swaps, 100);
}

// ---- blinks inside saccades --------------------------------------------------------------------

TEST(BlinkMerge, AllBlinksOfASaccadeBecomeOne) {
  IndexBuilder b;
  b.start(1).event(SS, 2).event(SB, 3).event(EB, 4).event(SB, 5).event(EB, 6).event(SB, 7);
  b.event(EB, 8).event(ES, 9);
  mergeBlinksInsideSaccade(b.index);
  EXPECT_EQ(b.describe(), "[1 SSL2 SBL3 EBL8* ESL9");
}

TEST(BlinkMerge, AnEndServesOnce) {
  IndexBuilder b;
  b.start(1).event(SS, 2).event(SB, 3).event(EB, 4).event(SB, 5).event(SB, 6).event(EB, 7);
  mergeBlinksInsideSaccade(b.index);
  EXPECT_EQ(b.describe(), "[1 SSL2 SBL3 SBL6 EBL7*");
}

TEST(BlinkMerge, ABlinkThatBeganBeforeTheSaccadeStaysApart) {
  IndexBuilder b;
  b.start(1).event(SB, 2).event(SS, 3).event(EB, 4).event(SB, 5).event(EB, 6).event(ES, 7);
  const std::string before = b.describe();
  mergeBlinksInsideSaccade(b.index);
  EXPECT_EQ(b.describe(), before);
}

TEST(BlinkMerge, EyesAreApartAndOneBlinkStays) {
  IndexBuilder b;
  b.start(1).event(SS, 2).event(SB, 3).event(EB, 4).event(SB, 5, R).event(EB, 6, R).event(ES, 9);
  const std::string before = b.describe();
  mergeBlinksInsideSaccade(b.index);
  EXPECT_EQ(b.describe(), before);
}

TEST(BlinkMerge, BlinksOutsideSaccadesAndAcrossBoundariesStay) {
  IndexBuilder b;
  b.start(1).event(SB, 2).event(EB, 3).event(SB, 4).event(EB, 5).event(SS, 6).event(SB, 7);
  b.event(EB, 8).end(9).start(10).event(SB, 11).event(EB, 12).event(ES, 13);
  const std::string before = b.describe();
  mergeBlinksInsideSaccade(b.index);
  EXPECT_EQ(b.describe(), before);
}

TEST(BlinkMarks, SamplesBetweenStartAndEndAreMarkedByEye) {
  IndexBuilder b;
  b.start(1).sample(1).event(SB, 2).sample(2).event(SB, 3, R).sample(3).event(EB, 4).sample(4);
  b.end(5).start(6).sample(7);
  markSamplesInsideBlink(b.index);
  EXPECT_EQ(b.describe(), "[1 s1 SBL2 s2l SBR3 s3lr EBL4 s4r ]5 [6 s7");
}

// ---- blocks that collide -----------------------------------------------------------------------

TEST(Collision, ConfigurationsAndTheMessagesBehindThemMoveBehindTheEnd) {
  for (const bool repair : {CHECK, REPAIR}) {
    IndexBuilder b;
    b.start(10).message(20, "hello").message(21, "RECCFG CR 1000").sample(22).message(23, "x");
    b.end(25).start(27).message(28, "RECCFG y").sample(29).end(50);
    EXPECT_EQ(checked(b, repair), "[10 m20 s22 ]25 m21 m23 [27 s29 ]50 m28");
  }
}

TEST(Collision, NothingMovesWhenBlocksLieApart) {
  IndexBuilder b;
  b.start(10).message(21, "RECCFG CR 1000").end(25).start(28).end(50);
  EXPECT_EQ(checked(b, REPAIR), "[10 m21 ]25 [28 ]50");
}

TEST(Collision, ABlockWithoutAnEndKeepsItsMessages) {
  IndexBuilder b;
  b.start(10).message(21, "RECCFG a").start(22).message(23, "b").end(30);
  EXPECT_EQ(checked(b, REPAIR), "[10 m21 [22 m23 ]30");
}

}  // namespace
