#include "bench/peers/sqlite/Database.h"

#include <fmt/format.h>

#include <stdexcept>
#include <utility>

namespace kestra::bench {
namespace {

std::vector<EntryRow> Entries(uint32_t count) {
  std::vector<EntryRow> rows;
  rows.reserve(count);
  for (uint32_t i = 0; i < count; ++i) {
    rows.push_back({i, fmt::format("entry number {}", i), i % 100});
  }
  return rows;
}

}  // namespace

void EntryRow::Column(sqlite3_context* pContext, int column) const {
  switch (column) {
    case 0:
      return sqlite3_result_int64(pContext, id);
    case 1:
      return sqlite3_result_text(pContext, name.data(), static_cast<int>(name.size()),
                                 SQLITE_STATIC);
    default:
      return sqlite3_result_int64(pContext, group);
  }
}

void ProcessRow::Column(sqlite3_context* pContext, int) const {
  sqlite3_result_null(pContext);
}

CDatabase::CDatabase(uint32_t count) : m_entries(Entries(count)), m_processes({}) {
  sqlite3* pDatabase = nullptr;
  const int status = sqlite3_open(":memory:", &pDatabase);
  m_database.reset(pDatabase);
  if (status != SQLITE_OK) Fail();
  // The names of modules become names of databases, so that the same texts can be prepared.
  const char* pAttach = "ATTACH ':memory:' AS Many; ATTACH ':memory:' AS Processes";
  if (sqlite3_exec(pDatabase, pAttach, nullptr, nullptr, nullptr) != SQLITE_OK) Fail();
  if (!CVectorTable<EntryRow>::Create(pDatabase, "CREATE VIRTUAL TABLE Many.Entry USING entry_rows",
                                      "entry_rows", m_entries) ||
      !CVectorTable<ProcessRow>::Create(pDatabase,
                                        "CREATE VIRTUAL TABLE Processes.Process USING process_rows",
                                        "process_rows", m_processes)) {
    Fail();
  }
}

void CDatabase::Prepare(const std::string& statement) {
  MakeStatement(statement);
}

int64_t CDatabase::Number(const std::string& statement) {
  int64_t number = -1;
  Run(statement, [&](sqlite3_stmt* p) { number = sqlite3_column_int64(p, 0); });
  return number;
}

CDatabase::Statement CDatabase::MakeStatement(const std::string& statement) {
  sqlite3_stmt* pStatement = nullptr;
  const int length = static_cast<int>(statement.size() + 1);
  if (sqlite3_prepare_v2(m_database.get(), statement.c_str(), length, &pStatement, nullptr) !=
      SQLITE_OK) {
    Fail();
  }
  return Statement(pStatement);
}

void CDatabase::Fail() {
  throw std::runtime_error(fmt::format("sqlite: {}", sqlite3_errmsg(m_database.get())));
}

}  // namespace kestra::bench
