// Recordings of 10 MB that are as hard as they can be, each of one kind of trouble: opened with
// repairs, trials counted, walked. The memory that takes stays within the index plus a constant.
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <filesystem>

#include "GzdWriter.h"
#include "gzd.h"

namespace {

using gzdsynth::EventRecord;
using gzdsynth::GzdWriter;

constexpr std::uint64_t size_of_file = 10'000'000;
constexpr std::uint32_t first_time = 1000;

// Bytes an element of the index takes, and how often it may be held at once: while repairs build
// the new one beside the old one, and for the lists of what they insert.
constexpr double element_bytes = 24;
constexpr double held_at_once = 2.5;
constexpr double constant_bytes = 16.0 * 1024 * 1024;

bool wants_more(const GzdWriter& w) {
  return w.body_size() < size_of_file;
}

void put_sample(GzdWriter& w, std::uint32_t time) {
  w.gaze_sample(time, 512, 384, 900);
}

void put_blink(GzdWriter& w, unsigned type, std::uint32_t time) {
  EventRecord record(type);
  record.start(time);
  if (type == GZD_END_BLINK) record.end(time);
  w.event(record);
}

// ---- the kinds of trouble -----------------------------------------------------------------------

void stray_samples(GzdWriter& w) {
  std::uint32_t time = first_time;
  while (wants_more(w)) put_sample(w, time++);
  w.start_block({.time = time}).end_block(time + 1);
}

void unpaired_blinks(GzdWriter& w) {
  w.start_block({.time = first_time});
  std::uint32_t time = first_time;
  for (; wants_more(w); ++time) put_blink(w, time % 3 == 0 ? GZD_END_BLINK : GZD_START_BLINK, time);
  w.end_block(time);
}

void blinks_in_one_saccade(GzdWriter& w) {
  w.start_block({.time = first_time}).event(EventRecord(GZD_START_SACCADE).start(first_time));
  std::uint32_t time = first_time;
  for (; wants_more(w); time += 2) {
    put_blink(w, GZD_START_BLINK, time);
    put_blink(w, GZD_END_BLINK, time + 1);
  }
  w.event(EventRecord(GZD_END_SACCADE).start(first_time).end(time)).end_block(time);
}

void blocks_back_to_back(GzdWriter& w) {
  for (std::uint32_t time = first_time; wants_more(w); time += 4) {
    w.start_block({.time = time}).message(time, "RECCFG CR 1000").message(time + 1, "second");
    put_sample(w, time + 1);
    w.end_block(time + 2);
  }
}

void blocks_of_one_time(GzdWriter& w) {
  while (wants_more(w)) {
    w.start_block({.time = first_time});
    put_sample(w, first_time);
    w.end_block(first_time);
  }
}

void long_messages(GzdWriter& w) {
  const std::string text(3000, 'x');
  w.start_block({.time = first_time});
  std::uint32_t time = first_time;
  for (int id = 1; wants_more(w); ++id) w.long_message(time++, id, text);
  w.end_block(time);
}

void one_endless_message(GzdWriter& w) {
  w.start_block({.time = first_time}).long_message(first_time, 1, "begin " + std::string(900, 'x'));
  while (wants_more(w)) w.message(first_time, "!V LONGMS_CONT 1_" + std::string(450, 'y'));
  w.end_block(first_time + 1);
}

// More gaps, each nearly the longest, than all fillings of a file may hold together.
void huge_gaps(GzdWriter& w) {
  std::uint32_t time = first_time;
  w.start_block({.time = time});
  for (std::uint32_t i = 1; wants_more(w); ++i) put_sample(w, time += i % 3 == 0 ? 3000 : 1);
  w.end_block(time);
}

void late_first_samples(GzdWriter& w) {
  for (std::uint32_t time = first_time; wants_more(w); time += 9100) {
    w.start_block({.time = time});
    put_sample(w, time + 9000);
    w.end_block(time + 9001);
  }
}

void events_of_one_time(GzdWriter& w) {
  w.start_block({.time = first_time});
  while (wants_more(w)) w.button(first_time + 1, 0x0101);
  w.end_block(first_time + 2);
}

// A start and an end of blink of different eyes come before each other.
void endless_circle(GzdWriter& w) {
  w.start_block({.time = first_time});
  while (wants_more(w)) {
    w.event(EventRecord(GZD_START_BLINK, GZD_LEFT_EYE).start(first_time));
    w.event(EventRecord(GZD_END_BLINK, GZD_RIGHT_EYE).start(first_time).end(first_time));
    w.message(first_time, "between");
    put_sample(w, first_time);
  }
  w.end_block(first_time + 2);
}

// Of time running back, every window has to be sorted.
void time_running_back(GzdWriter& w) {
  w.start_block({.time = first_time});
  for (std::uint32_t time = 100'000'000; wants_more(w); --time) put_sample(w, time);
  w.end_block(100'000'001);
}

// The shortest events there are.
void three_byte_events(GzdWriter& w) {
  while (wants_more(w)) w.raw({GZD_BUTTON, 0, 0});
}

struct Trouble {
  const char* name;
  void (*write)(GzdWriter&);
  double elementBytes = element_bytes * held_at_once;
};

constexpr Trouble all_troubles[] = {
    {"StraySamples", stray_samples},
    {"UnpairedBlinks", unpaired_blinks},
    {"BlinksInOneSaccade", blinks_in_one_saccade},
    {"BlocksBackToBack", blocks_back_to_back},
    {"BlocksOfOneTime", blocks_of_one_time},
    {"LongMessages", long_messages},
    {"OneEndlessMessage", one_endless_message},
    {"HugeGaps", huge_gaps},
    {"LateFirstSamples", late_first_samples},
    {"EventsOfOneTime", events_of_one_time},
    {"EndlessCircle", endless_circle},
    {"TimeRunningBack", time_running_back},
    {"ThreeByteEvents", three_byte_events, 16},
};

// ---- opening ------------------------------------------------------------------------------------

struct Cost {
  bool opened = false;
  unsigned elements = 0;
  long peak_kib = 0;
  double seconds = 0;
};

void swallow(const char* /*message*/) {}

unsigned open_and_walk(const std::string& path) {
  if (std::freopen("/dev/null", "w", stdout) == nullptr) std::_Exit(1);
  gzd_set_log_function(reinterpret_cast<void*>(&swallow));
  int result = 0;
  GZDFILE* const file =
      gzd_open_file(path.c_str(), GZD_CONSISTENCY_REPAIR, GZD_LOAD_EVENTS, 1, &result);
  if (file == nullptr) return 0;
  gzd_get_trial_count(file);
  gzd_set_velocity_kinds(file, GZD_VELOCITY_NONE);
  while (gzd_get_next_data(file) != GZD_END_OF_DATA) gzd_get_float_data(file);
  const unsigned elements = gzd_get_element_count(file);
  gzd_close_file(file);
  return elements;
}

// In a process of its own, whose memory is that of the opening.
Cost measure(const std::string& path) {
  int ends[2];
  if (pipe(ends) != 0) return {};
  const pid_t child = fork();
  if (child == 0) {
    const unsigned elements = open_and_walk(path);
    const bool sent = write(ends[1], &elements, sizeof elements) == sizeof elements;
    std::_Exit(sent && elements > 0 ? 0 : 1);
  }
  close(ends[1]);
  Cost cost;
  const bool received = read(ends[0], &cost.elements, sizeof cost.elements) == sizeof cost.elements;
  close(ends[0]);
  int status = 0;
  rusage used{};
  const bool ended = wait4(child, &status, 0, &used) == child;
  cost.opened = received && ended && status == 0;
  cost.peak_kib = used.ru_maxrss;
  cost.seconds = static_cast<double>(used.ru_utime.tv_sec + used.ru_stime.tv_sec) +
                 static_cast<double>(used.ru_utime.tv_usec + used.ru_stime.tv_usec) * 1e-6;
  return cost;
}

class WorstFile : public testing::TestWithParam<Trouble> {};

TEST_P(WorstFile, OpensInMemoryOfItsIndex) {
  const std::filesystem::path path =
      std::filesystem::temp_directory_path() /
      ("gzd-worst-" + std::to_string(getpid()) + GetParam().name + ".gzd");
  GzdWriter writer(3);
  writer.stream_to(path);
  GetParam().write(writer);
  writer.finish();
  const Cost cost = measure(path);
  std::filesystem::remove(path);
  ASSERT_TRUE(cost.opened);
  const double used = static_cast<double>(cost.peak_kib) * 1024;
  RecordProperty("elements", static_cast<int>(cost.elements));
  RecordProperty("peak_kib", static_cast<int>(cost.peak_kib));
  RecordProperty("cpu_ms", static_cast<int>(cost.seconds * 1000));
  const double fileRecords =
      static_cast<double>(size_of_file) / 7;  // those taken out are held first
  const double held = std::max(static_cast<double>(cost.elements), fileRecords);
  EXPECT_LT(used, constant_bytes + held * GetParam().elementBytes);
}

std::string name_of(const testing::TestParamInfo<Trouble>& trouble) {
  return trouble.param.name;
}

INSTANTIATE_TEST_SUITE_P(Troubles, WorstFile, testing::ValuesIn(all_troubles), name_of);

}  // namespace
