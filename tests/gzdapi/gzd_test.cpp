// The C interface: opening, walking, fetching, closing, and what it refuses.
#include "gzd.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cstring>
#include <filesystem>
#include <optional>
#include <string_view>

#include "base/config.h"
#include "support/recording_fixture.h"

using namespace gzd;

namespace {

using gzdsynth::EventRecord;
using gzdsynth::GzdWriter;

GzdWriter small_recording(double rate = 500) {
  GzdWriter w(3);
  w.message(990, "hello").start_block({.time = 1000, .rate = rate});
  for (int i = 0; i < 6; ++i) {
    w.gaze_sample(1000 + static_cast<UINT32>(i * 1000 / rate), 10 + i, 20, 900);
  }
  w.button(1003, 0x0101).event(EventRecord(8).start(1000).end(1008));
  w.end_block(1020);
  return w;
}

// Opens what is not a recording: tells what is logged.
std::string refusal_of(const std::string& path, int consistency = 0) {
  CapturedLog log;
  int rv = 77;
  EXPECT_EQ(gzd_open_file(path.c_str(), consistency, 1, 1, &rv), nullptr) << path;
  EXPECT_EQ(rv, -1);
  return log.take();
}

// ---- opening and closing ------------------------------------------------------------------------

TEST(Open, WhatIsNotARegularFile) {
  const ScratchDirectory scratch;
  const std::string fifo = scratch.file("fifo");
  ASSERT_EQ(mkfifo(fifo.c_str(), 0600), 0);
  for (const std::string& path :
       {scratch.file("missing"), scratch.file(""), fifo, std::string("/dev/zero"), std::string()}) {
    EXPECT_EQ(refusal_of(path),
              "The file " + path + " could not be opened\nFile Could not be opened!\n");
  }
}

TEST(Open, WhatIsNotARecording) {
  const ScratchDirectory scratch;
  const std::string badMagic = "Bad magic.  Corrupt gzd file. \n\n";
  EXPECT_EQ(refusal_of(scratch.save("empty", {})), badMagic);
  EXPECT_EQ(refusal_of(scratch.save("noise", gzdsynth::Bytes(5000, 0xA5))), badMagic);
  GzdWriter headOnly;
  headOnly.endp_text("");
  EXPECT_EQ(refusal_of(
                scratch.save("head", gzdsynth::cut_at(headOnly.bytes(), headOnly.header().size()))),
            "error reading gzd file 6\nEnd of file Exception\n");
  EXPECT_EQ(refusal_of(scratch.save("cut", gzdsynth::without_tail(small_recording().bytes(), 2))),
            "error reading gzd file 7a r = 0 \nEnd of file Exception\n");
}

TEST(Open, TheConfigurationIsSharedAndCopied) {
  const ScratchDirectory scratch;
  const std::string path = scratch.save("file", small_recording().bytes());
  char name[300];
  std::strcpy(name, scratch.file("trace").c_str());
  int rv;
  CONFIG config{30.0f, 40.0f, 1, name};
  gzd_close_file(gzd_open_file_ex(path.c_str(), 0, 1, 1, &config, &rv));
  EXPECT_GT(std::filesystem::file_size(name), 0u);
  EXPECT_EQ(default_config().default_rx, 30.0f);
  EXPECT_STREQ(default_config().debug_file_name, name);
  name[0] = '\0';
  EXPECT_STRNE(default_config().debug_file_name, name);
  gzd_close_file(gzd_open_file_ex(path.c_str(), 0, 1, 1, nullptr, &rv));
  EXPECT_EQ(default_config().default_ry, 40.0f);
  config = {50.0f, 60.0f, 0, name};
  gzd_close_file(gzd_open_file_ex(path.c_str(), 0, 1, 1, &config, &rv));
  EXPECT_EQ(default_config().default_rx, 50.0f);
  EXPECT_EQ(default_config().debug_file_name, nullptr);
  gzd_close_file(gzd_open_file(path.c_str(), 0, 1, 1, &rv));
  EXPECT_EQ(default_config().default_rx, 1e8f);
  EXPECT_EQ(default_config().default_ry, 1e8f);
}

TEST(Open, ATraceNeverOverwritesTheRecording) {
  const ScratchDirectory scratch;
  std::string path = scratch.file("traced.gzd");
  GzdWriter().message(1000, "still there").save(path);
  const auto size = std::filesystem::file_size(path);
  CapturedLog log;
  CONFIG config{MISSING_DATA, MISSING_DATA, 1, path.data()};
  int rv = 0;
  GZDFILE* const file = gzd_open_file_ex(path.c_str(), 0, 1, 1, &config, &rv);
  ASSERT_NE(file, nullptr);
  EXPECT_EQ(gzd_get_element_count(file), 1u);
  gzd_close_file(file);
  EXPECT_EQ(std::filesystem::file_size(path), size);
  EXPECT_EQ(log.take(), "The debug file is the recording itself. Nothing is traced \n");
}

const char* const log_of_two_blocks =
    "0 TRACKER_TIME 1 500\n501 in one\n1501 in two\n2001 behind\n9999 Quit logger\n";

TEST(Open, AnEmptyNameMeansNoMessageLog) {
  const ScratchDirectory scratch;
  const std::string path = scratch.save("file", small_recording().bytes());
  const std::string_view text = log_of_two_blocks;
  (void)scratch.save("tq_messages.log", {text.begin(), text.end()});
  CapturedLog log;
  int rv;
  for (const char* name : {"", static_cast<const char*>(nullptr)}) {
    gzd_set_extra_message_file(name);
    GZDFILE* const file = gzd_open_file(path.c_str(), 0, GZD_LOAD_MESSAGE_LOG, 1, &rv);
    ASSERT_NE(file, nullptr);
    EXPECT_EQ(gzd_get_element_count(file), name == nullptr ? 15u : 11u);
    gzd_close_file(file);
    EXPECT_EQ(log.take().empty(), name != nullptr);
  }
}

// Names and identifiers are the caller's: a long one is clipped, a line stays a line.
TEST(Open, LongNamesAreClippedInTheLog) {
  const std::string name(2000, 'n');
  CapturedLog log;
  const auto clipped = [&name](const std::string& before) {
    return before + name.substr(0, 498 - before.size()) + "\n";
  };
  int rv;
  gzd_set_extra_message_file(name.c_str());
  EXPECT_EQ(gzd_open_file(name.c_str(), 0, GZD_LOAD_MESSAGE_LOG, 1, &rv), nullptr);
  gzd_set_extra_message_file(nullptr);
  EXPECT_EQ(log.take(),
            clipped("Log file name ") + clipped("The file ") + "File Could not be opened!\n");
  OpenRecording file(small_recording());
  std::string start = "inPut_type_" + name;
  gzd_set_trial_identifier(file, start.data(), nullptr);
  EXPECT_NE(log.take().find(clipped("Input Split option found :inPut_type_") + "Start Input"),
            std::string::npos);
}

TEST(Open, TheVersionIsAConstant) {
  EXPECT_STREQ(gzd_get_version(), GZD_PROJECT_VERSION " Linux   standalone Jul 15 2026");
}

// ---- walking ------------------------------------------------------------------------------------

TEST(Walk, RecordsOfNoFileAreJudgedByTheirType) {
  ALLF_DATA record{};
  for (const int type : {GZD_END_FIXATION, GZD_MESSAGE, GZD_BUTTON, GZD_SAMPLE, GZD_RECORDING, 0}) {
    record.fe.type = static_cast<INT16>(type);
    EXPECT_EQ(gzd_get_event(&record) != nullptr, type != GZD_SAMPLE && type != GZD_RECORDING)
        << type;
    EXPECT_EQ(gzd_get_sample(&record) != nullptr, type == GZD_SAMPLE);
    EXPECT_EQ(gzd_get_recording(&record) != nullptr, type == GZD_RECORDING);
  }
  EXPECT_EQ(gzd_get_event(nullptr), nullptr);
  EXPECT_EQ(gzd_get_sample(nullptr), nullptr);
  EXPECT_EQ(gzd_get_recording(nullptr), nullptr);
}

TEST(Walk, TwoFilesAtOnce) {
  OpenRecording a(small_recording());
  OpenRecording b(small_recording());
  const ALLF_DATA* message = a.nextOf(GZD_MESSAGE);
  b.nextOf(GZD_SAMPLE);
  EXPECT_STREQ(&message->fe.message->c, "hello");
  EXPECT_EQ(a.nextOf(GZD_SAMPLE)->fs.time, 1000u);
}

// ---- facts --------------------------------------------------------------------------------------

TEST(Facts, PreambleText) {
  GzdWriter bare;
  EXPECT_EQ(gzd_get_preamble_text_length(OpenRecording(bare.clear_preamble())), 0);
  GzdWriter w;
  w.clear_preamble().preamble_line("abc").preamble_line("");
  OpenRecording file(w);
  EXPECT_EQ(gzd_get_preamble_text_length(file), 12);
  char text[20];
  for (int length = 1; length <= 14; ++length) {
    std::memset(text, '#', sizeof text);
    EXPECT_EQ(gzd_get_preamble_text(file, text, length), 0);
    EXPECT_EQ(std::string(text),
              std::string("** abc\n** \n").substr(0, static_cast<std::size_t>(length - 1)));
    EXPECT_EQ(text[length], '#');
  }
  text[0] = '#';
  EXPECT_EQ(gzd_get_preamble_text(file, text, 0), 0);
  EXPECT_EQ(text[0], '#');
}

// ---- trials, bookmarks, camera: that the calls arrive -------------------------------------------

// Log and rate are those of the place jumped to, forwards and backwards, to trials and bookmarks.
TEST(Jumps, TakeLogAndRateWithThem) {
  GzdWriter w(3);
  for (const UINT32 start : {1000u, 2000u}) {
    w.start_block({.time = start, .rate = start == 1000 ? 250.0 : 500.0});
    for (UINT32 i = 0; i < 3; ++i) w.gaze_sample(start + 10 * i, 5, 5, 900);
    w.end_block(start + 25);
  }
  const ScratchDirectory scratch;
  const std::string_view text = log_of_two_blocks;
  const CapturedLog log;
  gzd_set_extra_message_file(scratch.save("log", {text.begin(), text.end()}).c_str());
  OpenRecording file(w, 0, GZD_LOAD_EVENTS | GZD_LOAD_MESSAGE_LOG);
  gzd_set_extra_message_file(nullptr);
  const std::string first = "[1000 s1000 24:1001 s1010 s1020 ]1025 ";
  const std::string second = "[2000 s2000 24:2001 s2010 s2020 ]2025 24:2501";
  BOOKMARK atFirstSample{}, atSecondEnd{};
  file.nextOf(GZD_RECORDING);
  gzd_set_bookmark(file, &atFirstSample);
  while (gzd_get_element_index(file) < 9) file.next();
  gzd_set_bookmark(file, &atSecondEnd);
  const auto expect_place = [&file](int moved, float rate, const std::string& rest) {
    EXPECT_EQ(moved, 0);
    EXPECT_EQ(gzd_get_sample_per_second(file), rate);
    EXPECT_EQ(file.describe(), rest);
  };
  expect_place(gzd_goto_bookmark(file, &atFirstSample), 250.0f, first.substr(6) + second);
  expect_place(gzd_goto_next_bookmark(file), 500.0f, "]2025 24:2501");
  expect_place(gzd_goto_previous_bookmark(file), 250.0f, first.substr(6) + second);
  expect_place(gzd_jump_to_trial(file, 1), 500.0f, second);
  expect_place(gzd_jump_to_trial(file, 0), 250.0f, first + second);
  ASSERT_EQ(gzd_jump_to_trial(file, 1), 0);
  EXPECT_EQ(gzd_jump_to_trial(file, 2), -1);
  EXPECT_EQ(gzd_goto_trial_with_start_time(file, 7), -1);
  EXPECT_EQ(file.describe(), second) << "a jump that is refused moves nothing";
}

// By the scan, by each fetch, and by the merge for each element whose text it looks at; collecting
// trials reports none.
TEST(Walk, UnknownFieldsAreReportedWhereTheyAreMet) {
  GzdWriter w;
  w.start_block({.time = 1000});
  w.event(EventRecord(GZD_MESSAGE).start(1001).raw({1}).text("BEGIN")).gaze_sample(1001, 5, 5, 900);
  w.end_block(1010);
  const ScratchDirectory scratch;
  const std::string_view text = log_of_two_blocks;
  const CapturedLog log;
  gzd_set_extra_message_file(scratch.save("log", {text.begin(), text.end()}).c_str());
  const std::string line = "ERROR: Do not know how to handle 1\n";
  char begin[] = "BEGIN";
  for (const int events : {GZD_LOAD_EVENTS, GZD_LOAD_EVENTS | GZD_LOAD_MESSAGE_LOG}) {
    std::optional<OpenRecording> file;
    EXPECT_EQ(standard_output_of([&] { file.emplace(w, 0, events); }), line);
    EXPECT_EQ(standard_output_of([&] { gzd_set_trial_identifier(*file, begin, nullptr); }), "");
    const std::string byMerge = events == GZD_LOAD_EVENTS ? "" : line;
    EXPECT_EQ(standard_output_of([&] {
                gzd_jump_to_trial(*file, 0);
                while (gzd_get_next_data(*file) != GZD_END_OF_DATA) continue;
              }),
              byMerge);
    EXPECT_EQ(standard_output_of([&] {
                gzd_jump_to_trial(*file, 0);
                file->describe();
              }),
              byMerge + line);
  }
  gzd_set_extra_message_file(nullptr);
}

}  // namespace
