// Pages: the data goes in as gzip in base64, so that no text of a recording is ever markup.
#include "report_page.h"

#include <array>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "overview.h"
#include "sinks/gzip_sink.h"
#include "tables/examination.h"
#include "view/whole_table.h"

namespace gzdtool {

namespace {

using gzdtables::Table;

constexpr std::size_t trace_points = 4000;
constexpr std::string_view place_of_data = "@RECORDING@";
// Beside the program: where it is installed, and where it is built.
constexpr std::array<const char*, 2> page_places{"../share/gzdapi/report.html",
                                                 "../../web/dist/report.html"};

std::string base64(std::string_view bytes) {
  constexpr const char* letters =
      "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  std::string text;
  text.reserve((bytes.size() + 2) / 3 * 4);
  for (std::size_t i = 0; i < bytes.size(); i += 3) {
    const std::size_t left = std::min<std::size_t>(3, bytes.size() - i);
    unsigned group = 0;
    for (std::size_t k = 0; k < 3; ++k)
      group = group << 8U | (k < left ? static_cast<unsigned char>(bytes[i + k]) : 0U);
    for (std::size_t k = 0; k < 4; ++k)
      text += k <= left ? letters[group >> (18U - 6U * static_cast<unsigned>(k)) & 63U] : '=';
  }
  return text;
}

std::string escaped(std::string_view text) {
  std::string html;
  for (const char letter : text) {
    const bool is_plain = std::string_view("&<>\"'").find(letter) == std::string_view::npos;
    if (is_plain)
      html += letter;
    else
      html += "&#" + std::to_string(static_cast<int>(letter)) + ";";
  }
  return html;
}

std::string found_template() {
  std::error_code failed;
  const auto program = std::filesystem::read_symlink("/proc/self/exe", failed);
  for (const char* place : page_places) {
    const auto path = program.parent_path() / place;
    if (std::filesystem::exists(path, failed)) return path;
  }
  throw gzdtables::UsageError(
      "no page to put the recording into: scripts/build-web makes it, --page FILE names it");
}

constexpr const char* index_head = R"(<!doctype html>
<html lang="en">
<head>
<meta charset="utf-8">
<meta http-equiv="Content-Security-Policy" content="default-src 'none'; style-src 'unsafe-inline'">
<meta name="viewport" content="width=device-width, initial-scale=1">
<title>Recordings</title>
<style>
:root { color-scheme: light dark; }
body { font: 1rem/1.45 system-ui, sans-serif; max-width: 76rem; margin: 1rem auto; padding: 0 1rem; }
th, td { text-align: left; vertical-align: top; padding: 0.2rem 1rem 0.2rem 0; }
td { overflow-wrap: anywhere; }
</style>
</head>
<body>
<main>
<h1>Recordings</h1>
<table>
<thead><tr><th scope="col">Recording</th><th scope="col">Verdict</th><th scope="col">Told</th></tr></thead>
<tbody>
)";

std::string row_of(const ReportEntry& entry) {
  std::string name = escaped(entry.name);
  if (!entry.file.empty()) name = "<a href=\"./" + escaped(entry.file) + "\">" + name + "</a>";
  return "<tr><th scope=\"row\">" + name + "</th><td>" + entry.verdict + "</td><td>" +
         escaped(entry.told) + "</td></tr>\n";
}

}  // namespace

std::string report_template(const std::string& name) {
  const std::string path = name.empty() ? found_template() : name;
  std::ostringstream page;
  page << std::ifstream(path, std::ios::binary).rdbuf();
  if (page.str().find(place_of_data) == std::string::npos)
    throw gzdtables::UsageError(path + " is no page for reports");
  return page.str();
}

Json report_data(gzdtables::Recording& recording) {
  const Trace trace(recording);
  Json tables = Json::object();
  for (const Table table : gzdtables::all_tables())
    if (table != Table::samples && table != Table::events)
      tables[std::string(name_of(table))] = tsv_of(recording, {.table = table});
  Json facts = facts_for_page(gzdtables::facts_of(recording));
  facts["file"] = recording.path().substr(recording.path().find_last_of('/') + 1);
  return {{"facts", std::move(facts)},
          {"check", json_of(gzdtables::examine(recording))},
          {"summary", summary_of(trace)},
          {"trace", json_of(trace.window(trace.first(), trace.last(), trace_points))},
          {"tables", std::move(tables)}};
}

std::string report_page(const std::string& page, const Json& data) {
  const std::string text = data.dump(-1, ' ', false, Json::error_handler_t::replace);
  const std::size_t place = page.find(place_of_data);
  return page.substr(0, place) + base64(gzipped(text)) + page.substr(place + place_of_data.size());
}

std::string index_page(const std::vector<ReportEntry>& entries) {
  std::string page = index_head;
  for (const ReportEntry& entry : entries) page += row_of(entry);
  return page + "</tbody>\n</table>\n</main>\n</body>\n</html>\n";
}

}  // namespace gzdtool
