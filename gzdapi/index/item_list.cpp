// Entries put into words and marks and taken out of them, and what moves them.
#include "index/item_list.h"

#include <algorithm>
#include <limits>

namespace gzd {

namespace {

// Samples of which a span of a list with odd ones makes sure that they are plain.
constexpr std::size_t most_looked_through = 64;

}  // namespace

void ItemList::push_back(const GZDItem& item) {
  if (!item.isSample()) {
    marks_.push_back(packLandmark(item, size()));
    return;
  }
  const UINT64 word = packSample(item);
  samples_.push_back(word);
  if (isPlain(word))
    noteStamp(item.getTimeStamp());
  else
    rising_ = false;
}

// ---- samples ------------------------------------------------------------------------------------

void ItemList::addSamples(std::size_t count, PlainSample first, PlainSample distance) {
  if (count == 0) return;
  const auto at = [&](std::size_t number) {
    return PlainSample{first.position + static_cast<INT64>(number) * distance.position,
                       first.stamp + number * distance.stamp};
  };
  const PlainSample last = at(count - 1);
  if (!fits(first.position, first.stamp) || !fits(last.position, last.stamp)) {
    for (std::size_t i = 0; i < count; ++i) addSample(at(i).position, at(i).stamp);
    return;
  }
  const UINT64 word = plain(first.position, first.stamp);
  const UINT64 step =
      plain(first.position + distance.position, first.stamp + distance.stamp) - word;
  samples_.append({nullptr, word, step, count});
  noteStamp(first.stamp);
  risingFrom_ = last.stamp + 1;
}

UINT64 ItemList::packSample(const GZDItem& item) {
  constexpr UINT16 blink_bits = GZDItem::left_inside_blink | GZDItem::right_inside_blink;
  const UINT64 stamp = item.getTimeStamp();
  if (base_ == no_base) base_ = stamp - std::min(stamp, stamps_before_first);
  if ((item.getDetailedType() & ~blink_bits) != GZD_SAMPLE || !fits(item.getFilePos(), stamp)) {
    hasOddSamples_ = true;
    return UINT64{addOther(item)} << other_shift | odd_bit;
  }
  UINT64 word = plain(item.getFilePos(), stamp);
  if (item.isSampleInsideBlink(GZD_LEFT_EYE)) word |= in_left_blink;
  if (item.isSampleInsideBlink(GZD_RIGHT_EYE)) word |= in_right_blink;
  return word;
}

GZDItem ItemList::unpackSample(UINT64 word) const {
  if (!isPlain(word)) return otherOf(word);
  GZDItem item(positionOf(word), GZD_SAMPLE, SIDE_NONE, 0, stampOf(word));
  if ((word & in_left_blink) != 0) item.markSampleInsideBlink(GZD_LEFT_EYE);
  if ((word & in_right_blink) != 0) item.markSampleInsideBlink(GZD_RIGHT_EYE);
  return item;
}

ItemList::Span ItemList::spanFrom(UINT32 place) const {
  if (!isPlainAt(place)) return {};
  SampleWords::Run run = samples_.runFrom(place - gap_.number);
  std::size_t count = std::min(run.count, gap_.begin + gap_.count - place);
  if (hasOddSamples_) {
    const std::size_t most = std::min(count, most_looked_through);
    for (count = 1; count < most && isPlain(run[count]);) ++count;
  }
  run.count = count;
  return {place, run, base_};
}

// The words of regular runs differ by one step, in which a place may carry over into the stamp: the
// stamps do so too when the last is where the first two say.
UINT64 ItemList::stepOf(const SampleWords::Run& run) {
  if (run.words != nullptr || run.count < 2) return 0;
  const auto stamp = [&run](std::size_t i) { return run[i] >> stamp_shift; };
  const UINT64 step = stamp(1) - stamp(0);
  return stamp(run.count - 1) - stamp(0) == (run.count - 1) * step ? step : 0;
}

bool ItemList::samplesRise(std::size_t first, std::size_t last) const {
  UINT64 from = 0;
  while (first < last) {
    SampleWords::Run run = samples_.runFrom(first);
    run.count = std::min(run.count, last - first);
    first += run.count;
    const bool isSteady = isPlain(run[0]) && isPlain(run.step) && stepOf(run) - 1 < stamp_limit / 2;
    const std::size_t step = isSteady ? run.count - 1 : 1;
    for (std::size_t i = 0; i < run.count; i += step) {
      if (!isPlain(run[i]) || stampOf(run[i]) < from) return false;
      from = stampOf(run[i]) + 1;
    }
  }
  return true;
}

// ---- landmarks ----------------------------------------------------------------------------------

ItemList::Mark ItemList::packLandmark(const GZDItem& item, std::size_t place) {
  constexpr UINT64 largest = std::numeric_limits<UINT32>::max();
  const UINT64 stamp = item.getTimeStamp();
  if (eventBase_ == no_base && !item.isRecording()) {
    eventBase_ = stamp - std::min(stamp, stamps_before_first);
  }
  const auto where = static_cast<UINT32>(place);
  if (item.isRecording() || item.getDetailedType() == 0 || stamp - eventBase_ > largest) {
    return {where, static_cast<UINT32>(addOther(item)), 0, 0, 0};
  }
  return {where, static_cast<UINT32>(item.getFilePos() + 1),
          static_cast<UINT32>(stamp - eventBase_), item.getDetailedType(), item.getLastTag()};
}

void ItemList::setLandmark(std::size_t number, const GZDItem& item) {
  Mark& mark = marks_[number];
  if (mark.detail == 0)
    others_[mark.placeInFile] = item;
  else
    mark = packLandmark(item, mark.place);
}

// Looks at the next gap first, then near the one asked for last.
const ItemList::Gap& ItemList::findGap(std::size_t place) const {
  const auto isBefore = [&](std::size_t number) { return marks_[number].place < place; };
  const std::size_t count = marks_.size(), next = gap_.number + 1;
  if (next < count && isBefore(next - 1) && !isBefore(next)) return enterGap(next);
  std::size_t low = std::min(gap_.number, count), high = low;
  std::size_t reach = 1;
  if (low < count && isBefore(low)) {
    for (++low; low + reach <= count && isBefore(low + reach - 1); reach *= 2) low += reach;
    high = std::min(count, low + reach - 1);
  } else {
    for (; reach <= high && !isBefore(high - reach); reach *= 2) high -= reach;
    low = high - std::min(reach, high);
  }
  while (low < high) {
    const std::size_t middle = low + (high - low) / 2;
    (isBefore(middle) ? low : high) = isBefore(middle) ? middle + 1 : middle;
  }
  return enterGap(low);
}

const ItemList::Gap& ItemList::enterGap(std::size_t number) const {
  gap_.begin = number == 0 ? 0 : marks_[number - 1].place + std::size_t{1};
  gap_.count = (number < marks_.size() ? marks_[number].place : size()) - gap_.begin;
  gap_.number = number;
  return gap_;
}

// ---- order --------------------------------------------------------------------------------------

void ItemList::arrange(std::size_t number, const std::vector<Landmark>& landmarks) {
  std::vector<Mark> marks;
  marks.reserve(landmarks.size());
  for (const Landmark landmark : landmarks) {
    marks.push_back(marks_[landmark.number]);
    marks.back().place = landmark.place;
  }
  std::copy(marks.begin(), marks.end(), marks_.begin() + static_cast<std::ptrdiff_t>(number));
  gap_ = Gap{.number = number};
}

void ItemList::reorder(std::size_t first, const std::vector<UINT32>& order) {
  const std::size_t firstMark = gapAt(first).number;
  const std::size_t firstSample = first - firstMark;
  std::vector<Mark> marks;
  std::vector<UINT64> words;
  for (std::size_t i = 0; i < order.size(); ++i) {
    const std::size_t from = first + order[i];
    const Gap& gap = gapAt(from);
    if (!isLandmark(gap, from)) {
      words.push_back(samples_[from - gap.number]);
      continue;
    }
    marks.push_back(marks_[gap.number]);
    marks.back().place = static_cast<UINT32>(first + i);
  }
  std::copy(marks.begin(), marks.end(), marks_.begin() + static_cast<std::ptrdiff_t>(firstMark));
  samples_.replace(firstSample, words);
  gap_ = Gap{.number = firstMark};
  const std::size_t last = std::min(firstSample + words.size() + 1, samples_.size());
  rising_ = rising_ && samplesRise(firstSample - std::min<std::size_t>(firstSample, 1), last);
}

void ItemList::Rebuild::take(std::size_t first, std::size_t last, bool left, bool right) {
  const std::size_t mark = list_.gapAt(first).number;
  const std::size_t lastMark = list_.gapAt(last).number;
  const std::size_t size = samples_.size() + marks_.size();
  takeSamples(first - mark, last - lastMark,
              (left ? in_left_blink : 0) | (right ? in_right_blink : 0));
  for (std::size_t number = mark; number < lastMark; ++number) {
    marks_.push_back(list_.marks_[number]);
    marks_.back().place = static_cast<UINT32>(size + (marks_.back().place - first));
  }
}

void ItemList::Rebuild::takeSamples(std::size_t first, std::size_t last, UINT64 blinks) {
  if (blinks == 0 || !list_.hasOddSamples_)
    return samples_.append(list_.samples_, first, last, blinks);
  for (; first < last; ++first) {
    const UINT64 word = list_.samples_[first];
    samples_.push_back(isPlain(word) ? word | blinks : word);
    if (isPlain(word)) continue;
    GZDItem& item = list_.others_[static_cast<std::size_t>(word >> other_shift)];
    if ((blinks & in_left_blink) != 0) item.markSampleInsideBlink(GZD_LEFT_EYE);
    if ((blinks & in_right_blink) != 0) item.markSampleInsideBlink(GZD_RIGHT_EYE);
  }
}

void ItemList::Rebuild::add(const GZDItem& item) {
  if (item.isSample())
    samples_.push_back(list_.packSample(item));
  else
    marks_.push_back(list_.packLandmark(item, samples_.size() + marks_.size()));
}

void ItemList::Rebuild::finish() {
  list_.samples_ = std::move(samples_);
  list_.marks_ = std::move(marks_);
  list_.gap_ = Gap();
  list_.rising_ = list_.samplesRise(0, list_.samples_.size());
}

}  // namespace gzd
