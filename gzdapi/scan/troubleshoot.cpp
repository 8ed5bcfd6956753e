// The trace of one item of the stream (-DEBUG):
// 1. Note the position, count item and call.
// 2. At the end of the data: report it; go on when the file has more.
// 3. At a record: keep the data time, look at the header word. A known one is all there is to do.
// 4. Dump the bytes here.
// 5. Search for the next position with a known header word; dump the bytes there.
// Either way the data time is that of the item before when the next one is compared with it. What
// lies past the end of the stream is dumped as 0, and a search that comes there ends, both
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
      : file_(stream), d_(parameters), tag_(tagAnswer), start_(stream.getFilePos()) {}

  void run() {
    d_.prevPos = static_cast<int>(start_);
    ++d_.totalOvItem;
    ++d_.debug_count;
    if (tag_ == tag_event || tag_ == tag_sample) {
      examineRecord();
    } else {
      reportEnd();
    }
    if (d_.corruption != 0 && d_.debugFile != nullptr) traceCorruption();
    d_.corruption = 0;
    d_.prevOvDataTime = d_.curOvDataTime;
  }

 private:
  void reportEnd() {
    if (d_.debugFile == nullptr) return;
    std::fprintf(d_.debugFile, "End of file detected %d \n", d_.prevPos);
    if (start_ + rest_worth_reading >= d_.gzd_file_size) return;
    std::fprintf(d_.debugFile, "Trying to get more as size is %d \n", d_.gzd_file_size);
    d_.corruption = 1;
  }

  void examineRecord() {
    readTime();
    file_.seek(start_);
    const INT16 header = file_.getWord();
    file_.seek(start_);
    d_.read_size = header;
    if (is_valid_header(header)) return;
    if (d_.debugFile != nullptr) {
      std::fprintf(d_.debugFile, "OVData Time %d k = %d diff %d header %d \n",
                   static_cast<int>(d_.curOvDataTime), tag_,
                   static_cast<int>(d_.curOvDataTime - d_.prevOvDataTime), d_.read_size);
    }
    d_.corruption = 1;
  }

  void readTime() {
    d_.timeUpdate = file_.getByte();
    if (tag_ == tag_sample) {
      d_.curOvDataTime += d_.timeUpdate;
      ++d_.totalSamples;
    } else {
      d_.curOvDataTime = file_.getInt();
      ++d_.totalEvents;
    }
  }

  void traceCorruption() {
    std::fprintf(d_.debugFile, "File position corruption at %d \n", d_.prevPos);
    dumpAt(start_);
    if (!findGoodPosition()) return;
    std::fprintf(d_.debugFile, "Good position is found at %d valid header %d \n",
                 static_cast<int>(d_.goodPos), d_.goodHeader);
    dumpAt(d_.goodPos);
  }

  // The byte after the dump is 0.
  void dumpAt(INT64 position) {
    d_.data_block.assign(static_cast<std::size_t>(d_.data_dump_size) + 1, 0);
    file_.seek(position);
    file_.getRawData(d_.data_block.data(), d_.data_dump_size);
    d_.read_size = d_.data_dump_size;
    std::string digits;
    for (const byte value : d_.data_block) {
      if (value >= 16) digits += hex_digits[value / 16];
      digits += hex_digits[value % 16];
    }
    std::fprintf(d_.debugFile, "%s\n", digits.c_str());
  }

  // Reads on until a known header word stands two bytes on. False when the stream ends before.
  bool findGoodPosition() {
    if (d_.searchedFrom < 0 || start_ < d_.searchedFrom ||
        (d_.goodPos >= 0 && start_ >= d_.goodPos)) {
      d_.searchedFrom = start_;
      d_.goodPos = -1;
      searchFrom(start_ + 1);
    }
    return d_.goodPos >= 0;
  }

  // A byte and two words are looked at in each place.
  void searchFrom(INT64 position) {
    for (;; ++position) {
      file_.seek(position - 1);
      const byte* const bytes = file_.peek(5);
      if (bytes == nullptr) return;
      const INT16 header = load_be16s(bytes + 3);
      if (!is_recovery_header(header)) continue;
      d_.goodPos = position;
      d_.goodHeader = header;
      return;
    }
  }

  InputStream& file_;
  DebugParaT& d_;
  const int tag_;
  const INT64 start_;
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

DebugTrace::DebugTrace(InputStream& file, const char* fileName) {
  if (fileName == nullptr) return;
  out_.reset(std::fopen(fileName, "w"));
  if (!out_) return;
  d_.debugFile = out_.get();
  d_.gzd_file_size = static_cast<int>(file.getFileSize());
  std::fprintf(out_.get(), "%s file size %d \n", "Start of debug ", d_.gzd_file_size);
}

void DebugTrace::finish(const InputStream& file) {
  if (!out_) return;
  std::fprintf(out_.get(), "Total Ov Items %d events %d samples %d File position %d \n",
               d_.totalOvItem, d_.totalEvents, d_.totalSamples,
               static_cast<int>(file.getFilePos()));
  out_.reset();
}

}  // namespace gzd
