#include "lines/event_lines.h"

#include <cstring>
#include <vector>

#include "lines/resolution.h"
#include "support/capture.h"

using namespace gzdconv;

namespace {

class EventLinesTest : public AscTest {
 protected:
  EventLinesTest() {
    options.event_header_printed = 1;
    clear_resolution_sums();
    parseDisplayCoords("");
    forget_start_times();
  }

  // The start times of other tests' events.
  void forget_start_times() {
    options.verbose = 1;
    for (const int code : {GZD_START_BLINK, GZD_START_SACCADE, GZD_START_FIXATION})
      for (const int eye : {GZD_LEFT_EYE, GZD_RIGHT_EYE})
        console([&] {
          print_event(event(code, 1, 0, eye), 0);  // completes a pair that was left with an end
          print_event(event(code, 1, 0, eye), 0);
          print_event(event(code + 1, 1, 1, eye), 0);
        });
    options.verbose = 0;
    asc();
  }

  static FEVENT event(int type, UINT32 start, UINT32 end = 0, int eye = GZD_LEFT_EYE) {
    FEVENT record{};
    record.type = static_cast<INT16>(type);
    record.sttime = start;
    record.entime = end;
    record.eye = static_cast<INT16>(eye);
    return record;
  }

  FEVENT message(UINT32 time, const std::string& text) {
    FEVENT record = event(GZD_MESSAGE, time);
    room_.assign(text.size() / 2 + 4, 0);
    const auto length = static_cast<INT16>(text.size());
    std::memcpy(room_.data(), &length, sizeof length);
    std::memcpy(reinterpret_cast<char*>(room_.data()) + 2, text.data(), text.size());
    record.message = reinterpret_cast<LSTRING*>(room_.data());
    return record;
  }

  // A saccade of 20 ms over 300 by 400 pixels at 10 by 20 pixels a degree.
  static FEVENT saccade() {
    FEVENT record = event(GZD_END_SACCADE, 1000, 1018);
    record.read = EVT_RESOLUTION | EVT_VELOCITY;
    record.gstx = 100;
    record.gsty = 100;
    record.genx = 400;
    record.geny = 500;
    record.supd_x = 8;
    record.eupd_x = 12;
    record.supd_y = 20;
    record.eupd_y = NOT_RECORDED;
    record.avel = 150;
    record.pvel = 310.5F;
    record.hsty = 1500;
    record.henx = 3000;
    return record;
  }

  static FEVENT fixation() {
    FEVENT record = event(GZD_END_FIXATION, 1000, 1198, GZD_RIGHT_EYE);
    record.read = EVT_RESOLUTION;
    record.gavx = 512.25F;
    record.gavy = 384.5F;
    record.havx = 1000;
    record.havy = -2000;
    record.ava = 1234;
    record.supd_x = 30;
    record.eupd_x = 31;
    record.supd_y = MISSING_DATA;
    record.eupd_y = 33;
    return record;
  }

  // The line of an event, with its result in front when that is not 0.
  std::string line(const FEVENT& record, int period = 2) {
    const int result = print_event(record, period);
    return (result != 0 ? std::to_string(result) : "") + asc();
  }

 private:
  std::vector<UINT16> room_;
};

TEST_F(EventLinesTest, StartsOfEveryKind) {
  EXPECT_EQ(line(event(GZD_START_FIXATION, 1000)), "SFIX L   1000\n");
  EXPECT_EQ(line(event(GZD_START_SACCADE, 1000, 0, GZD_RIGHT_EYE)), "SSACC R  1000\n");
  EXPECT_EQ(line(event(GZD_START_BLINK, 4294967295U)), "SBLINK L 4294967295\n");
  options.tabs_only = 1;
  options.float_time = 1;
  EXPECT_EQ(line(event(GZD_START_FIXATION, 1000)), "SFIX\tL\t1000.0\n");
  EXPECT_EQ(line(event(GZD_START_BLINK, 1000)), "SBLINK\tL\t1000.0\n");
}

TEST_F(EventLinesTest, BlinkLastsOnePeriodLonger) {
  EXPECT_EQ(line(event(GZD_END_BLINK, 2000, 2100)), "EBLINK L 2000\t2100\t102\n");
  EXPECT_EQ(line(event(GZD_END_BLINK, 2000, 1990), 4), "EBLINK L 2000\t1990\t4294967290\n");
}

TEST_F(EventLinesTest, FixationColumns) {
  EXPECT_EQ(line(fixation()), "EFIX R   1000\t1198\t200\t  512.2\t  384.5\t   1234\n");
  options.output_resolution = 1;
  EXPECT_TRUE(line(fixation()).ends_with("\t   1234\t  30.50\t  33.00\n"));
  FEVENT bare = fixation();
  bare.read = 0;
  EXPECT_TRUE(line(bare).ends_with("\t   1234\t   .\t   .\n"));
}

TEST_F(EventLinesTest, HeadReferencedFixationColumns) {
  options.event_position_type = GZD_POSITION_HREF;
  options.output_resolution = 1;
  options.tabs_only = 1;
  const std::string columns = "EFIX\tR\t1000\t1198\t200\t1000.0\t-2000.0\t1234\t512.2\t384.5\t1234";
  EXPECT_EQ(line(fixation()), columns + "\t30.50\t33.00\n");
  FEVENT bare = fixation();
  bare.read = 0;
  // (1000^2 + 15000^2 + 2000^2) / sqrt(2000^2 or 1000^2 + 15000^2) / 57.2958
  EXPECT_EQ(line(bare), columns + "\t265.27\t267.02\n");
  bare.havy = MISSING_DATA;
  EXPECT_TRUE(line(bare).ends_with("\t1234\t   .\t   .\n"));
}

TEST_F(EventLinesTest, SaccadeWithResolution) {
  const std::string ends = "ESACC L  1000\t1018\t20\t  100.0\t  100.0\t  400.0\t  500.0";
  EXPECT_EQ(line(saccade()), ends + "\t  36.06\t    310\n");
  options.output_resolution = 1;
  EXPECT_EQ(line(saccade()), ends + "\t  36.06\t    310\t  10.00\t  20.00\n");
  options.fixed_resolution = 1;
  options.default_res_x = 26;
  EXPECT_EQ(line(saccade()), ends + "\t  36.06\t    310\t  26.00\t   .\n");
}

TEST_F(EventLinesTest, SaccadeLackingValues) {
  options.tabs_only = 1;
  FEVENT record = saccade();
  record.read = EVT_RESOLUTION;
  record.genx = MISSING_DATA;
  EXPECT_TRUE(line(record).ends_with("\t100.0\t   .\t500.0\t   .\t   .\n"));
  record = saccade();
  record.supd_y = MISSING_DATA;
  EXPECT_TRUE(line(record).ends_with("\t500.0\t   .\t310\n"));
  record.read = EVT_VELOCITY;
  EXPECT_TRUE(line(record).ends_with("\t500.0\t3.00\t310.5\n"));
  options.event_position_type = GZD_POSITION_PUPIL;
  EXPECT_TRUE(line(record).ends_with("\t500.0\t3000.00\t310.5\n"));
  record.avel = MISSING_DATA;
  EXPECT_TRUE(line(record).ends_with("\t500.0\t   .\t310.5\n"));
  record.read = 0;
  EXPECT_TRUE(line(record).ends_with("\t500.0\t   .\t   .\n"));
}

TEST_F(EventLinesTest, HeadReferencedSaccade) {
  options.event_position_type = GZD_POSITION_HREF;
  options.tabs_only = 1;
  // acos(15000^2 / (sqrt(1500^2 + 15000^2) sqrt(3000^2 + 15000^2))) is 12.65 degrees.
  EXPECT_EQ(line(saccade()),
            "ESACC\tL\t1000\t1018\t20\t0\t1500\t3000\t0\t12.65\t310"
            "\t100.0\t100.0\t400.0\t500.0\t36.06\t310\n");
  options.output_resolution = 1;
  // At (1500, 750), whatever the record's own resolution.
  EXPECT_TRUE(line(saccade()).ends_with("\t36.06\t310\t264.74\t263.76\n"));
  FEVENT record = saccade();
  record.henx = MISSING_DATA;
  record.read = 0;
  EXPECT_TRUE(line(record).starts_with("ESACC\tL\t1000\t1018\t20\t0\t1500\t   .\t0\t   .\t   .\t"));
  EXPECT_TRUE(line(record).ends_with("\t   .\t   .\t   .\t   .\n"));
}

TEST_F(EventLinesTest, PositionsAndResolutionsAreMapped) {
  options.gaze_map = 1;
  options.tabs_only = 1;
  options.output_resolution = 1;
  parseDisplayCoords("DISPLAY_COORDS 0 0 1000 1000");
  parseDisplayAreaCoords("DISPLAY_AREA_COORDS 0 0 950 475");
  // The display's 1000 pixels are 1050 by 525 of the area, from -50 and -25 on.
  EXPECT_EQ(line(saccade()),
            "ESACC\tL\t1000\t1018\t20\t55.0\t27.5\t370.0\t237.5\t36.06\t310\t10.50\t10.50\n");
}

TEST_F(EventLinesTest, ExtendedValuesFollowTheirSwitches) {
  options.tabs_only = 1;
  FEVENT record = event(GZD_START_BLINK, 5);
  record.read = EVT_HEAD_POSE;
  record.headInSpaceX_start = 1.5F;
  record.eyeInHeadY_avg = NOT_RECORDED;
  record.headPositionZ_avg = 2.25F;
  const auto zeros = [](int count) {
    std::string text;
    for (; count > 0; --count) text += "\t0.000";
    return text;
  };
  const std::string eyes = "\t1.500" + zeros(10) + "\t-32768.000";
  const std::string head = zeros(17) + "\t2.250";
  EXPECT_EQ(line(record), "SBLINK\tL\t5" + eyes + head + "\n");
  options.no_head_tracking = 1;
  EXPECT_EQ(line(record), "SBLINK\tL\t5" + eyes + "\n");
  options.no_extended_data = 1;
  EXPECT_EQ(line(record), "SBLINK\tL\t5\n");
  options.no_head_tracking = 0;
  EXPECT_EQ(line(record), "SBLINK\tL\t5" + head + "\n");
}

TEST_F(EventLinesTest, Messages) {
  EXPECT_EQ(line(message(1000, "TRIAL 1  ")), "MSG\t1000 TRIAL 1  \n");
  EXPECT_EQ(line(message(1000, std::string("a\0b", 3))), "MSG\t1000 a\n");
  EXPECT_EQ(line(message(1000, "")), "");
  EXPECT_EQ(line(event(GZD_MESSAGE, 1000)), "");
  EXPECT_EQ(line(message(1000, "!GEOM x")), "");
  options.tabs_only = options.float_time = 1;
  EXPECT_EQ(line(message(1000, "100% %s")), "MSG\t1000.0\t100% %s\n");
  options.output_messages = 0;
  EXPECT_EQ(line(message(1000, "text")), "");
}

TEST_F(EventLinesTest, MessagesOfAnyLength) {
  const std::string text(66000, 'x');
  FEVENT record = message(7, text);
  record.message->len = 32767;
  for (int i = 0; i < 5; ++i) EXPECT_EQ(line(record), "MSG\t7 " + text + "\n");
}

TEST_F(EventLinesTest, InputsButtonsAndBreaks) {
  FEVENT record = event(GZD_INPUT, 900);
  record.input = 65535;
  EXPECT_EQ(line(record), "INPUT\t900\t65535\n");
  record = event(GZD_BUTTON, 900);
  record.buttons = 0x0504;
  EXPECT_EQ(line(record), "BUTTON\t900\t1\t0\nBUTTON\t900\t3\t1\n");
  record.buttons = 0x00FF;
  EXPECT_EQ(line(record), "");
  record.buttons = 0x8080;
  options.float_time = 1;
  EXPECT_EQ(line(record), "BUTTON\t900.0\t8\t1\n");
  EXPECT_EQ(line(event(GZD_BREAK_PARSE, 900)), "** BREAK IN DATA STREAM **\n");
  EXPECT_EQ(line(event(GZD_END_SAMPLES, 900)), "");
}

TEST_F(EventLinesTest, OptionsLeaveEventsOut) {
  options.output_start_events = 0;
  for (const int code : {1, 3, 5, 7, 15, 17}) EXPECT_EQ(line(event(code, 5)), "1") << code;
  EXPECT_EQ(line(event(GZD_END_BLINK, 5, 9)), "EBLINK L 5\t9\t6\n");
  options.right_eye = 0;
  EXPECT_EQ(line(event(GZD_END_BLINK, 5, 9, GZD_RIGHT_EYE)), "1");
  options.output_eye_events = 0;
  EXPECT_EQ(line(event(GZD_END_BLINK, 5, 9)), "1");
  EXPECT_EQ(line(message(5, "still")), "MSG\t5 still\n");
  options.output_events = 0;
  EXPECT_EQ(line(message(5, "still")), "1");
}

TEST_F(EventLinesTest, ResolutionIsSummedOnlyWithoutSamples) {
  FEVENT record = saccade();
  line(record);
  EXPECT_EQ(ppd_count, 0.0);
  options.output_samples = 0;
  record.eupd_y = 22;
  line(record);
  EXPECT_EQ(ppd_count, 2.0);
  EXPECT_EQ(ppd_x, 20.0);
  EXPECT_EQ(ppd_y, 42.0);
  options.event_position_type = GZD_POSITION_HREF;
  line(record);
  EXPECT_EQ(ppd_count, 2.0);
}

TEST_F(EventLinesTest, HeaderComesOnceBeforeTheFirstThatIsNoMessage) {
  options.event_header_printed = options.suppress_column_headers = 0;
  EXPECT_EQ(line(message(5, "first")), "MSG\t5 first\n");
  EXPECT_EQ(line(event(GZD_START_BLINK, 6)),
            "** COLUMNS MSG EVENT\n** time\tmessage\n"
            "** COLUMNS BUTTON EVENT\n** time\tmessage\n"
            "** COLUMNS SFIX EVENT\n** type\teye\tstime\n"
            "** COLUMNS EFIX EVENT\n** type\teye\tstime\tetime\tintl\tavgx\tavgy\tavgps\n"
            "** COLUMNS SBLINK EVENT\n** type\teye\tstime\n"
            "** COLUMNS EBLINK EVENT\n** type\teye\tstime\tetime\tintl\n"
            "** COLUMNS SSACC EVENT\n** type\teye\tstime\n"
            "** COLUMNS ESACC EVENT\n"
            "** type\teye\tstime\tetime\tintl\tgstx\tgsty\tgenx\tgeny\tavel\tpvel\n"
            "SBLINK L 6\n");
  EXPECT_EQ(line(event(GZD_START_BLINK, 7)), "SBLINK L 7\n");

  options.event_header_printed = 0;
  options.output_resolution = 1;
  EXPECT_EQ(line(event(GZD_START_BLINK, 7)), "SBLINK L 7\n");
  EXPECT_EQ(options.event_header_printed, 1);
}

TEST_F(EventLinesTest, HeaderNamesExtendedColumnsOfTheFourthGeneration) {
  options.event_header_printed = options.suppress_column_headers = 0;
  options.current_ovilo_revision = 4;
  options.no_extended_data = 1;
  const std::string header = line(event(GZD_START_BLINK, 6));
  const std::string names =
      "\thead-rotation-x-start\thead-rotation-y-start\thead-rotation-z-start\t"
      "head-rotation-x-end\thead-rotation-y-end\thead-rotation-z-end\t"
      "head-rotation-x-avg\thead-rotation-y-avg\thead-rotation-z-avg\t"
      "head-position-x-start\thead-position-y-start\thead-position-z-start\t"
      "head-position-x-end\thead-position-y-end\thead-position-z-end\t"
      "head-position-x-avg\thead-position-y-avg\thead-position-z-avg\t\n";
  EXPECT_NE(header.find("** COLUMNS SSACC EVENT\n** type\teye\tstime" + names), std::string::npos);
  EXPECT_NE(header.find("\tavgps" + names), std::string::npos);
  EXPECT_EQ(header.find("head-in-space"), std::string::npos);
}

TEST_F(EventLinesTest, ReversedTimesAreReported) {
  const auto report = [](const FEVENT& record) { return console([&] { print_event(record, 0); }); };
  EXPECT_EQ(report(event(GZD_END_SACCADE, 20, 10)),
            "###ENDSACC end time is less than start time 20 10\n");
  EXPECT_EQ(report(event(GZD_END_BLINK, 20, 10)), "");
  forget_start_times();
  options.float_time = 1;
  EXPECT_EQ(report(event(GZD_END_FIXATION, 20, 10)),
            "###ENDFIX end time is less than start time 20 10\n");
  options.verbose = 1;
  // The end of a blink whose start was never told: nothing to compare.
  EXPECT_EQ(report(event(GZD_END_BLINK, 20, 10, GZD_RIGHT_EYE)),
            "###ENDBLINK end time is less than start time 20.0 10.0\n");
}

TEST_F(EventLinesTest, VerboseRunsCompareStartTimes) {
  options.verbose = 1;
  const auto report = [](int start_code, UINT32 start, UINT32 told, int eye) {
    return console([&] {
      print_event(event(start_code, start, 0, eye), 0);
      print_event(event(start_code + 1, told, told + 9, eye), 0);
    });
  };
  EXPECT_EQ(report(GZD_START_BLINK, 10, 12, 0), "start time miss match BLINK 10 12 -2\n");
  EXPECT_EQ(report(GZD_START_SACCADE, 13, 10, 1), "start time miss match SAC 13 10 3\n");
  EXPECT_EQ(report(GZD_START_FIXATION, 10, 12, 1), "start time miss match FIX 10 12 -2\n");
  EXPECT_EQ(report(GZD_START_FIXATION, 10, 10, 1), "");
}

}  // namespace
