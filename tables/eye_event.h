// What rows of events tell of an eye event that ended.
#ifndef GZDTABLES_EYE_EVENT_H
#define GZDTABLES_EYE_EVENT_H

#include <array>
#include <cstdint>

#include "gzd.h"

namespace gzdtables {

// Numbers of the `type` of events and the event of a sample.
enum class EventType : std::uint8_t { fixation, saccade, blink };
[[nodiscard]] EventType event_type_of(int code);

// The fields of an FEVENT that some column tells, as they are there, in a third of its size.
struct EyeEvent {
  using Point = std::array<float, 2>;  // x, y

  // `period`: the whole milliseconds of a sample period.
  EyeEvent(const FEVENT& event, std::int64_t period);

  std::uint32_t start, end;  // ms
  std::int32_t period;       // ms
  EventType type;
  std::uint8_t side;   // 0 left, 1 right
  std::uint16_t read;  // EVT_ bits: what the record holds
  // Of a fixation the mean, else the position at the start, which is followed by that at the end.
  Point gaze, href, gaze_end, href_end;
  float pupil;  // mean
  float average_velocity, peak_velocity;
  Point resolution, resolution_end;
};

}  // namespace gzdtables

#endif
