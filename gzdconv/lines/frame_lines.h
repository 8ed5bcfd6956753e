// VFRAME lines: where the frames of a session's video stand among the samples.
#ifndef GZDCONV_FRAME_LINES_H
#define GZDCONV_FRAME_LINES_H

#include <cstdint>
#include <stdexcept>
#include <string>

#include "run_state.h"

namespace gzdconv {

// Ends the whole run; what() is one line for standard error.
class FatalError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

class FrameLines {
 public:
  // `typed_name` is the recording as named on the command line, `input_name` as opened.
  FrameLines(RunState& state, const std::string& typed_name, const std::string& input_name)
      : state_(state), typed_name_(typed_name), input_name_(input_name) {}
  ~FrameLines();
  FrameLines(const FrameLines&) = delete;
  FrameLines& operator=(const FrameLines&) = delete;

  // Takes the frame table of a block that starts. Throws FatalError when the name is too long for
  // the name of a video.
  void start_block(int session);

  // Forgets the current frame; at every start and end of a block.
  void forget_frame();

  // Prints the frame that falls between the last sample and the one at `time` (ms), if any, and
  // steps to the next frame when that is due. `last_sample_time2` is in half-milliseconds, -1 when
  // there is none.
  void before_sample(std::uint32_t time, std::int64_t last_sample_time2, int session);

 private:
  void print_frame(int session) const;

  RunState& state_;
  std::string typed_name_;
  std::string input_name_;
  std::string avi_base_;
  std::uint32_t frame_time_ = UINT32_MAX;  // UINT32_MAX: unknown
  bool frame_line_printed_ = false;
};

}  // namespace gzdconv

#endif
