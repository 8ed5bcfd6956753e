// What all builders of rows have in common.
#ifndef GZDTABLES_ROW_BUILDER_H
#define GZDTABLES_ROW_BUILDER_H

#include <cmath>
#include <cstdint>
#include <memory>
#include <optional>
#include <string_view>

#include "column.h"
#include "element_walk.h"
#include "reader.h"

namespace gzdtables {

// Most rows that one element makes: a change of all eight buttons.
constexpr std::size_t rows_of_element = 8;

// A batch that is being filled, and its columns by name.
class Rows {
 public:
  Rows(const Schema& schema, Batch& batch) : schema_(schema), batch_(batch) {}

  // The column to write into; none when the table is read without it.
  template <class T>
  [[nodiscard]] Slot<T> slot(std::string_view name) const {
    Column* const column = find(name);
    return column == nullptr ? Slot<T>() : Slot<T>(*column);
  }
  [[nodiscard]] Column* find(std::string_view name) const {
    const int index = schema_.index_of(name);
    return index < 0 ? nullptr : &batch_.columns[static_cast<std::size_t>(index)];
  }
  [[nodiscard]] std::size_t begin_row() { return batch_.rows++; }
  void begin_rows(std::size_t count) { batch_.rows += count; }
  [[nodiscard]] std::size_t count() const { return batch_.rows; }
  [[nodiscard]] const Schema& schema() const { return schema_; }
  [[nodiscard]] Batch& batch() { return batch_; }

 private:
  const Schema& schema_;
  Batch& batch_;
};

// Makes rows of elements. It is bound to each batch before it fills it.
class RowBuilder {
 public:
  RowBuilder(unsigned wanted, const Request& request)
      : request_(request),
        wanted_(wanted),
        takes_all_(request.from < 0 && std::isinf(request.from) && request.to > 0 &&
                   std::isinf(request.to) && !request.trial) {}
  virtual ~RowBuilder() = default;
  RowBuilder(const RowBuilder&) = delete;
  RowBuilder& operator=(const RowBuilder&) = delete;

  [[nodiscard]] unsigned wanted() const { return wanted_; }
  [[nodiscard]] std::int64_t replaced_messages() const { return replaced_; }

  virtual void bind(Rows& rows) = 0;
  // Whether the rows can be had without a walk: then take_known() makes the next one, if it is
  // asked for, and is false at the end.
  [[nodiscard]] virtual bool is_known() const { return false; }
  [[nodiscard]] virtual bool take_known(Rows&) { return false; }
  // Makes the rows of the element that the walk is at, at most rows_of_element. It may go on to the
  // samples that follow while the batch is not full.
  virtual void take(ElementWalk& walk, Rows& rows) = 0;
  // Makes the rows that the end of the recording completes, at most one.
  virtual void finish(Rows&) {}
  // Ends a batch: what is left to be written of its rows is written.
  virtual void complete(Rows&) {}

 protected:
  // Whether a row is asked for.
  [[nodiscard]] bool accepts(double time, std::int32_t trial) const {
    return takes_all_ || (time >= request_.from && time <= request_.to &&
                          (!request_.trial || *request_.trial == trial));
  }
  [[nodiscard]] bool takes_all() const { return takes_all_; }
  [[nodiscard]] bool is_full(const Rows& rows) const { return rows.count() >= request_.batch_rows; }
  // Rows that the batch still takes, while it is not full.
  [[nodiscard]] std::size_t room_in(const Rows& rows) const {
    return request_.batch_rows - rows.count();
  }
  void append_message(Column* column, const char* text);

 private:
  Request request_;
  unsigned wanted_;
  bool takes_all_;
  std::int64_t replaced_ = 0;
};

// A number counted from 1, 0 being null.
inline void set_number(const Slot<std::int32_t>& slot, std::size_t row, std::int32_t number) {
  number == 0 ? slot.set_null(row) : slot.set(row, number);
}

[[nodiscard]] std::unique_ptr<RowBuilder> make_sample_rows(Recording&, const Request&);
[[nodiscard]] std::unique_ptr<RowBuilder> make_event_rows(Recording&, const Request&);
[[nodiscard]] std::unique_ptr<RowBuilder> make_message_rows(Recording&, const Request&);
[[nodiscard]] std::unique_ptr<RowBuilder> make_input_rows(Recording&, const Request&);
[[nodiscard]] std::unique_ptr<RowBuilder> make_block_rows(Recording&, const Request&);
[[nodiscard]] std::unique_ptr<RowBuilder> make_trial_rows(Recording&, const Request&);

}  // namespace gzdtables

#endif
