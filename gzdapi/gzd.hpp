// A thin C++ front of gzd.h, header only (C++17): a handle that closes itself, the elements of a
// recording as a range, and the library's log as a function object. It adds no behaviour of its
// own; what a call means, returns and costs stands in gzd.h. As there: one thread at a time.
//
//     gzd::File file = gzd::File::open("trial.gzd");
//     for (const gzd::Element& element : file.elements())
//       if (element.code == GZD_END_FIXATION) use(element.record->fe);
#ifndef GZDAPI_GZD_HPP
#define GZDAPI_GZD_HPP

#include <cstddef>
#include <functional>
#include <iterator>
#include <memory>
#include <string>
#include <utility>

#include "gzd.h"

namespace gzd {

// One element of the walk. `record` is the library's: it holds until the next element is asked for,
// and is null when the element could not be read.
struct Element {
  int code = GZD_END_OF_DATA;
  const ALLF_DATA* record = nullptr;
};

// The elements from the walk's place on, each once: an input range.
class Elements {
 public:
  struct End {};

  class Iterator {
   public:
    using iterator_category = std::input_iterator_tag;
    using value_type = Element;
    using difference_type = std::ptrdiff_t;
    using pointer = const Element*;
    using reference = const Element&;

    explicit Iterator(GZDFILE* file) : file_(file) { ++*this; }
    reference operator*() const { return element_; }
    pointer operator->() const { return &element_; }
    Iterator& operator++() {
      element_.code = gzd_get_next_data(file_);
      element_.record = element_.code != GZD_END_OF_DATA ? gzd_get_float_data(file_) : nullptr;
      return *this;
    }
    void operator++(int) { ++*this; }
    friend bool operator==(const Iterator& at, End) { return at.element_.code == GZD_END_OF_DATA; }
    friend bool operator!=(const Iterator& at, End end) { return !(at == end); }

   private:
    GZDFILE* file_;
    Element element_;
  };

  explicit Elements(GZDFILE* file) : file_(file) {}
  [[nodiscard]] Iterator begin() const { return Iterator(file_); }
  [[nodiscard]] End end() const { return {}; }

 private:
  GZDFILE* file_;
};

// An open recording, closed at its end. Empty when it could not be opened; the log tells why.
class File {
 public:
  File() = default;

  // The arguments of gzd_open_file_ex; without a configuration that of the last open.
  [[nodiscard]] static File open(const std::string& name, int flags = GZD_CONSISTENCY_REPAIR,
                                 int events = GZD_LOAD_EVENTS, int samples = 1,
                                 CONFIG* config = nullptr) {
    int error = 0;
    return File(gzd_open_file_ex(name.c_str(), flags, events, samples, config, &error));
  }

  explicit operator bool() const { return handle_ != nullptr; }
  // For the functions of gzd.h; stays owned.
  [[nodiscard]] GZDFILE* get() const { return handle_.get(); }
  [[nodiscard]] Elements elements() const { return Elements(get()); }
  void close() { handle_.reset(); }

 private:
  struct Close {
    void operator()(GZDFILE* handle) const { gzd_close_file(handle); }
  };
  explicit File(GZDFILE* handle) : handle_(handle) {}

  std::unique_ptr<GZDFILE, Close> handle_;
};

// While it lives, the library's log of the whole process goes to a function; one at a time. The
// function must not throw.
class LogTo {
 public:
  using Function = std::function<void(const char* message)>;

  explicit LogTo(Function function) {
    receiver() = std::move(function);
    gzd_set_log_function(reinterpret_cast<void*>(&LogTo::hand_on));
  }
  ~LogTo() {
    gzd_set_log_function(nullptr);
    receiver() = nullptr;
  }
  LogTo(const LogTo&) = delete;
  LogTo& operator=(const LogTo&) = delete;

 private:
  static Function& receiver() {
    static Function function;
    return function;
  }
  static void hand_on(const char* message) { receiver()(message); }
};

}  // namespace gzd

#endif
