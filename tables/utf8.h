// Texts of recordings as UTF-8, whatever bytes they are.
#ifndef GZDTABLES_UTF8_H
#define GZDTABLES_UTF8_H

#include <string>
#include <string_view>

namespace gzdtables {

// The text with U+FFFD for each longest piece that begins a character and does not go on as one, or
// that begins none: what Python's errors="replace" and browsers make of it.
[[nodiscard]] std::string as_utf8(std::string_view bytes);

// Whether the text is UTF-8 as it stands.
[[nodiscard]] bool is_utf8(std::string_view bytes);

}  // namespace gzdtables

#endif
