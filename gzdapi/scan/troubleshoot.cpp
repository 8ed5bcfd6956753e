// 1. Note the position, count item and call.
// 2. At the end of the data: report it; go on when the file has more.
// 3. At a record: keep the data time, look at the header word. A known one is all there is to do.
// 4. Dump the bytes here.
// 5. Search for the next position with a known header word; dump the bytes there.
// Either way the data time is that of the item before when the next one is compared with it. What
// lies behind the end of the stream is dumped as 0, and a search that comes there ends, both
// without a line. The position is then that of the start: the trace only watches. The search goes
// forward byte by byte. Its result holds for all positions up to the one found, so that a whole
// file costs one search through it.

#include "scan/troubleshoot.h"

#include <string>
#include <string_view>

#include <algorithm>
#include <array>

namespace gzd {

namespace {

constexpr std::string_view hex_digits = "0123456789ABCDEF";

constexpr int tag_event = 0;
constexpr int tag_sample = 1;
constexpr int rest_worth_reading = 200;  // bytes
constexpr std::array<INT16, 5> recovery_headers = {0x02F4, 0x02FC, 0x2100, 0x4100, 28};

bool is_recovery_header(INT16 word) {
  return std::find(recovery_headers.begin(), recovery_headers.end(), word) !=
         recovery_headers.end();
}

bool is_valid_header(INT16 word) {
  return word == 0 || is_recovery_header(word);
}

class Tracer {
 public:
  Tracer(InputStream& stream, DebugParaT& parameters, int tagAnswer)
      : file(stream), d(parameters), tag(tagAnswer), start(stream.getFilePos()) {}

  void run() {
    d.prevPos = static_cast<int>(start);
    ++d.totalOvItem;
    ++d.debug_count;
    if (tag == tag_event || tag == tag_sample) {
      examineRecord();
    } else {
      reportEnd();
    }
    if (d.corruption != 0 && d.debugFile != nullptr) traceCorruption();
    d.corruption = 0;
    d.prevOvDataTime = d.curOvDataTime;
  }

 private:
  void reportEnd() {
    if (d.debugFile == nullptr) return;
    std::fprintf(d.debugFile, "End of file detected %d \n", d.prevPos);
    if (start + rest_worth_reading >= d.gzd_file_size) return;
    std::fprintf(d.debugFile, "Trying to get more as size is %d \n", d.gzd_file_size);
    d.corruption = 1;
  }

  void examineRecord() {
    readTime();
    file.seek(start);
    const INT16 header = file.getWord();
    file.seek(start);
    d.read_size = header;
    if (is_valid_header(header)) return;
    if (d.debugFile != nullptr) {
      std::fprintf(d.debugFile, "OVData Time %d k = %d diff %d header %d \n",
                   static_cast<int>(d.curOvDataTime), tag,
                   static_cast<int>(d.curOvDataTime - d.prevOvDataTime), d.read_size);
    }
    d.corruption = 1;
  }

  void readTime() {
    d.timeUpdate = file.getByte();
    if (tag == tag_sample) {
      d.curOvDataTime += d.timeUpdate;
      ++d.totalSamples;
    } else {
      d.curOvDataTime = file.getInt();
      ++d.totalEvents;
    }
  }

  void traceCorruption() {
    std::fprintf(d.debugFile, "File position corruption at %d \n", d.prevPos);
    dumpAt(start);
    if (!findGoodPosition()) return;
    std::fprintf(d.debugFile, "Good position is found at %d valid header %d \n",
                 static_cast<int>(d.goodPos), d.goodHeader);
    dumpAt(d.goodPos);
  }

  // The byte behind the dump is 0.
  void dumpAt(INT64 position) {
    d.data_block.assign(static_cast<std::size_t>(d.data_dump_size) + 1, 0);
    file.seek(position);
    file.getRawData(d.data_block.data(), d.data_dump_size);
    d.read_size = d.data_dump_size;
    std::string digits;
    for (const byte value : d.data_block) {
      if (value >= 16) digits += hex_digits[value / 16];
      digits += hex_digits[value % 16];
    }
    std::fprintf(d.debugFile, "%s\n", digits.c_str());
  }

  // Reads on until a known header word stands two bytes on. False when the stream ends before.
  bool findGoodPosition() {
    if (d.searchedFrom < 0 || start < d.searchedFrom || (d.goodPos >= 0 && start >= d.goodPos)) {
      d.searchedFrom = start;
      d.goodPos = -1;
      searchFrom(start + 1);
    }
    return d.goodPos >= 0;
  }

  // A byte and two words are looked at in each place.
  void searchFrom(INT64 position) {
    for (;; ++position) {
      file.seek(position - 1);
      const byte* const bytes = file.peek(5);
      if (bytes == nullptr) return;
      const INT16 header = load_be16s(bytes + 3);
      if (!is_recovery_header(header)) continue;
      d.goodPos = position;
      d.goodHeader = header;
      return;
    }
  }

  InputStream& file;
  DebugParaT& d;
  const int tag;
  const INT64 start;
};

}  // namespace

int troubleshootScan(InputStream& file, DebugParaT& d, int tag) {
  const INT64 start = file.getFilePos();
  try {
    Tracer(file, d, tag).run();
  } catch (const GZDException&) {
    d.corruption = 0;
  }
  file.seek(start);
  return 0;
}

}  // namespace gzd
