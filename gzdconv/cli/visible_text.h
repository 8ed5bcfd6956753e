// Text of unknown origin, as a terminal may show it.
#ifndef GZDCONV_VISIBLE_TEXT_H
#define GZDCONV_VISIBLE_TEXT_H

#include <string>
#include <string_view>

namespace gzdconv {

// `text` with its control characters in a form that a terminal prints instead of obeying: ^[ for
// an escape, \x9b for a byte that is no UTF-8. Characters in `kept` stay.
std::string visible(std::string_view text, std::string_view kept = "");

}  // namespace gzdconv

#endif
