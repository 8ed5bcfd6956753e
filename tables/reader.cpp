// Batches: a walk over the elements, handed to the builder of the table's rows until a batch is
// full.
#include "reader.h"

#include <algorithm>
#include <array>

#include "element_walk.h"
#include "outline.h"
#include "row_builder.h"
#include "utf8.h"

namespace gzdtables {

namespace {

constexpr std::size_t most_characters = 1 << 20;  // of the texts of a batch

struct AnnouncedGroup {
  const char* name;
  std::uint16_t bit;
  int generation;  // GZD_TRACKER_, 0: of any
};

constexpr std::array known_groups{
    AnnouncedGroup{"href", SMP_HREF, 0},
    AnnouncedGroup{"raw", SMP_PUPIL_POS, 0},
    AnnouncedGroup{"velocity", SMP_GAZE, 0},
    AnnouncedGroup{"fast_velocity", SMP_GAZE, 0},
    AnnouncedGroup{"resolution", SMP_RESOLUTION, 0},
    AnnouncedGroup{"input", SMP_INPUT, 0},
    AnnouncedGroup{"buttons", SMP_BUTTONS, 0},
    AnnouncedGroup{"status", SMP_STATUS, 0},
    AnnouncedGroup{"target", SMP_HEAD_DATA, GZD_TRACKER_FALCON},
    AnnouncedGroup{"head", SMP_EXTENDED, 0},
    AnnouncedGroup{"ellipse", SMP_EXTENDED, 0},
};

bool asks_for_all(const Request& request) {
  return std::find(request.groups.begin(), request.groups.end(), "all") != request.groups.end();
}

void drop_other_eye(Schema& schema, Eye eye) {
  const std::string other = eye == Eye::left ? "right_" : "left_";
  std::erase_if(schema.fields, [&](const Field& field) { return field.name.starts_with(other); });
}

Schema schema_for(Recording& recording, const Request& request) {
  std::vector<std::string> groups = request.groups;
  if (asks_for_all(request)) {
    std::erase(groups, "all");
    for (const std::string& name : announced_groups(recording, request.table))
      groups.push_back(name);
  }
  if (request.table == Table::messages && recording.options().message_log)
    groups.emplace_back("source");
  Schema schema = schema_of(request.table, groups);
  if (request.table == Table::samples && request.eye) drop_other_eye(schema, *request.eye);
  if (request.table == Table::trials)
    for (const auto& [name, expression] : recording.options().trials.variables)
      schema.fields.push_back({name,
                               Type::text,
                               "",
                               "the group of `" + expression + "` in the last message that matches",
                               {}});
  return schema;
}

std::unique_ptr<RowBuilder> builder_for(Recording& recording, const Request& request) {
  switch (request.table) {
    case Table::samples:
      return make_sample_rows(recording, request);
    case Table::messages:
      return make_message_rows(recording, request);
    case Table::inputs:
      return make_input_rows(recording, request);
    case Table::blocks:
      return make_block_rows(recording, request);
    case Table::trials:
      return make_trial_rows(recording, request);
    default:
      return make_event_rows(recording, request);
  }
}

// The request, which asks for no more room than all elements can fill.
Request checked(Request request, Recording& recording) {
  check_request(request);
  const std::size_t elements = std::max<std::size_t>(1, recording.element_count());
  request.batch_rows = std::min(request.batch_rows, elements * rows_of_element);
  return request;
}

}  // namespace

bool is_told_by_eye(Table table) {
  return table == Table::samples || table == Table::events || table == Table::fixations ||
         table == Table::saccades || table == Table::blinks;
}

std::vector<std::string> announced_groups(Recording& recording, Table table) {
  std::vector<std::string> names;
  const auto is_announced = [&](const AnnouncedGroup& group) {
    return (recording.outline().announced & group.bit) != 0 &&
           (group.generation == 0 || group.generation == recording.generation());
  };
  for (const Group& group : groups_of(table))
    for (const AnnouncedGroup& known : known_groups)
      if (group.name == known.name && is_announced(known)) names.push_back(group.name);
  return names;
}

void check_request(const Request& request) {
  check_groups(request.table, request.groups);
  if (request.eye && !is_told_by_eye(request.table))
    throw UsageError("the table '" + std::string(name_of(request.table)) + "' is not told by eye");
  if (request.batch_rows == 0) throw UsageError("a batch of no rows");
}

void RowBuilder::append_message(Column* column, const char* text) {
  if (column == nullptr) return;
  if (text == nullptr) {
    column->append_null_text();
  } else if (is_utf8(text)) {
    column->append_text(text);
  } else {
    column->append_text(as_utf8(text));
    ++replaced_;
  }
}

struct TableReader::State {
  State(Recording& recording, const Request& wanted)
      : request(checked(wanted, recording)),
        schema(schema_for(recording, request)),
        builder(builder_for(recording, request)),
        walk(recording, builder->wanted()) {
    for (std::size_t i = 0; i < schema.fields.size(); ++i)
      if (schema.fields[i].type == Type::text) texts.push_back(i);
  }

  void prepare(Batch& batch) const;
  [[nodiscard]] bool is_full(const Batch& batch) const;
  void fill(Batch& batch);
  void step(Rows& rows);
  void expect_no_more();

  Request request;
  Schema schema;
  std::unique_ptr<RowBuilder> builder;
  ElementWalk walk;
  std::vector<std::size_t> texts;  // columns
  bool at_end = false;
};

void TableReader::State::prepare(Batch& batch) const {
  batch.rows = 0;
  for (Column& column : batch.columns) column.clear();
  if (!batch.columns.empty()) return;
  const std::size_t room = request.batch_rows + rows_of_element;
  if (request.has_all_rows) {
    batch.columns = columns_in_one_piece(schema, room);
    return;
  }
  for (const Field& field : schema.fields) batch.columns.emplace_back(field.type, room);
}

bool TableReader::State::is_full(const Batch& batch) const {
  if (batch.rows >= request.batch_rows) return true;
  return std::any_of(texts.begin(), texts.end(), [&](std::size_t column) {
    return batch.columns[column].characters().size() >= most_characters;
  });
}

void TableReader::State::fill(Batch& batch) {
  Rows rows(schema, batch);
  builder->bind(rows);
  while (!at_end && !is_full(batch)) step(rows);
  builder->complete(rows);
}

void TableReader::State::step(Rows& rows) {
  if (builder->is_known()) {
    walk.require_turn();
    at_end = !builder->take_known(rows);
    return;
  }
  at_end = !walk.next();
  if (at_end)
    builder->finish(rows);
  else
    builder->take(walk, rows);
}

// Behind the batch with all rows comes an empty one.
void TableReader::State::expect_no_more() {
  if (!request.has_all_rows) return;
  request.has_all_rows = false;
  request.batch_rows = std::min(request.batch_rows, Request().batch_rows);
}

TableReader::TableReader(Recording& recording, const Request& request)
    : state_(std::make_unique<State>(recording, request)) {}

TableReader::~TableReader() = default;
TableReader::TableReader(TableReader&&) noexcept = default;

const Schema& TableReader::schema() const {
  return state_->schema;
}

bool TableReader::next(Batch& batch) {
  state_->prepare(batch);
  state_->fill(batch);
  state_->expect_no_more();
  return batch.rows > 0;
}

std::int64_t TableReader::replaced_messages() const {
  return state_->builder->replaced_messages();
}

}  // namespace gzdtables
