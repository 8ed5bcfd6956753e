// What a text lacks of its recording, told on standard error: nothing is lost in silence.
#ifndef GZDCONV_LOSSES_H
#define GZDCONV_LOSSES_H

#include <string>

#include "gzd.h"

namespace gzdconv {

// One line for each: where reading stopped, bytes after the closing tag, blocks whose samples end
// before they do, a message log that was not merged. `input` is the recording's name.
void report_losses(GZDFILE* handle, const std::string& input);

}  // namespace gzdconv

#endif
