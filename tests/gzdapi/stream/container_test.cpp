#include "stream/container.h"

#include <gtest/gtest.h>

#include "support/memory_stream.h"
#include "support/recording_fixture.h"

using namespace gzd;

namespace {

using gzdsynth::Bytes;

MemoryStream stream_of(const std::string& text) {
  return MemoryStream(Bytes(text.begin(), text.end()));
}

std::string refusal_of_magic(const std::string& head) {
  MemoryStream in(Bytes(head.begin(), head.end()));
  try {
    read_magic(in);
  } catch (const GZDException& error) {
    return error.getMessage();
  }
  return "accepted";
}

Preamble preamble_of(const std::string& lines) {
  const std::string text = lines + "ENDP:\n";
  MemoryStream in(Bytes(text.begin(), text.end()));
  Preamble preamble;
  preamble.read(in);
  EXPECT_EQ(in.getFilePos(), static_cast<INT64>(text.size()));
  return preamble;
}

TEST(Magic, EveryLineWithEitherEnding) {
  const std::pair<const char*, ContainerKind> kinds[] = {
      {"MORVEN_TECH_FALCFILE ZIP", ContainerKind::Compressed},
      {"MORVEN_TECH_OSPFILE ZIP", ContainerKind::Compressed},
      {"MORVEN_TECH_COMBFILE", ContainerKind::Plain},
      {"MORVEN_TECH_FALCFILE", ContainerKind::Plain},
      {"MORVEN_TECH_OSPFILE", ContainerKind::Plain},
  };
  for (const auto& [words, kind] : kinds) {
    for (const char* ending : {"\n", "\r\n"}) {
      const std::string head = words + std::string(ending) + "rest";
      MemoryStream in(Bytes(head.begin(), head.end()));
      EXPECT_EQ(read_magic(in), kind) << head;
      EXPECT_EQ(in.getByte(), 'r');
    }
  }
}

TEST(Magic, NearMissesAreBad) {
  for (const char* head :
       {"MORVEN_TECH_COMBFILE \n", "MORVEN_TECH_COMBFILE", "MORVEN_TECH_COMBFILE\r",
        "MORVEN_TECH_COMBFILE\r\r\n", "MORVEN_TECH_COMBFILE ZIP\n", "MORVEN_TECH_FALCFILE  ZIP\n",
        "MORVEN_TECH_OSPFILEZIP\n", " MORVEN_TECH_OSPFILE\n", "morven_tech_ospfile\n",
        "MORVEN_TECH\n", "\n", "", "MORVEN_TECH_FALCFILE ZIP and much more text\n"}) {
    EXPECT_EQ(refusal_of_magic(head), "Bad magic.  Corrupt gzd file. \n") << head;
  }
}

TEST(Magic, ALineThatBeginsWithANulIsAnEnd) {
  CapturedLog log;
  EXPECT_EQ(refusal_of_magic(std::string("\0MORVEN", 7)), "End of file Exception");
  EXPECT_EQ(log.take(), "error reading gzd file 6\n");
}

TEST(Preamble, TextIsEveryLineBehindStars) {
  EXPECT_EQ(preamble_of("DATE: today\n\nTYPE: GZD\r\n").preText,
            "** DATE: today\n** \n** TYPE: GZD\r\n");
  EXPECT_EQ(preamble_of("").preText, "");
}

TEST(Preamble, LongLinesAreCutIntoPieces) {
  const std::string text = preamble_of(std::string(300, 'x') + "\n").preText;
  EXPECT_EQ(text, "** " + std::string(199, 'x') + "** " + std::string(101, 'x') + "\n");
}

TEST(Preamble, TextStopsAt1999Characters) {
  std::string lines;
  for (int i = 0; i < 500; ++i) lines += "line " + std::to_string(1000 + i) + "\n";
  const Preamble preamble = preamble_of(lines + "SOURCE: OVILO FALCON\n");
  EXPECT_EQ(preamble.preText.size(), 1999u);
  EXPECT_TRUE(preamble.preText.starts_with("** line 1000\n** line 1001\n"));
  EXPECT_EQ(preamble.ovilo_revision, 3);
}

TEST(Preamble, OnlyAPlainClosingLineCloses) {
  for (const char* text : {"ENDP:\r\n", "ENDP: \n", "xENDP:\n", "ENDP:", ""}) {
    CapturedLog log;
    MemoryStream in = stream_of(text);
    Preamble preamble;
    try {
      preamble.read(in);
      ADD_FAILURE() << text;
    } catch (const GZDException& error) {
      EXPECT_STREQ(error.getMessage(), "End of file Exception");
    }
    EXPECT_EQ(log.take(), "error reading gzd file 6\n");
  }
}

TEST(Preamble, RevisionsAndGenerations) {
  struct Case {
    const char* lines;
    int revision, generation;
  };
  const Case cases[] = {
      {"", 0, 1},
      {"VERSION: OVILO KESTREL 0\n", 1, 1},
      {"VERSION: OVILO KESTREL \n", 1, 1},
      {"VERSION: OVILO KESTREL 5\n", 5, 1},
      {"VERSION: OVILO KESTREL\n", 0, 1},
      {"VERSION: OVILO OSPREY 5\n", 5, 4},
      {"VERSION: OVILO OSPREY\n", 2, 4},
      {"VERSION: OVILO OSPREY 0\n", 2, 4},
      {"VERSION: OVILO OSPREY7.1\n", 7, 4},
      {"SOURCE: OVILO\n", 0, 1},
      {"SOURCE: OVILO KESTREL CL\n", 0, 2},
      {"SOURCE: OVILO FALCON\n", 0, 3},
      {"SOURCE: OVILO OSPREY\n", 0, 1},
      {" SOURCE: OVILO FALCON\n", 0, 1},
      // Behind a revision above 1 nothing is recognised any more.
      {"VERSION: OVILO OSPREY 5\nSOURCE: OVILO KESTREL\n", 5, 4},
      {"VERSION: OVILO KESTREL 1\nSOURCE: OVILO FALCON\n", 1, 3},
      {"VERSION: OVILO KESTREL 1\nVERSION: OVILO KESTREL 3\nSOURCE: OVILO FALCON\n", 3, 1},
      {"VERSION: OVILO OSPREY 1\nSOURCE: OVILO KESTREL\n", 1, 2},
      {"SOURCE: OVILO FALCON\nVERSION: OVILO OSPREY 3\n", 3, 4},
  };
  for (const Case& c : cases) {
    const Preamble preamble = preamble_of(c.lines);
    EXPECT_EQ(preamble.revision, c.revision) << c.lines;
    EXPECT_EQ(preamble.ovilo_revision, c.generation) << c.lines;
  }
}

TEST(Preamble, EncodingIsSetOnlyByWhoTellsIt) {
  struct Case {
    const char* line;
    int from0, from1;
  };
  const Case cases[] = {
      {"MVTQ1.5.2\n", 0, 0},      {"MVTQ1.6\n", 1, 1},           {"MVTQ1.10.3\n", 1, 1},
      {"MVTQ1.\n", 0, 0},         {"MVTQ3.0 more text\n", 1, 1}, {"MVTQ2.0\n", 1, 1},
      {"MVTQ8.1\n", 1, 1},        {"MVTQ9.0\n", 0, 1},           {"MVTQ30.1\n", 0, 1},
      {"MVTQ\n", 0, 1},           {"by Netvia\n", 1, 1},         {"nothing\n", 0, 1},
      {"MVTQ9.0 Netvia\n", 0, 1},
  };
  for (const Case& c : cases) {
    utf8encoding = 0;
    preamble_of(c.line);
    EXPECT_EQ(utf8encoding, c.from0) << c.line;
    utf8encoding = 1;
    preamble_of(c.line);
    EXPECT_EQ(utf8encoding, c.from1) << c.line;
  }
  utf8encoding = 0;
}

TEST(Container, CompressedRecordsStartAtZero) {
  gzdsynth::GzdWriter writer;
  writer.message(1, "a");
  const ScratchDirectory scratch;
  Preamble preamble;
  const auto plain = open_container(scratch.save("plain", writer.bytes()).c_str(), preamble);
  EXPECT_EQ(plain->getFilePos(), static_cast<INT64>(writer.header().size()));
  for (const auto kind : {gzdsynth::Magic::kFalcZip, gzdsynth::Magic::kOspZip}) {
    writer.magic(kind);
    Preamble other;
    const auto zipped = open_container(scratch.save("zip", writer.bytes()).c_str(), other);
    EXPECT_EQ(zipped->getFilePos(), 0);
    EXPECT_EQ(zipped->getFileSize(), static_cast<int>(writer.bodySize() + 2));
    EXPECT_EQ(zipped->getWord(), 0x1800);
    EXPECT_EQ(other.preText, preamble.preText);
  }
}

}  // namespace
