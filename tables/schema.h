// What a table is made of: the name, type, unit and meaning of each column. Header lines, JSON
// schemas, documentation and Arrow schemas are all read off here.
#ifndef GZDTABLES_SCHEMA_H
#define GZDTABLES_SCHEMA_H

#include <cstdint>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace gzdtables {

// A request that no recording can meet: an unknown table, group or pattern.
class UsageError : public std::invalid_argument {
 public:
  using std::invalid_argument::invalid_argument;
};

// The tables. Fixations, saccades and blinks are the rows of `events` of that type.
enum class Table { samples, events, fixations, saccades, blinks, messages, inputs, blocks, trials };

// Types of values. A choice is one of few texts, stored as its number.
enum class Type { boolean, int32, int64, uint16, uint32, float32, float64, text, choice };

// One column.
struct Field {
  std::string name = {};
  Type type = Type::text;
  std::string unit = {};                  // empty: none
  std::string description = {};           // a sentence without its full stop
  std::vector<std::string> choices = {};  // of a choice: the texts, by number
};

// The columns of one table as it is read.
struct Schema {
  Table table = Table::samples;
  std::vector<Field> fields;

  // Index of a column, or -1 when the table has none of that name.
  [[nodiscard]] int index_of(std::string_view name) const;
};

// Columns that come together when they are asked for; the columns that are always there have a
// group without a name.
struct Group {
  std::string name;
  std::string description;
  std::vector<Field> fields;
};

// Every table, in the order in which they are told.
[[nodiscard]] std::span<const Table> all_tables();

// The name of a table, as commands and files spell it, and what one row of it is.
[[nodiscard]] std::string_view name_of(Table table);
[[nodiscard]] std::string_view row_of(Table table);

// The table of that name. Throws UsageError when there is none.
[[nodiscard]] Table table_named(std::string_view name);

// The name of a type: "bool", "int32", ... "string", "enum".
[[nodiscard]] std::string_view name_of(Type type);

// The declaration of a table: the group that is always there first, then the others in the order
// of their columns.
[[nodiscard]] const std::vector<Group>& groups_of(Table table);

// The columns of a table with these groups beside those that are always there. The name "all" is
// not known here: what it stands for depends on the recording. Throws UsageError for an unknown
// group.
[[nodiscard]] Schema schema_of(Table table, std::span<const std::string> groups = {});

// Throws UsageError when one of these is neither a group of the table nor "all".
void check_groups(Table table, std::span<const std::string> groups);

// The name that is nearest to a mistyped one, or an empty text when none is near.
[[nodiscard]] std::string nearest(std::string_view name, std::span<const std::string> names);

}  // namespace gzdtables

#endif
