// A decoded event and the message text that belongs to it.
#ifndef GZDAPI_EDATA_H
#define GZDAPI_EDATA_H

#include <array>
#include <cstddef>
#include <string_view>

#include "gzd_data.h"

namespace gzd {

// The longest message text that one record holds.
constexpr int message_record_capacity = 498;

// True for the event types that can be handed out.
constexpr bool is_known_event_type(int type) {
  return (type >= GZD_START_PARSE && type <= GZD_BREAK_PARSE) ||
         (type >= GZD_START_SAMPLES && type <= GZD_END_EVENTS) || type == GZD_MESSAGE ||
         type == GZD_BUTTON || type == GZD_INPUT;
}

// A message text of one record, laid out as an LSTRING: length, characters, NULs to the end.
struct MessageText {
  INT16 len = 0;
  std::array<char, message_record_capacity + 2> text{};

  void clear() { *this = MessageText(); }
  LSTRING* asLString() { return reinterpret_cast<LSTRING*>(this); }
};

// Makes it all zeros. Out of line, by the C library: what GCC puts in place of a clear whose size
// it knows takes four times as long.
void clear_bytes(void* bytes, std::size_t count);
inline void clear_event(FEVENT& event) {
  clear_bytes(&event, sizeof event);
}

// The text after an LSTRING up to its first NUL; empty without one.
std::string_view text_of(const LSTRING* message);

class EData : public FEVENT {
 public:
  EData() : FEVENT{} {}
  explicit EData(const FEVENT& event) : FEVENT(event) {}

  void clear() { *static_cast<FEVENT*>(this) = FEVENT{}; }

  // Logs a type outside the known set. The reader fetches none of those.
  static void process_event(const FEVENT& event) {
    if (!is_known_event_type(event.type)) tell_unknown(event);
  }

 private:
  static void tell_unknown(const FEVENT& event);
};

}  // namespace gzd

#endif
