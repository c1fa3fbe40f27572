// A SQLite virtual table over rows that a program holds in a vector: what a host would write to ask
// its own data with SQLite. It offers a hash index for one column of numbers where a query asks for
// equality over it; all else is a walk over the vector.
//
// A row type gives:
//   static constexpr const char* kDeclaration;         // CREATE TABLE x(...)
//   static constexpr int kIndexed;                     // the column with the index, -1 for none
//   uint32_t Key() const;                              // its value
//   void Column(sqlite3_context* pContext, int column) const;
// Texts are handed out without a copy, since rows never change while they are asked.
#pragma once

#include <sqlite3.h>

#include <cstdint>
#include <unordered_map>
#include <vector>

namespace kestra::bench {

template <class Row>
struct VectorRows {
  explicit VectorRows(std::vector<Row> all) : rows(std::move(all)) {
    if (Row::kIndexed < 0) return;
    byKey.reserve(rows.size());
    for (size_t i = 0; i < rows.size(); ++i) byKey[rows[i].Key()].push_back(i);
  }
  std::vector<Row> rows;
  std::unordered_map<uint32_t, std::vector<size_t>> byKey{};  // filled before anything is timed
};

template <class Row>
class CVectorTable {
 public:
  // Makes the table "name" known to the connection, in the database of that name ("main" or one
  // that is attached). rows must outlive the connection. False if SQLite refuses.
  static bool Create(sqlite3* pDatabase, const char* pStatement, const char* pModule,
                     VectorRows<Row>& rows) {
    return sqlite3_create_module(pDatabase, pModule, &kModule, &rows) == SQLITE_OK &&
           sqlite3_exec(pDatabase, pStatement, nullptr, nullptr, nullptr) == SQLITE_OK;
  }

 private:
  static constexpr int kWalk = 0;
  static constexpr int kLookUp = 1;

  struct Table : sqlite3_vtab {
    explicit Table(VectorRows<Row>* pAll) : sqlite3_vtab{}, pRows(pAll) {}
    VectorRows<Row>* pRows;
  };
  struct Cursor : sqlite3_vtab_cursor {
    Cursor() : sqlite3_vtab_cursor{} {}
    const Row* pFirst = nullptr;
    const std::vector<size_t>* pFound = nullptr;  // null in a walk
    size_t position = 0;
    size_t count = 0;
    const Row& Current() const { return pFirst[pFound ? (*pFound)[position] : position]; }
  };

  static int Connect(sqlite3* pDatabase, void* pAux, int, const char* const*,
                     sqlite3_vtab** ppTable, char**) {
    const int status = sqlite3_declare_vtab(pDatabase, Row::kDeclaration);
    if (status == SQLITE_OK) *ppTable = new Table(static_cast<VectorRows<Row>*>(pAux));
    return status;
  }
  static int Disconnect(sqlite3_vtab* pTable) {
    delete static_cast<Table*>(pTable);
    return SQLITE_OK;
  }

  static int BestIndex(sqlite3_vtab* pTable, sqlite3_index_info* pInfo) {
    const auto count = static_cast<Table*>(pTable)->pRows->rows.size();
    for (int i = 0; i < pInfo->nConstraint && Row::kIndexed >= 0; ++i) {
      const auto& constraint = pInfo->aConstraint[i];
      if (!constraint.usable || constraint.op != SQLITE_INDEX_CONSTRAINT_EQ) continue;
      if (constraint.iColumn != Row::kIndexed) continue;
      pInfo->aConstraintUsage[i].argvIndex = 1;
      pInfo->aConstraintUsage[i].omit = 1;
      pInfo->idxNum = kLookUp;
      pInfo->estimatedCost = 1;
      pInfo->estimatedRows = 1;
      return SQLITE_OK;
    }
    pInfo->idxNum = kWalk;
    pInfo->estimatedCost = static_cast<double>(count);
    pInfo->estimatedRows = static_cast<sqlite3_int64>(count);
    return SQLITE_OK;
  }

  static int Open(sqlite3_vtab*, sqlite3_vtab_cursor** ppCursor) {
    *ppCursor = new Cursor;
    return SQLITE_OK;
  }
  static int Close(sqlite3_vtab_cursor* pCursor) {
    delete static_cast<Cursor*>(pCursor);
    return SQLITE_OK;
  }
  static int Filter(sqlite3_vtab_cursor* pBase, int plan, const char*, int, sqlite3_value** ppArg) {
    auto& cursor = *static_cast<Cursor*>(pBase);
    const VectorRows<Row>& all = *static_cast<Table*>(cursor.pVtab)->pRows;
    cursor.pFirst = all.rows.data();
    cursor.position = 0;
    cursor.pFound = nullptr;
    cursor.count = all.rows.size();
    if (plan != kLookUp) return SQLITE_OK;
    cursor.count = 0;
    if (sqlite3_value_type(ppArg[0]) != SQLITE_INTEGER) return SQLITE_OK;
    const sqlite3_int64 key = sqlite3_value_int64(ppArg[0]);
    if (key < 0 || key > UINT32_MAX) return SQLITE_OK;
    const auto found = all.byKey.find(static_cast<uint32_t>(key));
    if (found == all.byKey.end()) return SQLITE_OK;
    cursor.pFound = &found->second;
    cursor.count = found->second.size();
    return SQLITE_OK;
  }
  static int Next(sqlite3_vtab_cursor* pCursor) {
    ++static_cast<Cursor*>(pCursor)->position;
    return SQLITE_OK;
  }
  static int Eof(sqlite3_vtab_cursor* pBase) {
    const auto& cursor = *static_cast<Cursor*>(pBase);
    return cursor.position >= cursor.count;
  }
  static int Column(sqlite3_vtab_cursor* pCursor, sqlite3_context* pContext, int column) {
    static_cast<Cursor*>(pCursor)->Current().Column(pContext, column);
    return SQLITE_OK;
  }
  static int RowId(sqlite3_vtab_cursor* pCursor, sqlite3_int64* pRowId) {
    *pRowId = static_cast<sqlite3_int64>(static_cast<Cursor*>(pCursor)->position);
    return SQLITE_OK;
  }

  static constexpr sqlite3_module MakeModule() {
    sqlite3_module module{};
    module.xCreate = Connect;
    module.xConnect = Connect;
    module.xBestIndex = BestIndex;
    module.xDisconnect = Disconnect;
    module.xDestroy = Disconnect;
    module.xOpen = Open;
    module.xClose = Close;
    module.xFilter = Filter;
    module.xNext = Next;
    module.xEof = Eof;
    module.xColumn = Column;
    module.xRowid = RowId;
    return module;
  }
  static constexpr sqlite3_module kModule = MakeModule();
};

}  // namespace kestra::bench
