// Which messages are printed.
#ifndef GZDCONV_MESSAGE_FILTER_H
#define GZDCONV_MESSAGE_FILTER_H

#include <string_view>

#include "gzd_data.h"

namespace gzdconv {

// The text of a message, ended by a NUL; null when it has none.
const char* message_text(const FEVENT& event);

// `text` without its leading blanks.
std::string_view trim_lstring(std::string_view text);

// True when the options let a message with this text through.
bool is_message_printed(std::string_view text);

}  // namespace gzdconv

#endif
