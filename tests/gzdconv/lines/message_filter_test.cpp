#include "lines/message_filter.h"

#include "support/capture.h"

using namespace gzdconv;

namespace {

class MessageFilterTest : public AscTest {
 protected:
  static void expect(bool printed, std::initializer_list<const char*> texts) {
    for (const char* text : texts) EXPECT_EQ(is_message_printed(text), printed) << text;
  }
};

TEST_F(MessageFilterTest, ViewerCommandsAreHiddenOnDemand) {
  const auto commands = {"!V IMGLOAD", "  !V", "-12 !V TRIAL", " 15  !VX", "7!V", "-!V", "!EG"};
  expect(true, commands);
  options.hide_viewer_commands = 1;
  expect(false, commands);
  expect(true, {"", "! V", "x!V", "- 5 !V", "\t!V", "!v", "5 5 !V"});
}

TEST_F(MessageFilterTest, GeometryIsHiddenUnlessAskedFor) {
  const auto geometry = {"!GEOM x", " !GEOM hm_eyecam_to_ref:", "!MIPI 1", "!IMU 1", "-3 !IMUx"};
  expect(false, geometry);
  expect(true, {"!GEOM", "!MIPI", "!IMU", "!GEO 1", "x !GEOM 1"});
  options.geom_messages = 1;
  expect(true, geometry);
}

TEST_F(MessageFilterTest, FilterTextsMatchAnywhere) {
  options.filter_out_texts = {"TRIAL", "end"};
  options.filter_out_count = 1;
  expect(false, {"TRIAL 1", "12 xTRIALx"});
  expect(true, {"trial", "end"});
  options.filter_out_count = 2;
  expect(false, {"the end"});
}

TEST_F(MessageFilterTest, TrimsLeadingBlanks) {
  EXPECT_EQ(trim_lstring("  a b "), "a b ");
  EXPECT_EQ(trim_lstring("   "), "");
}

}  // namespace
