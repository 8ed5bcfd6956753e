// Any bytes as a recording, opened through the public interface; the end of the input chooses how,
// and is the message log.
//
// Asserts: a strict open that succeeds means that a fail-safe one does; the walk has as many
// elements as gzd_get_element_count says; every element of a known kind is fetched, as the kind
// announced; other velocities change nothing else; a record asked for by its bookmark, or by its
// time, is the one that the walk gave; trials lie in the walk and answer for their own times;
// raw-data look-ups leave the walk where it is.
#include "gzd.h"

#include <cstddef>
#include <cstring>

#include "harness.h"
#include "record/EData.h"
#include "support/record_text.h"

using namespace gzd;

namespace {

constexpr std::size_t most_lookups = 64;
constexpr std::uint64_t largest_filling = 100000;

constexpr int consistency_bits =
    3 | GZD_OPEN_FAILSAFE | GZD_OPEN_NO_TIME_SHIFT | GZD_OPEN_MESSAGE_OFFSETS;  // levels take two
// Bits after those of GZD_LOAD_.
enum Choice : unsigned { CHOOSE_SAMPLES = 4, CHOOSE_RESOLUTION = 8, CHOOSE_TRACE = 0xF8 };

struct Settings {
  int consistency, loadEvents, loadSamples;
  unsigned velocities, identifiers;
  bool debug, resolution;
  fuzz::Input log;

  explicit Settings(fuzz::Tail& tail) {
    consistency = tail.byte() & consistency_bits;
    const unsigned load = tail.byte();
    loadEvents = static_cast<int>(load & (GZD_LOAD_EVENTS | GZD_LOAD_MESSAGE_LOG));
    loadSamples = (load & CHOOSE_SAMPLES) != 0 ? 1 : 0;
    debug = (load & CHOOSE_TRACE) == CHOOSE_TRACE;
    resolution = (load & CHOOSE_RESOLUTION) != 0;
    velocities = tail.byte() & GZD_VELOCITY_ALL;
    identifiers = tail.byte() % 6;
    log = tail.block(mergesLog() ? tail.byte() : 0);
  }
  [[nodiscard]] bool mergesLog() const { return (loadEvents & GZD_LOAD_MESSAGE_LOG) != 0; }
};

struct Close {
  void operator()(GZDFILE* file) const { gzd_close_file(file); }
};
using OpenFile = std::unique_ptr<GZDFILE, Close>;

OpenFile open_file(const std::string& path, const Settings& settings, int moreFlags = 0) {
  static fuzz::MemoryFile trace("trace");
  static std::string tracePath = trace.path();
  const float resolution = settings.resolution ? 30.0f : MISSING_DATA;
  CONFIG config{resolution, resolution, settings.debug ? 1 : 0, tracePath.data()};
  int result = 77;
  OpenFile file(gzd_open_file_ex(path.c_str(), settings.consistency | moreFlags,
                                 settings.loadEvents, settings.loadSamples, &config, &result));
  FUZZ_REQUIRE(result == (file ? 0 : -1));
  if (file) gzd_set_velocity_kinds(file.get(), settings.velocities);
  return file;
}

struct Step {
  int code;
  std::string record;  // without what may depend on the samples asked for before
  std::uint32_t time;
};

std::string bytes_of(FSAMPLE s) {
  for (float* field : {s.gxvel, s.gyvel, s.hxvel, s.hyvel, s.rxvel, s.ryvel, s.fgxvel, s.fgyvel,
                       s.fhxvel, s.fhyvel, s.frxvel, s.fryvel})
    field[0] = field[1] = 0.0f;
  constexpr std::size_t padding = offsetof(FSAMPLE, errors) + sizeof s.errors;
  std::memset(reinterpret_cast<char*>(&s) + padding, 0, offsetof(FSAMPLE, eyeInHeadX) - padding);
  if ((s.flags & SMP_PUPIL_SIZE) == 0) s.pa[0] = s.pa[1] = 0.0f;
  return {reinterpret_cast<const char*>(&s), sizeof s};
}

Step take_step(GZDFILE* file) {
  Step step{gzd_get_next_data(file), "", 0};
  if (step.code == GZD_END_OF_DATA) return step;
  ALLF_DATA* const record = gzd_get_float_data(file);
  const bool known =
      step.code == GZD_SAMPLE || step.code == GZD_RECORDING || is_known_event_type(step.code);
  FUZZ_REQUIRE((record != nullptr) == known);
  if (!known) return step;
  const FSAMPLE* const sample = gzd_get_sample(record);
  const FEVENT* const event = gzd_get_event(record);
  FUZZ_REQUIRE((sample != nullptr) == (step.code == GZD_SAMPLE));
  FUZZ_REQUIRE((event != nullptr) == is_known_event_type(step.code));
  FUZZ_REQUIRE((gzd_get_recording(record) != nullptr) == (step.code == GZD_RECORDING));
  step.record = sample != nullptr ? bytes_of(*sample) : text_of(record);
  step.time = sample != nullptr  ? sample->time
              : event != nullptr ? event->sttime
                                 : record->rec.time;
  return step;
}

struct Walked {
  std::vector<Step> steps;
  std::vector<BOOKMARK> marks;  // of some of them
};

Walked walk(GZDFILE* file, const Settings& settings) {
  Walked walked;
  const std::size_t count = gzd_get_element_count(file), stride = 1 + count / most_lookups;
  for (;;) {
    BOOKMARK mark{0};
    const std::size_t place = walked.steps.size();
    const bool marked = place % stride == 0 && gzd_set_bookmark(file, &mark) == 0;
    const Step step = take_step(file);
    if (step.code == GZD_END_OF_DATA) break;
    FUZZ_REQUIRE(!marked || settings.mergesLog() || mark.id == place);
    if (marked) walked.marks.push_back(mark);
    walked.steps.push_back(step);
    FUZZ_REQUIRE(walked.steps.size() <= count);
  }
  FUZZ_REQUIRE(settings.mergesLog() || walked.steps.size() == count);
  FUZZ_REQUIRE(gzd_get_next_data(file) == GZD_END_OF_DATA);
  return walked;
}

void check_other_velocities(const std::string& path, Settings settings,
                            const std::vector<Step>& steps) {
  settings.velocities ^= GZD_VELOCITY_ALL;
  const OpenFile again = open_file(path, settings);
  FUZZ_REQUIRE(again != nullptr);
  const std::vector<Step> other = walk(again.get(), settings).steps;
  FUZZ_REQUIRE(other.size() == steps.size());
  for (std::size_t i = 0; i < steps.size(); ++i)
    FUZZ_REQUIRE(other[i].code == steps[i].code && other[i].record == steps[i].record);
}

// Bookmarks lead back to the elements that were marked, in any order. Times are not shifted: of
// several records, the one fetched first decides about that.
void check_positions(const std::string& path, const Settings& settings, fuzz::Tail choices) {
  if (settings.mergesLog()) return;
  const OpenFile file = open_file(path, settings, GZD_OPEN_NO_TIME_SHIFT);
  FUZZ_REQUIRE(file != nullptr);
  Walked walked = walk(file.get(), settings);
  for (std::size_t n = 0; n < walked.marks.size(); ++n) {
    BOOKMARK& mark = walked.marks[choices.byte() % walked.marks.size()];
    FUZZ_REQUIRE(gzd_goto_bookmark(file.get(), &mark) == 0);
    const Step step = take_step(file.get());
    FUZZ_REQUIRE(step.code == walked.steps[mark.id].code);
    FUZZ_REQUIRE(step.record == walked.steps[mark.id].record);
    const unsigned place = gzd_get_element_index(file.get());
    FUZZ_REQUIRE(place == mark.id + 1);
    ALLF_DATA* const close = gzd_get_sample_close_to_time(file.get(), step.time);
    const FSAMPLE* const sample = gzd_get_sample(close);
    FUZZ_REQUIRE(sample == nullptr || sample->time == step.time);
    FUZZ_REQUIRE(gzd_get_element_index(file.get()) == place);
  }
  for (BOOKMARK& mark : walked.marks) {
    FUZZ_REQUIRE(gzd_free_bookmark(file.get(), &mark) == 0);
    FUZZ_REQUIRE(gzd_goto_bookmark(file.get(), &mark) == -1);
  }
}

void set_identifiers(GZDFILE* file, unsigned choice) {
  static char trialId[] = "TRIALID", trialOk[] = "TRIAL OK";
  static char inputForm[] = "inPut_type_1", two[] = "2", blank[] = "";
  char* const pairs[][2] = {
      {trialId, trialOk}, {trialId, nullptr}, {nullptr, trialOk}, {inputForm, two}, {blank, blank}};
  if (choice > 0) gzd_set_trial_identifier(file, pairs[choice - 1][0], pairs[choice - 1][1]);
}

void check_trial(GZDFILE* file, int number, int count, std::size_t elements) {
  TRIAL header{}, same{};
  FUZZ_REQUIRE(gzd_jump_to_trial(file, number) == 0 && gzd_get_trial_header(file, &header) == 0);
  FUZZ_REQUIRE(header.duration == 0 || header.duration == header.endtime - header.starttime);
  FUZZ_REQUIRE(gzd_get_element_index(file) <= elements);
  FUZZ_REQUIRE(gzd_goto_next_trial(file) == (number + 1 < count ? 0 : -1));
  if (number + 1 < count) FUZZ_REQUIRE(gzd_goto_previous_trial(file) == 0);
  FUZZ_REQUIRE(gzd_get_trial_header(file, &same) == 0);
  FUZZ_REQUIRE(same.starttime == header.starttime && same.endtime == header.endtime);
  FUZZ_REQUIRE(gzd_goto_trial_with_start_time(file, header.starttime) == 0);
  FUZZ_REQUIRE(gzd_get_trial_header(file, &same) == 0 && same.starttime == header.starttime);
  FUZZ_REQUIRE(gzd_goto_trial_with_end_time(file, header.endtime) == 0);
  FUZZ_REQUIRE(gzd_get_trial_header(file, &same) == 0 && same.endtime == header.endtime);
}

void check_trials(GZDFILE* file, std::size_t elements, fuzz::Tail& choices) {
  const int count = gzd_get_trial_count(file);
  FUZZ_REQUIRE(count >= 0 && static_cast<std::size_t>(count) <= elements);
  const unsigned before = gzd_get_element_index(file);
  FUZZ_REQUIRE(gzd_jump_to_trial(file, count) == -1 && gzd_jump_to_trial(file, -1) == -1);
  FUZZ_REQUIRE(gzd_get_element_index(file) == before);
  for (std::size_t n = 0; n < most_lookups / 2 && count > 0; ++n)
    check_trial(file, choices.word() % count, count, elements);
  FUZZ_REQUIRE(gzd_get_trial_count(file) == count);
}

// A display of any shape, possible or not.
void set_up_display(fuzz::Tail& choices) {
  constexpr float values[] = {0.0f, -1.0f, 1e30f, 1e-30f, 100000000.0f, -32768.0f, 200.0f, 1000.0f};
  float v[10];
  for (float& value : v) value = values[choices.byte() % std::size(values)];
  gzd_compute_physical_setup(v[0], v[1], v[2], v[3], v[4], v[5], v[6], v[7], v[8], v[9]);
}

void check_raw_data(GZDFILE* file) {
  for (std::size_t n = 0; n < most_lookups; ++n) {
    const int code = gzd_get_next_data(file);
    if (code == GZD_END_OF_DATA) return;
    ALLF_DATA* const record = gzd_get_float_data(file);
    if (code != GZD_SAMPLE || record == nullptr) continue;
    const unsigned before = gzd_get_element_index(file);
    FSAMPLE sample = record->fs;
    for (const int eye : {GZD_LEFT_EYE, GZD_RIGHT_EYE}) camera_text(file, sample, eye);
    double rx = 0, ry = 0;
    gzd_calculate_ppd(1024, 768, &sample, GZD_LEFT_EYE, &rx, &ry);
    FUZZ_REQUIRE(gzd_get_element_index(file) == before);
  }
}

}  // namespace

FUZZ_TARGET(open_walk) {
  static fuzz::MemoryFile recording("recording"), log("log");
  fuzz::Tail tail(input);
  const Settings settings(tail);
  fuzz::Tail choices(tail.block(64));
  recording.set(fuzz::recording_from(tail));
  if (fuzz::is_too_large(recording.path(), largest_filling)) return;
  log.set(settings.log);
  gzd_set_extra_message_file(log.path().c_str());
  const OpenFile file = open_file(recording.path(), settings);
  if (!file) return;
  FUZZ_REQUIRE(open_file(recording.path(), settings, GZD_OPEN_FAILSAFE) != nullptr);
  FUZZ_REQUIRE(gzd_get_float_data(file.get()) == nullptr);
  const std::vector<Step> steps = walk(file.get(), settings).steps;
  check_other_velocities(recording.path(), settings, steps);
  check_positions(recording.path(), settings, choices);
  set_identifiers(file.get(), settings.identifiers);
  check_trials(file.get(), steps.size(), choices);
  set_up_display(choices);
  check_raw_data(file.get());
}
