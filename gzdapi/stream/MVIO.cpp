// Reads that reach past the window, and the window that slides over a file.
#include "stream/MVIO.h"

#include <algorithm>
#include <cerrno>
#include <cstring>

#include "base/log.h"

namespace gzd {

namespace {

constexpr std::size_t smallest_read = 4096;
constexpr std::size_t largest_read = 256 * 1024;
// Bytes kept behind the cursor when the window moves on: records are fetched in time order, which
// steps back a little in the file at every event, and further where samples were read ahead.
constexpr std::size_t history_bytes = 64 * 1024;
// How far before the place asked for a step back begins to read.
constexpr INT64 step_back = 4 * 1024;
constexpr std::size_t buffer_size = history_bytes + 2 * largest_read;

[[noreturn]] void throw_end_of_file(const InputStream& stream) {
  throw GZDException("End of file Exception").because(stream.getReadError());
}

}  // namespace

// ---- reads over the window ----------------------------------------------------------------------

int InputStream::getRawData(void* buffer, int count) {
  byte* target = static_cast<byte*>(buffer);
  std::size_t wanted = count > 0 ? static_cast<std::size_t>(count) : 0;
  std::size_t got = 0;
  while (got < wanted) {
    if (cursor_ == limit_ && !refill(1)) {
      hitEnd_ = true;
      break;
    }
    const std::size_t piece = std::min(wanted - got, static_cast<std::size_t>(limit_ - cursor_));
    std::memcpy(target + got, cursor_, piece);
    take(piece);
    got += piece;
  }
  return static_cast<int>(got);
}

int InputStream::getTerminatedString(char* buffer, int capacity) {
  const std::size_t room = capacity > 1 ? static_cast<std::size_t>(capacity - 1) : 0;
  std::size_t got = 0;
  bool ended = false;
  while (got < room && !ended) {
    if (cursor_ == limit_ && !refill(1)) {
      hitEnd_ = true;
      break;
    }
    const std::size_t searched = std::min(room - got, static_cast<std::size_t>(limit_ - cursor_));
    const void* const newline = std::memchr(cursor_, '\n', searched);
    ended = newline != nullptr;
    const std::size_t piece =
        ended ? static_cast<std::size_t>(static_cast<const byte*>(newline) - cursor_) + 1
              : searched;
    std::memcpy(buffer + got, cursor_, piece);
    take(piece);
    got += piece;
  }
  if (got == 0) return -1;
  buffer[got] = '\0';
  return static_cast<int>(std::strlen(buffer));
}

INT16 InputStream::getWordBeyond() {
  byte bytes[2];
  const int got = getRawData(bytes, sizeof bytes);
  if (got != sizeof bytes) {
    print_log("error reading gzd file 7a r = %d \n", got);
    throw_end_of_file(*this);
  }
  return load_be16s(bytes);
}

INT32 InputStream::getIntBeyond() {
  byte bytes[4];
  if (getRawData(bytes, sizeof bytes) != sizeof bytes) {
    print_log("error reading gzd file 9\n");
    throw_end_of_file(*this);
  }
  return static_cast<INT32>(load_be32(bytes));
}

float InputStream::getFloat() {
  return missing_normalised(std::bit_cast<float>(static_cast<UINT32>(getInt())));
}

byte InputStream::getByteBeyond() {
  byte value;
  if (getRawData(&value, 1) != 1) {
    print_log("error reading gzd file 11\n");
    throw_end_of_file(*this);
  }
  return value;
}

void InputStream::getData(void* buffer, int count) {
  if (getRawData(buffer, count) != count) {
    print_log("error reading gzd file 12\n");
    throw_end_of_file(*this);
  }
}

// ---- files --------------------------------------------------------------------------------------

FileInputStream::FileInputStream(const char* path) : file_(open_regular_file(path)) {
  if (!file_) {
    const int reason = errno;
    log_clipped("The file %s could not be opened\n", path);
    throw GZDException("File Could not be opened!").because({reason});
  }
  std::setvbuf(file_.get(), nullptr, _IONBF, 0);  // the window does the buffering
  setUp();
}

FileInputStream::FileInputStream(FileHandle in, SystemError error, INT64 unused)
    : file_(std::move(in)), place_(SystemError::Place::TemporaryDirectory) {
  readError_ = error;
  behind_ = unused;
  std::rewind(file_.get());
  setUp();
}

void FileInputStream::setUp() {
  buffer_ = std::make_unique_for_overwrite<byte[]>(buffer_size);
  windowStart_ = cursor_ = limit_ = buffer_.get();
  readAhead_ = smallest_read;
}

INT64 FileInputStream::getFileSize() {
  std::fseek(file_.get(), 0, SEEK_END);
  fileOffset_ = -1;
  return std::ftell(file_.get());
}

void FileInputStream::seek(INT64 offset) {
  hitEnd_ = false;
  const INT64 windowPos = limitPos_ - (limit_ - windowStart_);
  if (offset >= windowPos && offset <= limitPos_) {
    cursor_ = limit_ - (limitPos_ - offset);
    return;
  }
  cursor_ = limit_ = buffer_.get();
  const bool isJustBefore = offset >= 0 && offset < windowPos && windowPos - offset <= step_back;
  limitPos_ = isJustBefore ? std::max<INT64>(offset - step_back, 0) : offset;
  readAhead_ = smallest_read;
  if (isJustBefore) readUpTo(offset);
}

// Those who go back step by step find the next step in the window.
void FileInputStream::readUpTo(INT64 offset) {
  const auto before = static_cast<std::size_t>(offset - limitPos_);
  const std::size_t got = readInto(buffer_.get(), before + smallest_read);
  if (got < before) {
    limitPos_ = offset;
    return;
  }
  cursor_ = buffer_.get() + before;
  limit_ = buffer_.get() + got;
  limitPos_ += static_cast<INT64>(got);
}

FILE* FileInputStream::getRawFile() {
  if (std::fseek(file_.get(), static_cast<long>(getFilePos()), SEEK_SET) != 0)
    throw GZDException("File could not be read").because({errno, place_});
  fileOffset_ = -1;
  return file_.get();
}

bool FileInputStream::refill(std::size_t count) {
  const std::size_t unread = static_cast<std::size_t>(limit_ - cursor_);
  if (count > largest_read) return false;
  const std::size_t kept =
      std::min(history_bytes, static_cast<std::size_t>(cursor_ - windowStart_)) + unread;
  std::memmove(buffer_.get(), limit_ - kept, kept);
  const std::size_t got = readInto(buffer_.get() + kept, std::max(readAhead_, count));
  readAhead_ = std::min(readAhead_ * 2, largest_read);
  limit_ = buffer_.get() + kept + got;
  cursor_ = limit_ - got - unread;
  limitPos_ += static_cast<INT64>(got);
  const bool isServed = unread + got >= count;
  if (!isServed && newestReason_ != 0) readError_ = {newestReason_, place_};
  return isServed;
}

std::size_t FileInputStream::readInto(byte* target, std::size_t count) {
  if (limitPos_ < 0) return 0;
  if (fileOffset_ != limitPos_) {
    if (std::fseek(file_.get(), static_cast<long>(limitPos_), SEEK_SET) != 0) {
      newestReason_ = errno;
      return 0;
    }
    fileOffset_ = limitPos_;
  }
  const std::size_t got = std::fread(target, 1, count, file_.get());
  newestReason_ = std::ferror(file_.get()) != 0 ? errno : 0;
  std::clearerr(file_.get());  // a file may end inside a read-ahead; what was asked for decides
  fileOffset_ += static_cast<INT64>(got);
  return got;
}

}  // namespace gzd
