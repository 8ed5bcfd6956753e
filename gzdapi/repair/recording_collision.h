// Recording blocks that follow each other within some milliseconds.
#ifndef GZDAPI_RECORDING_COLLISION_H
#define GZDAPI_RECORDING_COLLISION_H

#include <functional>
#include <string_view>

#include "index/index.h"

namespace gzd {

// Gives the text of the message at an index of the item list; valid until the next call.
using MessageReader = std::function<std::string_view(UINT32 itemIndex)>;

// When any two recording boundaries lie less than 3 ms apart, moves the configuration messages at
// the end of a block, and all messages of the block after them, past the block's end: they
// belong to the next block. The list stays as it is while messages are read.
void move_colliding_configurations(Index& index, const MessageReader& messageText);

}  // namespace gzd

#endif
