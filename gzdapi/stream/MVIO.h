// The byte stream under the reader: raw bytes, lines of text, big-endian words, integers, floats.
#ifndef GZDAPI_MVIO_H
#define GZDAPI_MVIO_H

#include <cstddef>
#include <cstdio>
#include <memory>

#include "base/GZDException.h"
#include "base/big_endian.h"
#include "base/file_handle.h"
#include "gzd_data.h"

namespace gzd {

// The last place in a file at which a record is read.
constexpr INT64 last_record_place = 2147400000;

// A stream holds a window of contiguous bytes and a cursor in it; the position in the file follows
// from the two. Reads that the window can serve touch nothing else.
class InputStream {
 public:
  InputStream() = default;
  InputStream(const InputStream&) = delete;
  InputStream& operator=(const InputStream&) = delete;
  virtual ~InputStream() = default;

  // Size in bytes. The position stays.
  virtual INT64 getFileSize() = 0;
  // Moves to a byte offset from the start; past the end is allowed, reads there come up short.
  virtual void seek(INT64 offset) = 0;

  // seek(), without a call when the place lies in the window.
  void moveTo(INT64 offset) {
    const INT64 ahead = offset - getFilePos();
    if (ahead >= windowStart_ - cursor_ && ahead <= limit_ - cursor_) {
      cursor_ += ahead;
      hitEnd_ = false;
    } else {
      seek(offset);
    }
  }

  // True once a read has hit the end, until the next seek.
  [[nodiscard]] bool eof() const { return hitEnd_; }
  [[nodiscard]] INT64 getFilePos() const { return limitPos_ - (limit_ - cursor_); }
  // Bytes of the recording that are no part of the stream: of a compressed one those that were not
  // inflated.
  [[nodiscard]] INT64 bytesBehind() const { return behind_; }
  // Why, for the system, a read has ever come up short.
  [[nodiscard]] SystemError getReadError() const { return readError_; }

  // Copies up to `count` bytes and returns how many there were.
  int getRawData(void* buffer, int count);
  // Reads a line, at most capacity - 1 characters, its newline included, and ends it with a NUL.
  // Returns the length up to the first NUL, or -1 when nothing is left. The position moves by the
  // bytes taken.
  int getTerminatedString(char* buffer, int capacity);

  // Each reads one value and throws GZDException, logged first, when the stream ends inside it.
  // The position has then moved to the end.
  INT16 getWord() {
    if (available() < sizeof(INT16)) return getWordBeyond();
    cursor_ += sizeof(INT16);
    return load_be16s(cursor_ - sizeof(INT16));
  }
  INT32 getInt() {
    if (available() < sizeof(INT32)) return getIntBeyond();
    cursor_ += sizeof(INT32);
    return static_cast<INT32>(load_be32(cursor_ - sizeof(INT32)));
  }
  float getFloat();  // NOT_RECORDED reads as MISSING_DATA
  // NOLINTNEXTLINE(clang-analyzer-core.NullDereference): without bytes the ends are the same
  byte getByte() { return cursor_ != limit_ ? *cursor_++ : getByteBeyond(); }
  void getData(void* buffer, int count);

  // `count` contiguous bytes at the position, or null when the stream ends before (or the window
  // cannot hold so many). The position stays; take() moves over bytes that peek has shown.
  const byte* peek(std::size_t count) {
    return static_cast<std::size_t>(limit_ - cursor_) >= count ? cursor_ : peekBeyond(count);
  }
  void take(std::size_t count) { cursor_ += count; }
  // `count` bytes at a byte offset from the start when all of them lie in the window, else null.
  [[nodiscard]] const byte* inWindow(INT64 offset, std::size_t count) const {
    const INT64 ahead = offset - limitPos_ + (limit_ - windowStart_);
    if (ahead < 0 || ahead + static_cast<INT64>(count) > limit_ - windowStart_) return nullptr;
    return windowStart_ + ahead;
  }
  // The window: its bytes, how many they are, and where they lie in the file. Valid until the
  // stream is moved or read.
  struct HeldBytes {
    const byte* bytes = nullptr;
    INT64 length = 0;
    INT64 offset = 0;

    bool operator==(const HeldBytes&) const = default;
  };
  [[nodiscard]] HeldBytes held() const {
    const INT64 length = limit_ - windowStart_;
    return {windowStart_, length, limitPos_ - length};
  }
  // How many bytes of the window lie after the position.
  [[nodiscard]] std::size_t available() const { return static_cast<std::size_t>(limit_ - cursor_); }

 protected:
  // Brings more bytes after the cursor, at least `count` in all when the stream has them. Returns
  // false when it does not.
  virtual bool refill(std::size_t count) = 0;

  const byte* windowStart_ = nullptr;
  const byte* cursor_ = nullptr;
  const byte* limit_ = nullptr;
  INT64 limitPos_ = 0;  // offset in the file of `limit_`
  bool hitEnd_ = false;
  INT64 behind_ = 0;
  SystemError readError_;

 private:
  const byte* peekBeyond(std::size_t count) { return refill(count) ? cursor_ : nullptr; }
  INT16 getWordBeyond();
  INT32 getIntBeyond();
  byte getByteBeyond();
};

// A stream over a stdio file, read in pieces that grow with sequential use.
class FileInputStream : public InputStream {
 public:
  // Opens `path`; throws GZDException, logged first, when that fails or it is not a regular file.
  explicit FileInputStream(const char* path);
  // Takes over an open temporary file and goes to its beginning. `error`: why it could not be
  // written to its end. `unused`: see bytesBehind.
  explicit FileInputStream(FileHandle in, SystemError error = {}, INT64 unused = 0);

  INT64 getFileSize() override;
  void seek(INT64 offset) override;

  // The file itself, at the stream's position. It stays the stream's; after using it, seek. Throws
  // GZDException when the system cannot go there.
  FILE* getRawFile();

 protected:
  bool refill(std::size_t count) override;

 private:
  void setUp();
  void readUpTo(INT64 offset);
  std::size_t readInto(byte* target, std::size_t count);

  FileHandle file_;
  std::unique_ptr<byte[]> buffer_;
  INT64 fileOffset_ = 0;       // where the FILE stands
  std::size_t readAhead_ = 0;  // size of the next read
  int newestReason_ = 0;       // why the newest read of the file failed; 0 when it did not
  SystemError::Place place_ = SystemError::Place::Recording;
};

// A read cursor over the bytes of a message that holds binary values.
class LString {
 public:
  LString(const byte* text, std::size_t length) : bp_(text), left_(length) {}

  // The next four bytes as a big-endian float, no value mapped; 0 past the end.
  float getFloat() {
    if (left_ < sizeof(float)) return 0.0f;
    const float value = load_be_float(bp_);
    bp_ += sizeof(float);
    left_ -= sizeof(float);
    return value;
  }
  // The next byte; 0 past the end.
  byte getByte() {
    if (left_ == 0) return 0;
    --left_;
    return *bp_++;
  }

 private:
  const byte* bp_;
  std::size_t left_;
};

}  // namespace gzd

#endif
