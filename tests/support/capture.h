// What the converter prints, as strings.
#ifndef TESTS_GZDCONV_CAPTURE_H
#define TESTS_GZDCONV_CAPTURE_H

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
    lpbuffer.forget_failure();
    options.out_file = open_memstream(&bytes_, &length_);
  }
  ~AscTest() override {
    lpbuffer.flush();
    std::fclose(options.out_file);
    options.out_file = nullptr;
    std::free(bytes_);
  }

  // The lines since the last call.
  std::string asc() {
    lpbuffer.flush();
    std::fflush(options.out_file);
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
  char* bytes_ = nullptr;
  std::size_t length_ = 0;
  std::size_t taken_ = 0;
};

#endif
