// Tables and types by name, and the columns that a choice of groups makes.
#include "schema.h"

#include <algorithm>
#include <array>
#include <numeric>

namespace gzdtables {

namespace {

struct TableName {
  Table table;
  std::string_view name;
  std::string_view row;
};

constexpr std::array table_names{
    TableName{Table::samples, "samples", "a sample"},
    TableName{Table::events, "events", "an eye event that ended"},
    TableName{Table::fixations, "fixations", "a fixation that ended"},
    TableName{Table::saccades, "saccades", "a saccade that ended"},
    TableName{Table::blinks, "blinks", "a blink that ended"},
    TableName{Table::messages, "messages", "a message"},
    TableName{Table::inputs, "inputs", "a button or the input port that changed"},
    TableName{Table::blocks, "blocks", "a recording block"},
    TableName{Table::trials, "trials", "a trial"},
};

constexpr std::array tables_in_order = [] {
  std::array<Table, table_names.size()> tables{};
  std::transform(table_names.begin(), table_names.end(), tables.begin(),
                 [](const TableName& entry) { return entry.table; });
  return tables;
}();

constexpr std::array<std::string_view, 9> type_names{
    "bool", "int32", "int64", "uint16", "uint32", "float32", "float64", "string", "enum"};

const TableName& entry_of(Table table) {
  return table_names.at(static_cast<std::size_t>(table));
}

// Single insertions, removals and replacements that make one name of the other.
std::size_t distance(std::string_view one, std::string_view other) {
  std::vector<std::size_t> row(other.size() + 1);
  std::iota(row.begin(), row.end(), std::size_t{0});
  for (const char c : one) {
    std::size_t diagonal = row[0]++;
    for (std::size_t i = 0; i < other.size(); ++i) {
      const std::size_t replaced = diagonal + (c == other[i] ? 0 : 1);
      diagonal = row[i + 1];
      row[i + 1] = std::min({replaced, diagonal + 1, row[i] + 1});
    }
  }
  return row.back();
}

std::vector<std::string> group_names(Table table) {
  std::vector<std::string> names;
  for (const Group& group : groups_of(table))
    if (!group.name.empty()) names.push_back(group.name);
  return names;
}

std::string unknown(std::string_view what, std::string_view name,
                    std::span<const std::string> known) {
  std::string text = "unknown ";
  text.append(what).append(" '").append(name).append("'");
  const std::string near = nearest(name, known);
  return near.empty() ? text : text + ", did you mean '" + near + "'?";
}

bool contains(std::span<const std::string> names, std::string_view name) {
  return std::find(names.begin(), names.end(), name) != names.end();
}

}  // namespace

int Schema::index_of(std::string_view name) const {
  const auto place = std::find_if(fields.begin(), fields.end(),
                                  [name](const Field& field) { return field.name == name; });
  return place == fields.end() ? -1 : static_cast<int>(place - fields.begin());
}

std::span<const Table> all_tables() {
  return tables_in_order;
}

std::string_view name_of(Table table) {
  return entry_of(table).name;
}

std::string_view row_of(Table table) {
  return entry_of(table).row;
}

std::string_view name_of(Type type) {
  return type_names.at(static_cast<std::size_t>(type));
}

Table table_named(std::string_view name) {
  std::vector<std::string> known;
  for (const TableName& entry : table_names) {
    if (entry.name == name) return entry.table;
    known.emplace_back(entry.name);
  }
  throw UsageError(unknown("table", name, known));
}

void check_groups(Table table, std::span<const std::string> groups) {
  std::vector<std::string> known = group_names(table);
  known.emplace_back("all");
  for (const std::string& name : groups)
    if (!contains(known, name))
      throw UsageError(unknown("group of columns of " + std::string(name_of(table)), name, known));
}

Schema schema_of(Table table, std::span<const std::string> groups) {
  check_groups(table, groups);
  Schema schema{table, {}};
  for (const Group& group : groups_of(table))
    if (group.name.empty() || contains(groups, group.name))
      schema.fields.insert(schema.fields.end(), group.fields.begin(), group.fields.end());
  return schema;
}

std::string nearest(std::string_view name, std::span<const std::string> names) {
  constexpr std::size_t longest_compared = 64;
  const std::size_t farthest = std::max<std::size_t>(1, name.size() / 3);
  std::string best;
  std::size_t least = farthest + 1;
  if (name.size() > longest_compared) return best;
  for (const std::string& candidate : names) {
    const std::size_t steps = distance(name, candidate);
    if (steps < least) best = candidate;
    least = std::min(least, steps);
  }
  return best;
}

}  // namespace gzdtables
