// Steps through the frames of a block's video as its samples go by.
#include "lines/frame_lines.h"

#include <cstddef>
#include <cstring>
#include <vector>

#include "cli/console.h"
#include "cli/text.h"
#include "lines/event_lines.h"
#include "video/video_frames.h"

namespace gzdconv {

namespace {

constexpr std::size_t max_avi_base = 29;
constexpr std::uint32_t unknown_time = UINT32_MAX;

std::string video_base(const std::string& name) {
  std::string base(path_tail(name));
  if (base.size() > max_avi_base)
    throw FatalError("The name " + shown_text(base) + " is too long for the name of a video");
  return base;
}

// Room for an LSTRING that holds `text`, its text after the length.
std::vector<std::uint16_t> make_message(const std::string& text) {
  std::vector<std::uint16_t> room((sizeof(LSTRING) + text.size()) / sizeof(std::uint16_t) + 1);
  const auto length = static_cast<std::uint16_t>(text.size() + 1);
  room[0] = length;
  std::memcpy(reinterpret_cast<char*>(room.data()) + offsetof(LSTRING, c), text.c_str(), length);
  return room;
}

}  // namespace

FrameLines::~FrameLines() {
  closeLookupTable();
}

void FrameLines::start_block(int session) {
  if (openLookupTable(input_name_.c_str(), session, 1) == 0)
    avi_base_ = video_base(typed_name_);
  else
    warn(
        "could not open or create lookup table file. The avi files may not be found or renamed "
        "or DirectX 9 is not installed!\n");
}

void FrameLines::forget_frame() {
  frame_time_ = unknown_time;
  frame_line_printed_ = false;
}

void FrameLines::before_sample(std::uint32_t time, std::int64_t last_sample_time2, int session) {
  if (frame_time_ != unknown_time) {
    const bool after_last = last_sample_time2 >= 0 && last_sample_time2 / 2 <= frame_time_;
    if (after_last && frame_time_ <= time && !frame_line_printed_) {
      print_frame(session);
      frame_line_printed_ = true;
    }
    if (frame_time_ >= time) return;
  }
  frame_time_ = static_cast<std::uint32_t>(getNextFrameTime());
  frame_line_printed_ = false;
}

void FrameLines::print_frame(int session) const {
  std::vector<std::uint16_t> message =
      make_message("VFRAME " + std::to_string(getLastFrameNumber()) + " " + avi_base_ +
                   std::to_string(session) + ".avi");
  FEVENT event{};
  event.time = event.sttime = event.entime = frame_time_;
  event.type = GZD_MESSAGE;
  event.message = reinterpret_cast<LSTRING*>(message.data());
  print_event(state_, event, 0);
}

}  // namespace gzdconv
