// What an event does beyond being handed out: to the state of the stream, and to its own values.
#ifndef GZDAPI_EVENT_EFFECTS_H
#define GZDAPI_EVENT_EFFECTS_H

#include "record/EData.h"
#include "record/stream_state.h"

namespace gzd {

// An event whose fields were read, and which prescales they brought.
struct EventRecord {
  StreamState& state;
  MessageText& text;
  FEVENT& event;
  bool startsBlock;
  bool hasPupilPrescale = false;
  bool hasHeadPrescale = false;
};

// Makes of the values what the event's type makes of them.
void use_by_type(EventRecord& record);

}  // namespace gzd

#endif
