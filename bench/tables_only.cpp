// tables_only open|walk|columns RECORDING: opens a recording as its tables do, fetches every
// element, or builds the columns of `samples` and throws them away. What bench/tool holds the
// tables against.
#include <cstdio>
#include <string_view>

#include "tables/reader.h"

namespace {

using gzdtables::Recording;

void walk(Recording& recording) {
  GZDFILE* const file = recording.handle();
  static_cast<void>(recording.begin_walk());
  while (gzd_get_next_data(file) != GZD_END_OF_DATA) static_cast<void>(gzd_get_float_data(file));
}

void build_columns(Recording& recording) {
  gzdtables::TableReader reader(recording, {.table = gzdtables::Table::samples});
  gzdtables::Batch batch;
  while (reader.next(batch)) continue;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 3) {
    std::fputs("Usage: tables_only open|walk|columns RECORDING.gzd\n", stderr);
    return 2;
  }
  const std::string_view work = argv[1];
  Recording recording(argv[2]);
  if (work == "walk") walk(recording);
  if (work == "columns") build_columns(recording);
  return 0;
}
