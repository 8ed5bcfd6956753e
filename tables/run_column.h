// Columns whose value seldom changes from row to row.
#ifndef GZDTABLES_RUN_COLUMN_H
#define GZDTABLES_RUN_COLUMN_H

#include <cstddef>
#include <cstdint>

#include "column.h"

namespace gzdtables {

// Writes runs of equal values. A row is told by a label: 0 is null, any other stands for the value
// `label - base`.
template <class T, std::int32_t base>
class RunColumn {
 public:
  // Begins a batch. Rows are then put from 0 on, without a gap.
  void bind(const Slot<T>& slot) {
    slot_ = slot;
    begin_ = 0;
  }
  void put(std::size_t row, std::int32_t label) {
    if (label != label_) change(row, label);
  }
  // Ends a batch of `rows` rows.
  void finish(std::size_t rows) { change(rows, label_); }

 private:
  void change(std::size_t row, std::int32_t label) {
    if (label_ == 0)
      slot_.fill_null(begin_, row);
    else
      slot_.fill(begin_, row, static_cast<T>(label_ - base));
    begin_ = row;
    label_ = label;
  }

  Slot<T> slot_;
  std::size_t begin_ = 0;
  std::int32_t label_ = 0;
};

}  // namespace gzdtables

#endif
