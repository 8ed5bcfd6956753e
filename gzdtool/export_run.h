// All tables of recordings as files in a folder, each recording with a sidecar.
#ifndef GZDTOOL_EXPORT_RUN_H
#define GZDTOOL_EXPORT_RUN_H

#include <string>
#include <vector>

#include "table_request.h"

namespace gzdtool {

struct ExportPlan {
  TableOptions options;  // its `output` does not count
  std::vector<gzdtables::Table> tables;
  std::string directory;
};

// Writes DIR/NAME_TABLE.FORMAT for each table and, when all are there, DIR/NAME.json. What an
// earlier run finished with the same options, and from the same recording, stays. Returns an exit
// status. Throws gzdtables::UsageError.
[[nodiscard]] int export_tables(const ExportPlan& plan);

}  // namespace gzdtool

#endif
