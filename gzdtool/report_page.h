// One recording as a page that stands alone, and many as a page that tells of each.
#ifndef GZDTOOL_REPORT_PAGE_H
#define GZDTOOL_REPORT_PAGE_H

#include <string>
#include <vector>

#include "recording_json.h"
#include "tables/recording.h"

namespace gzdtool {

// The page without a recording in it, from `name`, or from where it is installed when that is
// empty. Throws gzdtables::UsageError when there is none.
[[nodiscard]] std::string report_template(const std::string& name);

// What a report holds: facts, examination, a reduced trace, and all tables but that of samples.
// Throws gzdtables::ReadError.
[[nodiscard]] Json report_data(gzdtables::Recording& recording);

// The template with the data in it.
[[nodiscard]] std::string report_page(const std::string& page, const Json& data);

// A line of the index: a recording, and what became of it.
struct ReportEntry {
  std::string name, file;  // of the recording; of its report, empty when there is none
  std::string verdict;     // "sound", "lossy", "unreadable"
  std::string told;        // its length and first findings, or why it cannot be read
};

[[nodiscard]] std::string index_page(const std::vector<ReportEntry>& entries);

}  // namespace gzdtool

#endif
