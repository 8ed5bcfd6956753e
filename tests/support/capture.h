// What the converter prints, as strings.
#ifndef TESTS_SUPPORT_CAPTURE_H
#define TESTS_SUPPORT_CAPTURE_H

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <string>

#include "asc/output.h"
#include "cli/options.h"

using namespace gzdconv;

// Starts every test from default options, and collects the lines of the ASC file.
class AscTest : public testing::Test {
 protected:
  AscTest() {
    init_options();
    file_ = open_memstream(&bytes_, &length_);
    lpbuffer.begin_file(file_);
  }
  ~AscTest() override {
    lpbuffer.flush();
    lpbuffer.end_file();
    std::fclose(file_);
    std::free(bytes_);
  }

  // The lines since the last call.
  std::string asc() {
    lpbuffer.flush();
    std::fflush(file_);
    std::string text(bytes_ + taken_, length_ - taken_);
    taken_ = length_;
    return text;
  }

  // What `action` prints on the console.
  template <typename Action>
  static std::string console(Action action) {
    testing::internal::CaptureStdout();
    action();
    std::fflush(stdout);
    return testing::internal::GetCapturedStdout();
  }

 private:
  FILE* file_ = nullptr;
  char* bytes_ = nullptr;
  std::size_t length_ = 0;
  std::size_t taken_ = 0;
};

#endif
