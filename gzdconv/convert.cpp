// One run over a recording: open it and the ASC file, print the header, hand every element to the
// writer of its kind, close both, tell the counts.
#include "convert.h"

#include <cerrno>
#include <cmath>
#include <cstring>
#include <ctime>
#include <memory>
#include <optional>
#include <vector>

#include "asc/output.h"
#include "cli/console.h"
#include "cli/files.h"
#include "cli/options.h"
#include "cli/text.h"
#include "gaze3d/head_gaze.h"
#include "gzd.h"
#include "lines/event_lines.h"
#include "lines/frame_lines.h"
#include "lines/message_filter.h"
#include "lines/recording_lines.h"
#include "lines/resolution.h"
#include "losses.h"
#include "samples/sample_lines.h"

namespace gzdconv {

namespace {

constexpr double half_ms_per_second = 2000.0;
constexpr double ms_per_second = 1e3;

struct CloseRecording {
  void operator()(GZDFILE* handle) const { gzd_close_file(handle); }
};
using RecordingFile = std::unique_ptr<GZDFILE, CloseRecording>;

// A text that was not finished does not stay.
class OutputGuard {
 public:
  OutputGuard() = default;
  ~OutputGuard() { discard_output_file(); }
  OutputGuard(const OutputGuard&) = delete;
  OutputGuard& operator=(const OutputGuard&) = delete;
};

int consistency_word() {
  return options.consistency | (options.no_time_check ? GZD_OPEN_NO_TIME_SHIFT : 0) |
         (options.failsafe ? GZD_OPEN_FAILSAFE : 0) |
         (options.message_offsets ? GZD_OPEN_MESSAGE_OFFSETS : 0);
}

CONFIG make_config() {
  const bool fixed = options.fixed_resolution;
  return {fixed ? options.default_res_x : MISSING_DATA,
          fixed ? options.default_res_y : MISSING_DATA, options.debug ? 1 : 0,
          options.debug ? options.debug_file_name.data() : nullptr};
}

RecordingFile open_recording(const std::string& name) {
  CONFIG config = make_config();
  const int events = GZD_LOAD_EVENTS | (options.load_message_log ? GZD_LOAD_MESSAGE_LOG : 0);
  const int samples = options.output_samples || options.video_frames ? 1 : 0;
  int error = 0;
  return RecordingFile(
      gzd_open_file_ex(name.c_str(), consistency_word(), events, samples, &config, &error));
}

std::string local_time() {
  const std::time_t now = std::time(nullptr);
  char text[64];
  return ctime_r(&now, text) != nullptr ? text : "\n";
}

void print_file_header(GZDFILE* handle, const std::string& input) {
  const int length = gzd_get_preamble_text_length(handle);
  if (length <= 0) return;
  std::vector<char> preamble(static_cast<std::size_t>(length) + 1);
  gzd_get_preamble_text(handle, preamble.data(), length + 1);
  if (options.output_events) {
    print("** CONVERTED FROM %s using gzdapi %s on %s", input.c_str(), gzd_get_version(),
          local_time().c_str());
    print("%s** ARGUMENTS USED: %s\n**\n\n", preamble.data(), options.arguments_used.c_str());
  }
  if (!quiet) print_preamble_text(input.c_str(), preamble.data());
}

// Falcon, the first generation with a head target, has no marker fields.
void refuse_head_markers(RunState& state) {
  if (state.generation != Generation::falcon || state.block.head_data == HeadData::none) return;
  state.block.head_data = HeadData::none;
  warn("Warning: OviloFalcon data file. No marker fields available. \n");
}

// `per_second` units divided by a sample rate, cut to a whole number; a rate of 0 gives 0.
int whole_period(double per_second, float sample_rate) {
  constexpr double highest_period = 1e9;
  if (!(sample_rate > 0.0F)) return 0;
  return static_cast<int>(std::fmin(per_second / static_cast<double>(sample_rate), highest_period));
}

unsigned normal_velocity(int sample_type) {
  switch (sample_type) {
    case GZD_POSITION_PUPIL:
      return GZD_VELOCITY_RAW;
    case GZD_POSITION_HREF:
      return GZD_VELOCITY_HREF;
    default:
      return GZD_VELOCITY_GAZE;
  }
}

unsigned fast_velocity(int sample_type) {
  switch (sample_type) {
    case GZD_POSITION_PUPIL:
      return GZD_VELOCITY_FAST_RAW;
    case GZD_POSITION_HREF:
      return GZD_VELOCITY_FAST_HREF;
    default:
      return GZD_VELOCITY_FAST_GAZE;
  }
}

// The velocities that the sample lines of the block will show.
unsigned needed_velocities(int position_type) {
  if (!options.output_velocity || !options.output_samples) return GZD_VELOCITY_NONE;
  return options.fast_velocity ? fast_velocity(position_type) : normal_velocity(position_type);
}

bool is_counted_event(int code) {
  return (code >= GZD_START_PARSE && code <= GZD_BREAK_PARSE) || code == GZD_BUTTON ||
         code == GZD_INPUT;
}

bool is_uncounted_event(int code) {
  return code >= GZD_START_SAMPLES && code <= GZD_END_EVENTS;
}

// The elements that leave a trace in the text, samples apart.
bool is_converted(int code) {
  return code == GZD_MESSAGE || code == GZD_RECORDING || is_counted_event(code) ||
         is_uncounted_event(code);
}

// What a block tells of the head beats what the command line asks for.
HeadData head_data_of(Generation generation, const RECORDINGS& record) {
  if (generation == Generation::osprey) return HeadData::pose;
  const bool target = generation == Generation::falcon && (record.sflags & SMP_HEAD_DATA) != 0;
  return target ? HeadData::target : HeadData::none;
}

// The walk over the elements of one recording, and its counts.
class Conversion {
 public:
  Conversion(RunState& state, const std::string& typed_name, const std::string& input)
      : state_(state), handle_(state.recording), frames_(state, typed_name, input) {}

  void run();
  void print_summary() const;
  // What the options and the recording make of each other, on standard error.
  void report_findings(const std::string& input) const;
  [[nodiscard]] bool has_open_block() const { return block_records_ % 2 != 0; }
  // Elements that were in the recording when it was opened and could not be read again.
  [[nodiscard]] int unread() const { return unread_; }

 private:
  void convert(int code);
  ALLF_DATA* fetch() { return gzd_get_float_data(handle_); }
  [[nodiscard]] int session() const { return block_records_ / 2; }
  [[nodiscard]] int period() const;
  void choose_velocities() {
    gzd_set_velocity_kinds(handle_, needed_velocities(state_.block.sample_position));
  }
  void count_event(const FEVENT& event) {
    events_ += print_event(state_, event, period()) == 0 ? 1 : 0;
  }
  void convert_message(const FEVENT& event);
  void convert_recording(const RECORDINGS& record);
  void start_block(const RECORDINGS& record);
  void convert_sample(FSAMPLE& sample);
  void check_gap(const FSAMPLE& sample);

  RunState& state_;
  GZDFILE* handle_;
  FrameLines frames_;
  std::optional<RECORDINGS> current_recording_;
  std::int64_t last_sample_time2_ = -1;  // half-milliseconds, -1: none in this block
  std::int64_t sample_period2_ = 0;      // half-milliseconds, of the block
  int events_ = 0;
  int samples_ = 0;
  int block_records_ = 0;
  int unread_ = 0;
  int broken_messages_ = 0;  // printed ones with line breaks
  unsigned eyes_ = 0;        // of all blocks
};

void Conversion::run() {
  Progress progress(quiet ? 0 : gzd_get_element_count(handle_));
  choose_velocities();
  for (int code; !lpbuffer.failed() && (code = gzd_get_next_data(handle_)) != GZD_END_OF_DATA;) {
    progress.step();
    convert(code);
  }
}

void Conversion::convert(int code) {
  if (code != GZD_SAMPLE && !is_converted(code)) return;
  ALLF_DATA* const record = fetch();
  if (record == nullptr)
    ++unread_;
  else if (code == GZD_SAMPLE)
    convert_sample(record->fs);
  else if (code == GZD_MESSAGE)
    convert_message(record->fe);
  else if (code == GZD_RECORDING)
    convert_recording(record->rec);
  else if (is_counted_event(code))
    count_event(record->fe);
  else
    print_event(state_, record->fe, 0);
}

int Conversion::period() const {
  return current_recording_ ? whole_period(ms_per_second, current_recording_->sample_rate) : 0;
}

void Conversion::convert_message(const FEVENT& event) {
  const char* const text = message_text(event);
  if (text == nullptr) {
    warn("missing message at %d \n", static_cast<int>(event.time));
  } else {
    if (std::strstr(text, "DISPLAY_COORDS") != nullptr)
      parseDisplayCoords(text);
    else if (std::strstr(text, "DISPLAY_AREA_COORDS") != nullptr)
      parseDisplayAreaCoords(text);
    read_geometry_message(text);
    if (std::strpbrk(text, "\n\r") != nullptr && has_message_line(event)) ++broken_messages_;
  }
  count_event(event);
}

void Conversion::convert_recording(const RECORDINGS& record) {
  ++block_records_;
  current_recording_.reset();
  if (record.state) start_block(record);
  frames_.forget_frame();
  print_recording(state_, record);
  last_sample_time2_ = -1;
  choose_velocities();
  begin_sample_block(state_.block);
}

void Conversion::start_block(const RECORDINGS& record) {
  current_recording_ = record;
  eyes_ |= record.eye;
  sample_period2_ = whole_period(half_ms_per_second, record.sample_rate);
  state_.block.head_data = head_data_of(state_.generation, record);
  if (options.video_frames) frames_.start_block(session());
}

void Conversion::convert_sample(FSAMPLE& sample) {
  if (options.video_frames) frames_.before_sample(sample.time, last_sample_time2_, session());
  check_gap(sample);
  if (!current_recording_) return;
  if (write_sample(state_, *current_recording_, sample) == 0) ++samples_;
}

void Conversion::check_gap(const FSAMPLE& sample) {
  const std::int64_t time2 = 2 * std::int64_t{sample.time} + (sample.flags & SMP_HALF_MS ? 1 : 0);
  if (last_sample_time2_ >= 0) {
    if (!current_recording_) return;
    const std::int64_t expected = last_sample_time2_ + sample_period2_;
    if (time2 > expected) warn("missing sample at %f \n", static_cast<double>(expected) / 2.0);
  }
  last_sample_time2_ = time2;
}

void Conversion::print_summary() const {
  std::printf("Converted successfully: %d events, %d samples, %d blocks.\n", events_, samples_,
              block_records_ / 2);
}

void Conversion::report_findings(const std::string& input) const {
  const unsigned chosen = (options.left_eye ? GZD_BLOCK_LEFT : 0U) |  //
                          (options.right_eye ? GZD_BLOCK_RIGHT : 0U);
  if (chosen != 0 && eyes_ != 0 && (eyes_ & chosen) == 0)
    report_problem(input.c_str(), chosen == GZD_BLOCK_LEFT
                                      ? "has no left eye, the only one chosen"
                                      : "has no right eye, the only one chosen");
  if (broken_messages_ > 0)
    report_problem(input.c_str(), ("messages with line breaks, copied as they are: " +
                                   std::to_string(broken_messages_))
                                      .c_str());
}

// Takes `handle` as the recording, and forgets what belongs to the one before.
void begin_recording(RunState& state, GZDFILE* handle) {
  resolution_sums.clear();
  state.recording = handle;
  state.generation = static_cast<Generation>(gzd_get_ovilo_revision(handle));
  state.sample_header_printed = state.event_header_printed = false;
  state.block.head_data = options.head_markers ? HeadData::markers : HeadData::none;
  begin_sample_block(state.block);
}

// Tells the system's reason for a failure, of what it is about.
void report_failure(GZDFILE* handle, const std::string& input, int reason) {
  const char* const place = gzd_get_failed_place(handle);
  report_reason(place != nullptr ? place : input, reason);
}

int fail_to_open(const std::string& input, int reason) {
  report("Could not process %s \n", shown_text(input).c_str());
  report_failure(nullptr, input, reason);
  const char* const problem = reason == 0 ? why_no_recording(input) : nullptr;
  if (problem != nullptr) report_problem(input.c_str(), problem);
  return -1;
}

// Under -failsafe what could be read before a read error stays.
bool keeps_its_text(GZDFILE* handle) {
  const int reason = gzd_get_system_error(handle);
  return options.failsafe && reason != 0 && reason != ENOMEM && reason != ENODATA;
}

// What the library has left out or made up in a failure is no text of the recording.
bool is_whole(GZDFILE* handle, int unread, const std::string& input) {
  const int reason = gzd_get_system_error(handle);
  if (unread > 0)
    report("Could not read %d elements of %s \n", unread, shown_text(input).c_str());
  else if (reason != 0)
    report("Could not process %s \n", shown_text(input).c_str());
  report_failure(handle, input, reason);
  return unread == 0 && reason == 0;
}

}  // namespace

int process_gzd_file(RunState& state, const std::string& name, const std::string* output_name) {
  std::string input, output;
  add_extension(input, name);
  add_extension(output, output_name != nullptr ? *output_name : name);
  RecordingFile file = open_recording(input);
  if (!file) return fail_to_open(input, errno);
  const OutputGuard output_guard;
  if (open_output_file(output, input) != 0) return -1;
  report_losses(file.get(), input);
  begin_recording(state, file.get());
  print_file_header(file.get(), input);
  gzd_get_trial_count(file.get());  // collects the trials, which raw samples look up amid the walk
  refuse_head_markers(state);
  Conversion conversion(state, name, input);
  conversion.run();
  const bool whole = is_whole(file.get(), conversion.unread(), input);
  if (!whole && !keeps_its_text(file.get())) return -1;
  state.recording = nullptr;
  file.reset();
  if (close_output_file() != 0) return -1;
  conversion.report_findings(input);
  if (!whole) return -1;
  if (!quiet) conversion.print_summary();
  if (conversion.has_open_block()) warn("There are trials not starting or ending properly.\n");
  return 0;
}

}  // namespace gzdconv
