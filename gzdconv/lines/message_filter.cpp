// Which messages the options leave out, by how their texts begin.
#include "lines/message_filter.h"

#include <algorithm>
#include <cstddef>

#include "cli/options.h"

namespace gzdconv {

namespace {

std::string_view drop_digits(std::string_view text) {
  text.remove_prefix(std::min(text.find_first_not_of("0123456789"), text.size()));
  return text;
}

// `text` after a leading time offset.
std::string_view skip_offset(std::string_view text) {
  text = trim_lstring(text);
  if (text.starts_with('-')) text.remove_prefix(1);
  return trim_lstring(drop_digits(text));
}

bool is_viewer_command(std::string_view text) {
  return text.starts_with("!V") || text.starts_with("!EG");
}

// A prefix with nothing after it is no geometry message.
bool is_geometry(std::string_view text) {
  for (const std::string_view prefix : {"!GEOM", "!MIPI", "!IMU"})
    if (text.starts_with(prefix) && text.size() > prefix.size()) return true;
  return false;
}

bool is_filtered_out(std::string_view text) {
  const auto first = options.filter_out_texts.begin();
  return std::any_of(first, first + options.filter_out_count, [text](const std::string& filter) {
    return text.find(filter) != std::string_view::npos;
  });
}

}  // namespace

// The text goes on after its one declared character, so the way to it is by bytes.
const char* message_text(const FEVENT& event) {
  if (event.message == nullptr) return nullptr;
  return reinterpret_cast<const char*>(event.message) + offsetof(LSTRING, c);
}

std::string_view trim_lstring(std::string_view text) {
  text.remove_prefix(std::min(text.find_first_not_of(' '), text.size()));
  return text;
}

bool is_message_printed(std::string_view text) {
  const std::string_view command = skip_offset(text);
  if (options.hide_viewer_commands && is_viewer_command(command)) return false;
  if (!options.geom_messages && is_geometry(command)) return false;
  return !is_filtered_out(text);
}

}  // namespace gzdconv
