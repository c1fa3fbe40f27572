#include "bench/pairs/Works.h"

#include <fmt/format.h>

#include <memory>
#include <utility>

#include "bench/pairs/Engine.h"
#include "bench/peers/sqlite/Database.h"

namespace kestra::bench {
namespace {

constexpr const char* kShort =
    "SELECT PID, ImageName FROM Processes.Process WHERE MemoryUsage > 1000";
constexpr const char* kJoinWithSubSelect =
    "SELECT c.PID, c.ImageName, p.ImageName FROM Processes.Process c JOIN Processes.Process p "
    "ON c.ParentProcessID = p.PID WHERE c.MemoryUsage > (SELECT MIN(m.MemoryUsage) FROM "
    "Processes.Process m WHERE m.PID <> c.PID) AND p.ImageName LIKE 'a*'";
constexpr uint32_t kListLength = 10000;

struct Sides {
  explicit Sides(uint32_t rows) : database(rows) {}
  CEngine engine;
  CDatabase database;
};

std::shared_ptr<Sides> MakeSides(uint32_t rows) {
  return std::make_shared<Sides>(rows);
}

// The same text on both sides.
Pair Preparing(const std::string& text) {
  const auto sides = MakeSides(1000);
  return {[=] { return sides->engine.Parse(text); },
          [=] {
            sides->database.Prepare(text);
            return 0;
          }};
}

std::string LongList() {
  std::string text = "SELECT Id FROM Many.Entry WHERE Name IN (";
  for (uint32_t i = 0; i < kListLength; ++i) {
    text += fmt::format("{}'string number {}'", i == 0 ? "" : ", ", i);
  }
  return text + ")";
}

// Two texts that ask the same; each gives one number.
Pair Counting(uint32_t rows, std::string ourText, std::string peerText) {
  const auto sides = MakeSides(rows);
  return {[=] { return sides->engine.Number(ourText); },
          [=] { return sides->database.Number(peerText); }};
}

// In the engine's texts the module's argument stands for the size of the peer's table.
std::string Entries(uint32_t rows) {
  return fmt::format("Many(Count={}).Entry", rows);
}

Pair FilterScan(uint32_t rows) {
  return Counting(
      rows,
      fmt::format("SELECT COUNT(*) FROM {} WHERE Group > 90 AND Name LIKE '*7'", Entries(rows)),
      "SELECT COUNT(*) FROM Many.Entry WHERE \"Group\" > 90 AND Name LIKE '%7'");
}

Pair EqualityJoin(uint32_t rows) {
  return Counting(
      rows, fmt::format("SELECT COUNT(*) FROM {0} a JOIN {0} b ON a.Id = b.Id", Entries(rows)),
      "SELECT COUNT(*) FROM Many.Entry a JOIN Many.Entry b ON a.Id = b.Id");
}

Pair CorrelatedSubSelect(uint32_t rows) {
  return Counting(rows,
                  fmt::format("SELECT COUNT(*) FROM {0} a WHERE a.Group = (SELECT b.Group FROM {0} "
                              "b WHERE b.Id = a.Id)",
                              Entries(rows)),
                  "SELECT COUNT(*) FROM Many.Entry a WHERE a.\"Group\" = (SELECT b.\"Group\" FROM "
                  "Many.Entry b WHERE b.Id = a.Id)");
}

int64_t TextSum(const char* pText, size_t length) {
  return static_cast<int64_t>(length) + pText[length - 1];
}

// Reads both columns of each row of a result.
int64_t ReadRows(const Value& result) {
  int64_t sum = 0;
  std::string buffer;
  const ValueVector& rows = result.asVector();
  for (size_t i = 0; i < rows.Count(); ++i) {
    const ValueVector& row = rows[i].asVector();
    const std::string_view text = row[1].asText(buffer);
    sum += row[0].asLong() + TextSum(text.data(), text.size());
  }
  return sum;
}

int64_t ReadRow(sqlite3_stmt* pRow) {
  const auto* pText = reinterpret_cast<const char*>(sqlite3_column_text(pRow, 1));
  return sqlite3_column_int64(pRow, 0) +
         TextSum(pText, static_cast<size_t>(sqlite3_column_bytes(pRow, 1)));
}

constexpr const char* kPeerColumns = "SELECT Id, Name FROM Many.Entry";

std::string OurColumns(uint32_t rows) {
  return fmt::format("SELECT Id, Name FROM {}", Entries(rows));
}

// Both sides keep all rows: ours as the query's value, the peer as a host keeps what is gone with
// the next step.
Pair ColumnsKept(uint32_t rows) {
  const auto sides = MakeSides(rows);
  const auto keep = [=] {
    std::vector<std::pair<int64_t, std::string>> kept;
    sides->database.Run(kPeerColumns, [&](sqlite3_stmt* pRow) {
      const auto* pText = reinterpret_cast<const char*>(sqlite3_column_text(pRow, 1));
      const auto length = static_cast<size_t>(sqlite3_column_bytes(pRow, 1));
      kept.emplace_back(sqlite3_column_int64(pRow, 0), std::string(pText, length));
    });
    return static_cast<int64_t>(kept.size());
  };
  const std::string text = OurColumns(rows);
  return {[=] { return static_cast<int64_t>(sides->engine.Run(text).asVector().Count()); }, keep};
}

// Both sides look at each value; the peer keeps none of them, and ours has them all.
Pair ColumnsRead(uint32_t rows) {
  const auto sides = MakeSides(rows);
  const auto read = [=] {
    int64_t sum = 0;
    sides->database.Run(kPeerColumns, [&](sqlite3_stmt* pRow) { sum += ReadRow(pRow); });
    return sum;
  };
  const std::string text = OurColumns(rows);
  return {[=] { return ReadRows(sides->engine.Run(text)); }, read};
}

}  // namespace

std::vector<Work> AllWorks(bool isQuick) {
  const uint32_t rows = isQuick ? 100000 : 1000000;
  const uint32_t joined = isQuick ? 1000 : 10000;
  return {
      {"parse", "parse and bind, short query", "query", 1, 1.0, 0.5,
       [] { return Preparing(kShort); }},
      {"parse-join", "parse and bind, join with sub-select", "query", 1, 1.0, 0.5,
       [] { return Preparing(kJoinWithSubSelect); }},
      {"parse-list", "parse and bind, list of 10,000 strings", "string", kListLength, 0.5, 0.25,
       [] { return Preparing(LongList()); }},
      {"scan", "filter scan, number test and LIKE", "row", rows, 1.0, 0.33,
       [=] { return FilterScan(rows); }},
      {"columns", "two columns of all rows, each value read", "row", rows, 1.5, 0.7,
       [=] { return ColumnsRead(rows); }},
      {"columns-kept", "two columns of all rows, all kept", "row", rows, 1.5, 0.7,
       [=] { return ColumnsKept(rows); }},
      {"join", fmt::format("join on equality, {0} by {0}", joined), "row", joined, 2.0, 1.0,
       [=] { return EqualityJoin(joined); }},
      {"sub-select", "correlated sub-select, 1000 by 1000", "row", 1000, 2.0, 1.0,
       [] { return CorrelatedSubSelect(1000); }},
  };
}

}  // namespace kestra::bench
