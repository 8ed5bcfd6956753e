// The verb `export`.
#include <CLI/CLI.hpp>

#include "command.h"
#include "table_request.h"

namespace gzdtool {

namespace {

class ExportCommand final : public Command {
 public:
  ExportCommand() : Command("export", "Write tables of recordings to files") {}

  void declare(CLI::App& app) override {
    app.add_option("--table", table_, "The table to write")->type_name("TABLE")->required();
    declare_table_options(app, options_, gzdtables::Table::samples);
  }
  int run() override { return write_table(options_, gzdtables::table_named(table_)); }

 private:
  std::string table_;
  TableOptions options_;
};

}  // namespace

void append_export_command(std::vector<std::unique_ptr<Command>>& commands) {
  commands.push_back(std::make_unique<ExportCommand>());
}

}  // namespace gzdtool
