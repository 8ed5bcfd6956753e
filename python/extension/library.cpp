// A lock, and where the library's log goes.
#include "extension/library.h"

#include <nanobind/nanobind.h>

#include <mutex>

#include "tables/findings.h"

namespace gzdpython {

namespace {

std::mutex& library_lock() {
  static std::mutex lock;
  return lock;
}

// Of the turn at hand.
std::string* receiver = nullptr;

void take_message(const char* message) {
  constexpr std::size_t most = 1 << 16;
  if (receiver != nullptr && receiver->size() < most) *receiver += message;
}

std::optional<std::int64_t> damage_in(gzdtables::Recording& recording) {
  for (const gzdtables::Finding& finding : gzdtables::findings_of(recording))
    if (finding.kind == GZD_FINDING_CUT || finding.kind == GZD_FINDING_DAMAGE) return finding.place;
  return std::nullopt;
}

// Where a recording that cannot be opened whole is damaged; nothing when it is no recording.
std::optional<std::int64_t> find_damage(const std::string& path) {
  std::string said;
  const Turn turn(said);
  try {
    gzdtables::Recording recording(path, {.failsafe = true});
    return damage_in(recording);
  } catch (const gzdtables::ReadError&) {
    return std::nullopt;
  }
}

void close_in_turn(gzdtables::Recording* recording) {
  std::string said;
  const Turn turn(said);
  delete recording;
}

}  // namespace

Failure::Failure(std::string file, const gzdtables::ReadError& error, std::string words)
    : std::runtime_error(error.what()),
      path(std::move(file)),
      said(std::move(words)),
      reason(error.reason()) {}

Turn::Turn(std::string& said) : interpreter_(nullptr) {
  if (PyGILState_Check() != 0) interpreter_ = PyEval_SaveThread();
  library_lock().lock();
  receiver = &said;
  gzd_set_log_function(reinterpret_cast<void*>(&take_message));
  gzd_set_notice_function(&take_message);
}

Turn::~Turn() {
  receiver = nullptr;
  library_lock().unlock();
  if (interpreter_ != nullptr) PyEval_RestoreThread(static_cast<PyThreadState*>(interpreter_));
}

void tell(const std::string& path, const std::string& said, Level level) noexcept {
  namespace nb = nanobind;
  if (said.empty() || Py_IsInitialized() == 0) return;
  const nb::gil_scoped_acquire interpreter;
  try {
    nb::module_::import_("gzdapi._log")
        .attr("tell")(nb::bytes(path.data(), path.size()), nb::bytes(said.data(), said.size()),
                      level == Level::warning);
  } catch (nb::python_error& error) {
    error.discard_as_unraisable("gzdapi");
  }
}

OpenRecording open_recording(const std::string& path, const gzdtables::Options& options,
                             Level level) {
  const auto open = [&] { return std::make_unique<gzdtables::Recording>(path, options); };
  try {
    return {in_turn(path, open, level).release(), &close_in_turn};
  } catch (Failure& failure) {
    if (failure.reason == 0 && !options.failsafe) failure.position = find_damage(path);
    throw;
  }
}

}  // namespace gzdpython
