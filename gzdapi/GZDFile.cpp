// Opening, in this order: the configuration, the message log, the container with its preamble, the
// scan of the records, the checks of the index.
#include "GZDFile.h"

#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "base/config.h"
#include "repair/consistency.h"
#include "repair/soundness.h"
#include "stream/temporary_file.h"

namespace gzd {

namespace {

constexpr int level_mask = 3;
constexpr const char* message_log_name = "tq_messages.log";

// The path given for the message logs of all files.
std::optional<std::string> plogMsgFile;

// Every file that is open, to know their records again.
std::vector<const GZDFile*> open_files;

std::string directory_of(std::string_view path) {
  const std::size_t slash = path.rfind('/');
  return std::string(slash == path.npos ? std::string_view() : path.substr(0, slash + 1));
}

bool is_same_file(const char* one, const char* other) {
  struct stat first;
  struct stat second;
  return stat(one, &first) == 0 && stat(other, &second) == 0 && first.st_dev == second.st_dev &&
         first.st_ino == second.st_ino;
}

// The debug file asked for, or null: a trace never overwrites the recording that it traces.
const char* debug_file_for(const char* path) {
  const char* const name = default_config().debug_file_name;
  if (name == nullptr || !is_same_file(name, path)) return name;
  print_log("The debug file is the recording itself. Nothing is traced \n");
  return nullptr;
}

// The stream of the file's records; the state takes over what the preamble tells.
std::unique_ptr<InputStream> open_stream(const char* path, Preamble& preamble, StreamState& state) {
  auto stream = open_container(path, preamble);
  state.revision = preamble.revision;
  state.ovilo_revision = preamble.ovilo_revision;
  return stream;
}

}  // namespace

int kind_of_handed_out_record(const ALLF_DATA* record) {
  for (const GZDFile* file : open_files) {
    if (const int kind = file->kindOfRecord(record)) return kind;
  }
  return 0;
}

void set_message_log_path(const char* path) {
  if (path != nullptr)
    plogMsgFile = path;
  else
    plogMsgFile.reset();
}

// ---- opening ------------------------------------------------------------------------------------

// One expression makes the stream: each step may throw, and what fails first is told first; reader_
// needs the stream.
GZDFile::GZDFile(const char* path, int flags, int loadEvents, int loadSamples, const CONFIG* config)
    : file_((update_default_config(config),
             (loadEvents & GZD_LOAD_MESSAGE_LOG) != 0 ? openMessageLog(path) : void(),
             open_stream(path, preamble_, state_))),
      reader_(*file_, state_, index_),
      merge_(index_, walk_, messageLog_,
             [this](UINT32 item) { return reader_.messageText(item, !walk_.collectsTrials); }),
      trials_(index_, walk_, merge_, messageLog_,
              [this](UINT32 item) { return reader_.getFloatData(item, !walk_.collectsTrials); }),
      bookmarks_(index_, walk_, merge_),
      timeShift_((flags & GZD_OPEN_NO_TIME_SHIFT) != 0) {
  scan(path, flags, loadEvents, loadSamples);
  open_files.push_back(this);
}

GZDFile::~GZDFile() {
  std::erase(open_files, this);
}

void GZDFile::openMessageLog(const char* path) {
  const std::string name = plogMsgFile.value_or(directory_of(path) + message_log_name);
  if (name.empty()) return;
  messageLog_.setEyeLogFileName(name.c_str());
  messageLog_.openEyeLogFile();
}

void GZDFile::scan(const char* path, int flags, int loadEvents, int loadSamples) {
  noteSystemError(messageLog_.getReadError());
  if (messageLog_.isLeftOut()) index_.findings.add({.kind = GZD_FINDING_LOG_LEFT_OUT});
  const int level = flags & level_mask;
  const bool repair = level == GZD_CONSISTENCY_REPAIR;
  state_.enableMsgTimestampOffsetTranslation = (flags & GZD_OPEN_MESSAGE_OFFSETS) != 0;
  preScan(*file_, state_,
          {.failsafe = (flags & GZD_OPEN_FAILSAFE) != 0,
           .fixConsistency = repair,
           .loadEvents = loadEvents != 0,
           .loadSamples = loadSamples != 0,
           .debugFileName = debug_file_for(path)},
          index_);
  reader_.useState(state_);
  if (level != GZD_CONSISTENCY_NONE) {
    checkConsistency(index_, repair, [this](UINT32 item) { return reader_.messageText(item); });
  }
  if (reader_.hasFailed()) {
    throw GZDException("File could not be read again").because(systemError());
  }
  index_.findBoundaries();
  examine_blocks(index_, loadSamples != 0);
  find_unpaired_events(index_);
  reader_.indexIsFinal(repair);
}

// ---- failures -----------------------------------------------------------------------------------

SystemError GZDFile::systemError() const {
  if (firstError_.reason != 0) return firstError_;
  const SystemError error = file_->getReadError();
  if (error.reason != 0 || !reader_.hasFailed()) return error;
  return {ENODATA};  // the recording has become shorter
}

const char* GZDFile::failedPlace() const {
  switch (systemError().place) {
    case SystemError::Place::MessageLog:
      return messageLog_.name().c_str();
    case SystemError::Place::TemporaryDirectory:
      return temporary_directory();
    default:
      return nullptr;
  }
}

// ---- the walk -----------------------------------------------------------------------------------

ALLF_DATA* GZDFile::copyOfLogRecord() {
  logRecord_ = merge_.logRecord();
  return &logRecord_;
}

ALLF_DATA* GZDFile::getSampleCloseToTime(UINT32 stamp) {
  const int found = findIndex(index_, stamp, 0, static_cast<int>(index_.size()) - 1);
  if (found < 1) return nullptr;
  ALLF_DATA* const record = reader_.getFloatData(static_cast<UINT32>(found));
  if (record != nullptr) shift(*record, reader_.kindOfRecord(record));
  return record;
}

int GZDFile::typeOfAnnounced(const ALLF_DATA* d) const {
  return merge_.isFromLog() && d == &logRecord_ ? GZD_MESSAGE : currentType();
}

void GZDFile::shift(ALLF_DATA& record, int type) {
  timeShift_.adjustTimes(record, type, index_.minTime, index_.maxTime);
}

UINT32 GZDFile::elementCount() const {
  return index_.size() + static_cast<UINT32>(std::max(messageLog_.getNumOfLogMsg(), 0));
}

int GZDFile::elementOrigin() const {
  if (merge_.isFromLog()) return GZD_ORIGIN_LOG;
  if (walk_.currentData == 0 || walk_.currentData > index_.size()) return GZD_ORIGIN_NONE;
  const GZDItem item = index_.gzdItemList[walk_.currentData - 1];
  if (!item.isDummy()) return GZD_ORIGIN_RECORD;
  return item.isSample() ? GZD_ORIGIN_GAP : GZD_ORIGIN_REPAIR;
}

UINT32 GZDFile::skipSamples(UINT32* filled) {
  const UINT32 skipped = reader_.hasFailed() ? 0 : merge_.skipSamples();
  if (filled == nullptr) return skipped;
  *filled = 0;
  for (UINT32 place = walk_.currentData - skipped; place < walk_.currentData; ++place)
    *filled += index_.gzdItemList[place].isDummy() ? 1 : 0;
  return skipped;
}

UINT32 GZDFile::fetchGaze(UINT32 most, const GZD_GAZE_COLUMNS& to) noexcept {
  if (reader_.hasFailed() || merge_.hasLog() || !timeShift_.isOff()) return 0;
  const UINT32 fetched = reader_.gazeInRun(walk_.currentData, most, to);
  walk_.currentData += fetched;
  return fetched;
}

void GZDFile::rewind() {
  walk_ = Walk();
  merge_.startAnew();
  timeShift_.forgetFirst();
  reader_.startAnew();
}

int GZDFile::currentType() const {
  if (walk_.currentData == 0 || walk_.currentData > index_.size()) return 0;
  return index_.gzdItemList[walk_.currentData - 1].getItemType();
}

int GZDFile::kindOfRecord(const ALLF_DATA* record) const {
  return record == &logRecord_ ? GZD_MESSAGE : reader_.kindOfRecord(record);
}

}  // namespace gzd
