// Builds GZD recordings, in memory or streamed to a file. For example:
//
//   GzdWriter w(3);                                   // preamble of a third-generation tracker
//   w.message(900, "TRIALID 1");
//   w.start_block({.time = 1000, .rate = 1000});       // events start and samples start
//   w.sample({.time = 1000, .gx = {5120}, .gy = {3840}, .pa = {900}});  // left eye, gaze 512.0
//   w.gaze_sample(1001, 512.5, 384.1, 900);            // the same kind, physical values
//   w.event(EventRecord(GZD_START_FIXATION).start(1001));
//   w.event(EventRecord(GZD_END_FIXATION).start(1001).end(1200).gaze_average(5120, 3840));
//   w.button(1100, 0x0101).end_block(1300);
//   w.save("trial.gzd");                              // or w.bytes()
//
// Values are words as stored: gaze and resolution times the gaze prescale (10 unless a block start
// says otherwise); stored(512.5) makes such a word, stored_missing is the one of a lost value.
// Eyes are GZD_LEFT_EYE and GZD_RIGHT_EYE, times are milliseconds, sample flags SMP_ bits.
#ifndef GZDSYNTH_GZDWRITER_H
#define GZDSYNTH_GZDWRITER_H

#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "byte_layout.h"
#include "event_record.h"
#include "file_sink.h"
#include "sample_record.h"

namespace gzdsynth {

// The first line of a file. The last two hold the records compressed.
enum class Magic { Comb, Falc, Osp, FalcZip, OspZip };

// The magic line, with "\n" or "\r\n" after it.
[[nodiscard]] std::string magic_line(Magic kind, bool carriageReturn = false);

// What the two records that start a block say. Fields with "no value" are left out of the record.
struct BlockStart {
  std::uint32_t time = 0;
  double rate = 1000;  // samples per second; 0: none in the record
  int sample_flags = SMP_LEFT | SMP_GAZE | SMP_PUPIL_SIZE;
  int event_flags = SMP_LEFT | SMP_GAZE | SMP_PUPIL_SIZE;
  int gaze_prescale = 10;
  int velocityPrescale = 10;
  std::optional<int> pupilPrescale = {};
  std::optional<int> headPrescale = {};
  int divisor = 1;
  int eye = GZD_LEFT_EYE;                     // in the tag only
  unsigned positionType = GZD_POSITION_GAZE;  // the tag's low byte
  int linkFilter = 1;                         // packed word, bits 0-3
  int fileFilter = 2;                         // packed word, bits 4-7
  int recordingMode = 9;                      // packed word, bits 8-15: 0 pupil only
  int pupilType = 1;                          // 1 area, else diameter
  // Events start only: 0x4000 left, 0x8000 right, the other way round than in flags. Without a
  // value it names the eyes of `event_flags`.
  std::optional<int> eventEyes = {};
};

class GzdWriter {
 public:
  // Magic "MORVEN_TECH_COMBFILE" and the preamble lines that name a tracker generation:
  // 1 (any old tracker, revision 0: always 250 Hz), 2 Kestrel, 3 Falcon, 4 Osprey (revisions 1, 1
  // and 3). 0: no preamble line but "ENDP:".
  explicit GzdWriter(int generation = 2);

  // ---- header; to be called before the first record when streaming ------------------------------
  GzdWriter& magic(Magic kind, bool carriageReturn = false);
  GzdWriter& magic_text(std::string line);          // verbatim, line ending included
  GzdWriter& preamble_line(std::string_view line);  // a newline is added
  GzdWriter& clear_preamble();
  GzdWriter& endp_text(std::string line);  // "ENDP:\n" verbatim; empty leaves it away
  GzdWriter& compressed(bool on);          // set by magic() as well
  GzdWriter& end_tag(bool on);             // the closing zero tag; on unless switched off

  // ---- records ----------------------------------------------------------------------------------
  GzdWriter& sample(const SampleRecord& record);
  // One eye, absolute time, gaze (pixels, under the gaze prescale in force) and pupil size.
  GzdWriter& gaze_sample(std::uint32_t time, double x, double y, int pupil, int eye = GZD_LEFT_EYE);
  GzdWriter& event(const EventRecord& record);

  GzdWriter& start_samples(const BlockStart& block);
  GzdWriter& start_events(const BlockStart& block);
  GzdWriter& end_samples(std::uint32_t time, int eye = GZD_LEFT_EYE);
  GzdWriter& end_events(std::uint32_t time, int eye = GZD_LEFT_EYE);
  GzdWriter& start_block(const BlockStart& block);  // events, then samples
  GzdWriter& end_block(std::uint32_t time);         // samples, then events

  GzdWriter& message(std::uint32_t time, std::string_view text);  // at most 498 bytes are legal
  // A text of any length in pieces of `pieceSize` characters at most, each after its marker, all
  // at `time`. `id` tells long messages apart.
  GzdWriter& long_message(std::uint32_t time, int id, std::string_view text,
                          std::size_t pieceSize = 460);
  // Bits 0-7 the state of the buttons, bits 8-15 those that changed.
  GzdWriter& button(std::uint32_t time, int buttons);
  GzdWriter& input(std::uint32_t time, int value);

  GzdWriter& raw(const Bytes& bytes);

  // ---- results ----------------------------------------------------------------------------------
  // Offset of the next record in the uncompressed record stream.
  [[nodiscard]] std::uint64_t body_size() const { return drained_ + body_.size(); }
  // Magic, preamble and "ENDP:" line.
  [[nodiscard]] Bytes header() const;
  // The whole file. Only for writers that do not stream.
  [[nodiscard]] Bytes bytes() const;
  // Writes bytes() to a file; throws std::runtime_error when that fails.
  void save(const std::string& path) const;

  // Streaming: what has been and will be written goes to a file as it comes, in bounded memory.
  // finish() completes it. Both, and all record calls in between, throw std::runtime_error when
  // the file fails. A write error is certain to be noticed only by finish().
  void stream_to(const std::string& path);
  void finish();

 private:
  EventRecord block_start(unsigned type, const BlockStart& block);
  void drain();
  void drain_when_large();

  std::string magic_;
  std::string preamble_;
  std::string endp_ = "ENDP:\n";
  bool compressed_ = false;
  bool endTag_ = true;
  double gazePrescale_ = 10;
  Bytes body_;
  std::uint64_t drained_ = 0;
  std::unique_ptr<FileSink> sink_;
  bool headerSent_ = false;
};

// ---- damage -------------------------------------------------------------------------------------

// Without the last `count` bytes.
[[nodiscard]] Bytes without_tail(Bytes file, std::size_t count);
// Only the first `count` bytes.
[[nodiscard]] Bytes cut_at(Bytes file, std::size_t count);
// With the bits of `mask` flipped at `offset`.
[[nodiscard]] Bytes flipped(Bytes file, std::size_t offset, unsigned mask = 0xFF);
// With `patch` written over what was at `offset`.
[[nodiscard]] Bytes patched(Bytes file, std::size_t offset, const Bytes& patch);

// Writes bytes to a file; throws std::runtime_error when that fails.
void save_bytes(const Bytes& file, const std::string& path);

}  // namespace gzdsynth

#endif
