// Event records: bytes and state in, an event out.
#ifndef GZDAPI_EVENT_DECODER_H
#define GZDAPI_EVENT_DECODER_H

#include "record/EData.h"
#include "record/stream_state.h"
#include "stream/MVIO.h"

namespace gzd {

// Decodes the event whose tag word is `tag` from the stream's position into `event`, which it
// clears first. Start-of-block records set the scaling and the rate in `state`. A message's text
// goes to `text`, and event.message points there. Returns 0, or -1 for a message whose length is
// negative or above one record's. Throws GZDException when the stream ends inside the record.
int decode_event(InputStream& in, StreamState& state, UINT16 tag, MessageText& text, FEVENT& event);

// Takes from an eye event at the stream's position what the scan needs, type, eye and times, and no
// message, when all of its fields are known and lie in memory; the other members are left as they
// are. Returns false for any other event: the stream stays, `event` may have any value.
bool glance_at_eye_event(InputStream& in, StreamState& state, UINT16 tag, FEVENT& event);

}  // namespace gzd

#endif
