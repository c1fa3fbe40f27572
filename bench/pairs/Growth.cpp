#include "bench/pairs/Growth.h"

#include <fmt/format.h>

#include <exception>
#include <memory>
#include <utility>

#include "bench/pairs/Engine.h"
#include "bench/pairs/Memory.h"
#include "bench/pairs/Timing.h"
#include "bench/peers/sqlite/Database.h"

namespace kestra::bench {
namespace {

constexpr double kLongestMs = 5000;  // after this, larger sizes of a work are left out

struct Shape {
  const char* pName;
  std::string (*make)(uint32_t tokens);
};

constexpr const char* kHead = "SELECT Id FROM Many.Entry WHERE ";  // 7 tokens

std::string Repeat(const std::string& first, const std::string& further, uint32_t count) {
  std::string text = first;
  for (uint32_t i = 1; i < count; ++i) text += fmt::format(fmt::runtime(further), i);
  return text;
}

std::string List(uint32_t tokens) {
  return kHead + Repeat("Name IN ('string 0'", ", 'string {}'", (tokens - 12) / 2) + ")";
}

std::string OrChain(uint32_t tokens) {
  return kHead + Repeat("Id = 0", " OR Id = {}", (tokens - 8) / 4);
}

std::string Nested(uint32_t tokens) {
  const uint32_t depth = (tokens - 12) / 2;
  return kHead + std::string(depth, '(') + "Id = 1" + std::string(depth, ')');
}

std::string Joins(uint32_t tokens) {
  return Repeat("SELECT e0.Id FROM Many.Entry e0", " JOIN Many.Entry e{0} ON e0.Id = e{0}.Id",
                (tokens - 8) / 13);
}

constexpr Shape kShapes[] = {{"parse-list", List},
                             {"parse-or-chain", OrChain},
                             {"parse-parentheses", Nested},
                             {"parse-joins", Joins}};

using Tell = std::function<void(const GrowthPoint&)>;
// Sets up what has that size, and gives the piece to measure.
using MakePiece = std::function<Piece(uint32_t size)>;

GrowthPoint MeasurePoint(GrowthPoint point, const MakePiece& make) {
  try {
    const double before = HeapInUse();
    const Piece piece = make(point.size);
    piece();  // what is filled once is filled here
    point.bytes = HeapInUse() - before;
    const CStopwatch watch;
    piece();
    const double once = watch.Read().processor;
    point.nanoseconds = once < 1e9 ? MeasureBest(piece, once < 1e7 ? 20 : 5).processor : once;
  } catch (const std::exception& problem) {
    point.refusal = problem.what();
  }
  return point;
}

void MeasureSizes(const char* pWork, const char* pUnit, const std::vector<uint32_t>& sizes,
                  const MakePiece& make, const Tell& tell) {
  double last = 0;
  for (const uint32_t size : sizes) {
    GrowthPoint point{.work = pWork, .pUnit = pUnit, .size = size};
    if (last > kLongestMs * 1e6) {
      point.refusal = "left out: the size before took too long";
    } else {
      point = MeasurePoint(std::move(point), make);
      last = point.nanoseconds;
    }
    tell(point);
  }
}

void MeasureParsing(bool isQuick, const Tell& tell) {
  const std::vector<uint32_t> sizes =
      isQuick ? std::vector<uint32_t>{1024, 4096} : std::vector<uint32_t>{1024, 4096, 16384, 65535};
  CEngine engine;
  for (const Shape& shape : kShapes) {
    MeasureSizes(
        shape.pName, "token", sizes,
        [&](uint32_t tokens) -> Piece {
          return [&engine, text = shape.make(tokens)] { return engine.Parse(text); };
        },
        tell);
  }
}

// Each size has a tree of its own, that goes with its piece.
Piece CountRows(const std::string& text) {
  const auto engine = std::make_shared<CEngine>();
  return [=] { return engine->Number(text); };
}

void MeasureScan(bool isQuick, const Tell& tell) {
  const std::vector<uint32_t> sizes = isQuick
                                          ? std::vector<uint32_t>{10000, 100000}
                                          : std::vector<uint32_t>{10000, 100000, 1000000, 10000000};
  MeasureSizes(
      "scan", "row", sizes,
      [](uint32_t rows) {
        return CountRows(fmt::format(
            "SELECT COUNT(*) FROM Many(Count={}).Entry WHERE Group > 90 AND Name LIKE '*7'", rows));
      },
      tell);
}

void MeasureJoin(bool isQuick, const Tell& tell) {
  const std::vector<uint32_t> sizes = isQuick
                                          ? std::vector<uint32_t>{1000, 3000}
                                          : std::vector<uint32_t>{1000, 3000, 10000, 30000, 100000};
  MeasureSizes(
      "join", "row", sizes,
      [](uint32_t rows) {
        return CountRows(
            fmt::format("SELECT COUNT(*) FROM Many(Count={0}).Entry a JOIN Many(Count={0}).Entry b "
                        "ON a.Id = b.Id",
                        rows));
      },
      tell);
  MeasureSizes(
      "join-sqlite", "row", sizes,
      [](uint32_t rows) -> Piece {
        const auto database = std::make_shared<CDatabase>(rows);
        return [=] {
          return database->Number(
              "SELECT COUNT(*) FROM Many.Entry a JOIN Many.Entry b ON a.Id = b.Id");
        };
      },
      tell);
}

}  // namespace

void MeasureGrowth(const std::string& name, bool isQuick, const Tell& tell) {
  if (name == "parse") MeasureParsing(isQuick, tell);
  if (name == "scan") MeasureScan(isQuick, tell);
  if (name == "join") MeasureJoin(isQuick, tell);
}

}  // namespace kestra::bench
