// golden_recordings KIND OUTPUT.gzd: writes one of the small recordings.
#include <cstdio>
#include <exception>
#include <map>
#include <string>

#include "golden_recordings.h"

namespace {

using Maker = golden::GzdWriter (*)();

const std::map<std::string, Maker>& makers() {
  static const std::map<std::string, Maker> kinds = {
      {"blink_repairs", golden::blinkRepairs},
      {"block_repairs", golden::blockRepairs},
      {"block_shapes", golden::blockShapes},
      {"buttons_and_input", golden::buttonsAndInput},
      {"camera_data", golden::cameraData},
      {"event_kinds", golden::eventKinds},
      {"geometry", golden::geometry},
      {"half_milliseconds", golden::halfMilliseconds},
      {"mapping", golden::mapping},
      {"messages", golden::messages},
      {"odd_values", golden::oddValues},
      {"pose_events", golden::poseEvents},
      {"pose_flags", golden::poseFlags},
      {"position_types", golden::positionTypes},
      {"status_flags", golden::statusFlags},
      {"target_flags", golden::targetFlags},
  };
  return kinds;
}

int fail(const std::string& reason) {
  std::fprintf(stderr, "golden_recordings: %s\n", reason.c_str());
  return 1;
}

}  // namespace

int main(int argc, char** argv) {
  try {
    if (argc != 3) return fail("two arguments are needed: KIND OUTPUT.gzd");
    const auto maker = makers().find(argv[1]);
    if (maker == makers().end()) return fail(std::string("unknown kind ") + argv[1]);
    maker->second().save(argv[2]);
    return 0;
  } catch (const std::exception& error) {
    return fail(error.what());
  }
}
