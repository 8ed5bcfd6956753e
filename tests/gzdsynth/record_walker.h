// Takes the records of a session apart again, for tests: a plain reader of its own that knows only
// sound records and keeps every value as stored.
#ifndef TESTS_GZDSYNTH_RECORD_WALKER_H
#define TESTS_GZDSYNTH_RECORD_WALKER_H

#include <map>
#include <string>
#include <vector>

#include "GzdWriter.h"

namespace gzdsynth {

struct WalkedRecord {
  bool isSample = false;
  // Samples.
  SampleRecord sample;
  // Events: values by field code; 32-bit values as one number.
  unsigned type = 0;
  int eye = 0;
  std::map<unsigned, std::vector<std::int64_t>> fields;
  std::string text;

  [[nodiscard]] std::int64_t value(unsigned code, std::size_t i = 0) const {
    return fields.at(code).at(i);
  }
};

// Throws std::out_of_range when the bytes end too early. Ends at the zero tag.
std::vector<WalkedRecord> walkRecords(const Bytes& body);

}  // namespace gzdsynth

#endif
