// The cost of repairing very many events.
#include "repair/consistency.h"

#include <gtest/gtest.h>

#include "base/log.h"
#include "support/index_builder.h"

using namespace gzd;

namespace {

// Repairs it without a word, and in time that grows with it.
std::size_t repaired_size(Index& index) {
  set_log_function([](const char*) {});
  checkConsistency(index, true, [](UINT32) { return std::string_view(); });
  set_log_function(nullptr);
  return index.size();
}

TEST(StraySamples, AMillionCostAboutWhatAMillionGoodOnesCost) {
  IndexBuilder b;
  for (UINT32 t = 0; t < 1000000; ++t) b.sample(t);
  b.start(2000000).sample(2000001);
  EXPECT_EQ(repaired_size(b.index), 2u);
}

TEST(Blinks, AMillionUnpairedOnesAreNoBurden) {
  IndexBuilder b;
  for (UINT32 t = 0; t < 1500000; t += 5)
    b.start(t).event(GZD_END_BLINK, t + 1).event(GZD_START_BLINK, t + 2).end(t + 4);
  EXPECT_GT(repaired_size(b.index), 1200000u);
}

}  // namespace
