// An open recording: the rooms of the library put together. gzd_open_file hands it to the caller,
// who owns it until gzd_close_file; it owns the stream, and by it the file of the system, the
// message log, the index, and every record that it hands out.
#ifndef GZDAPI_GZDFILE_H
#define GZDAPI_GZDFILE_H

#include <memory>

#include "gzd.h"
#include "index/index.h"
#include "read/reader.h"
#include "read/time_shift.h"
#include "record/stream_state.h"
#include "scan/prescan.h"
#include "stream/container.h"
#include "walk/log_merge.h"
#include "walk/logmsg.h"
#include "walk/positions.h"
#include "walk/trials.h"
#include "walk/walk.h"

namespace gzd {

class GZDFile : public _GZDFILE {
 public:
  // Opens and indexes the recording at `path`; the arguments are those of gzd_open_file_ex. Throws
  // GZDException.
  GZDFile(const char* path, int flags, int loadEvents, int loadSamples, const CONFIG* config);
  GZDFile(const GZDFile&) = delete;
  GZDFile& operator=(const GZDFile&) = delete;
  ~GZDFile();

  // ---- the walk ---------------------------------------------------------------------------------
  int getNextDataMergeWithLog() {
    return reader_.hasFailed() ? GZD_END_OF_DATA : merge_.getNextDataMergeWithLog();
  }
  // The same for nearly every element, quickly: whether the next one is a sample, which is then
  // announced. False, with nothing done, for anything else.
  bool stepToSample() noexcept { return !reader_.hasFailed() && merge_.stepToSample(); }
  // Steps over the samples that come next. Returns how many, and how many of them were filled in
  // when `filled` is not null.
  UINT32 skipSamples(UINT32* filled);
  // Steps over the samples that come next, as far as they are in the reader's run, and fetches
  // their gaze. Returns how many, at most `most`.
  UINT32 fetchGaze(UINT32 most, const GZD_GAZE_COLUMNS& to) noexcept;
  // The record of the element just announced, its times not shifted; null when there is none.
  ALLF_DATA* getFloatData() {
    return walk_.currentData == 0 ? nullptr : reader_.getFloatData(walk_.currentData - 1);
  }
  // That of nearly every sample of a file whose times are not shifted, quickly; null, with
  // nothing done, for anything else.
  ALLF_DATA* sampleInRun() noexcept {
    const bool mayBe = !merge_.isFromLog() && timeShift_.isOff();
    return mayBe ? reader_.sampleInRun(walk_.currentData - 1) : nullptr;
  }
  // The record of the element, or of the log's message while one is announced.
  ALLF_DATA* getFloatDataMergeWithLog() {
    return merge_.isFromLog() ? copyOfLogRecord() : getFloatData();
  }
  // The sample at a stamp, its times shifted; null when there is none.
  ALLF_DATA* getSampleCloseToTime(UINT32 stamp);
  // Shifts the times of the record of the element just announced.
  void adjustTimes(ALLF_DATA* d) {
    if (!timeShift_.isOff()) shift(*d, typeOfAnnounced(d));
  }
  void setVelocityKinds(unsigned kinds) { reader_.setVelocityKinds(kinds); }

  [[nodiscard]] UINT32 elementCount() const;
  [[nodiscard]] UINT32 elementIndex() const { return walk_.currentData; }
  // Where the element just announced comes from: GZD_ORIGIN_.
  [[nodiscard]] int elementOrigin() const;
  // Back to before the first element.
  void rewind();
  // The type of the recording's element at the current position; 0 when there is none.
  [[nodiscard]] int currentType() const;
  // The kind of a record that this file has handed out; 0 when it is not one.
  [[nodiscard]] int kindOfRecord(const ALLF_DATA* record) const;

  // ---- facts ------------------------------------------------------------------------------------
  [[nodiscard]] const std::string& getPreamText() const { return preamble_.preText; }
  [[nodiscard]] int getRevision() const { return preamble_.revision; }
  [[nodiscard]] int getOviloRevision() const { return preamble_.ovilo_revision; }
  [[nodiscard]] int filterLevel() const { return state_.ffilter; }
  [[nodiscard]] int inputType() const { return index_.inputType; }
  [[nodiscard]] const Findings& findings() const { return index_.findings; }
  // The block that the walk is in, or null.
  [[nodiscard]] const Recording* lastRecording() const { return walk_.lastRecording; }

  // The time on the file's own clock of a sample's time that was handed out.
  [[nodiscard]] UINT32 recordedTime(UINT32 time) const {
    return timeShift_.recordedTime(time, index_.minTime);
  }

  // ---- failures ---------------------------------------------------------------------------------
  // Why, for the system, something asked of the file could not be done: the first reason.
  [[nodiscard]] SystemError systemError() const;
  void noteSystemError(SystemError error) {
    if (firstError_.reason == 0) firstError_ = error;
  }
  // What that was to be done with, when it is not the recording itself; else null.
  [[nodiscard]] const char* failedPlace() const;

  // ---- trials and bookmarks ---------------------------------------------------------------------
  Trials& getTrials() { return trials_; }
  Bookmarks& getBookmarks() { return bookmarks_; }

 private:
  void openMessageLog(const char* path);
  void scan(const char* path, int flags, int loadEvents, int loadSamples);
  ALLF_DATA* copyOfLogRecord();
  [[nodiscard]] int typeOfAnnounced(const ALLF_DATA* d) const;
  void shift(ALLF_DATA& record, int type);

  Preamble preamble_;
  StreamState state_;
  Index index_;
  Walk walk_;
  MessageLog messageLog_;
  std::unique_ptr<InputStream> file_;
  Reader reader_;
  LogMerge merge_;
  Trials trials_;
  Bookmarks bookmarks_;
  TimeShift timeShift_;
  SystemError firstError_;
  ALLF_DATA logRecord_{};  // of the log's message, while its times are shifted
};

// The kind of a record that any open file has handed out; 0 when it is not one.
int kind_of_handed_out_record(const ALLF_DATA* record);

// The path of the message log for files opened from now on; null for the one beside the file, an
// empty path for none.
void set_message_log_path(const char* path);

}  // namespace gzd

#endif
