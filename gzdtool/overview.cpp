// Keys and values of pages.
#include "overview.h"

#include <cmath>

namespace gzdtool {

namespace {

constexpr std::size_t loss_bins = 240;

Json json_of(const gzdtables::BlockFacts& block) {
  return {{"start", json_number(block.start)},
          {"end", json_number(block.end)},
          {"rate", json_number(block.rate)},
          {"eyes", block.eyes.empty() ? Json(nullptr) : Json(block.eyes)},
          {"samples", block.samples},
          {"filled", block.filled}};
}

Json json_of(const std::vector<Span>& spans) {
  Json list = Json::array();
  for (const auto& [start, end] : spans)
    list.push_back(Json::array({json_number(start), json_number(end)}));
  return list;
}

Json loss_of(const Trace& trace) {
  Json recorded = Json::array(), filled = Json::array(), left = Json::array(),
       right = Json::array();
  for (const LossBin& bin : trace.loss(loss_bins)) {
    recorded.push_back(bin.recorded);
    filled.push_back(bin.filled);
    left.push_back(bin.lost[0]);
    right.push_back(bin.lost[1]);
  }
  return {{"recorded", recorded}, {"filled", filled}, {"left", left}, {"right", right}};
}

Json tenths(float value) {
  constexpr double ten = 10.0;
  return json_number(std::round(static_cast<double>(value) * ten) / ten);
}

}  // namespace

Json facts_for_page(const gzdtables::Facts& facts) {
  Json json = gzdtool::json_of(facts);
  json["blocks"] = Json::array();
  for (const auto& block : facts.blocks) json["blocks"].push_back(json_of(block));
  return json;
}

Json summary_of(const Trace& trace) {
  Json curves = Json::array();
  for (std::size_t curve = 0; curve < curve_count; ++curve)
    curves.push_back(trace.has_curve(curve));
  return {{"first", json_number(trace.first())},
          {"last", json_number(trace.last())},
          {"samples", trace.samples()},
          {"curves", curves},
          {"loss", loss_of(trace)},
          {"filled", json_of(trace.filled())},
          {"gaps", json_of(trace.gaps())}};
}

Json json_of(const TraceWindow& window) {
  Json times = Json::array(), low = Json::array(), high = Json::array();
  for (const double time : window.times) times.push_back(json_number(std::round(time)));
  for (const auto& extents : window.extents) {
    Json lows = Json::array(), highs = Json::array();
    for (const Extent& extent : extents) {
      lows.push_back(tenths(extent.low));
      highs.push_back(tenths(extent.high));
    }
    low.push_back(std::move(lows));
    high.push_back(std::move(highs));
  }
  return {{"times", times}, {"low", low}, {"high", high}};
}

}  // namespace gzdtool
