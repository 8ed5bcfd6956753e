// The trace of an opening.
#ifndef GZDAPI_TROUBLESHOOT_H
#define GZDAPI_TROUBLESHOOT_H

#include <cstdio>
#include <vector>

#include "base/file_handle.h"
#include "stream/MVIO.h"

namespace gzd {

constexpr int debug_dump_size = 200;

// What the trace of one scan remembers.
struct DebugParaT {
  int prevPos = 0;  // position of the current item's body
  int totalOvItem = 0;
  int totalEvents = 0;
  int totalSamples = 0;
  int data_dump_size = debug_dump_size;
  int debug_count = 0;           // calls made
  int read_size = 0;             // last header word or dump size read
  int corruption = 0;            // 1 while a corruption is being handled
  int gzd_file_size = 0;         // bytes
  INT64 curOvDataTime = 0;       // running data time
  INT64 prevOvDataTime = 0;      // of the item before
  unsigned char timeUpdate = 0;  // first byte of the current record
  std::vector<byte> data_block;  // the dump, and a byte of 0
  FILE* debugFile = nullptr;     // the trace; not owned

  // The search for a good position done last: from `searchedFrom` on, the first one is at
  // `goodPos`, or there is none (-1).
  INT64 searchedFrom = -1;
  INT64 goodPos = -1;
  int goodHeader = 0;
};

// Traces the item whose tag was just read: `tag` is 0 for an event, 1 for a sample, anything else
// for the end or an error. An item with an unknown header word, or an end with much of the file
// after it, is written to the trace with the bytes there and at the next known header word. The
// stream is left where it was; a time that cannot be read is logged and ends the trace of this item
// only. Returns 0.
int troubleshootScan(InputStream& file, DebugParaT& d, int tag);

// The trace of one scan: what it remembers, and its file, when the scan is to be traced at all.
class DebugTrace {
 public:
  // `fileName` may be null. A file that cannot be opened means no trace.
  DebugTrace(InputStream& file, const char* fileName);
  [[nodiscard]] bool isOn() const { return out_ != nullptr; }
  void follow(InputStream& file, int tag) {
    if (out_) troubleshootScan(file, d_, tag);
  }
  void finish(const InputStream& file);

 private:
  DebugParaT d_;
  FileHandle out_;
};

}  // namespace gzd

#endif
