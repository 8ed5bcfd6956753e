// Gaze, pupils and times of many samples at a time, as the library fetches them.
#ifndef GZDTABLES_GAZE_COLUMNS_H
#define GZDTABLES_GAZE_COLUMNS_H

#include <cstddef>
#include <cstdint>
#include <vector>

#include "row_builder.h"

namespace gzdtables {

class GazeColumns {
 public:
  // To be called for each batch. An eye that the table is read without gets room of its own.
  void bind(const Rows& rows);
  [[nodiscard]] double time(std::size_t row) const { return columns_.time[row]; }

  // Fetches samples that follow one of these flags, in a block that records `eyes`, into the rows
  // from `row` on. Returns how many, at most `room`.
  [[nodiscard]] std::size_t fetch(GZDFILE* file, std::size_t row, std::size_t room, unsigned flags,
                                  unsigned eyes);

 private:
  static constexpr std::size_t most = 512;  // so that they stay in the nearest cache

  // From the row on. Of an unwanted eye positions may lie in one place, sizes elsewhere.
  [[nodiscard]] float* at(float* column, std::size_t row, std::size_t elsewhere = 0) {
    return column == nullptr ? unwanted_.data() + elsewhere : column + row;
  }
  static void put_nulls(const GZD_GAZE_COLUMNS& to, std::size_t count, unsigned flags,
                        unsigned present);
  static bool is_whole(const GZD_GAZE_COLUMNS& columns, std::size_t eye, std::size_t count);
  static void keep_values(float* x, float* y, float* pupil, const std::int32_t* packed,
                          std::size_t count);

  GZD_GAZE_COLUMNS columns_{};
  std::vector<float> unwanted_;
};

}  // namespace gzdtables

#endif
