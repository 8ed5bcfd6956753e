// Pieces that whole tables do not show well, and what holds for every table of a recording.
#include <gtest/gtest.h>

#include <unistd.h>

#include <filesystem>
#include <random>
#include <sstream>

#include "golden/recording_text.h"
#include "tables/examination.h"
#include "tables/reader.h"
#include "tables/timeline.h"
#include "tables/trial_rule.h"
#include "tables/utf8.h"

namespace {

using namespace gzdtables;

TEST(Utf8, ReplacesEachLongestPieceThatIsNoCharacter) {
  const std::pair<std::string_view, std::string_view> cases[] = {
      {"plain \xC3\xA9 \xF0\x9F\x98\x80", "plain \xC3\xA9 \xF0\x9F\x98\x80"},
      {"\xFF", "?"},
      {"a\xE2\x82", "a?"},
      {"\xE2\x82z", "?z"},
      {"\xC0\x80", "??"},
      {"\xED\xA0\x80", "???"},
      {"\xF0\x9F\x98", "?"},
      {"\xF4\x90\x80\x80", "????"},
      {"\xE2\x82\xE2\x82\xAC", "?\xE2\x82\xAC"},
  };
  for (const auto& [bytes, marked] : cases) {
    std::string expected;
    for (const char c : marked) c == '?' ? expected += "\xEF\xBF\xBD" : expected += c;
    EXPECT_EQ(as_utf8(bytes), expected);
    EXPECT_EQ(is_utf8(bytes), bytes == expected);
    EXPECT_TRUE(is_utf8(expected));
  }
}

TEST(Timeline, TellsTheStretchOfTheHighestRankAtEachMoment) {
  std::mt19937 random(7);
  for (int round = 0; round < 300; ++round) {
    struct Stretch {
      std::uint32_t start, end, rank;
    };
    std::vector<Stretch> stretches;
    Timeline timeline;
    for (std::uint32_t i = 0; i < random() % 12; ++i) {
      const std::uint32_t latest =
          random() % 9 == 0 ? Timeline::latest : static_cast<std::uint32_t>(random() % 30);
      stretches.push_back({static_cast<std::uint32_t>(random() % 30), latest, i});
      timeline.add(stretches[i].start, latest, i, static_cast<std::int32_t>(i) + 1);
    }
    timeline.finish();
    for (int n = 0; n < 60; ++n) {
      const std::uint32_t time =
          n % 10 == 0 ? Timeline::latest - 1 : static_cast<std::uint32_t>(random() % 32);
      std::int32_t expected = 0;
      for (const Stretch& s : stretches)
        if (s.start <= time && time <= s.end) expected = static_cast<std::int32_t>(s.rank) + 1;
      ASSERT_EQ(timeline.at(time), expected) << time;
    }
  }
}

TEST(TrialRule, KnowsMessagesAndRefusesRulesWithoutSense) {
  const TrialRule rule{.start = "TRIAL", .end = "TRIAL_END"};
  EXPECT_EQ(mark_of(rule, "a TRIAL 3"), TrialMark::start);
  EXPECT_EQ(mark_of(rule, "TRIAL_END 3"), TrialMark::end);
  EXPECT_EQ(mark_of(rule, "!V TRIAL 3"), TrialMark::none);
  EXPECT_EQ(mark_of(rule, "else"), TrialMark::none);
  EXPECT_EQ(Pattern("TRIAL ([0-9]+)").find("a TRIAL 12 b"), "12");
  EXPECT_EQ(Pattern("(x)").find((std::string(4096, ' ') + "x").c_str()), std::nullopt);
  using Variables = std::vector<std::pair<std::string, std::string>>;
  for (const Variables& variables :
       {Variables{{"a", "("}}, Variables{{"a", "no group"}}, Variables{{"a", "(b)(c)"}},
        Variables{{"", "(b)"}}, Variables{{"samples", "(b)"}},
        Variables{{"a", "(b)"}, {"a", "(c)"}}})
    EXPECT_THROW(check_trial_rule({.variables = variables}), UsageError);
  EXPECT_THROW(check_trial_rule({.end = "b"}), UsageError);
  EXPECT_THROW(check_trial_rule({.start = ""}), UsageError);
}

// The recorded mean of a fixation against the mean of the samples inside it, which is 500.
TEST(Examination, TellsOfFixationsWhoseMeansAreNotThoseOfTheirSamples) {
  const std::string path = testing::TempDir() + "shift_" + std::to_string(::getpid()) + ".gzd";
  for (const auto& [mean, is_off] : {std::pair{"5100", false}, {"5500", true}}) {
    std::stringstream text;
    text << "tracker 2\nblock 1000 flags=Lga\nevent SFIX start=1000\n"
         << "sample 1000 flags=Lga gx=5000,0 gy=4000,0 pa=900,0\nsample +1 *50\n"
         << "event EFIX start=1000 end=1050 106=" << mean << ",4000 114=900\nend 1051\n";
    golden::recording_of(text).save(path);
    Recording recording(path);
    const Examination examination = examine(recording);
    EXPECT_EQ(examination.shifts[0].compared, 1);
    EXPECT_EQ(examination.shifts[1].compared, 0);
    ASSERT_EQ(examination.findings.size(), is_off ? 1U : 0U);
    for (const Finding& finding : examination.findings)
      EXPECT_EQ(finding.name, "fixations_shifted");
    EXPECT_EQ(lost_share(examination, 0), 0.0);
    EXPECT_EQ(lost_share(examination, 1), std::nullopt);
  }
  std::filesystem::remove(path);
}

// ---- whole tables -------------------------------------------------------------------------------

// A cell as a text, whatever its type.
std::string cell(const Column& column, std::size_t row) {
  if (column.is_null(row)) return "null";
  switch (column.type()) {
    case Type::boolean:
    case Type::choice:
      return std::to_string(column.values<std::uint8_t>()[row]);
    case Type::int32:
      return std::to_string(column.values<std::int32_t>()[row]);
    case Type::int64:
      return std::to_string(column.values<std::int64_t>()[row]);
    case Type::uint16:
      return std::to_string(column.values<std::uint16_t>()[row]);
    case Type::uint32:
      return std::to_string(column.values<std::uint32_t>()[row]);
    case Type::float32:
      return std::to_string(column.values<float>()[row]);
    case Type::float64:
      return std::to_string(column.values<double>()[row]);
    default:
      return std::string(column.text(row));
  }
}

using Rows = std::vector<std::vector<std::string>>;

Rows rows_of(Recording& recording, const Request& request) {
  TableReader reader(recording, request);
  Rows rows;
  Batch batch;
  while (reader.next(batch))
    for (std::size_t row = 0; row < batch.rows; ++row) {
      auto& cells = rows.emplace_back();
      for (const Column& column : batch.columns) cells.push_back(cell(column, row));
    }
  return rows;
}

class WholeTables : public testing::TestWithParam<const char*> {
 protected:
  void SetUp() override {
    golden::small_recording(GetParam()).save(path_);
    gzd_set_log_function(reinterpret_cast<void*>(+[](const char*) {}));
  }
  void TearDown() override { std::filesystem::remove(path_); }

  std::string path_ = testing::TempDir() + "tables_" + std::to_string(::getpid()) + ".gzd";
};

// Neither the size of batches nor a choice of rows changes a row.
TEST_P(WholeTables, AreTheSameInBatchesOfAnySizeAndByParts) {
  Recording recording(path_, {.trials = {.start = "T", .end = "END", .variables = {{"v", "(.)"}}}});
  for (const Table table : all_tables()) {
    const std::vector<std::string> all{"all"};
    const Request request{.table = table, .groups = all};
    const Rows whole = rows_of(recording, request);
    EXPECT_EQ(rows_of(recording, {.table = table, .groups = all, .batch_rows = 1}), whole);
    constexpr double middle = 1200;
    Rows parts = rows_of(recording, {.table = table, .groups = all, .to = middle});
    for (auto& row : rows_of(recording, {.table = table, .groups = all, .from = middle + 0.25}))
      parts.push_back(row);
    EXPECT_EQ(parts.size(), whole.size());
  }
}

// Samples are fetched many at a time only without groups and for all rows, which changes none.
TEST_P(WholeTables, HaveTheSameSamplesOneByOneAndManyAtATime) {
  Recording recording(path_);
  for (const std::optional<Eye> eye : {std::optional<Eye>(), {Eye::left}, {Eye::right}}) {
    Rows one_by_one = rows_of(recording, {.groups = {"status"}, .eye = eye});
    for (auto& row : one_by_one) row.pop_back();
    EXPECT_EQ(rows_of(recording, {.eye = eye}), one_by_one);
    EXPECT_EQ(rows_of(recording, {.eye = eye, .from = 0}), one_by_one);
    Recording unread(path_);
    TableReader reader(unread,
                       {.eye = eye, .batch_rows = one_by_one.size() + 1, .has_all_rows = true});
    Batch batch;
    EXPECT_EQ(reader.next(batch), !one_by_one.empty());
    for (std::size_t row = 0; row < batch.rows; ++row)
      for (std::size_t i = 0; i < batch.columns.size(); ++i)
        ASSERT_EQ(cell(batch.columns[i], row), one_by_one[row][i]) << row << ' ' << i;
    EXPECT_EQ(rows_of(unread, {.table = Table::events}),
              rows_of(recording, {.table = Table::events}));
  }
}

INSTANTIATE_TEST_SUITE_P(Golden, WholeTables,
                         testing::Values("event_kinds", "messages", "block_shapes",
                                         "position_types", "target_flags", "pose_flags",
                                         "half_milliseconds", "lost_pupils", "camera_data",
                                         "odd_values", "gaps", "prescales", "sample_fields",
                                         "sample_blocks", "strays", "times_fall"));

TEST(TableReader, EndsWithTheNextReaderAndRefusesWhatNoTableHas) {
  const std::string path = testing::TempDir() + "reader_" + std::to_string(::getpid()) + ".gzd";
  golden::small_recording("messages").save(path);
  Recording recording(path);
  TableReader first(recording, {.table = Table::messages});
  const TableReader second(recording, {.table = Table::messages});
  Batch batch;
  EXPECT_THROW((void)first.next(batch), std::logic_error);
  EXPECT_THROW(TableReader(recording, {.groups = {"velocty"}}), UsageError);
  EXPECT_THROW(TableReader(recording, {.table = Table::blocks, .eye = Eye::left}), UsageError);
  EXPECT_THROW(Recording("/no/such/file"), ReadError);
  std::filesystem::remove(path);
  const std::vector<std::string> names{"velocity", "raw"};
  EXPECT_EQ(nearest("velocty", names), "velocity");
  EXPECT_EQ(nearest("else", names), "");
}

}  // namespace
