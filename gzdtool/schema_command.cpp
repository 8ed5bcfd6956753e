// The verb `schema`: what the columns of every table are, as JSON for machines or as the page
// docs/tables.md.
#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <cstdio>
#include <nlohmann/json.hpp>

#include "command.h"
#include "sinks/byte_sink.h"
#include "tables/schema.h"

namespace gzdtool {

namespace {

using gzdtables::Field;
using gzdtables::Group;
using gzdtables::Table;

constexpr const char* page_head = R"(# Tables

What `gzdtool` writes, column by column. This page is made by `gzdtool schema --format markdown`.

Times are milliseconds of the tracker's clock, never shifted. A value that was not recorded or is
not valid is null: `n/a` in TSV and CSV, `null` in JSON. Texts are UTF-8; what is not valid in a
recording's texts is replaced by U+FFFD. In TSV a tab, newline, carriage return or backslash inside
a text is written `\t`, `\n`, `\r`, `\\`, and the text `n/a` itself `n\/a`; there are no quotes. Rows
come in the order of the recording, `events` in the order of their ends.

`fixations`, `saccades` and `blinks` are the rows of `events` of that type. A table of several
recordings has a leading column `recording`.

Groups of columns come with `--columns GROUP,GROUP`; `all` stands for those that were recorded.
)";

// Tables with columns of their own.
bool is_declared(Table table) {
  return table != Table::fixations && table != Table::saccades && table != Table::blinks;
}

nlohmann::ordered_json json_of(const Field& field, const std::string& group) {
  nlohmann::ordered_json column = {{"name", field.name}, {"type", name_of(field.type)}};
  if (!field.unit.empty()) column["unit"] = field.unit;
  column["description"] = field.description;
  if (!field.choices.empty()) column["values"] = field.choices;
  if (!group.empty()) column["group"] = group;
  return column;
}

std::string json_page() {
  nlohmann::ordered_json page;
  for (const Table table : gzdtables::all_tables()) {
    auto columns = nlohmann::ordered_json::array();
    for (const Group& group : groups_of(table))
      for (const Field& field : group.fields) columns.push_back(json_of(field, group.name));
    page[std::string(name_of(table))] = {{"row", row_of(table)}, {"columns", columns}};
  }
  return page.dump(2) + "\n";
}

std::string row_of_page(const Field& field) {
  std::string what = field.description;
  for (std::size_t i = 0; i < field.choices.size(); ++i)
    what += fmt::format("{}`{}`", i == 0 ? ": " : ", ", field.choices[i]);
  return fmt::format("| `{}` | {} | {} | {} |\n", field.name, name_of(field.type), field.unit,
                     what);
}

std::string table_of_page(const Group& group) {
  std::string text = "| column | type | unit | what |\n|---|---|---|---|\n";
  for (const Field& field : group.fields) text += row_of_page(field);
  return text;
}

std::string markdown_page() {
  std::string page = page_head;
  for (const Table table : gzdtables::all_tables()) {
    if (!is_declared(table)) continue;
    page += fmt::format("\n## `{}`: one row {}\n", name_of(table), row_of(table));
    for (const Group& group : groups_of(table)) {
      if (!group.name.empty())
        page += fmt::format("\nGroup `{}`: {}.\n", group.name, group.description);
      page += "\n" + table_of_page(group);
    }
  }
  return page;
}

class SchemaCommand final : public Command {
 public:
  SchemaCommand() : Command("schema", "Tell the columns of every table") {}

  void declare(CLI::App& app) override {
    app.add_option("--format", format_, "json or markdown")->type_name("PAGE");
  }
  int run() override {
    if (format_ != "json" && format_ != "markdown")
      throw gzdtables::UsageError("unknown format '" + format_ + "': json or markdown");
    const auto output = open_byte_sink("-");
    output->write(format_ == "json" ? json_page() : markdown_page());
    output->close();
    return exit_whole;
  }

 private:
  std::string format_ = "json";
};

}  // namespace

void append_schema_command(std::vector<std::unique_ptr<Command>>& commands) {
  commands.push_back(std::make_unique<SchemaCommand>());
}

}  // namespace gzdtool
