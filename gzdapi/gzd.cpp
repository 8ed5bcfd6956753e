// The C boundary: exceptions end here, and nothing else happens here.
#include "gzd.h"

#include <cerrno>
#include <exception>

#include "GZDFile.h"
#include "base/config.h"
#include "base/log.h"
#include "base/version.h"
#include "guard.h"
#include "stream/temporary_file.h"

using namespace gzd;

namespace {

// Whether the open that failed last did so for the sake of a temporary file.
bool open_lacked_temporary_file = false;

GZDFILE* open(const char* fname, int flags, int loadevents, int loadsamples, const CONFIG* config,
              int* rv) noexcept {
  *rv = 0;
  SystemError reason;
  try {
    return new GZDFile(fname, flags, loadevents, loadsamples, config);
  } catch (const GZDException& error) {
    reason = error.getSystemError();
    log_clipped("%s\n", error.getMessage());
  } catch (const std::exception& error) {
    reason = system_error_of(error);
    log_clipped("%s\n", description_of(error));
  }
  *rv = -1;
  open_lacked_temporary_file = reason.place == SystemError::Place::TemporaryDirectory;
  errno = reason.reason;
  return nullptr;
}

int kind_of(const ALLF_DATA* record) {
  const int kind = kind_of_handed_out_record(record);
  return kind != 0 ? kind : record->fe.type;
}

// The record of the element at the current position when `isWanted` says so of its type.
template <class Test>
ALLF_DATA* current_record(GZDFILE* ef, Test isWanted) {
  if (!isWanted(of(ef).currentType())) return nullptr;
  return guarded<ALLF_DATA*>(ef, nullptr, [](GZDFile& file) {
    ALLF_DATA* const record = file.getFloatData();
    if (record != nullptr) file.adjustTimes(record);
    return record;
  });
}

// The record of the element just announced. Not inlined: that keeps the path of samples small.
[[gnu::noinline]] ALLF_DATA* any_record(GZDFILE* ef) {
  return guarded<ALLF_DATA*>(ef, nullptr, [](GZDFile& file) {
    ALLF_DATA* const record = file.getFloatDataMergeWithLog();
    if (record != nullptr) file.adjustTimes(record);
    return record;
  });
}

// Steps to the next element. Not inlined for the same reason.
[[gnu::noinline]] int any_next(GZDFILE* ef) {
  return guarded(ef, GZD_END_OF_DATA,
                 [=](GZDFile& file) { return file.getNextDataMergeWithLog(); });
}

double rate_of(GZDFILE* ef) {
  const Recording* const block = of(ef).lastRecording();
  return block != nullptr ? static_cast<double>(block->getSampleRate()) : 0.0;
}

}  // namespace

// ---- opening, closing, logging ------------------------------------------------------------------

GZDFILE* gzd_open_file(const char* fname, int consistency, int loadevents, int loadsamples,
                       int* rv) {
  return open(fname, consistency, loadevents, loadsamples, &unset_config, rv);
}

GZDFILE* gzd_open_file_ex(const char* fname, int consistency, int loadevents, int loadsamples,
                          CONFIG* config, int* rv) {
  return open(fname, consistency, loadevents, loadsamples, config, rv);
}

int gzd_close_file(GZDFILE* ef) {
  delete static_cast<GZDFile*>(ef);
  return 0;
}

int gzd_set_extra_message_file(const char* fname) {
  const auto set = [fname] {
    set_message_log_path(fname);
    return 0;
  };
  SystemError reason;
  return guarded(-1, set, reason);
}

void gzd_set_log_function(void* lfcn) {
  set_log_function(reinterpret_cast<LogFunction>(lfcn));
}

void gzd_set_notice_function(void (*function)(const char* notice)) {
  set_notice_function(function);
}

const char* gzd_get_version() {
  return GZD_VERSION_TEXT;
}

// ---- walking ------------------------------------------------------------------------------------

int gzd_get_next_data(GZDFILE* ef) {
  return of(ef).stepToSample() ? GZD_SAMPLE : any_next(ef);
}

unsigned int gzd_skip_samples(GZDFILE* ef, unsigned int* filled) {
  if (filled != nullptr) *filled = 0;
  return guarded(ef, 0U, [=](GZDFile& file) { return file.skipSamples(filled); });
}

ALLF_DATA* gzd_get_float_data(GZDFILE* ef) {
  ALLF_DATA* const sample = of(ef).sampleInRun();
  return sample != nullptr ? sample : any_record(ef);
}

unsigned int gzd_get_gaze(GZDFILE* ef, unsigned int most, const GZD_GAZE_COLUMNS* columns) {
  return of(ef).fetchGaze(most, *columns);
}

ALLF_DATA* gzd_get_sample_close_to_time(GZDFILE* ef, unsigned int time) {
  return guarded<ALLF_DATA*>(ef, nullptr,
                             [=](GZDFile& file) { return file.getSampleCloseToTime(time * 2); });
}

unsigned int gzd_get_element_count(GZDFILE* ef) {
  return of(ef).elementCount();
}

unsigned int gzd_get_element_index(GZDFILE* ef) {
  return of(ef).elementIndex();
}

int gzd_get_element_origin(GZDFILE* ef) {
  return of(ef).elementOrigin();
}

void gzd_rewind(GZDFILE* ef) {
  of(ef).rewind();
}

FEVENT* gzd_get_event(ALLF_DATA* allfdata) {
  if (allfdata == nullptr) return nullptr;
  const int kind = kind_of(allfdata);
  return kind != GZD_SAMPLE && kind != GZD_RECORDING ? &allfdata->fe : nullptr;
}

FSAMPLE* gzd_get_sample(ALLF_DATA* allfdata) {
  return allfdata != nullptr && kind_of(allfdata) == GZD_SAMPLE ? &allfdata->fs : nullptr;
}

RECORDINGS* gzd_get_recording(ALLF_DATA* allfdata) {
  return allfdata != nullptr && kind_of(allfdata) == GZD_RECORDING ? &allfdata->rec : nullptr;
}

FEVENT* gzd_get_event_data(GZDFILE* ef) {
  ALLF_DATA* const record = current_record(ef, is_known_event_type);
  return record != nullptr ? &record->fe : nullptr;
}

FSAMPLE* gzd_get_sample_data(GZDFILE* ef) {
  ALLF_DATA* const record = current_record(ef, [](int type) { return type == GZD_SAMPLE; });
  return record != nullptr ? &record->fs : nullptr;
}

RECORDINGS* gzd_get_recording_data(GZDFILE* ef) {
  ALLF_DATA* const record = current_record(ef, [](int type) { return type == GZD_RECORDING; });
  return record != nullptr ? &record->rec : nullptr;
}

int gzd_get_system_error(GZDFILE* ef) {
  return of(ef).systemError().reason;
}

const char* gzd_get_failed_place(GZDFILE* ef) {
  if (ef != nullptr) return of(ef).failedPlace();
  return open_lacked_temporary_file ? temporary_directory() : nullptr;
}

void gzd_set_velocity_kinds(GZDFILE* ef, unsigned int kinds) {
  of(ef).setVelocityKinds(kinds);
}

// ---- file facts ---------------------------------------------------------------------------------

int gzd_get_preamble_text(GZDFILE* ef, char* buffer, int length) {
  if (length < 1) return 0;
  const std::string& text = of(ef).getPreamText();
  const std::size_t copied = text.copy(buffer, static_cast<std::size_t>(length - 1));
  buffer[copied] = '\0';
  return 0;
}

int gzd_get_preamble_text_length(GZDFILE* ef) {
  const std::size_t length = of(ef).getPreamText().size();
  return length == 0 ? 0 : static_cast<int>(length) + 1;
}

float gzd_get_sample_per_second(GZDFILE* ef) {
  return static_cast<float>(rate_of(ef));
}

int gzd_get_sample_interval(GZDFILE* ef) {
  const double rate = rate_of(ef);
  return rate > 0.0 ? static_cast<int>(1000.0 / rate) : 0;
}

float gzd_get_sample_interval_ex(GZDFILE* ef) {
  const float rate = static_cast<float>(rate_of(ef));
  return rate > 0.0f ? 1000.0f / rate : 0.0f;
}

int gzd_get_revision(GZDFILE* ef) {
  return of(ef).getRevision();
}

int gzd_get_ovilo_revision(GZDFILE* ef) {
  return of(ef).getOviloRevision();
}

int get_filter_level_for_sample(GZDFILE* ef) {
  return of(ef).filterLevel();
}

int gzd_get_input_data_availibity(GZDFILE* ef) {
  return of(ef).inputType();
}

// ---- findings -----------------------------------------------------------------------------------

unsigned int gzd_get_finding_count(GZDFILE* ef) {
  return static_cast<unsigned int>(of(ef).findings().size());
}

int gzd_get_finding(GZDFILE* ef, unsigned int n, GZD_FINDING* finding) {
  const Findings& findings = of(ef).findings();
  if (finding == nullptr || n >= findings.size()) return -1;
  *finding = findings.at(n);
  return 0;
}

// ---- trials -------------------------------------------------------------------------------------

int gzd_set_trial_identifier(GZDFILE* ef, char* start, char* end) {
  return guarded(ef, 0, [=](GZDFile& file) {
    file.getTrials().setTrialIdentifier(start, end);
    return 0;
  });
}

char* gzd_get_start_trial_identifier(GZDFILE* ef) {
  return of(ef).getTrials().getTrialIdentifier();
}

char* gzd_get_end_trial_identifier(GZDFILE* ef) {
  return of(ef).getTrials().getEndTrialIdentifier();
}

int gzd_get_trial_count(GZDFILE* ef) {
  return guarded(ef, 0, [=](GZDFile& file) { return file.getTrials().count(); });
}

int gzd_jump_to_trial(GZDFILE* ef, int trial) {
  return guarded(ef, -1, [=](GZDFile& file) { return file.getTrials().jumpToTrial(trial); });
}

int gzd_goto_next_trial(GZDFILE* ef) {
  return guarded(ef, -1, [=](GZDFile& file) { return file.getTrials().gotoNextTrial(); });
}

int gzd_goto_previous_trial(GZDFILE* ef) {
  return guarded(ef, -1, [=](GZDFile& file) { return file.getTrials().gotoPreviousTrial(); });
}

int gzd_goto_trial_with_start_time(GZDFILE* ef, unsigned int start_time) {
  return guarded(
      ef, -1, [=](GZDFile& file) { return file.getTrials().gotoTrialWithStartTime(start_time); });
}

int gzd_goto_trial_with_end_time(GZDFILE* ef, unsigned int end_time) {
  return guarded(ef, -1,
                 [=](GZDFile& file) { return file.getTrials().gotoTrialWithEndTime(end_time); });
}

int gzd_get_trial_header(GZDFILE* ef, TRIAL* trial) {
  return guarded(ef, -1, [=](GZDFile& file) { return file.getTrials().getTrialHeaders(trial); });
}

// ---- bookmarks ----------------------------------------------------------------------------------

int gzd_set_bookmark(GZDFILE* ef, BOOKMARK* bm) {
  return guarded(ef, -1, [=](GZDFile& file) { return file.getBookmarks().setBookMark(bm); });
}

int gzd_free_bookmark(GZDFILE* ef, BOOKMARK* bm) {
  return guarded(ef, -1, [=](GZDFile& file) { return file.getBookmarks().removeBookMark(bm); });
}

int gzd_goto_bookmark(GZDFILE* ef, BOOKMARK* bm) {
  return of(ef).getBookmarks().gotoBookMark(bm);
}

int gzd_goto_next_bookmark(GZDFILE* ef) {
  return of(ef).getBookmarks().gotoNextBookMark();
}

int gzd_goto_previous_bookmark(GZDFILE* ef) {
  return of(ef).getBookmarks().gotoPreviousBookMark();
}
