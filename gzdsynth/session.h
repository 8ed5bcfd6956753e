// Makes an experiment: trials of recorded movements with messages, buttons and inputs.
#ifndef GZDSYNTH_SESSION_H
#define GZDSYNTH_SESSION_H

#include <cstdint>
#include <deque>
#include <vector>

#include "GzdWriter.h"
#include "eye_parser.h"
#include "gaze_model.h"
#include "session_settings.h"
#include "tracker_camera.h"

namespace gzdsynth {

// First and last sample's time of a trial's recording block (ms).
struct TrialSpan {
  std::uint32_t start = 0, end = 0;
};

// Magic and preamble of the tracker that the settings name.
GzdWriter session_writer(const SessionSettings& settings);

// The last time that a session of these settings can reach (ms).
std::uint64_t session_end(const SessionSettings& settings);

class Session {
 public:
  // The writer must come from session_writer with the same settings, and outlive the session.
  Session(const SessionSettings& settings, GzdWriter& writer);

  // Writes all trials. Returns where they lie.
  std::vector<TrialSpan> run();

 private:
  // An event that the on-line parser has found and the tracker not yet written.
  struct Pending {
    std::int64_t due = 0;  // tick
    EventRecord record;
  };

  TrialSpan run_trial(int trial, std::uint32_t start);
  void announce(int trial, std::uint32_t time);
  void conclude(int trial, std::uint32_t time);
  [[nodiscard]] BlockStart block_start(std::uint32_t time) const;
  void run_tick(std::int64_t tick, std::int64_t ticks, std::uint32_t start);
  void act(std::int64_t tick, std::int64_t ticks, std::uint32_t time);
  void parse(const Observation& observation, std::int64_t tick);
  void queue(std::int64_t due);
  void write_pending(std::int64_t tick);
  [[nodiscard]] bool loses_sample();
  [[nodiscard]] bool drops_blink(const EventRecord& record);
  void write_sample(const Observation& observation, const GazeState& state, std::int64_t tick);
  void write_stray_samples(std::uint32_t time);
  [[nodiscard]] std::uint32_t time_at(std::uint32_t start, std::int64_t tick) const;
  [[nodiscard]] std::int64_t ticks_of(double milliseconds) const;

  SessionSettings settings_;
  GzdWriter& writer_;
  TrackerCamera camera_;
  GazeModel model_;
  Random faults_;
  std::vector<EyeParser> parsers_;
  std::deque<Pending> pending_;
  std::vector<EventRecord> found_;
  int buttons_ = 0, input_ = 0;
  bool timeKnown_ = false;  // an earlier sample of the block tells the time
  std::uint32_t lastTime_ = 0;
  std::int64_t gapLeft_ = 0;  // ticks
  int blinkEvents_ = 0;
};

}  // namespace gzdsynth

#endif
