#include "samples/sample_lines.h"

#include "support/sample_fixture.h"

using namespace gzdconv;

namespace {

const std::string left_columns = "\t  512.0\t  384.0\t  900.0";
const std::string right_columns = "\t  514.5\t  382.5\t  880.0";

FSAMPLE with_status(FSAMPLE sample, UINT16 errors) {
  sample.flags |= SMP_STATUS;
  sample.errors = errors;
  return sample;
}

TEST_F(SampleLinesTest, BinocularLine) {
  EXPECT_EQ(line_of(with_status(make_sample(), 0)),
            "1000" + left_columns + right_columns + "\t.....\n");
  options.tabs_only = 1;
  options.extra_decimals = 1;
  EXPECT_EQ(line_of(make_sample()), "1000\t512.00\t384.00\t900.00\t514.50\t382.50\t880.00\n");
}

TEST_F(SampleLinesTest, SamplesNotAskedForPrintNothing) {
  options.output_samples = 0;
  options.suppress_column_headers = 0;
  FSAMPLE sample = make_sample();
  EXPECT_EQ(write_sample(handle, block, sample), 1);
  EXPECT_EQ(asc(), "");
}

TEST_F(SampleLinesTest, TimesPrintAsPrintfPrintsThem) {
  for (const UINT32 time :
       {0u,     9u,      99u,      100u,        101u,        199u, 200u,        99u, 12345u, 12399u,
        12400u, 999999u, 1000000u, 4294967295u, 4294967200u, 100u, 4294967295u, 0u,  3u,     4u}) {
    FSAMPLE sample = make_bare_sample(time);
    write_sample(handle, block, sample);
    EXPECT_EQ(asc(), std::to_string(time) + "\n");
    options.float_time = 1;
    for (const int half : {0, SMP_HALF_MS}) {
      sample.flags = static_cast<UINT16>(SMP_IS_SAMPLE | half);
      char expected[32];
      std::snprintf(expected, sizeof expected, "%-8.1f\n", time + (half != 0 ? 0.5 : 0.0));
      write_sample(handle, block, sample);
      EXPECT_EQ(asc(), expected);
    }
    options.float_time = 0;
  }
}

TEST_F(SampleLinesTest, EyesThatAreRecordedOfTheBlockAndChosen) {
  const std::string time = "1000";
  EXPECT_EQ(line_of(make_sample()), time + left_columns + right_columns + "\n");
  block.eye = GZD_BLOCK_LEFT;
  EXPECT_EQ(line_of(make_sample()), time + left_columns + "\n");
  block.eye = GZD_BLOCK_RIGHT;
  EXPECT_EQ(line_of(make_sample()), time + right_columns + "\n");
  block.eye = GZD_BLOCK_NO_EYE;
  EXPECT_EQ(line_of(make_sample()), time + "\n");
  block.eye = GZD_BLOCK_BOTH;
  options.left_eye = 0;
  EXPECT_EQ(line_of(make_sample()), time + right_columns + "\n");
  options.left_eye = 1;
  options.right_samples = 0;
  EXPECT_EQ(line_of(make_sample()), time + left_columns + "\n");
}

TEST_F(SampleLinesTest, ColumnsFollowTheSampleInsideABlock) {
  FSAMPLE both = with_status(make_sample(), 0x0500);
  FSAMPLE left_only = both;
  left_only.flags &= static_cast<UINT16>(~SMP_RIGHT);
  FSAMPLE no_status = make_sample();
  for (FSAMPLE* const sample : {&both, &left_only, &no_status, &both}) {
    write_sample(handle, block, *sample);
  }
  const std::string full = "1000" + left_columns + right_columns + "\t.CR..\n";
  EXPECT_EQ(asc(), full + "1000" + left_columns + "\t.CR\n" + "1000" + left_columns +
                       right_columns + "\n" + full);
}

TEST_F(SampleLinesTest, ResolutionSumsGrowWithEachLine) {
  clear_resolution_sums();
  FSAMPLE sample = make_sample();
  sample.flags |= SMP_RESOLUTION;
  sample.rx = 30.0f;
  sample.ry = 31.0f;
  for (int i = 0; i < 3; ++i) write_sample(handle, block, sample);
  EXPECT_EQ(ppd_x, 90.0);
  EXPECT_EQ(ppd_y, 93.0);
  EXPECT_EQ(ppd_count, 3.0);
  clear_resolution_sums();
}

// ---- header -------------------------------------------------------------------------------------

class SampleHeaderTest : public SampleLinesTest {
 protected:
  SampleHeaderTest() { options.suppress_column_headers = 0; }

  struct Printed {
    std::string header, line;
  };

  // Header and line of the first sample of a file.
  Printed print(FSAMPLE sample) {
    options.sample_header_printed = 0;
    new_block();
    write_sample(handle, block, sample);
    std::string text = asc();
    const std::size_t line = text.rfind('\n', text.size() - 2) + 1;
    return {text.substr(0, line), text.substr(line)};
  }

  static FSAMPLE make_target_sample() {
    FSAMPLE sample = with_status(make_sample(), 0);
    sample.flags |= SMP_HEAD_DATA;
    sample.htype = 183;
    return sample;
  }

  static FSAMPLE make_pose_sample() {
    FSAMPLE sample = with_status(make_sample(), 0);
    sample.flags |= SMP_EXTENDED;
    sample.htype = 8;
    return sample;
  }
};

TEST_F(SampleHeaderTest, PrintedOnceAFileAndEndsInOneNewline) {
  const Printed bare = print(make_sample());
  EXPECT_EQ(bare.header,
            "** COLUMNS\n** time\tleft-x\tleft-y\tleft-p\tright-x\tright-y\tright-p\t\n");
  EXPECT_EQ(line_of(make_sample()), bare.line);
}

TEST_F(SampleHeaderTest, TrackingLegendGoesByTheBlocksEyes) {
  EXPECT_EQ(print(with_status(make_sample(), 0)).header,
            "** COLUMNS\n** time\tleft-x\tleft-y\tleft-p\tright-x\tright-y\tright-p\tCR-flags\t"
            "\n** CR_FLAGS:\tinterpolated\tleft-missing\tleft-recovery\tright-missing\t"
            "right-recovery\n");
  options.right_eye = 0;
  EXPECT_NE(print(with_status(make_sample(), 0)).header.find("right-recovery\n"),
            std::string::npos);
  block.eye = GZD_BLOCK_LEFT;
  EXPECT_EQ(print(with_status(make_sample(), 0)).header,
            "** COLUMNS\n** time\tleft-x\tleft-y\tleft-p\tCR-flags\t"
            "\n** CR_FLAGS:\tinterpolated\tmissing\trecovery\n");
}

TEST_F(SampleHeaderTest, TargetLegendStaysWithoutFlags) {
  options.head_data_mode = 2;
  const std::string legend =
      "\n** TARGET_FLAGS:\ttarget\tmissing\textreme-angle\ttarget-near-eye\t"
      "too-close, too-far\ttarget-top-edge\tbottom-edge\tleft-edge\tright-edge\tleft-eye-top\t"
      "left-eye-bottom\tleft-eye-left\tleft-eye-right\tright-eye-top\tright-eye-bottom\t"
      "right-eye-left\tright-eye-right\n";
  const std::string with_flags = print(make_target_sample()).header;
  EXPECT_NE(with_flags.find("target-dist\ttarget-flags\t\n** CR_FLAGS"), std::string::npos);
  EXPECT_TRUE(with_flags.ends_with("right-recovery\n" + legend));
  options.output_flags = 0;
  const std::string without = print(make_target_sample()).header;
  EXPECT_TRUE(without.ends_with("target-x\ttarget-y\ttarget-dist\t" + legend));
}

TEST_F(SampleHeaderTest, PoseLegendIsFixedByTheFirstSampleOfTheFile) {
  options.head_data_mode = 3;
  const Printed first = print(make_pose_sample());
  EXPECT_TRUE(first.header.ends_with(
      "calibration-warning\tleft-missing\tleft-recovery\tright-missing\tright-recovery\n"
      "\n** HEAD_MARKER_FLAGS:\tHEAD_MARKER_IMU_ONLY\tHEAD_MARKER_AGE3\tHEAD_MARKER_MISSING\t"
      "HEAD_MARKER_WARNING\t\n"));
  EXPECT_NE(first.line.find("\t......\t"), std::string::npos);

  FSAMPLE no_head_data = make_pose_sample();
  no_head_data.htype = INT16_MIN;
  EXPECT_NE(line_of(no_head_data).find("\t......\t"), std::string::npos);
  const Printed plain = print(no_head_data);
  EXPECT_EQ(plain.header.find("HEAD_MARKER"), std::string::npos);
  EXPECT_EQ(plain.header.find("calibration"), std::string::npos);
  EXPECT_NE(plain.line.find("\t.....\t"), std::string::npos);
}

TEST_F(SampleHeaderTest, FullPoseLegendNamesAllBits) {
  options.head_data_mode = 3;
  options.sfhmf = 1;
  const std::string header = print(make_pose_sample()).header;
  const std::size_t full =
      header.find("\n** HEAD_MARKER_FLAGS_FULL:\n :HEAD_MARKER_BIT_31  reserved\n");
  ASSERT_NE(full, std::string::npos);
  EXPECT_EQ(std::count(header.begin() + static_cast<std::ptrdiff_t>(full), header.end(), '\n'), 34);
  EXPECT_TRUE(
      header.ends_with(" :HEAD_MARKER_BIT_4  reserved\n"
                       " :HEAD_MARKER_IMU_ONLY  head pose from the inertial sensor only\n"
                       " :HEAD_MARKER_AGE3  markers are three samples old\n"
                       " :HEAD_MARKER_MISSING  markers missing\n"
                       " :HEAD_MARKER_WARNING  marker warning\n"));
}

// Every label has its column, whatever the options. The flags of the target share a column with
// its distance.
TEST_F(SampleHeaderTest, LabelsStandOneToOneWithColumns) {
  for (unsigned choice = 0; choice < 1u << 10; ++choice) {
    const auto chosen = [choice](unsigned bit) { return static_cast<int>(choice >> bit & 1); };
    options.output_velocity = options.output_resolution = chosen(0);
    options.output_input = options.output_buttons = chosen(1);
    options.output_flags = chosen(2);
    options.output_average = chosen(3);
    options.head_resolution = options.pupil_ellipse = chosen(4);
    options.no_extended_data = chosen(5);
    options.no_head_tracking = chosen(6);
    options.right_eye = chosen(7);
    options.output_target = chosen(8);
    block.eye = chosen(9) != 0 ? GZD_BLOCK_BOTH : GZD_BLOCK_LEFT;
    const bool target = choice % 3 == 0;
    options.head_data_mode = target ? 2 : 3;
    const Printed printed = print(target ? make_target_sample() : make_pose_sample());
    const std::string labels = printed.header.substr(0, printed.header.find('\n', 12));
    const auto label_count = std::count(labels.begin(), labels.end(), '\t') - 1;
    const bool joined = labels.find("target-flags") != std::string::npos;
    EXPECT_EQ(label_count - (joined ? 1 : 0),
              std::count(printed.line.begin(), printed.line.end(), '\t'))
        << labels << "\n"
        << printed.line;
  }
}

}  // namespace
