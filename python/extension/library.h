// The turn at the library. It keeps process-wide state, so one thread at a time uses it; the
// interpreter runs on meanwhile.
#ifndef GZDPYTHON_LIBRARY_H
#define GZDPYTHON_LIBRARY_H

#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <utility>

#include "tables/recording.h"

namespace gzdpython {

// A recording that cannot be read. Becomes an exception of the package.
class Failure : public std::runtime_error {
 public:
  Failure(std::string path, const gzdtables::ReadError& error, std::string said);

  // The bytes of the file's name; what the library said; the system's number of the error, or 0.
  std::string path, said;
  int reason;
  // Byte of the record stream where the damage begins.
  std::optional<std::int64_t> position;
};

// Holds the turn while it lives. Waits for it without the interpreter's lock, and gives that back
// at the end when it was held at the beginning. What the library says goes to `said`.
class Turn {
 public:
  explicit Turn(std::string& said);
  ~Turn();
  Turn(const Turn&) = delete;
  Turn& operator=(const Turn&) = delete;

 private:
  void* interpreter_;  // the state of the thread, when it held the interpreter's lock
};

// Hands what the library said of a file to Python's logging: as a warning, or as a detail when it
// was said before. Takes the interpreter's lock.
enum class Level { warning, detail };
void tell(const std::string& path, const std::string& said, Level level) noexcept;

// Does some work in a turn of its own. What the library says meanwhile is told when the work
// succeeds, and becomes part of the Failure when it does not.
template <class Work>
auto in_turn(const std::string& path, Work work, Level level = Level::warning) {
  std::string said;
  try {
    auto result = [&] {
      const Turn turn(said);
      return work();
    }();
    tell(path, said, level);
    return result;
  } catch (const gzdtables::ReadError& error) {
    throw Failure(path, error, said);
  }
}

// Closed in a turn by the last that lets go of it.
using OpenRecording = std::shared_ptr<gzdtables::Recording>;

// Opens a recording in a turn. Throws Failure, with the position when the recording is damaged.
[[nodiscard]] OpenRecording open_recording(const std::string& path,
                                           const gzdtables::Options& options,
                                           Level level = Level::warning);

}  // namespace gzdpython

#endif
