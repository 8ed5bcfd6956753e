// Opening a recording with the options of its tables.
#include "recording.h"

#include <cerrno>

#include "outline.h"
#include "schema.h"
#include "trial_rule.h"

namespace gzdtables {

namespace {

GZDFILE* open_file(const std::string& path, const Options& options) {
  const int without_repair = options.checks ? GZD_CONSISTENCY_CHECK : GZD_CONSISTENCY_NONE;
  const int consistency = (options.repair ? GZD_CONSISTENCY_REPAIR : without_repair) |
                          (options.failsafe ? GZD_OPEN_FAILSAFE : 0) |
                          (options.message_offsets ? GZD_OPEN_MESSAGE_OFFSETS : 0) |
                          GZD_OPEN_NO_TIME_SHIFT;
  const int events = GZD_LOAD_EVENTS | (options.message_log ? GZD_LOAD_MESSAGE_LOG : 0);
  CONFIG no_default_resolution{MISSING_DATA, MISSING_DATA, 0, nullptr};
  int result = 0;
  errno = 0;
  GZDFILE* const file =
      gzd_open_file_ex(path.c_str(), consistency, events, 1, &no_default_resolution, &result);
  if (file == nullptr) throw ReadError("cannot be opened", errno);
  return file;
}

}  // namespace

void check_options(const Options& options) {
  check_trial_rule(options.trials);
}

Recording::Recording(const std::string& path, const Options& options)
    : path_(path), options_(options) {
  check_options(options);
  handle_.reset(open_file(path, options));
}

Recording::~Recording() = default;

std::uint32_t Recording::element_count() const {
  return gzd_get_element_count(handle_.get());
}

int Recording::generation() const {
  return gzd_get_ovilo_revision(handle_.get());
}

std::uint32_t Recording::sample_count() {
  if (!sample_count_) {
    ElementWalk walk(*this, 0);
    while (walk.next()) continue;
    sample_count_ = walk.samples_passed();
  }
  return *sample_count_;
}

Outline& Recording::outline() {
  if (!outline_) keep_outline(make_outline(*this));
  return *outline_;
}

void Recording::keep_outline(Outline outline) {
  outline_ = std::make_unique<Outline>(std::move(outline));
}

std::uint64_t Recording::begin_walk() {
  gzd_rewind(handle_.get());
  gzd_set_velocity_kinds(handle_.get(), GZD_VELOCITY_NONE);
  return ++walk_;
}

}  // namespace gzdtables
