// What reading, checks and repairs have found in a recording.
#ifndef GZDAPI_FINDINGS_H
#define GZDAPI_FINDINGS_H

#include <array>
#include <cstddef>
#include <vector>

#include "gzd_data.h"

namespace gzd {

// A stamp, or a place in the index, as findings hold it.
constexpr INT64 found_at(UINT64 stamp) {
  return static_cast<INT64>(stamp);
}

// One finding, its members those of GZD_FINDING, its times as stamps.
struct Finding {
  static constexpr INT64 none_found = -1;

  int kind = 0;
  int eye = GZD_BLOCK_NO_EYE;
  int detail = 0;
  INT64 count = 1;
  INT64 place = none_found;
  INT64 start = none_found;
  INT64 end = none_found;
  UINT32 merged = 1;
};

// The findings of a file. A damaged recording can hold them by the million: of each kind only so
// many are kept, the last of which takes in those that follow.
class Findings {
 public:
  static constexpr UINT32 most_of_a_kind = 1000;

  void add(const Finding& finding);
  [[nodiscard]] std::size_t size() const { return list_.size(); }
  // As it is handed out.
  [[nodiscard]] GZD_FINDING at(std::size_t place) const;

 private:
  struct Kept {
    UINT32 count = 0;
    std::size_t last = 0;
  };

  std::vector<Finding> list_;
  std::array<Kept, GZD_FINDING_KINDS> kept_;
};

}  // namespace gzd

#endif
