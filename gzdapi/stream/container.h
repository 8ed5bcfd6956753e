// The head of a recording: its magic line and its text preamble.
#ifndef GZDAPI_CONTAINER_H
#define GZDAPI_CONTAINER_H

#include <memory>
#include <string>

#include "stream/MVIO.h"

namespace gzd {

enum class ContainerKind { Plain, Compressed };

// Reads the first line and tells the container by it. Throws GZDException for any other line.
ContainerKind read_magic(InputStream& file);

// What the preamble tells.
class Preamble {
 public:
  // Reads the lines up to "ENDP:". Throws GZDException, logged first, when the stream ends before.
  void read(InputStream& file);

  // Every line after "** ", its newline kept; at most 1999 characters.
  std::string preText;
  INT16 revision = 0;  // of the file format
  INT16 ovilo_revision = GZD_TRACKER_OTHER;

 private:
  bool readLine(InputStream& file, char* buffer, int capacity);
  void recognise(std::string_view line);
};

// Opens the recording at `path`, reads its head into `preamble` and returns the stream of its
// records, at the first one; that of a compressed recording is a temporary file. Throws
// GZDException.
std::unique_ptr<InputStream> open_container(const char* path, Preamble& preamble);

// Whether message texts of the preamble read last are UTF-8; a preamble that does not tell leaves
// it as it was.
extern int utf8encoding;

}  // namespace gzd

#endif
