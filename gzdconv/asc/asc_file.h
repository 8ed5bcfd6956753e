// The file of an ASC text. A text is written beside its place, as NAME.asc.part, and takes its name
// when it is whole: a run that fails or is ended leaves an existing text as it was.
//
// What is no ordinary file with one name (a device, a link), or stands where no new file can be
// made or take its name, is written in place.
#ifndef GZDCONV_ASC_FILE_H
#define GZDCONV_ASC_FILE_H

#include <cstdio>
#include <optional>
#include <string>

#include "cli/files.h"

namespace gzdconv {

class AscFile {
 public:
  static constexpr const char* part_ending = ".part";

  AscFile() = default;
  ~AscFile() { discard(); }
  AscFile(const AscFile&) = delete;
  AscFile& operator=(const AscFile&) = delete;

  // Opens the file of the text `path`, unbuffered, and keeps other runs from writing that text. The
  // stream stays this object's. Null when that cannot be; errno then has the reason: EWOULDBLOCK
  // when another process is writing it, EEXIST when what is named NAME.asc.part is no old part.
  FILE* open(const std::string& path);

  // Closes the stream; the text takes its name. False when either fails; errno then has the reason,
  // and what was written is removed.
  bool finish();

  // Closes the stream and removes what was written.
  void discard();

  [[nodiscard]] const std::string& path() const { return path_; }

  // The open file when it is an ordinary one: what the text's name will lead to.
  [[nodiscard]] std::optional<FileId> id() const;

 private:
  FILE* open_part();
  FILE* open_in_place();
  FILE* open_stream(const std::string& path, int flags);
  bool take_name();
  void remove_written();
  void close_lock();

  std::string path_;
  std::string part_;  // "" when the text is written in place
  FILE* stream_ = nullptr;
  int lock_ = -1;  // holds the lock until the text has its name
};

}  // namespace gzdconv

#endif
