// Fetches into the rows themselves, then puts nulls where a value does not count.
#include "gaze_columns.h"

#include <algorithm>
#include <array>
#include <string>

#include "sample_state.h"

namespace gzdtables {

void GazeColumns::bind(const Rows& rows) {
  for (const std::size_t eye : {0, 1}) {
    const std::string name = eye_name[eye];
    if (rows.find(name + "x") == nullptr) unwanted_.resize(2 * most);
    const auto values = [&](const char* column) {
      Column* const found = rows.find(name + column);
      return found == nullptr ? nullptr : found->filling<float>();
    };
    columns_.gx[eye] = values("x");
    columns_.gy[eye] = values("y");
    columns_.pa[eye] = values("pupil");
  }
  columns_.time = rows.find("time")->filling<double>();
}

std::size_t GazeColumns::fetch(GZDFILE* file, std::size_t row, std::size_t room, unsigned flags,
                               unsigned eyes) {
  const GZD_GAZE_COLUMNS to{columns_.time + row,
                            {at(columns_.gx[0], row), at(columns_.gx[1], row)},
                            {at(columns_.gy[0], row), at(columns_.gy[1], row)},
                            {at(columns_.pa[0], row, most), at(columns_.pa[1], row, most)}};
  const std::size_t count = gzd_get_gaze(file, static_cast<unsigned>(std::min(room, most)), &to);
  put_nulls(to, count, flags, eyes_in(flags) & eyes);
  return count;
}

// What Presence tells of one sample, of many.
void GazeColumns::put_nulls(const GZD_GAZE_COLUMNS& to, std::size_t count, unsigned flags,
                            unsigned present) {
  const bool has_sizes = (flags & SMP_PUPIL_SIZE) != 0;
  if (has_sizes && present == GZD_BLOCK_BOTH && is_whole(to, 0, count) && is_whole(to, 1, count))
    return;
  std::array<std::int32_t, most> packed{};
  for (const std::size_t eye : {0, 1}) {
    if (!has_sizes) std::fill_n(to.pa[eye], count, 1.0F);
    for (std::size_t i = 0; ((present >> eye) & 1U) != 0 && i < count; ++i)
      packed[i] |= to.pa[eye][i] < 0.0F ? 1 : 0;
  }
  for (const std::size_t eye : {0, 1}) {
    if (((present >> eye) & 1U) == 0)
      for (float* const column : {to.gx[eye], to.gy[eye], to.pa[eye]})
        std::fill_n(column, count, nan_value);
    else
      keep_values(to.gx[eye], to.gy[eye], to.pa[eye], packed.data(), count);
    if (!has_sizes) std::fill_n(to.pa[eye], count, nan_value);
  }
}

// Whether an eye has all its values, as nearly always: then they stay as they are.
bool GazeColumns::is_whole(const GZD_GAZE_COLUMNS& columns, std::size_t eye, std::size_t count) {
  const float *const x = columns.gx[eye], *const y = columns.gy[eye], *const pa = columns.pa[eye];
  const auto is_inside = [](float value, float low) {
    return (value > low) & (value < MISSING_DATA);
  };
  std::int32_t others = 0;
  for (std::size_t i = 0; i < count; ++i) {
    const bool is_whole =
        is_inside(x[i], NOT_RECORDED) & is_inside(y[i], NOT_RECORDED) & is_inside(pa[i], 0.0F);
    others |= is_whole ? 0 : 1;
  }
  return others == 0;
}

// Those of one eye that counts.
void GazeColumns::keep_values(float* x, float* y, float* pupil, const std::int32_t* packed,
                              std::size_t count) {
  for (std::size_t i = 0; i < count; ++i) {
    const float size = pupil[i];
    const bool is_there = packed[i] == 0;
    x[i] = kept(is_there & (size != 0.0F), x[i]);
    y[i] = kept(is_there & (size != 0.0F), y[i]);
    pupil[i] = kept(is_there & (size > 0.0F), size);
  }
}

}  // namespace gzdtables
