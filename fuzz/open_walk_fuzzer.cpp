// Any bytes as a recording, opened through the public interface; the end of the input chooses how,
// and is the message log.
//
// Asserts: a strict open that succeeds means that a fail-safe one does; the walk has as many
// elements as gzd_get_element_count says, at ascending positions and, unchecked, in order of time;
// every element of a known kind is fetched, as the kind announced; a second open gives the same
// walk, with and without velocities; a record asked for by its position, or by its time, is the one
// that the walk gave; trials lie in the walk, answer for their own times and count as many as can
// be reached; raw-data look-ups leave the walk where it is.
#include <cstddef>
#include <memory>
#include <vector>

#include "fuzz_support.h"
#include "gzd.h"
#include "record_frames.h"

namespace {

constexpr std::size_t LONGEST_WALK = 60000;
constexpr std::uint64_t LARGEST_FILLING = 100000;
constexpr std::size_t MOST_LOOKUPS = 64;
constexpr unsigned WINDOWS_OVERLAP_FROM = 20000;

// ---- what the input chooses ---------------------------------------------------------------------

struct Settings {
  int consistency = 0, loadEvents = 0, loadSamples = 0;
  unsigned velocityKinds = 0;
  unsigned identifiers = 0;
  std::uint32_t seed = 0;
  bool debug = false;
  bool resolution = false;
  fuzz::Input log;

  explicit Settings(fuzz::Tail& tail) {
    consistency = tail.byte() & 31;
    const unsigned load = tail.byte();
    loadEvents = static_cast<int>(load & 3);
    loadSamples = load & 4 ? 1 : 0;
    debug = (load & 0xF8) == 0xF8;
    resolution = (load & 8) != 0;
    velocityKinds = tail.byte() & GZD_VELOCITY_ALL;
    identifiers = tail.byte() % 6;
    seed = tail.word();
    const std::size_t logLength = tail.word() % 4096;
    if (mergesLog()) log = tail.block(logLength);
  }
  [[nodiscard]] bool mergesLog() const { return (loadEvents & GZD_LOAD_MESSAGE_LOG) != 0; }
  [[nodiscard]] int level() const { return consistency & 3; }
};

// ---- records as digests -------------------------------------------------------------------------

// All fields, the padding left out.
std::uint64_t whole_digest_of(const FSAMPLE& s) {
  constexpr std::size_t behind_words = offsetof(FSAMPLE, errors) + sizeof s.errors;
  constexpr std::size_t behind_padding = offsetof(FSAMPLE, eyeInHeadX);
  const char* const bytes = reinterpret_cast<const char*>(&s);
  return fuzz::Digest()
      .addBytes(bytes, behind_words)
      .addBytes(bytes + behind_padding, sizeof s - behind_padding)
      .value();
}

// Only what does not depend on the samples asked for before: no velocities, which may reach beyond
// a window that was not read, and no pupil sizes taken over from another sample.
std::uint64_t digest_of(FSAMPLE s) {
  for (float* field : {s.gxvel, s.gyvel, s.hxvel, s.hyvel, s.rxvel, s.ryvel, s.fgxvel, s.fgyvel,
                       s.fhxvel, s.fhyvel, s.frxvel, s.fryvel})
    field[0] = field[1] = 0.0f;
  if ((s.flags & SMP_PUPIL_SIZE) == 0) s.pa[0] = s.pa[1] = 0.0f;
  return whole_digest_of(s);
}

std::uint64_t digest_of(const FEVENT& e) {
  constexpr std::size_t behind_words = offsetof(FEVENT, parsedby) + sizeof e.parsedby;
  constexpr std::size_t first_pose = offsetof(FEVENT, headInSpaceX_start);
  constexpr std::size_t behind_pose = offsetof(FEVENT, headPositionZ_avg) + sizeof(float);
  const char* const bytes = reinterpret_cast<const char*>(&e);
  fuzz::Digest digest;
  // `time` and `type` are apart from `read` and what follows by no padding.
  digest.addBytes(bytes, behind_words).addBytes(bytes + first_pose, behind_pose - first_pose);
  if (e.message == nullptr) return digest.value();
  const std::size_t length = std::strlen(&e.message->c);
  FUZZ_REQUIRE(e.message->len >= 0);
  return digest.add(e.message->len).addBytes(&e.message->c, length).value();
}

std::uint64_t digest_of(const RECORDINGS& r) {
  return fuzz::Digest().addBytes(&r, offsetof(RECORDINGS, eye) + sizeof r.eye).value();
}

struct Step {
  int code = 0;
  bool fetched = false;
  bool fromLog = false;
  std::uint32_t time = 0;
  std::uint64_t digest = 0;  // of what never depends on other samples
  std::uint64_t wholeDigest = 0;

  [[nodiscard]] bool sameAs(const Step& other) const {
    return code == other.code && fetched == other.fetched && digest == other.digest;
  }
};

bool is_event(int code) {
  return (code >= GZD_START_PARSE && code <= GZD_BREAK_PARSE) ||
         (code >= GZD_START_SAMPLES && code <= GZD_END_EVENTS) || code == GZD_MESSAGE ||
         code == GZD_BUTTON || code == GZD_INPUT;
}

void describe(Step& step, ALLF_DATA* record) {
  step.fetched = true;
  const FSAMPLE* const sample = gzd_get_sample(record);
  const RECORDINGS* const recording = gzd_get_recording(record);
  const FEVENT* const event = gzd_get_event(record);
  FUZZ_REQUIRE((sample != nullptr) == (step.code == GZD_SAMPLE));
  FUZZ_REQUIRE((recording != nullptr) == (step.code == GZD_RECORDING));
  FUZZ_REQUIRE((event != nullptr) == is_event(step.code));
  if (sample != nullptr) {
    step.time = sample->time;
    step.digest = digest_of(*sample);
    step.wholeDigest = whole_digest_of(*sample);
  } else if (recording != nullptr) {
    step.time = recording->time;
    step.wholeDigest = step.digest = digest_of(*recording);
  } else {
    FUZZ_REQUIRE(event != nullptr && event->type == step.code);
    step.time = event->sttime;
    step.wholeDigest = step.digest = digest_of(*event);
  }
}

// ---- an open file -------------------------------------------------------------------------------

struct Close {
  void operator()(GZDFILE* file) const { gzd_close_file(file); }
};
using File = std::unique_ptr<GZDFILE, Close>;

File open_file(const std::string& path, const Settings& settings, int moreFlags = 0) {
  static fuzz::MemoryFile trace("trace");
  static std::string tracePath = trace.path();
  CONFIG config{MISSING_DATA, MISSING_DATA, settings.debug ? 1 : 0, tracePath.data()};
  if (settings.resolution) config.default_rx = config.default_ry = 30.0f;
  int result = 99;
  File file(gzd_open_file_ex(path.c_str(), settings.consistency | moreFlags, settings.loadEvents,
                             settings.loadSamples, &config, &result));
  FUZZ_REQUIRE(result == (file ? 0 : -1));
  if (file) gzd_set_velocity_kinds(file.get(), settings.velocityKinds);
  return file;
}

Step take_step(GZDFILE* file) {
  Step step;
  step.code = gzd_get_next_data(file);
  if (step.code == GZD_END_OF_DATA) return step;
  if (ALLF_DATA* const record = gzd_get_float_data(file)) describe(step, record);
  const bool canBeFetched =
      step.code == GZD_SAMPLE || step.code == GZD_RECORDING || is_event(step.code);
  FUZZ_REQUIRE(step.fetched == canBeFetched);
  return step;
}

std::vector<Step> walk(GZDFILE* file) {
  std::vector<Step> steps;
  const unsigned count = gzd_get_element_count(file);
  for (;;) {
    const Step step = take_step(file);
    if (step.code == GZD_END_OF_DATA) break;
    steps.push_back(step);
    FUZZ_REQUIRE(steps.size() <= count);
  }
  FUZZ_REQUIRE(gzd_get_next_data(file) == GZD_END_OF_DATA);
  return steps;
}

// ---- checks -------------------------------------------------------------------------------------

void check_facts(GZDFILE* file) {
  FUZZ_REQUIRE(gzd_get_float_data(file) == nullptr);
  FUZZ_REQUIRE(gzd_get_element_index(file) == 0);
  FUZZ_REQUIRE(gzd_get_sample_per_second(file) == 0.0f);
  FUZZ_REQUIRE(gzd_get_sample_interval(file) == 0);
  const int generation = gzd_get_ovilo_revision(file);
  FUZZ_REQUIRE(generation >= 1 && generation <= 4);
  const int length = gzd_get_preamble_text_length(file);
  FUZZ_REQUIRE(length >= 0 && length <= 2000);
  std::vector<char> text(static_cast<std::size_t>(length) + 2, 'x');
  gzd_get_preamble_text(file, text.data(), length + 1);
  FUZZ_REQUIRE(text.back() == 'x' && static_cast<int>(std::strlen(text.data())) < length + 1);
  const int inputs = gzd_get_input_data_availibity(file);
  FUZZ_REQUIRE(inputs >= 0 && inputs <= 3);
  const int filter = get_filter_level_for_sample(file);
  FUZZ_REQUIRE(filter >= 0 && filter <= 15);
  FUZZ_REQUIRE(gzd_get_start_trial_identifier(file) == nullptr);
  FUZZ_REQUIRE(gzd_get_end_trial_identifier(file) == nullptr);
}

// Rate and intervals of the block that the walk is in agree.
void check_rate(GZDFILE* file) {
  const float rate = gzd_get_sample_per_second(file);
  FUZZ_REQUIRE(rate == 0.0f || rate == 250.0f || rate == 500.0f || rate == 1000.0f ||
               rate == 2000.0f);
  const float interval = rate > 0.0f ? 1000.0f / rate : 0.0f;
  FUZZ_REQUIRE(gzd_get_sample_interval_ex(file) == interval);
  FUZZ_REQUIRE(gzd_get_sample_interval(file) == static_cast<int>(interval));
}

void check_count(GZDFILE* file, const std::vector<Step>& steps, const Settings& settings) {
  if (settings.mergesLog()) return;
  FUZZ_REQUIRE(steps.size() == gzd_get_element_count(file));
  FUZZ_REQUIRE(gzd_get_element_index(file) == steps.size());
}

// Unchecked, the index is in order of time; behind an event's start may stand a time of its own.
void check_order(const std::vector<Step>& steps, const Settings& settings) {
  const bool shifts = (settings.consistency & GZD_OPEN_NO_TIME_SHIFT) == 0;
  if (settings.level() != GZD_CONSISTENCY_NONE || settings.mergesLog() || shifts) return;
  if (steps.size() >= WINDOWS_OVERLAP_FROM) return;
  std::uint32_t last = 0;
  for (const Step& step : steps) {
    if (step.code != GZD_SAMPLE) continue;
    FUZZ_REQUIRE(step.time >= last);
    last = step.time;
  }
}

void check_second_open(const std::string& path, const Settings& settings,
                       const std::vector<Step>& steps) {
  const File again = open_file(path, settings);
  FUZZ_REQUIRE(again != nullptr);
  const std::vector<Step> other = walk(again.get());
  FUZZ_REQUIRE(other.size() == steps.size());
  for (std::size_t i = 0; i < steps.size(); ++i) {
    FUZZ_REQUIRE(other[i].sameAs(steps[i]));
    FUZZ_REQUIRE(other[i].wholeDigest == steps[i].wholeDigest);
  }
}

// The direct way of a sample and the way through the queue give the same fields.
void check_without_velocities(const std::string& path, Settings settings,
                              const std::vector<Step>& steps) {
  settings.velocityKinds = settings.velocityKinds == 0 ? unsigned{GZD_VELOCITY_ALL} : 0;
  const File again = open_file(path, settings);
  FUZZ_REQUIRE(again != nullptr);
  const std::vector<Step> other = walk(again.get());
  FUZZ_REQUIRE(other.size() == steps.size());
  for (std::size_t i = 0; i < steps.size(); ++i) FUZZ_REQUIRE(other[i].sameAs(steps[i]));
}

void check_data_functions(GZDFILE* file, const Step& step) {
  const FSAMPLE* const sample = gzd_get_sample_data(file);
  if (sample != nullptr) FUZZ_REQUIRE(digest_of(*sample) == step.digest);
  const RECORDINGS* const recording = gzd_get_recording_data(file);
  if (recording != nullptr) FUZZ_REQUIRE(digest_of(*recording) == step.digest);
  const FEVENT* const event = gzd_get_event_data(file);
  if (event != nullptr) FUZZ_REQUIRE(digest_of(*event) == step.digest);
  const int kinds = (sample != nullptr) + (recording != nullptr) + (event != nullptr);
  FUZZ_REQUIRE(kinds == (step.fetched ? 1 : 0));
}

struct Mark {
  BOOKMARK mark;
  std::size_t place;
};

// Walks on, marking some of the elements.
std::vector<Step> walk_and_mark(GZDFILE* file, std::vector<Mark>& marks) {
  std::vector<Step> steps;
  const std::size_t stride = 1 + gzd_get_element_count(file) / MOST_LOOKUPS;
  for (;;) {
    BOOKMARK mark{0};
    const bool marked = steps.size() % stride == 0 && gzd_set_bookmark(file, &mark) == 0;
    const Step step = take_step(file);
    if (step.code == GZD_END_OF_DATA) break;
    if (marked) {
      FUZZ_REQUIRE(mark.id == steps.size());
      marks.push_back({mark, steps.size()});
    }
    steps.push_back(step);
  }
  FUZZ_REQUIRE(marks.empty() == steps.empty());
  return steps;
}

// Bookmarks lead back to the elements that were marked, in any order. Times are not shifted: of
// several records, the one fetched first decides about that.
void check_positions(const std::string& path, const Settings& settings, fuzz::Random& random) {
  const File file = open_file(path, settings, GZD_OPEN_NO_TIME_SHIFT);
  FUZZ_REQUIRE(file != nullptr);
  std::vector<Mark> marks;
  const std::vector<Step> steps = walk_and_mark(file.get(), marks);
  for (std::size_t n = 0; n < marks.size(); ++n) {
    Mark& chosen = marks[random.below(marks.size())];
    FUZZ_REQUIRE(gzd_goto_bookmark(file.get(), &chosen.mark) == 0);
    const Step step = take_step(file.get());
    FUZZ_REQUIRE(gzd_get_element_index(file.get()) == chosen.place + 1);
    FUZZ_REQUIRE(step.sameAs(steps[chosen.place]));
    check_data_functions(file.get(), step);
  }
  for (Mark& mark : marks) {
    FUZZ_REQUIRE(gzd_free_bookmark(file.get(), &mark.mark) == 0);
    FUZZ_REQUIRE(gzd_goto_bookmark(file.get(), &mark.mark) == -1);
  }
  FUZZ_REQUIRE(gzd_goto_next_bookmark(file.get()) == -1);
  FUZZ_REQUIRE(gzd_goto_previous_bookmark(file.get()) == -1);
}

void check_times(GZDFILE* file, const std::vector<Step>& steps, const Settings& settings,
                 fuzz::Random& random) {
  if (steps.empty()) return;
  const bool shifts = (settings.consistency & GZD_OPEN_NO_TIME_SHIFT) == 0;
  for (std::size_t n = 0; n < MOST_LOOKUPS / 4; ++n) {
    const std::uint32_t time = steps[random.below(steps.size())].time;
    const unsigned before = gzd_get_element_index(file);
    ALLF_DATA* const record = gzd_get_sample_close_to_time(file, time);
    FUZZ_REQUIRE(gzd_get_element_index(file) == before);
    // Behind a sample, another element of that very time may be handed out.
    const FSAMPLE* const sample = gzd_get_sample(record);
    if (sample != nullptr && !shifts) FUZZ_REQUIRE(2 * sample->time == 2 * time);
  }
}

void read_raw_data(GZDFILE* file, FSAMPLE* sample) {
  float pair[2];
  UINT32 size[2];
  double rx = 0, ry = 0;
  for (const int eye : {GZD_LEFT_EYE, GZD_RIGHT_EYE}) {
    gzd_get_uncorrected_pupil_area(file, sample, eye);
    gzd_get_uncorrected_raw_pupil(file, sample, eye, pair);
    gzd_get_uncorrected_cr_area(file, sample, eye);
    gzd_get_uncorrected_raw_cr(file, sample, eye, pair);
    gzd_get_uncorrected_cr2_area(file, sample, eye);
    gzd_get_uncorrected_raw_cr2(file, sample, eye, pair);
    gzd_get_pupil_dimension(file, sample, eye, size);
    gzd_get_pupil_cr(file, sample, eye, pair);
    gzd_calculate_ppd(1024, 768, sample, eye, &rx, &ry);
  }
  gzd_get_cr_dimension(file, sample, size);
  gzd_get_window_position(file, sample, size);
}

void check_raw_data(GZDFILE* file, std::size_t count) {
  for (std::size_t n = 0; n < MOST_LOOKUPS && n < count; ++n) {
    const int code = gzd_get_next_data(file);
    if (code == GZD_END_OF_DATA) return;
    ALLF_DATA* const record = gzd_get_float_data(file);
    if (code != GZD_SAMPLE || record == nullptr) continue;
    const unsigned before = gzd_get_element_index(file);
    FSAMPLE sample = record->fs;
    read_raw_data(file, &sample);
    FUZZ_REQUIRE(gzd_get_element_index(file) == before);
    check_rate(file);
  }
}

// A display of any shape, possible or not.
void set_up_display(fuzz::Random& random) {
  const auto any = [&random] {
    constexpr float odd[] = {0.0f, -1.0f, 1e30f, 1e-30f, 100000000.0f, -32768.0f};
    return random.oneIn(6) ? odd[random.below(std::size(odd))]
                           : static_cast<float>(random.below(2000)) - 500.0f;
  };
  const float top = any(), bottom = any();
  gzd_compute_physical_setup(top, bottom, any(), any(), any(), any(), any(), any(), any(), any());
}

// ---- trials -------------------------------------------------------------------------------------

void set_identifiers(GZDFILE* file, unsigned choice) {
  static char trialId[] = "TRIALID", trialOk[] = "TRIAL OK";
  static char inputForm[] = "inPut_type_1", two[] = "2", blank[] = "";
  switch (choice) {
    case 1:
      gzd_set_trial_identifier(file, trialId, trialOk);
      break;
    case 2:
      gzd_set_trial_identifier(file, trialId, nullptr);
      break;
    case 3:
      gzd_set_trial_identifier(file, nullptr, trialOk);
      break;
    case 4:
      gzd_set_trial_identifier(file, inputForm, two);
      break;
    case 5:
      gzd_set_trial_identifier(file, blank, blank);
      break;
    default:
      break;
  }
}

void check_trial(GZDFILE* file, int number, int count, const std::vector<Step>& steps) {
  TRIAL header{};
  FUZZ_REQUIRE(gzd_jump_to_trial(file, number) == 0);
  FUZZ_REQUIRE(gzd_get_trial_header(file, &header) == 0);
  FUZZ_REQUIRE(header.duration == 0 || header.duration == header.endtime - header.starttime);
  FUZZ_REQUIRE(gzd_get_element_index(file) <= steps.size());

  FUZZ_REQUIRE(gzd_goto_next_trial(file) == (number + 1 < count ? 0 : -1));
  if (number + 1 < count) FUZZ_REQUIRE(gzd_goto_previous_trial(file) == 0);
  TRIAL same{};
  FUZZ_REQUIRE(gzd_get_trial_header(file, &same) == 0);
  FUZZ_REQUIRE(same.starttime == header.starttime && same.endtime == header.endtime);

  FUZZ_REQUIRE(gzd_goto_trial_with_start_time(file, header.starttime) == 0);
  FUZZ_REQUIRE(gzd_get_trial_header(file, &same) == 0 && same.starttime == header.starttime);
  FUZZ_REQUIRE(gzd_goto_trial_with_end_time(file, header.endtime) == 0);
  FUZZ_REQUIRE(gzd_get_trial_header(file, &same) == 0 && same.endtime == header.endtime);
}

void check_trials(GZDFILE* file, const std::vector<Step>& steps, fuzz::Random& random) {
  const int count = gzd_get_trial_count(file);
  FUZZ_REQUIRE(count >= 0 && static_cast<std::size_t>(count) <= steps.size());
  const unsigned before = gzd_get_element_index(file);
  FUZZ_REQUIRE(gzd_jump_to_trial(file, count) == -1 && gzd_jump_to_trial(file, -1) == -1);
  FUZZ_REQUIRE(gzd_get_element_index(file) == before);
  for (std::size_t n = 0; n < MOST_LOOKUPS / 2 && count > 0; ++n)
    check_trial(file, static_cast<int>(random.below(static_cast<std::size_t>(count))), count,
                steps);
  FUZZ_REQUIRE(gzd_get_trial_count(file) == count);
}

// ---- one input ----------------------------------------------------------------------------------

void check_file(const std::string& path, const Settings& settings) {
  const File file = open_file(path, settings);
  if ((settings.consistency & GZD_OPEN_FAILSAFE) == 0 && file != nullptr)
    FUZZ_REQUIRE(open_file(path, settings, GZD_OPEN_FAILSAFE) != nullptr);
  if (!file || gzd_get_element_count(file.get()) > LONGEST_WALK) return;
  fuzz::Random random(settings.seed);
  check_facts(file.get());
  const std::vector<Step> steps = walk(file.get());
  check_count(file.get(), steps, settings);
  check_order(steps, settings);
  check_second_open(path, settings, steps);
  check_without_velocities(path, settings, steps);
  if (!settings.mergesLog()) check_positions(path, settings, random);
  check_times(file.get(), steps, settings, random);
  set_identifiers(file.get(), settings.identifiers);
  check_trials(file.get(), steps, random);
  set_up_display(random);
  check_raw_data(file.get(), steps.size());
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static fuzz::MemoryFile recording("recording"), log("log");
  fuzz::Tail tail({data, size});
  const Settings settings(tail);
  if (fuzz::is_too_large(tail.rest(), LARGEST_FILLING)) return 0;
  recording.set(tail.rest());
  log.set(settings.log);
  gzd_set_extra_message_file(log.path().c_str());
  check_file(recording.path(), settings);
  return 0;
}
