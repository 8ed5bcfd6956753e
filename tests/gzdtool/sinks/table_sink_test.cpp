// Values as text.
#include "sinks/table_sink.h"

#include <gtest/gtest.h>

#include <bit>
#include <random>

#include "sinks/cell_text.h"
#include "sinks/escape.h"
#include "sinks/ready_cells.h"

namespace {

using namespace gzdtool;

std::string float_text(float value) {
  static ReadyFloats ready;
  char text[longest_number], again[longest_number], plain[longest_number];
  const std::string first(text, ready.write(text, value));
  EXPECT_EQ(first, std::string(again, ready.write(again, value)));
  EXPECT_EQ(first, std::string(plain, write_float(plain, value)));
  return first;
}

TEST(CellText, WritesFloatsAsTheStandardDoes) {
  const auto expect_same = [](float value) {
    char text[longest_number];
    const std::string expected(text, std::to_chars(text, text + sizeof text, value).ptr);
    ASSERT_EQ(float_text(value), expected) << std::hexfloat << value;
  };
  for (int tenths = -1050000; tenths <= 1050000; tenths += 7)
    expect_same(static_cast<float>(tenths) / 10);
  std::mt19937 random(3);
  for (int i = 0; i < 200000; ++i) {
    const auto value = std::bit_cast<float>(static_cast<std::uint32_t>(random()));
    if (std::isfinite(value)) expect_same(value);
  }
  for (const float odd : {0.0F, -0.0F, 0.05F, 1e5F, 2e5F, 99999.9F, 1e-7F}) expect_same(odd);
}

TEST(CellText, WritesDoublesInFixedNotation) {
  const std::pair<double, std::string> cases[] = {{200000, "200000"},
                                                  {0, "0"},
                                                  {-0.0, "-0"},
                                                  {1234567.5, "1234567.5"},
                                                  {-3, "-3"},
                                                  {4294967295.5, "4294967295.5"},
                                                  {1e22, "1" + std::string(22, '0')}};
  for (const auto& [value, expected] : cases) {
    char text[longest_number];
    const std::string written(text, write_double(text, value));
    EXPECT_EQ(written, expected);
  }
}

TEST(RisingNumber, WritesWhatIsWrittenOfEachNumberAlone) {
  std::mt19937 random(5);
  RisingNumber rising;
  double number = 0;
  for (int i = 0; i < 100000; ++i) {
    number += static_cast<double>(random() % 24) / 2;
    if (random() % 100 == 0) number = static_cast<double>(random()) * 1.25 - 1e6;
    char text[longest_number], plain[longest_number];
    ASSERT_EQ(std::string(text, rising.write(text, number)),
              std::string(plain, write_double(plain, number)));
  }
}

TEST(Escape, KeepsCellsApartAndTerminalsSafe) {
  struct Case {
    void (*append)(std::string&, std::string_view, bool);
    std::string_view text;
    bool is_for_terminal;
    std::string_view expected;
  };
  const Case cases[] = {
      {append_tsv, "a\tb\nc\rd\\", false, "a\\tb\\nc\\rd\\\\"},
      {append_tsv, "n/a", false, "n\\/a"},
      {append_tsv, "\x1b[31m\xC2\x9b", false, "\x1b[31m\xC2\x9b"},
      {append_tsv, "\x1b[31m\xC2\x9b\xC2\xA0", true, "\\x1b[31m\\x9b\xC2\xA0"},
      {append_csv, "plain", false, "plain"},
      {append_csv, "a,\"b\"", false, "\"a,\"\"b\"\"\""},
      {append_csv, "n/a", true, "n\\/a"},
      {append_csv, "\x1b\n", true, "\\x1b\\x0a"},
      {append_json, "\"\\\n\x01\xC2\x85", false, "\"\\\"\\\\\\n\\u0001\\u0085\""},
  };
  for (const Case& c : cases) {
    std::string text;
    c.append(text, c.text, c.is_for_terminal);
    EXPECT_EQ(text, c.expected);
  }
}

// A sink that keeps what it is given.
struct Kept final : ByteSink {
  void write(std::string_view more) override { bytes.append(more); }
  void close() override {}
  std::string bytes;
};

TEST(TableSink, WritesTextsOfAnyLengthWhole) {
  using gzdtables::Column;
  using gzdtables::Type;
  const gzdtables::Schema schema{gzdtables::Table::messages,
                                 {{"n", Type::int32}, {"text", Type::text}}};
  for (const std::size_t length : {0U, 1U, 262000U, 262144U, 300000U}) {
    gzdtables::Batch batch;
    batch.columns.emplace_back(Type::int32, 2);
    batch.columns.emplace_back(Type::text, 2);
    for (batch.rows = 0; batch.rows < 2; ++batch.rows) {
      gzdtables::Slot<std::int32_t>(batch.columns[0]).set(batch.rows, 7);
      batch.columns[1].append_text(std::string(length, 'x'));
    }
    Kept kept;
    const auto sink = make_table_sink(kept, {Format::jsonl, true, false});
    sink->begin(schema, "r");
    sink->write(batch);
    const std::string row =
        R"({"recording":"r","n":7,"text":")" + std::string(length, 'x') + "\"}\n";
    EXPECT_EQ(kept.bytes, row + row);
  }
}

}  // namespace
