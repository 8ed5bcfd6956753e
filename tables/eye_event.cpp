// Which fields of a record tell of an event.
#include "eye_event.h"

#include "element_walk.h"

namespace gzdtables {

EventType event_type_of(int code) {
  if (code == GZD_END_FIXATION) return EventType::fixation;
  return code == GZD_END_SACCADE ? EventType::saccade : EventType::blink;
}

EyeEvent::EyeEvent(const FEVENT& event, std::int64_t milliseconds)
    : start(event.sttime),
      end(event.entime),
      period(static_cast<std::int32_t>(milliseconds)),
      type(event_type_of(event.type)),
      side(static_cast<std::uint8_t>(side_of(event))),
      read(event.read),
      gaze{event.gstx, event.gsty},
      href{event.hstx, event.hsty},
      gaze_end{event.genx, event.geny},
      href_end{event.henx, event.heny},
      pupil(event.ava),
      average_velocity(event.avel),
      peak_velocity(event.pvel),
      resolution{event.supd_x, event.supd_y},
      resolution_end{event.eupd_x, event.eupd_y} {
  if (type != EventType::fixation) return;
  gaze = {event.gavx, event.gavy};
  href = {event.havx, event.havy};
}

}  // namespace gzdtables
