// What the page asks of an open recording. One recording at a time; texts stay valid until the next
// call. A call that fails returns null or -1, and page_error() tells why.
#include <emscripten/emscripten.h>

#include <cstdlib>
#include <cstring>
#include <memory>
#include <new>
#include <string>

#include "gzd.h"
#include "overview.h"
#include "tables/examination.h"
#include "view/whole_table.h"

namespace {

using gzdtool::curve_count;
using gzdtool::Json;

struct Page {
  std::unique_ptr<gzdtables::Recording> recording;
  std::unique_ptr<gzdtool::Trace> trace;
  gzdtool::TraceWindow window;
  std::string text, error, log;
};

Page& page() {
  static Page the_page;
  return the_page;
}

void keep_log(const char* text) {
  page().log += text;
}

void take_error(const std::exception& error, int reason) {
  page().error = error.what();
  if (reason != 0) page().error.append(": ").append(std::strerror(reason));
  if (!page().log.empty()) page().error.append("\n").append(page().log);
}

// Whether `action` went through.
template <class Action>
bool tried(Action action) {
  page().error.clear();
  page().log.clear();
  try {
    action();
    return true;
  } catch (const std::bad_alloc&) {
    page().error = "not enough memory";
  } catch (const gzdtables::ReadError& error) {
    take_error(error, error.reason());
  } catch (const std::exception& error) {
    take_error(error, 0);
  }
  return false;
}

// The text that `make` returns, or null.
template <class Make>
const char* text_of(Make make) {
  return tried([&] { page().text = make(); }) ? page().text.c_str() : nullptr;
}

std::string dumped(const Json& json) {
  return json.dump(-1, ' ', false, Json::error_handler_t::replace);
}

std::optional<std::string> unless_empty(const char* text) {
  return *text == '\0' ? std::nullopt : std::optional<std::string>(text);
}

}  // namespace

extern "C" {

// The C library declares it and lacks it; nobody runs this module in the name of another.
char* secure_getenv(const char* name) {
  return std::getenv(name);
}

// Opens a recording, of a damaged one all that comes before the damage. An empty text is none.
EMSCRIPTEN_KEEPALIVE int page_open(const char* path, const char* trial_start,
                                   const char* trial_end) {
  gzd_set_log_function(reinterpret_cast<void*>(&keep_log));
  gzd_set_notice_function(&keep_log);
  const bool is_open = tried([&] {
    gzdtables::Options options;
    options.failsafe = true;
    options.trials = {.start = unless_empty(trial_start), .end = unless_empty(trial_end)};
    gzdtables::check_options(options);
    page().trace.reset();
    page().recording = std::make_unique<gzdtables::Recording>(path, options);
  });
  return is_open ? 0 : -1;
}

EMSCRIPTEN_KEEPALIVE const char* page_error() {
  return page().error.c_str();
}

EMSCRIPTEN_KEEPALIVE const char* page_facts() {
  return text_of(
      [] { return dumped(gzdtool::facts_for_page(gzdtables::facts_of(*page().recording))); });
}

EMSCRIPTEN_KEEPALIVE const char* page_check() {
  return text_of([] { return dumped(gzdtool::json_of(gzdtables::examine(*page().recording))); });
}

// Reads all samples, which page_window() needs.
EMSCRIPTEN_KEEPALIVE const char* page_trace() {
  return text_of([] {
    page().trace = std::make_unique<gzdtool::Trace>(*page().recording);
    return dumped(gzdtool::summary_of(*page().trace));
  });
}

// A table as TSV.
EMSCRIPTEN_KEEPALIVE const char* page_table(const char* name) {
  return text_of(
      [&] { return gzdtool::tsv_of(*page().recording, {.table = gzdtables::table_named(name)}); });
}

// Prepares the points of a stretch of time (ms), and returns how many there are.
EMSCRIPTEN_KEEPALIVE int page_window(double from, double to, int columns) {
  page().window = page().trace->window(from, to, static_cast<std::size_t>(columns));
  return static_cast<int>(page().window.times.size());
}

// The times of those points (ms).
EMSCRIPTEN_KEEPALIVE const double* page_window_times() {
  return page().window.times.data();
}

// A low and a high value for each point of a curve.
EMSCRIPTEN_KEEPALIVE const float* page_window_values(int curve) {
  return &page().window.extents[static_cast<std::size_t>(curve) % curve_count].data()->low;
}
}
