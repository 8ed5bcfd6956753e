// Rows of `messages` and `inputs`.
#include "row_builder.h"

namespace gzdtables {

namespace {

constexpr std::uint8_t from_recording = 0;  // choices of `source`
constexpr std::uint8_t from_log = 1;
constexpr std::uint8_t type_button = 0;  // choices of `type`
constexpr std::uint8_t type_input = 1;
constexpr unsigned bits_of_buttons = 8;

// Columns of both tables.
struct Place {
  Slot<std::int32_t> block, trial;
  Slot<double> time;

  void bind(const Rows& rows) {
    block = rows.slot<std::int32_t>("block");
    trial = rows.slot<std::int32_t>("trial");
    time = rows.slot<double>("time");
  }
  void set(std::size_t row, const Element& element) const {
    set_number(block, row, element.block);
    set_number(trial, row, element.trial);
    time.set(row, element.record->fe.sttime);
  }
};

class MessageRows final : public RowBuilder {
 public:
  explicit MessageRows(const Request& request) : RowBuilder(want_messages, request) {}

  void bind(Rows& rows) override {
    place_.bind(rows);
    source_ = rows.slot<std::uint8_t>("source");
    text_ = rows.find("text");
  }
  void take(ElementWalk& walk, Rows& rows) override {
    const Element& element = walk.element();
    if (element.code != GZD_MESSAGE || !accepts(element.record->fe.sttime, element.trial)) return;
    const std::size_t row = rows.begin_row();
    place_.set(row, element);
    source_.set(row, walk.is_from_log() ? from_log : from_recording);
    append_message(text_, text_of(element.record->fe));
  }

 private:
  Place place_;
  Slot<std::uint8_t> source_;
  Column* text_ = nullptr;
};

class InputRows final : public RowBuilder {
 public:
  explicit InputRows(const Request& request) : RowBuilder(want_inputs, request) {}

  void bind(Rows& rows) override {
    place_.bind(rows);
    type_ = rows.slot<std::uint8_t>("type");
    button_ = rows.slot<std::int32_t>("button");
    value_ = rows.slot<std::int32_t>("value");
  }
  void take(ElementWalk& walk, Rows& rows) override;

 private:
  void append(Rows& rows, const Element& element, std::int32_t button, std::int32_t value);

  Place place_;
  Slot<std::uint8_t> type_;
  Slot<std::int32_t> button_, value_;
};

void InputRows::take(ElementWalk& walk, Rows& rows) {
  const Element& element = walk.element();
  const bool is_button = element.code == GZD_BUTTON;
  if (!is_button && element.code != GZD_INPUT) return;
  const FEVENT& event = element.record->fe;
  if (!accepts(event.sttime, element.trial)) return;
  if (!is_button) return append(rows, element, 0, event.input);
  const unsigned changed = event.buttons >> bits_of_buttons;
  for (unsigned i = 0; i < bits_of_buttons; ++i)
    if (((changed >> i) & 1U) != 0)
      append(rows, element, static_cast<std::int32_t>(i) + 1, (event.buttons >> i) & 1);
}

void InputRows::append(Rows& rows, const Element& element, std::int32_t button,
                       std::int32_t value) {
  const std::size_t row = rows.begin_row();
  place_.set(row, element);
  type_.set(row, button == 0 ? type_input : type_button);
  set_number(button_, row, button);
  value_.set(row, value);
}

}  // namespace

std::unique_ptr<RowBuilder> make_message_rows(Recording&, const Request& request) {
  return std::make_unique<MessageRows>(request);
}

std::unique_ptr<RowBuilder> make_input_rows(Recording&, const Request& request) {
  return std::make_unique<InputRows>(request);
}

}  // namespace gzdtables
