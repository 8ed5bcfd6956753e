// Many conversions, some of them at once.
#ifndef GZDTOOL_CONVERT_RUN_H
#define GZDTOOL_CONVERT_RUN_H

#include <string>
#include <vector>

#include "converter.h"

namespace gzdtool {

struct ConvertPlan {
  std::vector<std::string> recordings;
  ConverterOptions converter;
  unsigned jobs = 1;
  bool redoes = false;  // also what has a text that is younger than the recording
  std::string report;   // file for one line of JSON a recording; empty: none
};

// Converts all. What is told of each comes in the order of the recordings. Returns an exit status.
[[nodiscard]] int convert_recordings(const ConvertPlan& plan);

}  // namespace gzdtool

#endif
