#include "bench/pairs/Memory.h"

#include <fmt/format.h>
#include <malloc.h>

#include <stdexcept>
#include <string>
#include <vector>

#include "bench/pairs/Engine.h"

namespace kestra::bench {
namespace {

struct Five {
  uint32_t id;
  std::string name;
  std::string path;
  uint32_t size;
  uint32_t time;
};

}  // namespace

double HeapInUse() {
  const struct mallinfo2 info = mallinfo2();
  return static_cast<double>(info.uordblks) + static_cast<double>(info.hblkhd);
}

double TreeBytes(uint32_t count, bool isLookedAt) {
  CEngine engine;
  const auto countItems = [&](uint32_t number) {
    return engine.Number(fmt::format("SELECT COUNT(*) FROM Five(Count={}).Item", number));
  };
  countItems(1);  // the classes, and what is made at a first query
  const double before = HeapInUse();
  if (countItems(count) != count) throw std::runtime_error("not all items are there");
  if (isLookedAt) {
    const std::string all =
        "SELECT COUNT(*) FROM Five(Count={}).Item WHERE Id >= 0 AND Name LIKE '*' AND Path LIKE "
        "'*' AND Size >= 0 AND LastWriteTime > '2000-01-01'";
    if (engine.Number(fmt::format(fmt::runtime(all), count)) != count) {
      throw std::runtime_error("not all items have the five values");
    }
  }
  return HeapInUse() - before;
}

double StructBytes(uint32_t count) {
  const double before = HeapInUse();
  std::vector<Five> items;
  items.reserve(count);
  for (uint32_t i = 0; i < count; ++i) {
    items.push_back({i, FiveName(i), FivePath(i), FiveSize(i), FiveTime(i)});
  }
  return HeapInUse() - before;
}

}  // namespace kestra::bench
