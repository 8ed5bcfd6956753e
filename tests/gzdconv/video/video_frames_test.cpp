// Frame tables, and what is refused of them.
#include "video/video_frames.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <climits>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

#include "video/frame_table.h"

using namespace gzdconv;

namespace {

std::string little_endian(std::uint64_t value, int bytes) {
  std::string text;
  for (int i = 0; i < bytes; ++i) text.push_back(static_cast<char>(value >> (8 * i) & 0xFF));
  return text;
}

std::string record_bytes(const AVIGZDTime& record) {
  return little_endian(record.frame_word, 4) +
         little_endian(static_cast<std::uint32_t>(record.entry_time), 4) +
         little_endian(record.offset_word, 2) + "\x7F\x7F";
}

std::string table_bytes(const std::vector<AVIGZDTime>& records) {
  std::string bytes = little_endian(records.size(), 4) + little_endian(0xAE5A1000, 4);
  for (const AVIGZDTime& record : records) bytes += record_bytes(record);
  return bytes;
}

AVIGZDTime frame(int number, int frame_time) {
  return {number, false, frame_time, frame_time, false, false};
}

class VideoFramesTest : public testing::Test {
 protected:
  VideoFramesTest() {
    char name[] = "/tmp/video_frames_XXXXXX";
    folder = mkdtemp(name);
  }
  ~VideoFramesTest() override {
    closeLookupTable();
    std::filesystem::remove_all(folder);
  }

  void save(const std::string& name, const std::string& bytes) const {
    FILE* const file = std::fopen((folder + "/" + name).c_str(), "wb");
    std::fwrite(bytes.data(), 1, bytes.size(), file);
    std::fclose(file);
  }

  // Saves and opens the table of session 1; returns what was printed.
  std::string open_bytes(const std::string& bytes, int expected) {
    save("trial1.ett", bytes);
    testing::internal::CaptureStdout();
    EXPECT_EQ(openLookupTable(recording().c_str(), 1, 1), expected);
    return testing::internal::GetCapturedStdout();
  }

  void open_frames(const std::vector<AVIGZDTime>& records) { open_bytes(table_bytes(records), 0); }

  std::string recording() const { return folder + "/trial.gzd"; }

  std::string folder;
};

TEST(FrameRecord, OffsetsAndFlagsSurvivePacking) {
  const AVIGZDTime same(7, true, 5000, 5000, false, true);
  EXPECT_EQ(same.offset_word, 0x2000 | 0x8000);
  EXPECT_EQ(same.frameTime(), 5000);
  EXPECT_EQ(same.frameNumber(), 7);
  EXPECT_EQ(same.field(), 1);
  EXPECT_EQ(same.firstMarker(), 0);
  EXPECT_EQ(same.secondMarker(), 1);
  EXPECT_EQ(AVIGZDTime(1, false, 5000, 5017, true, false).offset_word, 17 | 0x4000);
  EXPECT_EQ(AVIGZDTime(1, false, 5000, 4983, false, false).frameTime(), 4983);
  AVIGZDTime damaged;
  damaged.entry_time = INT_MAX;
  damaged.offset_word = 1;
  EXPECT_EQ(damaged.frameTime(), INT_MIN);
}

TEST_F(VideoFramesTest, LoadsAndTellsSo) {
  const std::string base = folder + "/trial";
  EXPECT_EQ(open_bytes(table_bytes({frame(1, 100)}), 0),
            "Loading ett file " + base + "1.ett \nDone Loading ett file " + base + "1.ett \n");
  EXPECT_STREQ(getCurrentSessionName(), "trial");
}

TEST_F(VideoFramesTest, NamesThatAreNoRecordings) {
  open_frames({frame(3, 100)});
  testing::internal::CaptureStdout();
  EXPECT_EQ(openLookupTable(".gzd", 1, 1), -1);
  EXPECT_EQ(openLookupTable("trial.asc", 1, 1), -1);
  EXPECT_EQ(openLookupTable("", 1, 1), -1);
  EXPECT_EQ(testing::internal::GetCapturedStdout(),
            "given gzd file is not valid .gzd \ngiven gzd file is not valid trial.asc \n"
            "given gzd file is not valid  \n");
  EXPECT_EQ(openLookupTable((folder + "/trial.GZD").c_str(), 1, 0), 0);
}

TEST_F(VideoFramesTest, DamagedTablesLeaveNone) {
  const auto expect_refused = [this](const std::string& bytes, const std::string& reason) {
    open_frames({frame(3, 100)});
    EXPECT_TRUE(open_bytes(bytes, -1).ends_with(reason + "\n"));
    EXPECT_EQ(getNextFrameTime(), -1);
    EXPECT_EQ(getCurrentSessionName(), nullptr);
  };
  const std::string count_lost = "Read Error. Cannot read the number of records";
  const std::string magic_lost = "Bad magic! aborting read!!! ";
  const std::string magic = little_endian(0xAE5A1000, 4);
  expect_refused("", count_lost);
  expect_refused(std::string("\1\0", 2), count_lost);
  expect_refused(little_endian(0xFFFFFFFF, 4) + magic, count_lost);
  expect_refused(little_endian(1, 4), magic_lost);
  expect_refused(little_endian(1, 4) + "abcd" + std::string(12, 'x'), magic_lost);
  const std::string one = record_bytes(frame(1, 10));
  expect_refused(little_endian(INT_MAX, 4) + magic + one,
                 "Read Error. Cannot read record 1! Aborting....");
  expect_refused(little_endian(1, 4) + magic + one.substr(0, 11),
                 "Read Error. Cannot read record 0! Aborting....");
}

TEST_F(VideoFramesTest, FrameTimesInOrder) {
  open_frames(
      {frame(1, 100), frame(2, 140), frame(2, 133), frame(3, 166), frame(3, 166), frame(4, 200)});
  std::vector<int> times, numbers;
  EXPECT_EQ(getLastFrameNumber(), -1);
  for (int i = 0; i < 5; ++i) {
    times.push_back(getNextFrameTime());
    numbers.push_back(getLastFrameNumber());
  }
  EXPECT_EQ(times, (std::vector<int>{100, 133, 166, 200, -1}));
  EXPECT_EQ(numbers, (std::vector<int>{1, 2, 3, 4, -1}));
  open_frames({frame(9, 50)});
  EXPECT_EQ(getNextFrameTime(), 50);
  closeLookupTable();
  EXPECT_EQ(getLastFrameNumber(), -1);
  EXPECT_EQ(getNextFrameTime(), -1);
}

TEST_F(VideoFramesTest, FrameNearATime) {
  open_frames({frame(1, 1000), frame(2, 1100), frame(3, 1200)});
  const auto find = findFrameNumberForGZDTimeInCurrentLookupTable;
  EXPECT_EQ(find(999), -1);
  EXPECT_EQ(find(1030), 1);
  EXPECT_EQ(find(1031), -1);
  EXPECT_EQ(find(1070), 2);
  EXPECT_EQ(find(1130), 2);
  EXPECT_EQ(find(1200), 3);
  EXPECT_EQ(find(1201), -1);
  open_frames({});
  EXPECT_EQ(find(0), -1);
}

// Whatever the times, a search ends inside the table.
TEST_F(VideoFramesTest, EntriesByExactTimeAndField) {
  const auto entry = [](int number, bool field, int time) {
    return AVIGZDTime(number, field, time, time, false, false);
  };
  AVIGZDTimeLookupTime table(1);
  FILE* const file = std::tmpfile();
  const std::string bytes =
      table_bytes({entry(1, false, 10), entry(2, false, 20), entry(3, true, 20), entry(4, true, 20),
                   entry(5, true, 30)});
  std::fwrite(bytes.data(), 1, bytes.size(), file);
  std::rewind(file);
  ASSERT_TRUE(table.read(file));
  const auto number_of = [](const AVIGZDTime* record) {
    return record != nullptr ? record->frameNumber() : -1;
  };
  struct Case {
    int time, field, expected;
  };
  for (const Case& c : {Case{20, -1, 2}, Case{20, 0, 2}, Case{20, 1, 3}, Case{10, 1, 1},
                        Case{30, 0, 5}, Case{15, -1, -1}, Case{5, -1, -1}, Case{31, -1, -1}}) {
    EXPECT_EQ(number_of(table.findAVIGZDEntry(c.time, c.field)), c.expected) << c.time;
    EXPECT_EQ(number_of(table.secfindAVIGZDEntry(c.time, c.field)), c.expected) << c.time;
  }
  EXPECT_EQ(number_of(table.getNextEntry()), 1);
  EXPECT_EQ(number_of(table.getNextEntry()), 2);
  table.stepBack();
  EXPECT_EQ(number_of(table.getNextEntry()), 2);
  std::fclose(file);
}

// The other session's table is looked for after a backslash, on every platform.
TEST_F(VideoFramesTest, SwitchingSessions) {
  EXPECT_EQ(findFrameNumberForGZDTime(1, 100), -1);
  open_frames({frame(3, 100)});
  EXPECT_EQ(findFrameNumberForGZDTime(1, 100), 3);
  EXPECT_EQ(findFrameNumberForGZDTime(2, 100), -1);
  EXPECT_EQ(findFrameNumberForGZDTime(1, 100), 3);
  const std::string other = folder + "\\trial2.ett";
  FILE* const file = std::fopen(other.c_str(), "wb");
  const std::string bytes = table_bytes({frame(8, 100)});
  std::fwrite(bytes.data(), 1, bytes.size(), file);
  std::fclose(file);
  EXPECT_EQ(findFrameNumberForGZDTime(2, 100), 8);
  std::filesystem::remove(other);
}

}  // namespace
