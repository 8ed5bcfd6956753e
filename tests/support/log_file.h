// A message log on disk while the object lives.
#ifndef TESTS_SUPPORT_LOG_FILE_H
#define TESTS_SUPPORT_LOG_FILE_H

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdio>
#include <fstream>
#include <string>

#include "support/index_builder.h"
#include "walk/logmsg.h"

using namespace gzd;

class LogFile {
 public:
  explicit LogFile(const std::string& text)
      : path(testing::TempDir() + "log" + std::to_string(getpid()) + ".txt") {
    std::ofstream(path, std::ios::binary) << text;
  }
  ~LogFile() { std::remove(path.c_str()); }
  LogFile(const LogFile&) = delete;
  LogFile& operator=(const LogFile&) = delete;

  // Opens it in `log`, and returns what that answered.
  int openIn(MessageLog& log) const {
    const LogCapture quiet;
    log.setEyeLogFileName(path.c_str());
    return log.openEyeLogFile();
  }

  const std::string path;
};

#endif
