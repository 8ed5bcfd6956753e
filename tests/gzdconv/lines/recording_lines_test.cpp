#include "lines/recording_lines.h"

#include "lines/resolution.h"
#include "support/capture.h"
#include "support/fake_gzd.h"

using namespace gzdconv;

namespace {

class RecordingLinesTest : public AscTest {
 protected:
  RecordingLinesTest() { clear_resolution_sums(); }

  static RECORDINGS block(int eye = GZD_BLOCK_BOTH, int type = GZD_RECORD_BOTH) {
    RECORDINGS record{};
    record.time = 1000;
    record.sample_rate = 500;
    record.sflags = SMP_GAZE | SMP_PUPIL_POS;
    record.state = GZD_BLOCK_START;
    record.record_type = static_cast<byte>(type);
    record.recording_mode = 1;
    record.filter_type = 2;
    record.pos_type = GZD_POSITION_HREF;
    record.eye = static_cast<byte>(eye);
    return record;
  }

  std::string start_lines(const RECORDINGS& record) {
    console_ = console([&] { print_recording(nullptr, record); });
    return asc();
  }

  std::string end_line(int type = GZD_RECORD_BOTH) {
    RECORDINGS record = block(GZD_BLOCK_BOTH, type);
    record.state = GZD_BLOCK_END;
    print_recording(nullptr, record);
    return asc();
  }

  std::string console_;
};

TEST_F(RecordingLinesTest, StartOfABlock) {
  fake.revision = 1;
  EXPECT_EQ(start_lines(block()),
            "START\t1000 \tLEFT\tRIGHT\tSAMPLES\tEVENTS\n"
            "PRESCALER\t1\nVPRESCALER\t1\nPUPIL\tAREA\n"
            "EVENTS\tHREF\tLEFT\tRIGHT\tRATE\t 500.00\tTRACKING\tCR\tFILTER\t2\n"
            "SAMPLES\tGAZE\tLEFT\tRIGHT\tRATE\t 500.00\tTRACKING\tCR\tFILTER\t2\n");
  EXPECT_EQ(console_, "");
  EXPECT_EQ(options.event_position_type, GZD_POSITION_HREF);
  EXPECT_EQ(options.tracker_revision, 1);
}

TEST_F(RecordingLinesTest, OldRevisionsTellNeitherTrackingNorFilter) {
  fake.revision = 0;
  RECORDINGS record = block(GZD_BLOCK_RIGHT);
  record.pupil_type = 1;
  record.sample_rate = 2000;
  options.float_time = 1;
  EXPECT_EQ(start_lines(record),
            "START\t1000.0 \tRIGHT\tSAMPLES\tEVENTS\n"
            "PRESCALER\t1\nVPRESCALER\t1\nPUPIL\tDIAMETER\n"
            "EVENTS\tHREF\tRIGHT\tRATE\t2000.00\nSAMPLES\tGAZE\tRIGHT\tRATE\t2000.00\n");
}

TEST_F(RecordingLinesTest, LinesFollowContentsAndOptions) {
  fake.revision = 1;
  options.right_eye = 0;
  const std::string fixed = "PRESCALER\t1\nVPRESCALER\t1\nPUPIL\tAREA\n";
  EXPECT_EQ(start_lines(block(GZD_BLOCK_BOTH, GZD_RECORD_SAMPLES)),
            "START\t1000 \tLEFT\tSAMPLES\t\n" + fixed +
                "SAMPLES\tGAZE\tLEFT\tRATE\t 500.00\tTRACKING\tCR\tFILTER\t2\n");
  options.output_resolution = 1;
  EXPECT_EQ(start_lines(block(GZD_BLOCK_BOTH, GZD_RECORD_EVENTS)),
            "START\t1000 \tLEFT\tEVENTS\n" + fixed +
                "EVENTS\tHREF\tLEFT\tRES\tRATE\t 500.00\tTRACKING\tCR\tFILTER\t2\n");
  options.output_eye_events = options.output_samples = 0;
  EXPECT_EQ(start_lines(block()), "START\t1000 \tSAMPLES\tEVENTS\n" + fixed);
}

TEST_F(RecordingLinesTest, SamplesLineNamesItsColumns) {
  options.output_eye_events = 0;
  options.output_velocity = options.output_resolution = 1;
  options.output_input = options.output_buttons = 1;
  RECORDINGS record = block();
  record.recording_mode = 0;
  const auto samples_line = [&](int revision, int head_mode, unsigned flags) {
    fake.revision = revision;
    options.head_data_mode = head_mode;
    record.sflags = static_cast<UINT16>(flags);
    const std::string lines = start_lines(record);
    return lines.substr(lines.find("SAMPLES\tGAZE"));
  };
  const std::string before = "SAMPLES\tGAZE\tLEFT\tRIGHT\tVEL\tRES";
  const std::string after = "\tRATE\t 500.00\tTRACKING\tP\tFILTER\t2\tINPUT\tBUTTONS\n";
  EXPECT_EQ(samples_line(1, 0, SMP_GAZE), before + after);
  EXPECT_EQ(samples_line(1, 1, SMP_GAZE), before + "\tHMARKER" + after);
  EXPECT_EQ(samples_line(1, 2, SMP_GAZE | SMP_HEAD_DATA), before + "\tHTARGET" + after);
  EXPECT_EQ(samples_line(1, 2, SMP_GAZE), before + after);
  EXPECT_EQ(samples_line(2, 3, SMP_GAZE), before + "\tHPOSE" + after);
  EXPECT_EQ(samples_line(1, 3, SMP_GAZE), before + after);
}

TEST_F(RecordingLinesTest, FallBackIsReported) {
  options.preferred_sample_type = GZD_POSITION_HREF;
  const std::string lines = start_lines(block());
  EXPECT_NE(lines.find("SAMPLES\tGAZE"), std::string::npos);
  EXPECT_EQ(console_, "\rWARNING: preferred sample type HREF not available: using GAZE data\n");
  // Without event lines the choice is made all the same.
  options.output_events = 0;
  options.sample_type_in_use = 0;
  EXPECT_EQ(start_lines(block()), "");
  EXPECT_NE(console_, "");
  EXPECT_EQ(options.sample_type_in_use, GZD_POSITION_GAZE);
}

TEST_F(RecordingLinesTest, EndLineShowsTheMeanAndStartsAnew) {
  EXPECT_EQ(end_line(), "END\t1000 \tSAMPLES\tEVENTS\tRES\t   .\t   .\n");
  options.default_res_x = options.default_res_y = 27.5F;
  EXPECT_EQ(end_line(GZD_RECORD_EVENTS), "END\t1000 \tEVENTS\tRES\t  27.50\t  27.50\n");
  add_resolution(30, 31);
  add_resolution(31, 31);
  options.float_time = 1;
  EXPECT_EQ(end_line(GZD_RECORD_SAMPLES), "END\t1000 \tSAMPLES\t\tRES\t  30.50\t  31.00\n");
  EXPECT_EQ(ppd_count, 0.0);
  options.output_events = 0;
  EXPECT_EQ(end_line(), "");
}

TEST_F(RecordingLinesTest, SampleTypeFallsBackInOrder) {
  struct Case {
    int preferred;
    unsigned flags;
    int chosen;
  };
  constexpr unsigned pupil = SMP_PUPIL_POS, href = SMP_HREF, gaze = SMP_GAZE;
  constexpr Case cases[] = {
      {64, 0, 64},           {64, pupil | gaze, 64},  {64, href | gaze, 192},   {64, href, 128},
      {128, 0, 128},         {128, href | gaze, 128}, {128, pupil | gaze, 192}, {128, pupil, 64},
      {192, 0, 192},         {192, gaze | href, 192}, {192, pupil | href, 128}, {192, pupil, 64},
      {192, SMP_INPUT, 192},
  };
  for (const Case& c : cases) {
    options.preferred_sample_type = c.preferred;
    EXPECT_EQ(select_sample_type(c.flags), c.chosen) << c.preferred << " of " << c.flags;
  }
}

TEST_F(RecordingLinesTest, NamesOfTypes) {
  EXPECT_STREQ(parse_type(GZD_POSITION_PUPIL), "PUPIL");
  EXPECT_STREQ(parse_type(GZD_POSITION_HREF), "HREF");
  EXPECT_STREQ(parse_type(GZD_POSITION_GAZE), "GAZE");
  EXPECT_STREQ(parse_type(0), "GAZE");
}

TEST_F(RecordingLinesTest, EventHeadersNeedNoResolution) {
  EXPECT_EQ(canHeaderDeterminedForEvents(), 1);
  options.output_resolution = 1;
  EXPECT_EQ(canHeaderDeterminedForEvents(), 0);
  EXPECT_EQ(canHeaderDeterminedForSamples(), 1);
}

}  // namespace
