// The one frame table that is loaded, by the session of the recording.
#include "video/video_frames.h"

#include <cctype>
#include <cerrno>
#include <cstdio>
#include <memory>
#include <string>
#include <string_view>

#include "cli/console.h"
#include "cli/files.h"
#include "video/frame_table.h"

namespace gzdconv {

namespace {

std::unique_ptr<AVIGZDTimeLookupTime> lookuptable;
const AVIGZDTime* lastreturn = nullptr;  // into the loaded table

constexpr std::size_t extension_length = 4;  // ".gzd"

bool is_gzd_name(std::string_view name) {
  constexpr std::string_view ending = "gzd";
  if (name.size() <= extension_length) return false;
  const std::string_view tail = name.substr(name.size() - ending.size());
  for (std::size_t i = 0; i < ending.size(); ++i) {
    if (std::tolower(static_cast<unsigned char>(tail[i])) != ending[i]) return false;
  }
  return true;
}

void announce(const char* action, const std::string& table_name) {
  std::printf("%s ett file %s \n", action, shown_text(table_name).c_str());
  std::fflush(nullptr);
}

void set_session(AVIGZDTimeLookupTime& table, const std::string& base) {
  const std::size_t separator = base.find_last_of("/\\");
  const bool has_path = separator != std::string::npos;
  table.setSessionPath(has_path ? base.substr(0, separator).c_str() : "");
  table.setSessionName(has_path ? base.c_str() + separator + 1 : base.c_str());
}

// A table that is there, and that the system keeps from being read, is not taken for none.
void check_surroundings(int reason) {
  if (reason == ENOMEM || reason == EMFILE || reason == ENFILE || reason == EIO)
    throw SystemFailure{reason};
}

void report_missing(const std::string& table_name, int create, int reason) {
  if (create == 0) {
    std::printf("Cannot read file %s\n", shown_text(table_name).c_str());
  } else {
    std::puts("On non Windows, ett file can not be created if it doesn't exist.");
  }
  report_reason(table_name, reason);
}

// The recording's name that the loaded table was found by. The separator is a backslash on every
// platform.
std::string recording_name(const AVIGZDTimeLookupTime& table) {
  const std::string path = table.sessionPath().empty() ? "" : table.sessionPath() + "\\";
  return path + table.sessionName() + ".gzd";
}

}  // namespace

int openLookupTable(const char* gzdFile, int session, int create) {
  if (!is_gzd_name(gzdFile)) {
    std::printf("given gzd file is not valid %s \n", shown_text(gzdFile).c_str());
    return -1;
  }
  std::string base = gzdFile;
  base.resize(base.size() - extension_length);
  const std::string table_name = base + std::to_string(session) + ".ett";
  announce("Loading", table_name);
  const File file = open_regular(table_name);
  if (file == nullptr) {
    check_surroundings(errno);
    report_missing(table_name, create, errno);
    return -1;
  }
  closeLookupTable();
  auto table = std::make_unique<AVIGZDTimeLookupTime>(session);
  const bool is_read = table->read(file.get());
  if (std::ferror(file.get()) != 0) check_surroundings(EIO);
  if (!is_read) return -1;
  set_session(*table, base);
  lookuptable = std::move(table);
  announce("Done Loading", table_name);
  return 0;
}

void closeLookupTable() {
  lookuptable.reset();
  lastreturn = nullptr;
}

int findFrameNumberForGZDTime(int session, int time) {
  if (lookuptable == nullptr) return -1;
  if (session != lookuptable->sessionNumber() &&
      openLookupTable(recording_name(*lookuptable).c_str(), session, 0) != 0) {
    return -1;
  }
  return findFrameNumberForGZDTimeInCurrentLookupTable(time);
}

int findFrameNumberForGZDTimeInCurrentLookupTable(int time) {
  if (lookuptable == nullptr) return -1;
  const AVIGZDTime* const record = lookuptable->findFrameForGZDTime(time);
  return record != nullptr ? record->frameNumber() : -1;
}

int getNextFrameTime() {
  lastreturn = lookuptable != nullptr ? lookuptable->getNextFrame() : nullptr;
  return lastreturn != nullptr ? lastreturn->frameTime() : -1;
}

int getLastFrameNumber() {
  return lastreturn != nullptr ? lastreturn->frameNumber() : -1;
}

const char* getCurrentSessionName() {
  return lookuptable != nullptr ? lookuptable->sessionName().c_str() : nullptr;
}

char* setupPath(char* path) {
  return path;
}

}  // namespace gzdconv
