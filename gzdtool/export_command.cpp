// The verb `export`.
#include <CLI/CLI.hpp>

#include "command.h"
#include "export_run.h"

namespace gzdtool {

namespace {

using gzdtables::Table;
using gzdtables::UsageError;

class ExportCommand final : public Command {
 public:
  ExportCommand() : Command("export", "Write all tables of recordings to files") {}

  void declare(CLI::App& app) override {
    app.add_option("--output-dir", directory_,
                   "Folder for NAME_TABLE.tsv and so on, and NAME.json with facts and columns")
        ->type_name("DIR");
    app.add_option("--table", tables_, "Only these tables, with commas between")
        ->type_name("TABLES")
        ->delimiter(',')
        ->allow_extra_args(false);
    declare_table_options(app, options_, Table::samples);
  }
  int run() override;

 private:
  [[nodiscard]] int write_one_table() const;

  std::string directory_;
  std::vector<std::string> tables_;
  TableOptions options_;
};

int ExportCommand::write_one_table() const {
  if (tables_.size() != 1)
    throw UsageError("export takes --output-dir DIR, or one --table and --output FILE");
  return write_table(options_, gzdtables::table_named(tables_.front()));
}

int ExportCommand::run() {
  if (directory_.empty()) return write_one_table();
  if (options_.output != "-") throw UsageError("--output-dir and --output exclude each other");
  ExportPlan plan{options_, {}, directory_};
  if (plan.options.format.empty()) plan.options.format = "tsv";
  plan.tables = {Table::samples, Table::events, Table::messages,
                 Table::inputs,  Table::blocks, Table::trials};
  if (!tables_.empty()) plan.tables.clear();
  for (const std::string& name : tables_) plan.tables.push_back(gzdtables::table_named(name));
  return export_tables(plan);
}

}  // namespace

void append_export_command(std::vector<std::unique_ptr<Command>>& commands) {
  commands.push_back(std::make_unique<ExportCommand>());
}

}  // namespace gzdtool
