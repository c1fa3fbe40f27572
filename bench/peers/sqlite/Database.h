// The peer's side of a comparison: one SQLite connection in memory with the rows of the module Many
// and a table with the columns of Processes.Process, which is for preparing only and empty.
#pragma once

#include <sqlite3.h>

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "bench/peers/sqlite/VectorTable.h"

namespace kestra::bench {

// What the module Many holds, in the same order.
struct EntryRow {
  static constexpr const char* kDeclaration =
      "CREATE TABLE x(Id INTEGER, Name TEXT, \"Group\" INTEGER)";
  static constexpr int kIndexed = 0;
  uint32_t Key() const { return id; }
  void Column(sqlite3_context* pContext, int column) const;

  uint32_t id;
  std::string name;
  uint32_t group;
};

struct ProcessRow {
  static constexpr const char* kDeclaration =
      "CREATE TABLE x(PID INTEGER, ParentProcessID INTEGER, ThreadID INTEGER, ImageName TEXT, "
      "FilePath TEXT, Description TEXT, FileVersion TEXT, ProductName TEXT, ProductVersion TEXT, "
      "CompanyName TEXT, MemoryUsage INTEGER, HandleCount INTEGER, User TEXT, CommandLine TEXT, "
      "ProcessArchitecture INTEGER, WindowTitle TEXT)";
  static constexpr int kIndexed = 0;
  uint32_t Key() const { return 0; }
  void Column(sqlite3_context* pContext, int column) const;
};

// One thread at a time. Every failure is thrown as std::runtime_error with what SQLite says.
class CDatabase {
 public:
  // count rows as Many(Count=count) has them, as the table Many.Entry.
  explicit CDatabase(uint32_t count);

  // Prepares and gives back, without running.
  void Prepare(const std::string& statement);
  // Prepares, calls row for each row, and gives back.
  template <class Function>
  void Run(const std::string& statement, Function row) {
    const Statement prepared = MakeStatement(statement);
    int status = SQLITE_OK;
    while ((status = sqlite3_step(prepared.get())) == SQLITE_ROW) row(prepared.get());
    if (status != SQLITE_DONE) Fail();
  }
  // The one number that a statement gives.
  int64_t Number(const std::string& statement);

 private:
  struct CloseStatement {
    void operator()(sqlite3_stmt* p) const { sqlite3_finalize(p); }
  };
  struct CloseDatabase {
    void operator()(sqlite3* p) const { sqlite3_close(p); }
  };
  using Statement = std::unique_ptr<sqlite3_stmt, CloseStatement>;

  Statement MakeStatement(const std::string& statement);
  [[noreturn]] void Fail();

  VectorRows<EntryRow> m_entries;
  VectorRows<ProcessRow> m_processes;
  std::unique_ptr<sqlite3, CloseDatabase> m_database;  // closed before its rows go
};

}  // namespace kestra::bench
