// The line is written over itself.
#include "progress.h"

#include <fmt/format.h>
#include <unistd.h>

#include <cstdio>

namespace gzdtool {

Progress::Progress(std::size_t all) : all_(all), is_shown_(::isatty(STDERR_FILENO) != 0) {}

void Progress::show(std::size_t done, std::size_t worked) {
  constexpr std::chrono::milliseconds pause(200);
  const auto now = Clock::now();
  if (!is_shown_ || now - last_ < pause) return;
  last_ = now;
  const double seconds = std::chrono::duration<double>(now - start_).count();
  std::string line = fmt::format("{} of {}, {} %", done, all_, all_ == 0 ? 100 : 100 * done / all_);
  if (worked != 0 && seconds > 0) {
    const double rate = static_cast<double>(worked) / seconds;
    line += fmt::format(", {:.1f} a second, {:.0f} s left", rate,
                        static_cast<double>(all_ - done) / rate);
  }
  clear();
  width_ = line.size();
  std::fputs(line.c_str(), stderr);
}

void Progress::clear() {
  if (width_ != 0) std::fprintf(stderr, "\r%*s\r", static_cast<int>(width_), "");
  width_ = 0;
}

}  // namespace gzdtool
