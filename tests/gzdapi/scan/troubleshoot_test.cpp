// The trace of the opening.
#include "scan/troubleshoot.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <string>
#include <vector>

#include "support/index_builder.h"

using namespace gzd;

namespace {

using Bytes = std::vector<byte>;

// A stream over bytes, with a trace.
struct Scan {
  explicit Scan(const Bytes& content) : file(fileOf(content)) {
    d.gzd_file_size = static_cast<int>(content.size());
    d.debugFile = open_memstream(&text, &length);
  }
  ~Scan() {
    std::fclose(d.debugFile);
    std::free(text);
  }
  Scan(const Scan&) = delete;
  Scan& operator=(const Scan&) = delete;

  // Traces an item at a position; what it added to the trace.
  std::string at(INT64 position, int tag) {
    std::fflush(d.debugFile);
    const std::size_t before = length;
    file.seek(position);
    EXPECT_EQ(troubleshootScan(file, d, tag), 0);
    EXPECT_EQ(file.getFilePos(), position);
    EXPECT_EQ(d.corruption, 0);
    std::fflush(d.debugFile);
    return {text + before, length - before};
  }

  static FileHandle fileOf(const Bytes& content) {
    FileHandle f(std::tmpfile());
    std::fwrite(content.data(), 1, content.size(), f.get());
    return f;
  }

  FileInputStream file;
  DebugParaT d;
  char* text = nullptr;
  std::size_t length = 0;
};

Bytes with_header_at(std::size_t size, std::size_t place, UINT16 header) {
  Bytes content(size, 0x11);
  content[place] = static_cast<byte>(header >> 8);
  content[place + 1] = static_cast<byte>(header & 0xFF);
  return content;
}

// The difference counts from the item before, whatever its header, also where no good position is.
TEST(Troubleshoot, EveryItemSetsTheTimeThatTheNextIsComparedWith) {
  Scan scan(with_header_at(600, 0, 28));
  EXPECT_EQ(scan.at(0, 1), "");  // a time of 0 and a known header
  scan.d.curOvDataTime = 1000;
  EXPECT_EQ(scan.at(0, 1), "");
  for (int item = 0; item < 2; ++item) {
    const std::string trace = scan.at(20, 1);
    EXPECT_NE(trace.find(" diff 17 header 4369 \n"), std::string::npos) << trace;
    EXPECT_EQ(trace.find("Good position"), std::string::npos);
  }
}

}  // namespace
