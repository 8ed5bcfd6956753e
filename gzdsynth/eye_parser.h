// The tracker's on-line parser: finds the eye events of one eye in its samples.
#ifndef GZDSYNTH_EYE_PARSER_H
#define GZDSYNTH_EYE_PARSER_H

#include <cstdint>
#include <vector>

#include "event_record.h"
#include "gaze_model.h"
#include "sample_record.h"
#include "session_settings.h"

namespace gzdsynth {

// One sample as the parser sees it.
struct Observation {
  SampleRecord sample;  // with its time
  Phase phase = Phase::Fixation;
  double speed = 0;  // degrees per second
  HeadPose pose;
};

// Feeds on samples in order. Positions in the events are the stored words of the samples: those at
// the event's first and last sample, and the rounded means of all of them.
class EyeParser {
 public:
  EyeParser(int eye, const SessionSettings& settings);

  // Appends the events that this sample begins or ends.
  void see(const Observation& now, std::vector<EventRecord>& events);

  // Ends what is open at the last sample seen, as at the end of a block.
  void finish(std::vector<EventRecord>& events);

 private:
  // An event under way: its first sample and sums over its samples.
  struct Running {
    bool open = false;
    Observation first;
    std::int64_t count = 0;
    std::int64_t gx = 0, gy = 0, hx = 0, hy = 0, px = 0, py = 0, pupil = 0;
    double speed = 0, peak = 0;
    std::array<double, 10> head{};
  };

  void begin(Running& event, unsigned type, const Observation& now,
             std::vector<EventRecord>& events) const;
  void add(Running& event, const Observation& now) const;
  void end_fixation(std::vector<EventRecord>& events);
  void end_saccade(std::vector<EventRecord>& events);
  void end_blink(std::vector<EventRecord>& events);
  void close(std::vector<EventRecord>& events, bool fixation, bool blink, bool saccade);

  [[nodiscard]] EventRecord record(unsigned type) const;
  void put_start(EventRecord& record, const SampleRecord& sample) const;
  void put_end(EventRecord& record) const;
  void put_average(EventRecord& record, const Running& event) const;
  void put_velocities(EventRecord& record, const Running& event) const;
  void put_resolution(EventRecord& record, const Running& event) const;
  void put_head(EventRecord& record, const Running* ended, const Observation& first) const;

  int eye_;
  std::size_t side_;
  SessionSettings settings_;
  Observation last_;
  Running fixation_, saccade_, blink_;
};

// The position type of the events: gaze if there is any, else head-referenced, else pupil.
unsigned event_position_type(const SessionSettings& settings);

}  // namespace gzdsynth

#endif
