#include <gtest/gtest.h>

#include <atomic>
#include <stdexcept>
#include <vector>

#include "VLib/src/threads/WorkTogether.h"

namespace kestra {
namespace {

TEST(WorkTogether, DoesEachPartOnce) {
  for (const uint32_t helpers : {0u, 1u, 3u}) {
    std::vector<std::atomic<int>> done(1000);
    std::atomic<size_t> next{0};
    WorkTogether(helpers, [&] {
      for (size_t i = next++; i < done.size(); i = next++) ++done[i];
    });
    for (const std::atomic<int>& times : done) EXPECT_EQ(times, 1) << helpers;
  }
}

TEST(WorkTogether, ThrowsOnWhenAllHaveEnded) {
  std::atomic<int> calls{0}, ended{0};
  const auto work = [&] {
    struct CountEnd {
      std::atomic<int>& ended;
      ~CountEnd() { ++ended; }
    } const count{ended};
    if (++calls == 2) throw std::runtime_error("second");
  };
  EXPECT_THROW(WorkTogether(2, work), std::runtime_error);
  EXPECT_EQ(calls, ended);
  EXPECT_EQ(calls, 3);
}

}  // namespace
}  // namespace kestra
