// Messages longer than one record: a first piece with a start marker, further pieces with a
// continuation marker.
#ifndef GZDAPI_LONG_MESSAGE_H
#define GZDAPI_LONG_MESSAGE_H

#include <string>
#include <string_view>

#include "index/index.h"

namespace gzd {

enum class MessagePiece { Whole, First, Continuation };

// Which piece of a message the text is.
MessagePiece piece_of_message(std::string_view text);

// The marker string of a piece: its marker and everything up to and including the next delimiter;
// the marker alone when there is none, empty for a whole message.
std::string_view get_msg_marker(std::string_view text);

// The text without its marker string.
std::string without_marker(std::string_view text);

// Gathers the pieces while the file is scanned.
class MessageGrouping {
 public:
  // Enters an event with its message text: a continuation joins the group opened last, or is
  // dropped when there is none; anything else goes to the index.
  void add(Index& index, const GZDItem& item, std::string_view text);

 private:
  std::vector<GZDItem>* openGroup_ = nullptr;
};

// A long message stops growing at the first piece that finds more characters than this before it.
constexpr std::size_t long_message_limit = 65279;

// The longest text that can result: one piece beyond the limit, and a NUL.
constexpr std::size_t long_message_capacity = 66560;

}  // namespace gzd

#endif
