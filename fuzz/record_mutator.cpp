// The mutator of the targets that read whole records. Mostly it changes a recording record by
// record: takes out, repeats, moves and exchanges them, puts in those that repairs, order and
// trials turn on, and moves times to those of neighbours. The framing stays valid, so that what
// lies behind the scan is reached. Now and then the bytes are changed without regard.
#include <zlib.h>

#include <array>
#include <vector>

#include "event_record.h"
#include "fuzz_support.h"
#include "gzd_data.h"
#include "record_frames.h"
#include "sample_record.h"

extern "C" std::size_t LLVMFuzzerMutate(std::uint8_t* data, std::size_t size, std::size_t max_size);

namespace {

using fuzz::Frame;
using fuzz::Random;
using gzdsynth::Bytes;
using gzdsynth::EventRecord;
using gzdsynth::SampleRecord;

fuzz::Input view(const Bytes& bytes) {
  return {bytes.data(), bytes.size()};
}

Bytes copy_of(fuzz::Input bytes) {
  return {bytes.begin(), bytes.end()};
}

// ---- compressed records -------------------------------------------------------------------------

Bytes deflate_records(const Bytes& records) {
  uLongf length = compressBound(records.size());
  Bytes packed(length);
  if (compress2(packed.data(), &length, records.data(), records.size(), 1) != Z_OK) return {};
  packed.resize(length);
  return packed;
}

// ---- new records --------------------------------------------------------------------------------

std::uint32_t time_at(const Bytes& records, Frame frame) {
  const std::size_t offset = fuzz::time_offset(view(records), frame);
  std::uint32_t time = 0;
  for (std::size_t i = 0; offset != 0 && i < 4; ++i)
    time = time << 8 | records[frame.begin + offset + i];
  return time;
}

EventRecord random_block_start(Random& random, unsigned type, std::uint32_t time) {
  constexpr std::uint32_t rates[] = {250, 500, 1000, 2000, 0, 777};
  constexpr int flags[] = {0x8500, 0x4500, 0xC500, 0xCF00, 0xCFF0, 0xCFF8, 0x0000, 0xD7F1};
  EventRecord record(type, GZD_LEFT_EYE, static_cast<unsigned>(random.below(4) * 64));
  record.start(time).end(rates[random.below(std::size(rates))] << 16);
  record.flags(flags[random.below(std::size(flags))])
      .input(static_cast<int>(random.below(4) << 14));
  record.pupilStart(random.oneIn(4) ? 0 : 10).pupilEnd(10);
  if (random.oneIn(2)) record.buttons(static_cast<int>(random.below(20)));
  return record.pupilAverage(1).resolutionEnd(0x0921, 1);
}

EventRecord random_eye_event(Random& random, std::uint32_t time) {
  const auto type = static_cast<unsigned>(GZD_START_BLINK + random.below(6));
  EventRecord record(type, random.oneIn(2) ? GZD_LEFT_EYE : GZD_RIGHT_EYE);
  record.start(type % 2 == 1 ? time : time - static_cast<std::uint32_t>(random.below(100)));
  if (type % 2 == 0) record.end(time).gazeAverage(5000, 4000).velocityPeak(300);
  return record;
}

EventRecord random_message(Random& random, std::uint32_t time) {
  constexpr const char* texts[] = {
      "TRIALID 1",
      "TRIAL OK",
      "!V TRIAL_VAR x 1",
      "RECCFG CR 1000 2 1 LR",
      "TRACKER_TIME 1 1000.5",
      "!V LONGMS_ST 1_first",
      "!V LONGMS_CONT 1_second",
      "!V LONGMS_ST 2_other",
      "-12 offset",
      "7 offset",
      "DISPLAY_COORDS 0 0 1023 767",
      "DISPLAY_AREA_COORDS 10 10 500 500",
      "GAZE_COORDS 0.00 0.00 1023.00 767.00",
      "!V VFRAME 1 2 3 video.avi",
  };
  EventRecord record(GZD_MESSAGE, GZD_LEFT_EYE, 0);
  return record.start(time).text(texts[random.below(std::size(texts))]);
}

SampleRecord random_sample(Random& random, std::uint32_t time) {
  constexpr unsigned kinds[] = {0x8500, 0xC580, 0xCFF0, 0x4D08, 0xC50C, 0xD500, 0xC40A, 0x0040};
  SampleRecord sample{.flags = kinds[random.below(std::size(kinds))], .time = time};
  if (!random.oneIn(3)) sample.flags |= SMP_TIME_ABSOLUTE;
  sample.step = static_cast<unsigned>(random.below(4));
  sample.headType = random.oneIn(2) ? 0xB8 : static_cast<unsigned>(random.below(256));
  for (std::size_t eye = 0; eye < 2; ++eye) {
    sample.gx[eye] = static_cast<int>(random.next() & 0xFFFF);
    sample.gy[eye] = static_cast<int>(random.next() & 0x1FFF);
    sample.pa[eye] = random.oneIn(4) ? -static_cast<int>(random.below(900)) : 900;
  }
  if (random.oneIn(2)) sample.blocks.push_back(gzdsynth::headPoseBlock({}));
  if (random.oneIn(2)) sample.blocks.push_back(gzdsynth::ellipseBlock72({}));
  if (random.oneIn(2)) sample.skipped.push_back(gzdsynth::unknownBlock(9, Bytes(5)));
  return sample;
}

Bytes random_record(Random& random, std::uint32_t time) {
  Bytes bytes;
  switch (random.below(12)) {
    case 0:
      return random_block_start(random, GZD_START_SAMPLES, time).bytes();
    case 1:
      return random_block_start(random, GZD_START_EVENTS, time).bytes();
    case 2:
      return EventRecord(GZD_END_SAMPLES, GZD_LEFT_EYE, 0).end(time).bytes();
    case 3:
      return EventRecord(GZD_END_EVENTS, GZD_LEFT_EYE, 0).end(time).bytes();
    case 4:
    case 5:
    case 6:
      return random_eye_event(random, time).bytes();
    case 7:
    case 8:
      return random_message(random, time).bytes();
    case 9:
      return EventRecord(random.oneIn(2) ? GZD_BUTTON : GZD_INPUT, GZD_LEFT_EYE, 0)
          .start(time)
          .word(random.oneIn(2) ? 86 : 85, static_cast<int>(random.below(4)))
          .bytes();
    default:
      gzdsynth::putSample(bytes, random_sample(random, time));
      return bytes;
  }
}

// ---- changes of a record stream -----------------------------------------------------------------

class RecordEditor {
 public:
  RecordEditor(Bytes& records, Random& random)
      : records_(records), random_(random), frames_(fuzz::find_frames(view(records))) {}

  void edit() {
    if (frames_.empty()) {
      insert(0, random_record(random_, 1000));
      return;
    }
    switch (random_.below(10)) {
      case 0:
        erase(pick());
        break;
      case 1:
        insert(pick().begin, bytes_of(pick()));
        break;
      case 2:
        move();
        break;
      case 3:
      case 4:
      case 5:
        insert(pick().begin, random_record(random_, time_near(pick())));
        break;
      case 6:
      case 7:
        change_time();
        break;
      case 8:
        change_word();
        break;
      default:
        change_tag();
        break;
    }
  }

 private:
  Frame pick() { return frames_[random_.below(frames_.size())]; }
  Bytes bytes_of(Frame frame) const {
    return {records_.begin() + static_cast<std::ptrdiff_t>(frame.begin),
            records_.begin() + static_cast<std::ptrdiff_t>(frame.end)};
  }
  void erase(Frame frame) {
    records_.erase(records_.begin() + static_cast<std::ptrdiff_t>(frame.begin),
                   records_.begin() + static_cast<std::ptrdiff_t>(frame.end));
  }
  void insert(std::size_t place, const Bytes& bytes) {
    records_.insert(records_.begin() + static_cast<std::ptrdiff_t>(place), bytes.begin(),
                    bytes.end());
  }

  void move() {
    const Frame frame = pick();
    const Bytes bytes = bytes_of(frame);
    const std::size_t target = pick().begin;
    erase(frame);
    insert(target > frame.begin ? target - bytes.size() : target, bytes);
  }

  // The time of a record, or one near it.
  std::uint32_t time_near(Frame frame) {
    constexpr std::array<int, 10> steps = {0, 0, 0, 1, -1, 2, -2, 4, 30, -100};
    return time_at(records_, frame) +
           static_cast<std::uint32_t>(steps[random_.below(steps.size())]);
  }

  void change_time() {
    const Frame frame = pick();
    const std::size_t offset = fuzz::time_offset(view(records_), frame);
    if (offset == 0) return;
    std::uint32_t time = time_near(pick());
    if (random_.oneIn(20)) time = random_.oneIn(2) ? 0x3FFFFFFFu : 0xFFFFFFFFu;
    for (std::size_t i = 0; i < 4; ++i)
      records_[frame.begin + offset + i] = static_cast<std::uint8_t>(time >> (24 - 8 * i));
  }

  void change_word() {
    constexpr std::array<unsigned, 8> words = {0x8000, 0, 0xFFFF, 0x7FFF, 1, 0x0100, 498, 499};
    const Frame frame = pick();
    const std::size_t place = frame.begin + 2 + random_.below(frame.end - frame.begin);
    if (place + 2 > frame.end) return;
    const unsigned word = words[random_.below(words.size())];
    records_[place] = static_cast<std::uint8_t>(word >> 8);
    records_[place + 1] = static_cast<std::uint8_t>(word & 0xFF);
  }

  // Another type or the other eye for an event; other time bits for a sample.
  void change_tag() {
    std::uint8_t& high = records_[pick().begin];
    high = random_.oneIn(2) ? static_cast<std::uint8_t>(high ^ 0x40)
                            : static_cast<std::uint8_t>((high & 0xC0) | random_.below(31));
  }

  Bytes& records_;
  Random& random_;
  std::vector<Frame> frames_;
};

void edit_records(Bytes& records, Random& random) {
  const std::size_t edits = 1 + random.below(6);
  for (std::size_t i = 0; i < edits; ++i) RecordEditor(records, random).edit();
}

// The settings behind the records, a log included: the last bytes of the input.
constexpr std::size_t SETTINGS = 8;

std::size_t mutate_records(std::uint8_t* data, std::size_t size, std::size_t max_size,
                           Random& random) {
  const fuzz::Input input(data, size);
  const std::size_t head = fuzz::head_length(input);
  if (size < head + SETTINGS) return LLVMFuzzerMutate(data, size, max_size);
  const bool packed = fuzz::is_compressed(input);
  Bytes file = copy_of(input.first(head));
  Bytes records = fuzz::plain_records(input.first(size - SETTINGS));
  const Bytes settings = copy_of(input.last(SETTINGS));
  edit_records(records, random);
  if (packed) records = deflate_records(records);
  file.insert(file.end(), records.begin(), records.end());
  file.insert(file.end(), settings.begin(), settings.end());
  if (file.size() > max_size) return LLVMFuzzerMutate(data, size, max_size);
  std::copy(file.begin(), file.end(), data);
  return file.size();
}

// The last bytes choose how the file is opened.
std::size_t mutate_settings(std::uint8_t* data, std::size_t size, Random& random) {
  const std::size_t reach = std::min(size, SETTINGS + 8);
  if (reach == 0) return size;
  data[size - 1 - random.below(reach)] = static_cast<std::uint8_t>(random.next());
  return size;
}

}  // namespace

extern "C" std::size_t LLVMFuzzerCustomMutator(std::uint8_t* data, std::size_t size,
                                               std::size_t max_size, unsigned seed) {
  Random random(seed);
  const std::size_t choice = random.below(10);
  if (choice < 2) return LLVMFuzzerMutate(data, size, max_size);
  if (choice < 3) return mutate_settings(data, size, random);
  return mutate_records(data, size, max_size, random);
}

// The beginning of one input's records and the end of the other's, settings included.
extern "C" std::size_t LLVMFuzzerCustomCrossOver(const std::uint8_t* data1, std::size_t size1,
                                                 const std::uint8_t* data2, std::size_t size2,
                                                 std::uint8_t* out, std::size_t max_size,
                                                 unsigned seed) {
  Random random(seed);
  const fuzz::Input first(data1, size1), second(data2, size2);
  const std::size_t head1 = fuzz::head_length(first), head2 = fuzz::head_length(second);
  const std::vector<Frame> frames1 = fuzz::find_frames(first.subspan(head1));
  const std::vector<Frame> frames2 = fuzz::find_frames(second.subspan(head2));
  if (frames1.empty() || frames2.empty()) return 0;
  Bytes file = copy_of(first.first(head1 + frames1[random.below(frames1.size())].end));
  const Bytes rest = copy_of(second.subspan(head2 + frames2[random.below(frames2.size())].begin));
  file.insert(file.end(), rest.begin(), rest.end());
  if (file.size() > max_size) return 0;
  std::copy(file.begin(), file.end(), out);
  return file.size();
}
