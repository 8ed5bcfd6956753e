// The framing of the record stream: a tag word, then the record it announces.
#ifndef GZDAPI_RECORD_STREAM_H
#define GZDAPI_RECORD_STREAM_H

#include "record/EData.h"
#include "record/stream_state.h"
#include "stream/MVIO.h"

namespace gzd {

enum class NextRecord { End = -1, Event = 0, Sample = 1 };

constexpr bool is_sample_tag(UINT16 tag) {
  return (tag & SMP_IS_SAMPLE) != 0;
}

// Reads the next tag word into state.last_tag and tells what it announces; a tag of 0 is the end.
// Throws GZDException when the stream ends.
inline NextRecord next_combfile_item(InputStream& in, StreamState& state) {
  if (const byte* bytes = in.peek(sizeof(UINT16))) {
    state.last_tag = load_be16(bytes);
    in.take(sizeof(UINT16));
  } else {
    state.last_tag = static_cast<UINT16>(in.getWord());
  }
  if (state.last_tag == 0) return NextRecord::End;
  return is_sample_tag(state.last_tag) ? NextRecord::Sample : NextRecord::Event;
}

// Logs the error that a read ended with.
void log_error(const GZDException& error);

// Calls `decode`, which returns a result code; with `catchErrors` a read error is logged and
// becomes -1.
template <class Decode>
int with_errors_caught(bool catchErrors, Decode decode) {
  if (!catchErrors) return decode();
  try {
    return decode();
  } catch (const GZDException& error) {
    log_error(error);
    return -1;
  }
}

}  // namespace gzd

#endif
