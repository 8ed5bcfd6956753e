// 1. The stream is walked record by record, up to its zero tag. Each record that can be handed out
//    gets an entry, in file order; boundaries are paired (boundaries), pieces of long messages
//    grouped (long_message), gaps between samples filled (gap_filling).
// 2. Fixations that end before they start are mended (fixation_repair).
// 3. The entries are put into time order (time_order).
// 4. Missing samples at block starts are filled, irregular periods counted (gap_filling).
// Steps 2 and 4 and the filling of gaps only when consistency is to be fixed.
#include "scan/prescan.h"

#include <algorithm>
#include <cerrno>
#include <memory>

#include "base/log.h"
#include "order/time_order.h"
#include "record/event_decoder.h"
#include "record/record_stream.h"
#include "record/sample_decoder.h"
#include "repair/fixation_repair.h"
#include "repair/gap_filling.h"
#include "scan/boundaries.h"
#include "scan/long_message.h"
#include "scan/regular_samples.h"
#include "scan/troubleshoot.h"

namespace gzd {

namespace {

// Events before the first estimate of how many there will be.
constexpr std::size_t events_for_estimate = 16384;
// The first estimate goes no higher, whatever the records before it look like.
constexpr double most_events_per_byte = 1.0 / 8.0;
// Nor is room made for more at once.
constexpr std::size_t largest_room = std::size_t{1} << 28;

// Each adds little to the index.
constexpr unsigned turns_per_check = 64;

constexpr float largest_rate_told = 1e9f;

bool is_boundary(int type) {
  return type >= GZD_START_SAMPLES && type <= GZD_END_EVENTS;
}
bool is_boundary_of_samples(int type) {
  return type == GZD_START_SAMPLES || type == GZD_END_SAMPLES;
}
bool is_block_start(int type) {
  return type == GZD_START_SAMPLES || type == GZD_START_EVENTS;
}

class Scan {
 public:
  Scan(InputStream& in, StreamState& streamState, const ScanOptions& scanOptions, Index& target)
      : file_(in),
        state_(streamState),
        options_(scanOptions),
        index_(target),
        trace_(in, scanOptions.debugFileName),
        fileSize_(in.getFileSize()) {
    index_.parameterEpochs.push_back({0, state_.parameters});
  }

  void run() {
    for (unsigned turn = 0; !ended_; ++turn) {
      if (turn % turns_per_check == 0) checkSize();
      if (readRegularSamples()) continue;
      recordStart_ = file_.getFilePos();
      const NextRecord kind = nextRecord();
      trace_.follow(file_, static_cast<int>(kind));
      const INT64 position = file_.getFilePos();
      switch (kind) {
        case NextRecord::End:
          endAtTag();
          break;
        case NextRecord::Event:
          readEvent(position);
          break;
        case NextRecord::Sample:
          readSample(position);
          break;
      }
    }
    trace_.finish(file_);
    if (endsAtLimit_ && !hasStopped_) stopAt(GZD_FINDING_TOO_LARGE, file_.getFilePos());
    finish();
  }

 private:
  NextRecord nextRecord() {
    if (!options_.failsafe) return next_combfile_item(file_, state_);
    bool behindClosingTag = false;
    try {
      const NextRecord kind = next_combfile_item(file_, state_);
      if (kind != NextRecord::End) return kind;
      behindClosingTag = true;
      recordStart_ = file_.getFilePos();
      return next_combfile_item(file_, state_);
    } catch (const GZDException& error) {
      log_clipped("Error reading items %s \n", error.getMessage());
      sortItems(index_);
      stopAt(behindClosingTag ? GZD_FINDING_UNREAD : GZD_FINDING_CUT, recordStart_);
      return NextRecord::End;
    }
  }

  // What lies after the closing tag is not read.
  void endAtTag() {
    ended_ = true;
    if (!hasStopped_) stopAt(GZD_FINDING_UNREAD, file_.getFilePos());
  }

  // Notes that nothing is read from `place` on.
  void stopAt(int kind, INT64 place) {
    hasStopped_ = true;
    const INT64 left = std::max<INT64>(fileSize_ - place, 0) + file_.bytesBehind();
    if (kind == GZD_FINDING_UNREAD && left == 0) return;
    const int reason = kind == GZD_FINDING_UNREAD ? 0 : file_.getReadError().reason;
    const std::size_t entries = index_.gzdItemList.size();
    const INT64 time =
        entries != 0 ? found_at(index_.gzdItemList.stampAt(entries - 1)) : Finding::none_found;
    index_.findings.add({.kind = reason != 0 ? GZD_FINDING_READ_ERROR : kind,
                         .detail = reason,
                         .count = left,
                         .place = place,
                         .start = time,
                         .end = time});
  }

  void noteTimes(UINT32 firstTime, UINT32 lastTime) {
    if (!anyRecord_) index_.minTime = firstTime;
    anyRecord_ = true;
    index_.maxTime = std::max(index_.maxTime, std::max(firstTime, lastTime));
  }

  // Whether the scan goes on after the record at `position`.
  void notePosition(INT64 position) {
    if (position <= last_record_place) return;
    print_log(
        "WARNING: The GZD file is larger than 2 GB. The gzdconv tool can only handle GZD files up "
        "to 2 GB. Data after the 2 GB limit will be discarded.\n");
    ended_ = endsAtLimit_ = true;
  }

  // Ends the scan at a record that cannot be read, or throws.
  void failToRead(int errorNumber, const char* kind, const char* message) {
    print_log("error reading gzd file %d\n", errorNumber);
    if (!options_.failsafe) throw GZDException("%s", message);
    print_log("Unexpected file read error while reading %s; simulating end reached. \n", kind);
    ended_ = true;
    stopAt(file_.eof() ? GZD_FINDING_CUT : GZD_FINDING_DAMAGE, recordStart_);
  }

  // ---- events -----------------------------------------------------------------------------------

  void readEvent(INT64 position) {
    const UINT16 tag = state_.last_tag;
    const int result = with_errors_caught(options_.failsafe, [&] {
      if (glance_at_eye_event(file_, state_, tag, event_)) return 0;
      return decode_event(file_, state_, tag, text_, event_);
    });
    notePosition(position);
    if (result < 0) return failToRead(1, "event", "Error reading event - type(preScan)");
    noteTimes(event_.sttime, event_.entime);
    if (is_block_start(event_.type)) noteParameters(position);
    if (state_.unknown_field != 0) note(GZD_FINDING_UNKNOWN_FIELD, state_.unknown_field);
    if (state_.rate_assumed) note(GZD_FINDING_RATE_ASSUMED, static_cast<int>(rateNamed()));
    if (options_.failsafe && event_.type == 0) {
      print_log("Unexpected event type tag 0. Skipping event \n");
      note(GZD_FINDING_EVENT_SKIPPED, event_.type);
    } else if (is_boundary(event_.type)) {
      indexBoundary();
    } else if (options_.loadEvents && position <= largest_position) {
      indexEvent(position, tag);
    }
  }

  // Notes what is found of the event at hand.
  void note(int kind, int detail) {
    const INT64 stamp = found_at(stamp_of_time(event_.sttime));
    index_.findings.add(
        {.kind = kind, .detail = detail, .place = recordStart_, .start = stamp, .end = stamp});
  }

  // The rate in the record at hand, of a block's start.
  [[nodiscard]] float rateNamed() const { return std::clamp(event_.avel, 0.0f, largest_rate_told); }

  void noteParameters(INT64 position) {
    if (index_.parameterEpochs.back().parameters == state_.parameters) return;
    index_.parameterEpochs.push_back({position, state_.parameters});
  }

  void indexBoundary() {
    const bool kept =
        is_boundary_of_samples(event_.type) ? options_.loadSamples : options_.loadEvents;
    clock_.forgetTimes();
    if (is_block_start(event_.type)) clock_.forgetPeriod();
    if (!kept) return;
    if (event_.type == GZD_END_SAMPLES) adjustSampleFlags();
    pairing_.add(index_, make_boundary(event_, state_, index_),
                 static_cast<UINT64>(static_cast<int>(2 * state_.sam_per_sec)));
  }

  // A block can announce head data that its samples do not have: kind 15 without all its words
  // takes the bit back; a bit that blocks do not use tells of all words.
  void adjustSampleFlags() {
    Recording* const block = index_.newestRecording();
    if (block == nullptr || !block->isStart()) return;
    const int htype = newestSample_.htype;
    constexpr int kind_without_data = 15;
    if (head_words(htype) == max_head_words) {
      block->sflags |= SMP_IS_SAMPLE;
    } else if ((newestSample_.flags & SMP_HEAD_DATA) != 0 && htype >> 4 == kind_without_data) {
      block->sflags &= static_cast<UINT16>(~SMP_HEAD_DATA);
    }
  }

  void indexEvent(INT64 position, UINT16 tag) {
    const int type = event_.type;
    if (options_.failsafe && event_.sttime == 0 && isTimedByStart(type)) {
      print_log("Unexpected time stamp 0. Skipping event \n");
      note(GZD_FINDING_EVENT_SKIPPED, type);
      return;
    }
    if (!is_known_event_type(type)) note(GZD_FINDING_UNKNOWN_KIND, type);
    if (type <= GZD_END_PARSE || type == GZD_RECORDING) return;
    if (type == GZD_INPUT) index_.inputType |= INPUT_EVENTS;
    fixations_.follow(event_, index_);
    const GZDItem item(position, type, side_of_event(type, event_.eye), tag,
                       stamp_of_time(is_eye_event_end(type) ? event_.entime : event_.sttime));
    makeRoom(position);
    if (event_.message == nullptr)
      index_.gzdItemList.push_back(item);
    else
      messages_.add(index_, item, text_of(event_.message));
  }

  static bool isTimedByStart(int type) {
    return type == GZD_START_PARSE || type == GZD_START_BLINK || type == GZD_START_SACCADE ||
           type == GZD_START_FIXATION;
  }

  // ---- samples ----------------------------------------------------------------------------------

  // Nearly every record is a sample like the one before, at the regular distance, and whole in the
  // window: reads as many of them as there are. Returns false when the next record is another.
  bool readRegularSamples() {
    const std::size_t longest_record =
        sizeof(UINT16) + longest_fixed_part + (layout_.hasBlocks ? blocks_.length() : 0);
    const bool checksGaps = options_.fixConsistency && options_.loadSamples;
    if (!canBeShort_ || (options_.loadSamples && !clock_.isTicking(checksGaps))) return false;
    const byte* const start = file_.peek(longest_record);
    if (start == nullptr || !layout_.suits(load_be16(start))) return false;
    const std::size_t available = file_.available();
    const INT64 position = file_.getFilePos();
    if (position + static_cast<INT64>(available) > last_record_place) return false;

    const RegularRun run =
        read_regular_samples({.layout = layout_,
                              .blocks = blocks_,
                              .record = start,
                              .last = start + (available - longest_record),
                              .position = position,
                              .time = state_.curr_time,
                              .stamp = static_cast<UINT64>(clock_.previousStamp()),
                              .largestStep = clock_.largestStep(checksGaps)},
                             options_.loadSamples ? &index_.gzdItemList : nullptr);
    if (run.newest == nullptr) return false;
    glance_at_fixed_part(run.newest, run.timeBefore, layout_, newestSample_);
    file_.take(static_cast<std::size_t>(run.end - start));
    state_.curr_time = run.time;
    index_.maxTime = std::max(index_.maxTime, run.time);
    if (options_.loadSamples) {
      clock_.advance(run.timeBefore);
      clock_.advance(run.time);
      noteKind(run.hasNegativePupil, run.hasInput);
    }
    return true;
  }

  void readSample(INT64 position) {
    const UINT16 tag = state_.last_tag;
    const int result = with_errors_caught(options_.failsafe, [&] {
      newestSample_ = glance_at_sample(file_, state_, tag, layout_);
      return 0;
    });
    notePosition(position);
    if (result < 0) return failToRead(2, "sample", "Error reading Sample - type");
    noteTimes(newestSample_.time, newestSample_.time);
    if (layout_.hasBlocks) blocks_ = blocks_of_record(file_, position, layout_);
    canBeShort_ = (!layout_.hasBlocks || blocks_.isKnown()) && !trace_.isOn();
    if (options_.loadSamples && position <= largest_position) indexSample(position);
  }

  void noteKind(bool hasNegativePupil, bool hasInput) {
    hasRawSamples_ |= hasNegativePupil;
    if (hasInput) index_.inputType |= INPUT_IN_SAMPLES;
  }

  void indexSample(INT64 position) {
    noteKind(newestSample_.hasNegativePupil, newestSample_.input != NOT_RECORDED_WORD);
    const UINT64 stamp = clock_.stampOf(newestSample_.time);
    if (options_.fixConsistency) clock_.fillGap(index_, stamp, state_.sam_per_sec, dummies_);
    index_.gzdItemList.addSample(position, stamp);
    clock_.advance(newestSample_.time);
  }

  // When the size of the records shows how many events there will be: growing step by step would
  // hold them twice.
  void makeRoom(INT64 position) {
    const std::size_t count = index_.gzdItemList.landmarkCount();
    if (count < roomForEvents_ || fileSize_ <= position) return;
    const double mostPerByte = hasEstimate_ ? 1.0 : most_events_per_byte;
    hasEstimate_ = true;
    const double eventsPerByte =
        std::min(static_cast<double>(count) / static_cast<double>(position), mostPerByte);
    const auto estimate =
        static_cast<std::size_t>(static_cast<double>(fileSize_) * eventsPerByte * 1.05);
    index_.gzdItemList.reserveLandmarks(
        std::clamp(estimate, count + count / 4, std::max(largest_room, count + count / 4)));
    roomForEvents_ = index_.gzdItemList.landmarkRoom();
  }

  // Throws for an index that no machine should be asked to hold.
  void checkSize() const {
    if (index_.bytes() <= options_.largestIndex) return;
    throw GZDException("The index of this recording would take more than %u MB of memory",
                       static_cast<unsigned>(options_.largestIndex >> 20))
        .because({.reason = ENOMEM});
  }

  // ---- the whole index --------------------------------------------------------------------------

  void finish() {
    if (options_.fixConsistency) fixations_.repair(index_);
    sortItems(index_);
    if (!options_.fixConsistency) return;
    if (!hasRawSamples_) pad_block_starts(index_, dummies_);
    report_sample_periods(index_);
  }

  InputStream& file_;
  StreamState& state_;
  const ScanOptions& options_;
  Index& index_;
  DebugTrace trace_;
  const INT64 fileSize_;

  EData event_;
  MessageText text_;
  SampleLayout layout_;
  BlockChain blocks_;        // of the sample read last, when its layout has some
  bool canBeShort_ = false;  // the records of this layout need no more than their fixed part
  SampleGlance newestSample_;
  BoundaryPairing pairing_;
  MessageGrouping messages_;
  FixationRepair fixations_;
  SampleClock clock_;
  DummyBudget dummies_;
  bool hasRawSamples_ = false;
  bool anyRecord_ = false;
  bool hasEstimate_ = false;
  std::size_t roomForEvents_ = events_for_estimate;
  INT64 recordStart_ = 0;  // where the tag of the record at hand stands
  bool endsAtLimit_ = false;
  bool hasStopped_ = false;  // before the end of the file
  bool ended_ = false;
};

}  // namespace

void preScan(InputStream& file, StreamState& state, const ScanOptions& options, Index& index) {
  Scan(file, state, options, index).run();
}

}  // namespace gzd
