// The experiment's message log: a text file of messages with a clock of its own.
#ifndef GZDAPI_LOGMSG_H
#define GZDAPI_LOGMSG_H

#include <cstdio>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "base/GZDException.h"
#include "base/file_handle.h"
#include "gzd_data.h"
#include "record/EData.h"

namespace gzd {

// The word that makes a line, of the log or a message of the recording, a sync of the two clocks.
constexpr std::string_view sync_mark = "TRACKER_TIME";

// Log times stop here: records hold no later one.
constexpr UINT64 largest_log_time = 0xFFFFFFFF;

// One line of the log.
struct LogMsg {
  UINT64 time;    // ms of the tracker's clock
  INT64 filePos;  // of its text, just after the number in front
};

// One sync line.
struct TrackerT {
  int startIdx;      // number of messages before it
  int order;         // its running number
  double timeStamp;  // tracker time, ms
  double timeDiff;   // time of the log's own clock, ms
};

// True when `a` lies at least 2 ms before `b`.
inline bool tq_log_msg_comparator(LogMsg a, LogMsg b) {
  return a.time + 2 <= b.time;
}

class MessageLog {
 public:
  // Names the log and reports the name; an empty name is ignored.
  void setEyeLogFileName(const char* name);
  // Reads the whole log. Returns the number of messages, or -1 when there is no such regular file,
  // or it cannot be read to its end: it then counts as none.
  int openEyeLogFile();
  // Why, for the system, the log could not be read to its end.
  [[nodiscard]] SystemError getReadError() const { return readError_; }
  [[nodiscard]] const std::string& name() const { return eyeLogFileName_; }

  [[nodiscard]] int getNumOfLogMsg() const { return numOfLogMsg_; }
  // True when the log is complete and synchronised: its messages are to be merged.
  [[nodiscard]] bool isLoaded() const { return loadEYELOG_; }
  // True when it could be read to its end, and is not to be merged all the same.
  [[nodiscard]] bool isLeftOut() const { return wasRead_ && !loadEYELOG_; }
  [[nodiscard]] const std::vector<LogMsg>& messages() const { return vl_; }

  // Reads message `number` (from 0) into the record. Returns its line: the time, then the text.
  // The record and the line hold until the next call. Throws GZDException when the file fails.
  const char* getEyeLogMsg(int number);
  // The record of the message read last: type 24, `sttime` its time, at most 260 characters.
  [[nodiscard]] const ALLF_DATA& record() const { return fDataLog_; }
  // Its whole text, without the newline.
  [[nodiscard]] std::string_view text() const { return messageText_; }

 private:
  // The reading of the log.
  enum class Ending { Complete, Incomplete, Unreadable };
  Ending readLines();
  void readSyncLine(std::string_view line, INT64 linePos);
  void readMessageLine(std::string_view line, INT64 linePos);
  void addMessage(double time, INT64 textPos);
  void finish();
  // Reading one message again.
  void readText(INT64 textPos);
  void fillRecord(UINT64 time);

  std::string eyeLogFileName_;
  FileHandle xinfile_;
  std::vector<TrackerT> vt_;
  std::vector<LogMsg> vl_;
  bool wasRead_ = false;
  bool loadEYELOG_ = false;
  int numOfLogMsg_ = 0;

  SystemError readError_;
  int recordHolds_ = -1;  // the message in the record
  std::string linestring_;
  std::string_view messageText_;  // in linestring_
  ALLF_DATA fDataLog_{};
  MessageText lstring_buffer_for_log_;
};

}  // namespace gzd

#endif
