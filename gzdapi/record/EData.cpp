// The text of a message, and the report of types that are not known.
#include "record/EData.h"

#include <cstring>

#include "base/log.h"

namespace gzd {

void clear_bytes(void* bytes, std::size_t count) {
  std::memset(bytes, 0, count);
}

std::string_view text_of(const LSTRING* message) {
  return message != nullptr ? std::string_view(&message->c) : std::string_view();
}

void EData::tell_unknown(const FEVENT& event) {
  print_log(">>>>> FILE STRUCTURE ERROR: UNKNOWN EVENT (%d)\n", static_cast<int>(event.type));
}

}  // namespace gzd
