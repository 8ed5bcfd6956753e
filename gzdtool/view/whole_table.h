// A table of a recording as one text, for those who keep it in memory.
#ifndef GZDTOOL_WHOLE_TABLE_H
#define GZDTOOL_WHOLE_TABLE_H

#include <string>

#include "tables/reader.h"

namespace gzdtool {

// The table as TSV, as the verb of its name prints it. Throws gzdtables::ReadError.
[[nodiscard]] std::string tsv_of(gzdtables::Recording& recording,
                                 const gzdtables::Request& request);

}  // namespace gzdtool

#endif
