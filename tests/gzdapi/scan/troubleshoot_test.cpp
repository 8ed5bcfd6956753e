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

  static FILE* fileOf(const Bytes& content) {
    FILE* f = std::tmpfile();
    std::fwrite(content.data(), 1, content.size(), f);
    return f;
  }

  FileInputStream file;
  DebugParaT d;
  char* text = nullptr;
  std::size_t length = 0;
};

Bytes withHeaderAt(std::size_t size, std::size_t place, UINT16 header) {
  Bytes content(size, 0x11);
  content[place] = static_cast<byte>(header >> 8);
  content[place + 1] = static_cast<byte>(header & 0xFF);
  return content;
}

std::string repeated(const std::string& part, int count) {
  std::string all;
  for (int i = 0; i < count; ++i) all += part;
  return all;
}

TEST(Troubleshoot, KnownHeadersAreOnlyCounted) {
  for (const UINT16 header : std::initializer_list<UINT16>{0x02F4, 0x02FC, 0x2100, 0x4100, 0, 28}) {
    Scan scan(withHeaderAt(10, 0, header));
    EXPECT_EQ(scan.at(0, 1), "");
    EXPECT_EQ(scan.d.totalSamples, 1);
    EXPECT_EQ(scan.d.timeUpdate, header >> 8);
    EXPECT_EQ(scan.d.curOvDataTime, header >> 8);
    EXPECT_EQ(scan.at(0, 0), "");
    EXPECT_EQ(scan.d.totalEvents, 1);
    EXPECT_EQ(scan.d.totalOvItem, 2);
  }
}

TEST(Troubleshoot, AnUnknownHeaderIsDumpedAndTheNextGoodPositionToo) {
  Scan scan(withHeaderAt(600, 302, 0x2100));
  EXPECT_EQ(scan.at(20, 1),
            "OVData Time 17 k = 1 diff 17 header 4369 \n"
            "File position corruption at 20 \n" +
                repeated("11", 200) + "0\n" + "Good position is found at 300 valid header 8448 \n" +
                repeated("11", 2) + "210" + repeated("11", 196) + "0\n");
  EXPECT_EQ(scan.d.prevOvDataTime, 17);
  EXPECT_NE(scan.at(299, 0).find("Good position is found at 300 valid"), std::string::npos);
}

// The difference counts from the item before, whatever its header, also where no good position is.
TEST(Troubleshoot, EveryItemSetsTheTimeThatTheNextIsComparedWith) {
  Scan scan(withHeaderAt(600, 0, 28));
  EXPECT_EQ(scan.at(0, 1), "");  // a time of 0 and a known header
  scan.d.curOvDataTime = 1000;
  EXPECT_EQ(scan.at(0, 1), "");
  for (int item = 0; item < 2; ++item) {
    const std::string trace = scan.at(20, 1);
    EXPECT_NE(trace.find(" diff 17 header 4369 \n"), std::string::npos) << trace;
    EXPECT_EQ(trace.find("Good position"), std::string::npos);
  }
}

TEST(Troubleshoot, TheEndIsReportedWithTheRest) {
  Scan scan(withHeaderAt(600, 302, 28));
  EXPECT_EQ(scan.at(450, -1), "End of file detected 450 \n");
  EXPECT_NE(scan.at(50, -1).find("End of file detected 50 \n"
                                 "Trying to get more as size is 600 \n"
                                 "File position corruption at 50 \n"),
            std::string::npos);
}

TEST(Troubleshoot, ReadFailuresEndTheTraceOfTheItemOnly) {
  Scan scan(Bytes(300, 0x11));
  const LogCapture log;
  scan.at(300, 1);
  EXPECT_EQ(log.text(), "error reading gzd file 11\n");
  scan.at(250, 1);  // the dump reaches over the end
  scan.at(10, 1);   // no good position up to the end
  scan.at(20, 1);
  EXPECT_EQ(log.text(), "error reading gzd file 11\n");
}

TEST(Troubleshoot, ATraceCostsOneSearchThroughTheFile) {
  Scan scan(withHeaderAt(400000, 399000, 0x4100));
  for (INT64 position = 0; position < 398000; position += 50) scan.at(position, 1);
  EXPECT_EQ(scan.d.goodPos, 398998);
}

}  // namespace
