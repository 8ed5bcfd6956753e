// Trial by trial: messages, the block's start, then tick by tick the model's state, its sample and
// what the eyes' parsers find in it, which is written a little later, as by a tracker that has to
// look at a few samples first; the block's end and more messages. Times are ticks of the sampling
// rate behind the block's first sample.
#include "session.h"

#include <algorithm>
#include <limits>
#include <string>
#include <utility>

namespace gzdsynth {

namespace {

constexpr double kParserDelay = 16;                                             // ms
constexpr std::int64_t kEndOfTrial = std::numeric_limits<std::int64_t>::max();  // behind all ticks
constexpr std::uint32_t kBeforeBlock = 60;  // ms from a trial's first message to its block
constexpr std::uint32_t kAfterBlock = 240;  // ms from a block to the next trial
constexpr double kGapsPerSecond = 0.7;
constexpr double kRepeatsPerSecond = 2;
constexpr int kStraySamples = 5;
constexpr int kIdleInput = 127, kSignalInput = 126;

std::string eyeLetters(const SessionSettings& s) {
  return std::string(s.left ? "L" : "") + (s.right ? "R" : "");
}

int eventFlags(const SessionSettings& s, unsigned sampleFlags) {
  const unsigned fields =
      SMP_LEFT | SMP_RIGHT | SMP_PUPIL_POS | SMP_HREF | SMP_GAZE | SMP_RESOLUTION | SMP_PUPIL_SIZE;
  return static_cast<int>((sampleFlags & fields) | (s.generation > 1 ? SMP_STATUS : 0U));
}

// A text longer than one record holds, of words that can be counted.
std::string longText(int trial) {
  std::string text = "TRIAL_VAR list " + std::to_string(trial);
  for (int i = 0; i < 250; ++i) text += " item" + std::to_string(i);
  return text;
}

}  // namespace

GzdWriter sessionWriter(const SessionSettings& s) {
  GzdWriter writer(0);
  if (s.generation == 4) writer.magic(s.zip ? Magic::kOspZip : Magic::kOsp);
  if (s.generation != 4) writer.magic(s.zip ? Magic::kFalcZip : Magic::kComb);
  writer.preambleLine("DATE: Tue Mar 14 10:26:53 2023");
  writer.preambleLine("TYPE: binary file with samples, events and messages");
  switch (s.generation) {
    case 1:
      writer.preambleLine("SOURCE: OVILO MERLIN").preambleLine("SYSTEM: tracker host 2.04");
      break;
    case 2:
      writer.preambleLine("VERSION: OVILO KESTREL 1").preambleLine("SOURCE: OVILO KESTREL");
      writer.preambleLine("SYSTEM: tracker host 4.60").preambleLine("CAMERA: lens 35 mm");
      break;
    case 3:
      writer.preambleLine("VERSION: OVILO KESTREL 1").preambleLine("SOURCE: OVILO FALCON");
      writer.preambleLine("SYSTEM: tracker host 5.12").preambleLine("CAMERA: lens 25 mm");
      break;
    default:
      writer.preambleLine("VERSION: OVILO OSPREY 3").preambleLine("SOURCE: OVILO OSPREY");
      writer.preambleLine("SYSTEM: tracker host 6.2 MVTQ2.1").preambleLine("CAMERA: twin");
  }
  writer.endTag(s.endTag);
  return writer;
}

std::uint64_t sessionEnd(const SessionSettings& s) {
  const std::uint64_t perTrial = kBeforeBlock + kAfterBlock;
  return s.startTime + 1000U * static_cast<std::uint64_t>(s.seconds) +
         perTrial * static_cast<std::uint64_t>(s.trials);
}

Session::Session(const SessionSettings& settings, GzdWriter& writer)
    : settings_(settings),
      writer_(writer),
      camera_(settings),
      model_(settings.seed, settings.rate),
      faults_(~settings.seed) {}

std::int64_t Session::ticksOf(double milliseconds) const {
  return std::max<std::int64_t>(1, static_cast<std::int64_t>(milliseconds * settings_.rate / 1000));
}

std::uint32_t Session::timeAt(std::uint32_t start, std::int64_t tick) const {
  return start + static_cast<std::uint32_t>(tick * 1000 / settings_.rate);
}

std::vector<TrialSpan> Session::run() {
  std::vector<TrialSpan> spans;
  std::uint32_t time = settings_.startTime;
  for (int trial = 0; trial < settings_.trials; ++trial) {
    spans.push_back(runTrial(trial, time));
    time = spans.back().end + kAfterBlock;
  }
  return spans;
}

TrialSpan Session::runTrial(int trial, std::uint32_t start) {
  const std::int64_t total = std::int64_t{settings_.seconds} * settings_.rate;
  const std::int64_t ticks =
      total * (trial + 1) / settings_.trials - total * trial / settings_.trials;
  const std::uint32_t first = start + kBeforeBlock;
  // A last sample half a millisecond behind its time still lies in the block.
  const bool half = settings_.rate == 2000 && ticks % 2 == 0;
  const TrialSpan span{first, timeAt(first, ticks - 1) + (half ? 1 : 0)};

  announce(trial, start);
  writer_.startEvents(blockStart(first));
  if (settings_.samples) writer_.startSamples(blockStart(first));
  model_.restart();
  parsers_.clear();
  if (settings_.left) parsers_.emplace_back(GZD_LEFT_EYE, settings_);
  if (settings_.right) parsers_.emplace_back(GZD_RIGHT_EYE, settings_);
  input_ = kIdleInput;
  buttons_ = 0;
  timeKnown_ = false;
  gapLeft_ = 0;
  for (std::int64_t tick = 0; tick < ticks; ++tick) runTick(tick, ticks, first);
  for (EyeParser& parser : parsers_) parser.finish(found_);
  queue(ticks);
  writePending(kEndOfTrial);
  if (settings_.samples) writer_.endSamples(span.end);
  writer_.endEvents(span.end);
  conclude(trial, span.end);
  return span;
}

void Session::announce(int trial, std::uint32_t time) {
  const std::string number = std::to_string(trial + 1);
  if (trial == 0)
    writer_.message(time, "DISPLAY_COORDS 0 0 " + std::to_string(kDisplayRight) + " " +
                              std::to_string(kDisplayBottom));
  writer_.message(time + 2, "TRIALID " + number);
  if (!settings_.messageLog.empty())
    writer_.message(time + 10,
                    "TRACKER_TIME " + std::to_string(trial) + " " + std::to_string(time + 10));
  writer_.message(time + 20, "RECCFG RATE " + std::to_string(settings_.rate) + " FILTER 2 EYES " +
                                 eyeLetters(settings_));
  if (settings_.straySamples && settings_.samples) writeStraySamples(time + 30);
  if (settings_.longMessages) writer_.longMessage(time + 45, trial + 1, longText(trial + 1));
}

void Session::conclude(int trial, std::uint32_t time) {
  writer_.message(time + 10, "!V TRIAL_VAR index " + std::to_string(trial + 1));
  writer_.message(time + 12, "TRIAL_RESULT 0");
}

BlockStart Session::blockStart(std::uint32_t time) const {
  BlockStart block{.time = time, .rate = static_cast<double>(settings_.rate)};
  block.sampleFlags = static_cast<int>(camera_.sampleFlags());
  block.eventFlags = eventFlags(settings_, camera_.sampleFlags());
  block.gazePrescale = settings_.gazePrescale();
  block.velocityPrescale = kVelocityPrescale;
  block.positionType = eventPositionType(settings_);
  if (settings_.generation > 3) {
    block.pupilPrescale = kPupilPrescale;
    block.headPrescale = settings_.gazePrescale();
  }
  return block;
}

void Session::runTick(std::int64_t tick, std::int64_t ticks, std::uint32_t start) {
  const GazeState state = model_.next();
  const std::uint32_t time = timeAt(start, tick);
  act(tick, ticks, time);
  writePending(tick);
  if (losesSample()) return;
  Observation now{camera_.sample(state), state.phase, state.speed, {}};
  now.sample.time = time;
  now.sample.input = input_;
  now.sample.buttons = buttons_;
  if (settings_.pose) now.pose = camera_.pose(state);
  parse(now, tick);
  if (settings_.samples) writeSample(now, state, tick);
}

// What the participant and the experiment do in a trial.
void Session::act(std::int64_t tick, std::int64_t ticks, std::uint32_t time) {
  const std::int64_t hold = ticksOf(60);
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
  if (tick == ticks / 3) setInput(kSignalInput);
  if (tick == ticks / 3 + hold) setInput(kIdleInput);
  if (tick == ticks * 4 / 5) setButton(1);
  if (tick == ticks * 4 / 5 + hold) setButton(0);
}

void Session::parse(const Observation& observation, std::int64_t tick) {
  for (EyeParser& parser : parsers_) parser.see(observation, found_);
  if (!found_.empty()) queue(tick + ticksOf(kParserDelay));
}

void Session::queue(std::int64_t due) {
  for (EventRecord& record : found_)
    if (!dropsBlink(record)) pending_.push_back({due, std::move(record)});
  found_.clear();
}

void Session::writePending(std::int64_t tick) {
  while (!pending_.empty() && (pending_.front().due <= tick)) {
    writer_.event(pending_.front().record);
    pending_.pop_front();
  }
}

bool Session::losesSample() {
  if (settings_.gap == 0) return false;
  if (gapLeft_ == 0 && faults_.uniform() < kGapsPerSecond / settings_.rate)
    gapLeft_ = ticksOf(settings_.gap);
  if (gapLeft_ == 0) return false;
  --gapLeft_;
  return true;
}

// Every third event of a blink is missing.
bool Session::dropsBlink(const EventRecord& record) {
  if (!settings_.unpairedBlinks) return false;
  const unsigned type = record.type();
  if (type != GZD_START_BLINK && type != GZD_END_BLINK) return false;
  return ++blinkEvents_ % 3 == 0;
}

void Session::writeSample(const Observation& observation, const GazeState& state,
                          std::int64_t tick) {
  SampleRecord sample = observation.sample;
  if (settings_.rawPacked) camera_.pack(sample, state);
  if (settings_.rate == 2000 && tick % 2 == 1) sample.flags |= SMP_HALF_MS;
  if (settings_.repeatTimes && timeKnown_ && faults_.uniform() < kRepeatsPerSecond / settings_.rate)
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
void Session::writeStraySamples(std::uint32_t time) {
  GazeState state;
  for (int i = 0; i < kStraySamples; ++i) {
    SampleRecord sample = camera_.sample(state);
    sample.flags |= SMP_TIME_ABSOLUTE;
    sample.time = timeAt(time, i);
    writer_.sample(sample);
  }
}

}  // namespace gzdsynth
