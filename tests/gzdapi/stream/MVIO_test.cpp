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

TEST(BigEndian, ValuesAtOddAddresses) {
  const byte bytes[] = {0, 0x12, 0x34, 0x56, 0x78, 0xFF, 0xFE};
  EXPECT_EQ(load_be16(bytes + 1), 0x1234);
  EXPECT_EQ(load_be32(bytes + 1), 0x12345678u);
  EXPECT_EQ(load_be16(bytes + 5), 0xFFFE);
  EXPECT_EQ(load_be16s(bytes + 5), -2);
}

TEST(InputStream, ValuesAreBigEndian) {
  MemoryStream in({0x12, 0x34, 0xFF, 0xFE, 0x80, 0x00, 0x00, 0x01, 0x3F, 0x80, 0x00, 0x00, 0xAB});
  EXPECT_EQ(in.getWord(), 0x1234);
  EXPECT_EQ(in.getWord(), -2);
  EXPECT_EQ(in.getInt(), -2147483647);
  EXPECT_EQ(in.getFloat(), 1.0f);
  EXPECT_EQ(in.getByte(), 0xAB);
  EXPECT_EQ(in.getFilePos(), 13);
}

TEST(InputStream, FloatsThatMeanMissingAreOne) {
  Bytes bytes;
  for (const float value : {-32768.0f, 1e8f, NAN, -0.0f, 99999992.0f}) {
    gzdsynth::putFloat(bytes, value);
  }
  MemoryStream in(bytes);
  EXPECT_EQ(in.getFloat(), 1e8f);
  EXPECT_EQ(in.getFloat(), 1e8f);
  EXPECT_TRUE(std::isnan(in.getFloat()));
  EXPECT_TRUE(std::signbit(in.getFloat()));
  EXPECT_EQ(in.getFloat(), 99999992.0f);
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

TEST(InputStream, RawDataGivesWhatThereIs) {
  MemoryStream in({1, 2, 3}, MemoryStream::ALL, 1);
  byte target[5] = {};
  EXPECT_EQ(in.getRawData(target, 5), 3);
  EXPECT_EQ(target[2], 3);
  EXPECT_EQ(in.getFilePos(), 3);
  EXPECT_EQ(in.getRawData(target, 0), 0);
  EXPECT_EQ(in.getRawData(target, -1), 0);
}

TEST(InputStream, LinesKeepTheirNewline) {
  MemoryStream in(bytes_of("one\r\n\ntail"), MemoryStream::ALL, 2);
  char line[35];
  EXPECT_EQ(in.getTerminatedString(line, 35), 5);
  EXPECT_STREQ(line, "one\r\n");
  EXPECT_EQ(in.getTerminatedString(line, 35), 1);
  EXPECT_EQ(in.getTerminatedString(line, 35), 4);
  EXPECT_STREQ(line, "tail");
  EXPECT_EQ(in.getTerminatedString(line, 35), -1);
  EXPECT_EQ(in.getFilePos(), 10);
}

TEST(InputStream, LongLinesComeInPieces) {
  MemoryStream in(bytes_of(std::string(40, 'x') + "\n"));
  char line[35];
  EXPECT_EQ(in.getTerminatedString(line, 35), 34);
  EXPECT_EQ(in.getTerminatedString(line, 35), 7);
  EXPECT_STREQ(line, "xxxxxx\n");
}

TEST(InputStream, ALineWithANulCountsUpToItAndIsTakenWhole) {
  MemoryStream in(bytes_of(std::string("ab\0cd\nef", 8)));
  char line[35];
  EXPECT_EQ(in.getTerminatedString(line, 35), 2);
  EXPECT_EQ(in.getFilePos(), 6);
  EXPECT_EQ(in.getByte(), 'e');
}

TEST(InputStream, PeekShowsWithoutMoving) {
  MemoryStream in({1, 2, 3, 4}, MemoryStream::ALL, 1);
  const byte* shown = in.peek(3);
  ASSERT_NE(shown, nullptr);
  EXPECT_EQ(shown[2], 3);
  EXPECT_EQ(in.getFilePos(), 0);
  EXPECT_EQ(in.peek(5), nullptr);
  in.take(3);
  EXPECT_EQ(in.getByte(), 4);
}

// ---- files
// ---------------------------------------------------------------------------------------

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

TEST(FileInputStream, TheFileItselfStandsWhereTheStreamDoes) {
  const ScratchDirectory scratch;
  FileInputStream in(scratch.save("f", numbered(10'000)).c_str());
  in.seek(5000);
  in.getByte();
  EXPECT_EQ(std::ftell(in.getRawFile()), 5001);
}

TEST(FileInputStream, TakesOverAnOpenFileFromItsBeginning) {
  FILE* file = std::tmpfile();
  std::fputs("hello", file);
  FileInputStream in(file);
  EXPECT_EQ(in.getByte(), 'h');
}

TEST(FileInputStream, WhatIsNotAReadableFileIsRefused) {
  const ScratchDirectory scratch;
  const std::string missing = scratch.file("none");
  for (const std::string& path : {missing, scratch.file(""), std::string("/dev/null")}) {
    CapturedLog log;
    try {
      FileInputStream in(path.c_str());
      ADD_FAILURE() << path;
    } catch (const GZDException& error) {
      EXPECT_STREQ(error.getMessage(), "File Could not be opened!");
    }
    EXPECT_EQ(log.take(), "The file " + path + " could not be opened\n");
  }
}

// ---- texts and messages
// --------------------------------------------------------------------------

TEST(LString, WalksBytesAndStaysInside) {
  const byte bytes[] = {0x3F, 0x80, 0, 0, 0xC7, 0, 0, 0, 9, 1, 2};
  LString text(bytes, sizeof bytes);
  EXPECT_EQ(text.getFloat(), 1.0f);
  EXPECT_EQ(text.getFloat(), -32768.0f);
  EXPECT_EQ(text.getByte(), 9);
  EXPECT_EQ(text.getFloat(), 0.0f);
  EXPECT_EQ(text.getByte(), 1);
}

TEST(GZDException, FormatsAndBoundsItsMessage) {
  EXPECT_STREQ(GZDException("%d of %s", 3, "x").getMessage(), "3 of x");
  const std::string large(5000, 'y');
  EXPECT_EQ(std::string(GZDException("%s", large.c_str()).getMessage()).size(), 1023u);
}

TEST(Log, GoesToTheFunctionElseToStandardOutput) {
  {
    CapturedLog log;
    EXPECT_EQ(print_log("%s %d\n", "line", 1), 0);
    EXPECT_EQ(log.take(), "line 1\n");
  }
  EXPECT_EQ(standard_output_of([] { print_log("no newline %d", 2); }), "no newline 2");
}

TEST(LogDeathTest, AMessageThatOutgrowsItsBufferEndsTheProcess) {
  const std::string large(500, 'z');
  EXPECT_DEATH(print_log("%s", large.c_str()), "longer than 498");
}

}  // namespace
