// One table of video frames, as an ".ett" file holds it: which frame was showing at which time of
// the recording.
//
// The file is little-endian: a record count, a magic number, then records of twelve bytes in time
// order. Times are milliseconds of the recording.
#ifndef GZDCONV_FRAME_TABLE_H
#define GZDCONV_FRAME_TABLE_H

#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

namespace gzdconv {

// One record, in the file's own layout.
struct AVIGZDTime {
  std::uint32_t frame_word = 0;  // bits 0-30 frame number, bit 31 field flag
  std::int32_t entry_time = 0;
  std::uint16_t offset_word = 0;  // bits 0-12 magnitude, 13 negative, 14 and 15 marker flags

  AVIGZDTime() = default;
  // Offsets of the frame time beyond 8191 ms do not fit into a record.
  AVIGZDTime(int frame_number, bool field, int entry_time, int frame_time, bool first_marker,
             bool second_marker);

  [[nodiscard]] int frameNumber() const;
  [[nodiscard]] int field() const;  // 0 or 1
  [[nodiscard]] int entryTime() const { return entry_time; }
  [[nodiscard]] int frameTime() const;  // the entry time and its offset
  [[nodiscard]] int firstMarker() const;
  [[nodiscard]] int secondMarker() const;

  // One line of six numbers to `stream`, or to standard output when it is null.
  void print(FILE* stream) const;
};

class AVIGZDTimeLookupTime {
 public:
  static constexpr int any_field = -1;

  explicit AVIGZDTimeLookupTime(int session_number) : session_number_(session_number) {}
  virtual ~AVIGZDTimeLookupTime() = default;
  AVIGZDTimeLookupTime(const AVIGZDTimeLookupTime&) = delete;
  AVIGZDTimeLookupTime& operator=(const AVIGZDTimeLookupTime&) = delete;

  // Reads a whole table. False when it is cut short or no table; the reason has been printed and
  // the table is empty. Memory goes with what the file holds, not with the count it claims.
  bool read(FILE* file);

  // All records, a line each; null means standard output.
  void print(FILE* stream) const;

  // The first record that a binary search over [lo, hi] meets within 30 ms of `time`, or null.
  [[nodiscard]] const AVIGZDTime* findFrameForGZDTime(int lo, int hi, int time) const;
  [[nodiscard]] const AVIGZDTime* findFrameForGZDTime(int time) const;

  // The record with exactly this entry time, or null: the first of them, or the one after it when
  // only that has the wanted field flag (0, 1 or any_field). secfind looks at every record.
  [[nodiscard]] const AVIGZDTime* binfindAVIGZDEntry(int lo, int hi, int time, int field) const;
  [[nodiscard]] const AVIGZDTime* findAVIGZDEntry(int time, int field) const;
  [[nodiscard]] const AVIGZDTime* secfindAVIGZDEntry(int time, int field) const;

  // The record at the cursor, which moves on; null after the last one.
  const AVIGZDTime* getNextEntry();
  void stepBack();

  // The next frame in order, two records of one frame taken together: the one with the smaller
  // frame time. Null after the last one.
  const AVIGZDTime* getNextFrame();

  // Names are cut to 19 characters, paths to 1023.
  void setSessionName(const char* name);
  void setSessionPath(const char* path);
  [[nodiscard]] const std::string& sessionName() const { return session_name_; }
  [[nodiscard]] const std::string& sessionPath() const { return session_path_; }
  [[nodiscard]] int sessionNumber() const { return session_number_; }
  [[nodiscard]] int count() const { return static_cast<int>(records_.size()); }

 private:
  [[nodiscard]] bool holds(int index) const { return index >= 0 && index < count(); }
  [[nodiscard]] const AVIGZDTime& at(int index) const {
    return records_[static_cast<std::size_t>(index)];
  }
  [[nodiscard]] const AVIGZDTime* choose_field(int index, int time, int field) const;
  bool read_records(FILE* file, int claimed);

  int cursor_ = 0;
  std::vector<AVIGZDTime> records_;
  std::string session_name_;
  std::string session_path_;
  int session_number_;
};

}  // namespace gzdconv

#endif
