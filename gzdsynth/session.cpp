// Trial by trial: messages, the block's start, then tick by tick the model's state, its sample and
// what the eyes' parsers find in it, which is written a little later, as by a tracker that has to
// look at a few samples first; the block's end and more messages. Times are ticks of the sampling
// rate after the block's first sample.
#include "session.h"

#include <algorithm>
#include <limits>
#include <string>
#include <utility>

namespace gzdsynth {

namespace {

constexpr double parser_delay = 16;                                              // ms
constexpr std::int64_t end_of_trial = std::numeric_limits<std::int64_t>::max();  // after all ticks
constexpr std::uint32_t before_block = 60;  // ms from a trial's first message to its block
constexpr std::uint32_t after_block = 240;  // ms from a block to the next trial
constexpr double gaps_per_second = 0.7;
constexpr double repeats_per_second = 2;
constexpr int stray_samples = 5;
constexpr int idle_input = 127, signal_input = 126;

std::string eye_letters(const SessionSettings& s) {
  return std::string(s.left ? "L" : "") + (s.right ? "R" : "");
}

int event_flags(const SessionSettings& s, unsigned sample_flags) {
  const unsigned fields =
      SMP_LEFT | SMP_RIGHT | SMP_PUPIL_POS | SMP_HREF | SMP_GAZE | SMP_RESOLUTION | SMP_PUPIL_SIZE;
  return static_cast<int>((sample_flags & fields) | (s.generation > 1 ? SMP_STATUS : 0U));
}

// The camera stands below the screen and looks up at the head.
constexpr const char* set_up_messages[] = {
    "hm_eyecam_to_ref: 1 0 0 0 0 0.9848 -0.1736 180 0 0.1736 0.9848 45",
    "hm_world_to_screen: 0.9994 0 0.0349 5 0 1 0 -20 -0.0349 0 0.9994 12",
    "eyecam_to_ecenter 0: -31.5 1 4",
    "eyecam_to_ecenter 1: 31 0.5 4",
    "screen_pixel r 1023 l 0 t 0 b 767",
    "screen_phys r 200 l -200 t -150 b 150",
};

// A text longer than one record holds, of words that can be counted.
std::string long_text(int trial) {
  std::string text = "TRIAL_VAR list " + std::to_string(trial);
  for (int i = 0; i < 250; ++i) text += " item" + std::to_string(i);
  return text;
}

}  // namespace

GzdWriter session_writer(const SessionSettings& s) {
  GzdWriter writer(0);
  if (s.generation == 4) writer.magic(s.zip ? Magic::OspZip : Magic::Osp);
  if (s.generation != 4) writer.magic(s.zip ? Magic::FalcZip : Magic::Comb);
  writer.preamble_line("DATE: Tue Mar 14 10:26:53 2023");
  writer.preamble_line("TYPE: binary file with samples, events and messages");
  switch (s.generation) {
    case 1:
      writer.preamble_line("SOURCE: OVILO MERLIN").preamble_line("SYSTEM: tracker host 2.04");
      break;
    case 2:
      writer.preamble_line("VERSION: OVILO KESTREL 1").preamble_line("SOURCE: OVILO KESTREL");
      writer.preamble_line("SYSTEM: tracker host 4.60").preamble_line("CAMERA: lens 35 mm");
      break;
    case 3:
      writer.preamble_line("VERSION: OVILO KESTREL 1").preamble_line("SOURCE: OVILO FALCON");
      writer.preamble_line("SYSTEM: tracker host 5.12").preamble_line("CAMERA: lens 25 mm");
      break;
    default:
      writer.preamble_line("VERSION: OVILO OSPREY 3").preamble_line("SOURCE: OVILO OSPREY");
      writer.preamble_line("SYSTEM: tracker host 6.2 MVTQ2.1").preamble_line("CAMERA: twin");
  }
  writer.end_tag(s.end_tag);
  return writer;
}

std::uint64_t session_end(const SessionSettings& s) {
  const std::uint64_t perTrial = before_block + after_block;
  return s.startTime + 1000U * static_cast<std::uint64_t>(s.seconds) +
         perTrial * static_cast<std::uint64_t>(s.trials);
}

Session::Session(const SessionSettings& settings, GzdWriter& writer)
    : settings_(settings),
      writer_(writer),
      camera_(settings),
      model_(settings.seed, settings.rate),
      faults_(~settings.seed) {}

std::int64_t Session::ticks_of(double milliseconds) const {
  return std::max<std::int64_t>(1, static_cast<std::int64_t>(milliseconds * settings_.rate / 1000));
}

std::uint32_t Session::time_at(std::uint32_t start, std::int64_t tick) const {
  return start + static_cast<std::uint32_t>(tick * 1000 / settings_.rate);
}

std::vector<TrialSpan> Session::run() {
  std::vector<TrialSpan> spans;
  std::uint32_t time = settings_.startTime;
  for (int trial = 0; trial < settings_.trials; ++trial) {
    spans.push_back(run_trial(trial, time));
    time = spans.back().end + after_block;
  }
  return spans;
}

TrialSpan Session::run_trial(int trial, std::uint32_t start) {
  const std::int64_t total = std::int64_t{settings_.seconds} * settings_.rate;
  const std::int64_t ticks =
      total * (trial + 1) / settings_.trials - total * trial / settings_.trials;
  const std::uint32_t first = start + before_block;
  // A last sample half a millisecond after its time still lies in the block.
  const bool half = settings_.rate == 2000 && ticks % 2 == 0;
  const TrialSpan span{first, time_at(first, ticks - 1) + (half ? 1 : 0)};

  announce(trial, start);
  writer_.start_events(block_start(first));
  if (settings_.samples) writer_.start_samples(block_start(first));
  model_.restart();
  parsers_.clear();
  if (settings_.left) parsers_.emplace_back(GZD_LEFT_EYE, settings_);
  if (settings_.right) parsers_.emplace_back(GZD_RIGHT_EYE, settings_);
  input_ = idle_input;
  buttons_ = 0;
  timeKnown_ = false;
  gapLeft_ = 0;
  for (std::int64_t tick = 0; tick < ticks; ++tick) run_tick(tick, ticks, first);
  for (EyeParser& parser : parsers_) parser.finish(found_);
  queue(ticks);
  write_pending(end_of_trial);
  if (settings_.samples) writer_.end_samples(span.end);
  writer_.end_events(span.end);
  conclude(trial, span.end);
  return span;
}

void Session::announce(int trial, std::uint32_t time) {
  const std::string number = std::to_string(trial + 1);
  if (trial == 0)
    writer_.message(time, "DISPLAY_COORDS 0 0 " + std::to_string(display_right) + " " +
                              std::to_string(display_bottom));
  for (const char* const set_up : set_up_messages)
    if (settings_.geometry && trial == 0) writer_.message(time + 1, std::string("!GEOM ") + set_up);
  writer_.message(time + 2, "TRIALID " + number);
  if (!settings_.messageLog.empty())
    writer_.message(time + 10,
                    "TRACKER_TIME " + std::to_string(trial) + " " + std::to_string(time + 10));
  writer_.message(time + 20, "RECCFG RATE " + std::to_string(settings_.rate) + " FILTER 2 EYES " +
                                 eye_letters(settings_));
  if (settings_.straySamples && settings_.samples) write_stray_samples(time + 30);
  if (settings_.longMessages) writer_.long_message(time + 45, trial + 1, long_text(trial + 1));
}

void Session::conclude(int trial, std::uint32_t time) {
  writer_.message(time + 10, "!V TRIAL_VAR index " + std::to_string(trial + 1));
  writer_.message(time + 12, "TRIAL_RESULT 0");
}

BlockStart Session::block_start(std::uint32_t time) const {
  BlockStart block{.time = time, .rate = static_cast<double>(settings_.rate)};
  block.sample_flags = static_cast<int>(camera_.sample_flags());
  block.event_flags = event_flags(settings_, camera_.sample_flags());
  block.gaze_prescale = settings_.gaze_prescale();
  block.velocityPrescale = velocity_prescale;
  block.positionType = event_position_type(settings_);
  if (settings_.generation > 3) {
    block.pupilPrescale = pupil_prescale;
    block.headPrescale = settings_.gaze_prescale();
  }
  return block;
}

void Session::run_tick(std::int64_t tick, std::int64_t ticks, std::uint32_t start) {
  const GazeState state = model_.next();
  const std::uint32_t time = time_at(start, tick);
  act(tick, ticks, time);
  write_pending(tick);
  if (loses_sample()) return;
  Observation now{camera_.sample(state), state.phase, state.speed, {}};
  now.sample.time = time;
  now.sample.input = input_;
  now.sample.buttons = buttons_;
  if (settings_.pose) now.pose = camera_.pose(state);
  parse(now, tick);
  if (settings_.samples) write_sample(now, state, tick);
}

// What the participant and the experiment do in a trial.
void Session::act(std::int64_t tick, std::int64_t ticks, std::uint32_t time) {
  const std::int64_t hold = ticks_of(60);
  const auto setInput = [&](int value) {
    input_ = value;
    if (settings_.input) writer_.input(time, value);
  };
  // Button 1; the upper byte tells which one changed.
  const auto setButton = [&](int pressed) {
    buttons_ = pressed;
    if (settings_.buttons) writer_.button(time, 0x0100 | pressed);
  };
  if (tick == ticks / 20) writer_.message(time, "SYNCTIME");
  if (tick == ticks / 3) setInput(signal_input);
  if (tick == ticks / 3 + hold) setInput(idle_input);
  if (tick == ticks * 4 / 5) setButton(1);
  if (tick == ticks * 4 / 5 + hold) setButton(0);
}

void Session::parse(const Observation& observation, std::int64_t tick) {
  for (EyeParser& parser : parsers_) parser.see(observation, found_);
  if (!found_.empty()) queue(tick + ticks_of(parser_delay));
}

void Session::queue(std::int64_t due) {
  for (EventRecord& record : found_)
    if (!drops_blink(record)) pending_.push_back({due, std::move(record)});
  found_.clear();
}

void Session::write_pending(std::int64_t tick) {
  while (!pending_.empty() && (pending_.front().due <= tick)) {
    writer_.event(pending_.front().record);
    pending_.pop_front();
  }
}

bool Session::loses_sample() {
  if (settings_.gap == 0) return false;
  if (gapLeft_ == 0 && faults_.uniform() < gaps_per_second / settings_.rate)
    gapLeft_ = ticks_of(settings_.gap);
  if (gapLeft_ == 0) return false;
  --gapLeft_;
  return true;
}

// Every third event of a blink is missing.
bool Session::drops_blink(const EventRecord& record) {
  if (!settings_.unpairedBlinks) return false;
  const unsigned type = record.type();
  if (type != GZD_START_BLINK && type != GZD_END_BLINK) return false;
  return ++blinkEvents_ % 3 == 0;
}

void Session::write_sample(const Observation& observation, const GazeState& state,
                           std::int64_t tick) {
  SampleRecord sample = observation.sample;
  if (settings_.rawPacked) camera_.pack(sample, state);
  if (settings_.rate == 2000 && tick % 2 == 1) sample.flags |= SMP_HALF_MS;
  if (settings_.repeatTimes && timeKnown_ &&
      faults_.uniform() < repeats_per_second / settings_.rate)
    sample.time = lastTime_;
  const std::uint32_t step = sample.time - lastTime_;
  if (timeKnown_ && step <= 0xFF) {
    sample.step = step;
  } else {
    sample.flags |= SMP_TIME_ABSOLUTE;
  }
  writer_.sample(sample);
  lastTime_ = sample.time;
  timeKnown_ = true;
}

// Samples without a pupil that lie in no block.
void Session::write_stray_samples(std::uint32_t time) {
  GazeState state;
  for (int i = 0; i < stray_samples; ++i) {
    SampleRecord sample = camera_.sample(state);
    sample.flags |= SMP_TIME_ABSOLUTE;
    sample.time = time_at(time, i);
    writer_.sample(sample);
  }
}

}  // namespace gzdsynth
