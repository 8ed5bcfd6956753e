// How far a long run is, in one line on a terminal.
#ifndef GZDTOOL_PROGRESS_H
#define GZDTOOL_PROGRESS_H

#include <chrono>
#include <cstddef>

namespace gzdtool {

// Shows nothing where standard error is no terminal.
class Progress {
 public:
  explicit Progress(std::size_t all);
  ~Progress() { clear(); }
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;

  // `worked`: those done that took work; what was done before takes none.
  void show(std::size_t done, std::size_t worked);
  // Takes the line away, for other words.
  void clear();

 private:
  using Clock = std::chrono::steady_clock;

  std::size_t all_;
  bool is_shown_;
  Clock::time_point start_ = Clock::now(), last_{};
  std::size_t width_ = 0;
};

}  // namespace gzdtool

#endif
