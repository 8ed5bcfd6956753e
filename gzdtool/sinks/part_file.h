// A file that is written beside its place and takes its name when it is whole.
#ifndef GZDTOOL_PART_FILE_H
#define GZDTOOL_PART_FILE_H

#include <string>

namespace gzdtool {

// Only one is open at a time: SIGHUP, SIGINT and SIGTERM remove it before they end the program.
class PartFile {
 public:
  explicit PartFile(std::string name);
  // Removes the part when it was not published.
  ~PartFile();
  PartFile(const PartFile&) = delete;
  PartFile& operator=(const PartFile&) = delete;

  // The path to write to.
  [[nodiscard]] const std::string& path() const { return part_; }
  // Gives the part its name. Throws WriteError.
  void publish();

 private:
  std::string name_, part_;
  bool is_published_ = false;
};

}  // namespace gzdtool

#endif
