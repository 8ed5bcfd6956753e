// Reads over the window, against the bytes of the file.
#include "stream/MVIO.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>

#include "support/memory_stream.h"
#include "support/recording_fixture.h"

using namespace gzd;

namespace {

using gzdsynth::Bytes;

Bytes bytes_of(const std::string& text) {
  return {text.begin(), text.end()};
}

// Runs `read` on a stream and tells what it logged; it must fail with the message of a short read.
template <class Read>
std::string failure_of(InputStream& in, Read read) {
  CapturedLog log;
  try {
    read(in);
    ADD_FAILURE() << "a short read went through";
  } catch (const GZDException& error) {
    EXPECT_STREQ(error.getMessage(), "End of file Exception");
  }
  return log.take();
}

TEST(InputStream, ShortReadsOfEveryValueAtEveryLength) {
  struct Case {
    std::size_t size;
    void (*read)(InputStream&);
    const char* line;
  };
  const Case cases[] = {
      {2, [](InputStream& in) { in.getWord(); }, "error reading gzd file 7a r = %d \n"},
      {4, [](InputStream& in) { in.getInt(); }, "error reading gzd file 9\n"},
      {4, [](InputStream& in) { in.getFloat(); }, "error reading gzd file 9\n"},
      {1, [](InputStream& in) { in.getByte(); }, "error reading gzd file 11\n"},
      {5,
       [](InputStream& in) {
         char buffer[5];
         in.getData(buffer, 5);
       },
       "error reading gzd file 12\n"},
  };
  for (const Case& c : cases) {
    for (std::size_t left = 0; left < c.size; ++left) {
      MemoryStream in(Bytes(left, 7));
      char expected[100];
      std::snprintf(expected, sizeof expected, c.line, static_cast<int>(left));
      EXPECT_EQ(failure_of(in, c.read), expected) << c.size << " bytes, left " << left;
      EXPECT_EQ(in.getFilePos(), static_cast<INT64>(left));
      EXPECT_TRUE(in.eof());
    }
  }
}

TEST(InputStream, EndIsSeenByAReadOnly) {
  MemoryStream in({1, 2});
  in.getWord();
  EXPECT_FALSE(in.eof());
  byte one;
  EXPECT_EQ(in.getRawData(&one, 1), 0);
  EXPECT_TRUE(in.eof());
  in.seek(1);
  EXPECT_FALSE(in.eof());
  EXPECT_EQ(in.getByte(), 2);
}

TEST(InputStream, ALineWithANulCountsUpToItAndIsTakenWhole) {
  MemoryStream in(bytes_of(std::string("ab\0cd\nef", 8)));
  char line[35];
  EXPECT_EQ(in.getTerminatedString(line, 35), 2);
  EXPECT_EQ(in.getFilePos(), 6);
  EXPECT_EQ(in.getByte(), 'e');
}

// ---- files --------------------------------------------------------------------------------------

Bytes numbered(std::size_t count) {
  Bytes bytes(count);
  for (std::size_t i = 0; i < count; ++i) bytes[i] = static_cast<std::uint8_t>(i * 7 + i / 251);
  return bytes;
}

TEST(FileInputStream, AnyPlaceInAnyOrder) {
  const Bytes bytes = numbered(700'000);
  const ScratchDirectory scratch;
  FileInputStream in(scratch.save("f", bytes).c_str());
  EXPECT_EQ(in.getFileSize(), 700'000);
  EXPECT_EQ(in.getFilePos(), 0);
  std::size_t place = 1;
  for (int i = 0; i < 3000; ++i) {
    place = (place * 48271) % (bytes.size() - 4);
    if (i % 5 == 0) {
      EXPECT_EQ(in.getFileSize(), 700'000);
    }
    i % 2 == 0 ? in.seek(static_cast<INT64>(place)) : in.moveTo(static_cast<INT64>(place));
    ASSERT_EQ(static_cast<UINT32>(in.getInt()), load_be32(&bytes[place])) << place;
    ASSERT_EQ(in.getFilePos(), static_cast<INT64>(place + 4));
  }
}

TEST(FileInputStream, SequentialReadsAcrossAllWindows) {
  const Bytes bytes = numbered(1'000'003);
  const ScratchDirectory scratch;
  FileInputStream in(scratch.save("f", bytes).c_str());
  Bytes piece(997);
  for (std::size_t at = 0; at < bytes.size(); at += 997) {
    const int got = in.getRawData(piece.data(), 997);
    ASSERT_EQ(got, static_cast<int>(std::min<std::size_t>(997, bytes.size() - at)));
    ASSERT_EQ(std::memcmp(piece.data(), &bytes[at], static_cast<std::size_t>(got)), 0);
    if (at > 0) {
      in.moveTo(static_cast<INT64>(at - 1));
      ASSERT_EQ(in.getByte(), bytes[at - 1]);
      in.moveTo(static_cast<INT64>(at) + got);
    }
  }
  EXPECT_EQ(in.getRawData(piece.data(), 1), 0);
}

TEST(FileInputStream, PlacesOutsideTheFileComeUpShort) {
  const ScratchDirectory scratch;
  FileInputStream in(scratch.save("f", {1, 2, 3}).c_str());
  byte target;
  for (const INT64 place : {INT64{3}, INT64{4}, INT64{1} << 40, INT64{-1}}) {
    in.seek(place);
    EXPECT_EQ(in.getFilePos(), place);
    EXPECT_EQ(in.getRawData(&target, 1), 0) << place;
  }
  in.seek(2);
  EXPECT_EQ(in.getByte(), 3);
}

// ---- texts and messages -------------------------------------------------------------------------

}  // namespace
