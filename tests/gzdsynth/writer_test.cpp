// Every kind of record against bytes worked out by hand.
#include <gtest/gtest.h>

#include <fstream>
#include <iterator>

#include "GzdWriter.h"
#include "support/hex_bytes.h"

namespace gzdsynth {
namespace {

Bytes sampleBytes(const SampleRecord& sample) {
  Bytes out;
  putSample(out, sample);
  return out;
}

std::string text(const Bytes& bytes) {
  return {bytes.begin(), bytes.end()};
}

Bytes readFile(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(in), {}};
}

Bytes inflated(const Bytes& zipped) {
  Bytes out(1 << 20);
  uLongf size = out.size();
  EXPECT_EQ(uncompress(out.data(), &size, zipped.data(), zipped.size()), Z_OK);
  out.resize(size);
  return out;
}

TEST(Header, MagicLines) {
  EXPECT_EQ(magicLine(Magic::kComb), "MORVEN_TECH_COMBFILE\n");
  EXPECT_EQ(magicLine(Magic::kFalc, true), "MORVEN_TECH_FALCFILE\r\n");
  EXPECT_EQ(magicLine(Magic::kOsp), "MORVEN_TECH_OSPFILE\n");
  EXPECT_EQ(magicLine(Magic::kFalcZip), "MORVEN_TECH_FALCFILE ZIP\n");
  EXPECT_EQ(magicLine(Magic::kOspZip, true), "MORVEN_TECH_OSPFILE ZIP\r\n");
}

TEST(Header, LinesAndEnd) {
  GzdWriter writer(4);
  writer.magic(Magic::kOsp).preambleLine("DATE: today");
  EXPECT_EQ(text(writer.bytes()),
            "MORVEN_TECH_OSPFILE\nVERSION: OVILO OSPREY 3\nSOURCE: OVILO OSPREY\n"
            "DATE: today\nENDP:\n" +
                std::string(2, '\0'));
  writer.clearPreamble().magicText("X\n").endpText("").endTag(false);
  EXPECT_EQ(text(writer.bytes()), "X\n");
}

TEST(Header, CompressedBodyFollowsPlainHeader) {
  GzdWriter plain(3), zipped(3);
  zipped.magic(Magic::kFalcZip);
  for (GzdWriter* writer : {&plain, &zipped}) writer->message(1, "hello").gazeSample(2, 3, 4, 5);
  EXPECT_EQ(inflated(bodyOf(zipped)), bodyOf(plain));
}

TEST(Sample, SmallestWithStepAndTagBit) {
  EXPECT_EQ(sampleBytes({.flags = SMP_LEFT, .time = 77, .step = 5}), hex("8001 05"));
  EXPECT_EQ(sampleBytes({.flags = SMP_LEFT | SMP_TIME_ABSOLUTE, .time = 0x01020304}),
            hex("A001 01020304"));
}

TEST(Sample, BothEyesAllFixedFields) {
  SampleRecord sample{.flags = 0xFFF0, .time = 0x10};
  sample.px = {1, 2};
  sample.py = {3, 4};
  sample.hx = {5, 6};
  sample.hy = {7, 8};
  sample.gx = {9, kStoredMissing};
  sample.gy = {-1, kStoredMissing};
  sample.rx = 0x168;
  sample.ry = 0x169;
  sample.pa = {900, 901};
  sample.status = 0x1002;
  sample.input = 0x7F;
  sample.buttons = 1;
  sample.headType = 0xB3;
  sample.headData = {1, -2, 3, 4, 5, 6, 7, 8};
  EXPECT_EQ(sampleBytes(sample),
            hex("FFF1 00000010  0001 0003 0002 0004  0005 0007 0006 0008  0009 FFFF 8000 8000"
                "0168 0169  0384 0385  1002 007F 0001  B3 0001 FFFE 0003"));
}

TEST(Sample, RightEyeOnlyAndHeadWordsAreCapped) {
  SampleRecord sample{.flags = SMP_RIGHT | SMP_GAZE | SMP_PUPIL_SIZE | SMP_HEAD_DATA};
  sample.gx = {1, 2};
  sample.gy = {3, 4};
  sample.pa = {5, 6};
  sample.headType = 0x1B;
  sample.headData = {1, 2, 3, 4, 5, 6, 7, 8};
  EXPECT_EQ(sampleBytes(sample),
            hex("4511 00 0002 0004 0006 1B 0001 0002 0003 0004 0005 0006 0007 0008"));
}

TEST(Sample, TargetBlock) {
  SampleRecord sample{.flags = SMP_EXTENDED};
  sample.blocks = {headTargetBlock({1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, -12})};
  EXPECT_EQ(sampleBytes(sample),
            hex("0009 00 18 01 0001 0002 0003 0004 0005 0006 0007 0008 0009 000A 000B FFF4 00"));
}

// Numbers 1.0 to 22.0 in the order of the record, around the marker flags.
TEST(Sample, PoseBlock) {
  HeadPose pose;
  pose.headInSpaceX = {1, 2, 3};
  pose.headInSpaceY = {4, 5, 6};
  pose.eyeInHeadX = {7, 8, 9};
  pose.eyeInHeadY = {10, 11, 12};
  pose.markerFlags = 0xDEADBEEF;
  pose.rotation = {13, 14, 15};
  pose.position = {16, 17, 18};
  pose.gaze = {19, 20, 21, 22};
  Bytes expected = hex("0009 00 5C 02");
  for (int i = 1; i <= 22; ++i) {
    if (i == 13) putBytes(expected, hex("DEADBEEF"));
    putFloat(expected, static_cast<float>(i));
  }
  putByte(expected, 0);
  EXPECT_EQ(sampleBytes({.flags = SMP_EXTENDED, .blocks = {headPoseBlock(pose)}}), expected);
  EXPECT_EQ(expected.size(), 5U + 92U + 1U);
}

TEST(Sample, EllipseBlocks) {
  Ellipse ellipse;
  ellipse.headGazeX = 1;
  ellipse.headGazeY = 2;
  ellipse.eyeGazeX = {3, 4, 5};
  ellipse.eyeGazeY = {6, 7, 8};
  ellipse.eyes[0] = {9, 10, 11, 12, 13};
  ellipse.eyes[1] = {14, 15, 16, 17, 18};
  Bytes longForm, shortForm;
  for (int i = 1; i <= 18; ++i) {
    putFloat(longForm, static_cast<float>(i));
    if (i < 3 || i > 8 || i == 5 || i == 8) putFloat(shortForm, static_cast<float>(i));
  }
  EXPECT_EQ(ellipseBlock72(ellipse).payload, longForm);
  EXPECT_EQ(ellipseBlock56(ellipse).payload, shortForm);
  EXPECT_EQ(ellipseBlock72(ellipse).length, 72U);
  EXPECT_EQ(ellipseBlock56(ellipse).length, 56U);
  EXPECT_EQ(ellipseBlock56(ellipse).kind, 3U);
}

TEST(Sample, UnknownAndSkippedBlocks) {
  SampleRecord sample{.flags = SMP_EXTENDED | SMP_SKIP_BLOCKS};
  sample.blocks = {unknownBlock(9, {1, 2}), {.length = 92, .kind = 7, .payload = {5}}};
  sample.skipped = {unknownBlock(3, {4})};
  EXPECT_EQ(sampleBytes(sample), hex("000D 00  02 09 0102  5C 07 05 00  01 03 04 00"));
}

TEST(Sample, PhysicalValuesFollowTheBlocksPrescale) {
  GzdWriter writer(2);
  writer.gazeSample(1, 512.34, -0.06, 900, GZD_RIGHT_EYE);
  writer.startSamples({.gazePrescale = 4});
  const std::uint64_t before = writer.bodySize();
  writer.gazeSample(2, 100.5, 1e8, 3);
  const Bytes body = bodyOf(writer);
  EXPECT_EQ(Bytes(body.begin(), body.begin() + 12), hex("6501 00000001 1403 FFFF 0384"));
  EXPECT_EQ(Bytes(body.begin() + static_cast<std::ptrdiff_t>(before), body.end()),
            hex("A501 00000002 0192 8000 0003  0000"));
  EXPECT_EQ(stored(5000), 32767);
  EXPECT_EQ(stored(-1e7), -32767);
}

TEST(Event, TagAndFieldsInAnyOrder) {
  EXPECT_EQ(EventRecord(8, GZD_RIGHT_EYE, GZD_POSITION_HREF).end(0x100).start(1).bytes(),
            hex("4880 41 00000100 21 00000001 00"));
  EXPECT_EQ(EventRecord(3).raw({200}).unclosed().bytes(), hex("03C0 C8"));
}

TEST(Event, EachCode) {
  const auto fields = [](const EventRecord& record) {
    const Bytes bytes = record.bytes();
    return Bytes(bytes.begin() + 2, bytes.end());
  };
  const EventRecord e(1);
  EXPECT_EQ(fields(EventRecord(e).rawStart(1, 2).rawEnd(3, 4).rawAverage(5, 6)),
            hex("28 0001 0002 48 0003 0004 68 0005 0006 00"));
  EXPECT_EQ(fields(EventRecord(e).hrefStart(1, 2).hrefEnd(3, 4).hrefAverage(5, 6)),
            hex("29 0001 0002 49 0003 0004 69 0005 0006 00"));
  EXPECT_EQ(fields(EventRecord(e).gazeStart(1, 2).gazeEnd(3, 4).gazeAverage(5, 6)),
            hex("2A 0001 0002 4A 0003 0004 6A 0005 0006 00"));
  EXPECT_EQ(fields(EventRecord(e).resolutionStart(1, 2).resolutionEnd(3, 4)),
            hex("2B 0001 0002 4B 0003 0004 00"));
  EXPECT_EQ(fields(EventRecord(e).pupilStart(1).pupilEnd(2).pupilAverage(3)),
            hex("30 0001 51 0002 72 0003 00"));
  EXPECT_EQ(
      fields(EventRecord(e).velocityStart(1).velocityEnd(2).velocityAverage(3).velocityPeak(4)),
      hex("33 0001 53 0002 73 0003 93 0004 00"));
  EXPECT_EQ(fields(EventRecord(e).input(1).buttons(2).flags(0xC780)),
            hex("55 0001 56 0002 B4 C780 00"));
}

TEST(Event, TextWithTrueAndStatedLength) {
  EXPECT_EQ(EventRecord(24, 0, 0).text("ab").bytes(), hex("1800 5E 0002 6162 00"));
  EXPECT_EQ(EventRecord(24, 0, 0).text("ab", 499).bytes(), hex("1800 5E 01F3 6162 00"));
}

TEST(Event, HeadPosePayload) {
  std::array<float, 36> values{};
  values[0] = 1;    // 3F800000
  values[35] = -2;  // C0000000
  const Bytes bytes = EventRecord(8).headPose(values).bytes();
  ASSERT_EQ(bytes.size(), 2U + 3U + 147U + 1U);
  EXPECT_EQ(Bytes(bytes.begin(), bytes.begin() + 12), hex("08C0 5E 0093 00 92 02 3F800000"));
  EXPECT_EQ(Bytes(bytes.end() - 5, bytes.end()), hex("C0000000 00"));
}

TEST(Block, StartAndEnd) {
  GzdWriter writer(2);
  BlockStart block{.time = 0x1000, .rate = 500, .sampleFlags = 0xC780, .eventFlags = 0x8400};
  block.pupilPrescale = 3;
  block.headPrescale = 7;
  block.pupilType = 2;
  writer.startBlock(block).endBlock(0x2000);
  // Rate 500 in 16.16; filters 1 and 2 and mode 9 packed into 0921.
  EXPECT_EQ(bodyOf(writer),
            hex("11C0 21 00001000 41 01F40000 B4 8400 55 4000 30 000A 51 000A 56 0003 93 0007"
                "72 0001 4B 0921 0002 00"
                "0FC0 21 00001000 41 01F40000 B4 C780 30 000A 51 000A 56 0003 93 0007"
                "72 0001 4B 0921 0002 00"
                "1000 41 00002000 00  1200 41 00002000 00  0000"));
}

TEST(Block, EyesOfEventsAreTheOtherWayRound) {
  const auto eyeWord = [](const BlockStart& block) {
    const Bytes body = bodyOf(GzdWriter(2).startEvents(block));
    return (body[16] << 8) | body[17];
  };
  EXPECT_EQ(eyeWord({.eventFlags = SMP_LEFT}), 0x4000);
  EXPECT_EQ(eyeWord({.eventFlags = SMP_RIGHT}), 0x8000);
  EXPECT_EQ(eyeWord({.eventFlags = SMP_LEFT | SMP_RIGHT}), 0xC000);
  EXPECT_EQ(eyeWord({.eventEyes = 15}), 15);
}

TEST(Block, FractionOfARateAndNoRate) {
  EXPECT_EQ(bodyOf(GzdWriter(2).startSamples({.rate = 0.5})).at(10), 0x80);
  EXPECT_EQ(bodyOf(GzdWriter(2).startSamples({.rate = 0})).at(7), 0xB4);
}

TEST(Messages, ButtonsInputsAndText) {
  GzdWriter writer(2);
  writer.message(5, "hi").button(6, 0x0101).input(7, 127);
  EXPECT_EQ(bodyOf(writer), hex("1800 21 00000005 5E 0002 6869 00  1900 21 00000006 56 0101 00"
                                "1C00 21 00000007 55 007F 00  0000"));
}

TEST(Messages, LongOnesAreCutIntoMarkedPieces) {
  GzdWriter whole(2), pieces(2);
  whole.longMessage(5, 12, "abcdefg", 3);
  pieces.message(5, "!V LONGMS_ST 12_abc");
  pieces.message(5, "!V LONGMS_CONT 12_def");
  pieces.message(5, "!V LONGMS_CONT 12_g");
  EXPECT_EQ(bodyOf(whole), bodyOf(pieces));
  EXPECT_EQ(bodyOf(GzdWriter(2).longMessage(5, 1, "")),
            bodyOf(GzdWriter(2).message(5, "!V LONGMS_ST 1_")));
}

TEST(Damage, CutsFlipsAndPatches) {
  const Bytes file = {1, 2, 3, 4};
  EXPECT_EQ(withoutTail(file, 1), (Bytes{1, 2, 3}));
  EXPECT_EQ(withoutTail(file, 9), Bytes());
  EXPECT_EQ(cutAt(file, 2), (Bytes{1, 2}));
  EXPECT_EQ(flipped(file, 1, 0x80), (Bytes{1, 0x82, 3, 4}));
  EXPECT_EQ(patched(file, 2, {8, 9}), (Bytes{1, 2, 8, 9}));
  EXPECT_THROW((void)flipped(file, 4), std::out_of_range);
}

// More than the buffer of the stream, plain and compressed.
TEST(Streaming, GivesTheSameRecordsAsMemory) {
  const std::string path = testing::TempDir() + "gzdsynth_streamed.gzd";
  for (const Magic magic : {Magic::kComb, Magic::kOspZip}) {
    GzdWriter memory(3), stream(3);
    memory.magic(magic);
    stream.magic(magic);
    stream.streamTo(path);
    for (std::uint32_t i = 0; i < 60000; ++i) {
      memory.gazeSample(i, i % 700, 5, 900).button(i, 0x0100);
      stream.gazeSample(i, i % 700, 5, 900).button(i, 0x0100);
    }
    EXPECT_EQ(stream.bodySize(), memory.bodySize());
    stream.finish();
    const Bytes file = readFile(path);
    if (magic == Magic::kComb) {
      EXPECT_TRUE(file == memory.bytes());
    } else {
      Bytes out(1 << 21);
      uLongf size = out.size();
      const std::size_t header = memory.header().size();
      ASSERT_EQ(uncompress(out.data(), &size, file.data() + header, file.size() - header), Z_OK);
      out.resize(size);
      EXPECT_TRUE(out == bodyOf(memory.compressed(false)));
    }
  }
  std::remove(path.c_str());
}

TEST(Streaming, NoticesAFailingFile) {
  for (const bool zip : {false, true}) {
    GzdWriter writer(3);
    writer.compressed(zip).streamTo("/dev/full");
    writer.message(1, "x");
    EXPECT_THROW(writer.finish(), std::runtime_error);
  }
  EXPECT_THROW(GzdWriter().save("/dev/full"), std::runtime_error);
  EXPECT_THROW(GzdWriter().streamTo("/nowhere/x.gzd"), std::runtime_error);
}

}  // namespace
}  // namespace gzdsynth
