#include "tests/query/support/TestModules.h"

#include <fmt/format.h>

#include <mutex>
#include <stdexcept>
#include <vector>

#include "Modules/ModuleTable.h"
#include "model/items/Item.h"
#include "platform/os/Clock.h"

namespace kestra::test {
namespace {

constexpr ParamDecl kRowParams[] = {
    {.name = "Id", .type = ParamType::Dword},
    {.name = "Text", .type = ParamType::String, .canBeChanged = true},
    {.name = "Size", .type = ParamType::Dword, .text = "KB", .canBeChanged = true},
    {.name = "Kind", .type = ParamType::Enum, .text = "Alpha|Beta|Gamma", .canBeChanged = true},
    {.name = "Flags", .type = ParamType::Bitmask, .text = "Red|Green||Blue", .canBeChanged = true},
    {.name = "Created", .type = ParamType::Datime},
    {.name = "Release", .type = ParamType::Version},
    {.name = "Other", .type = ParamType::Version},
    {.name = "Nothing", .type = ParamType::String},
    {.name = "NoNumber", .type = ParamType::Dword},
    {.name = "NoTime", .type = ParamType::Datime},
    {.name = "NoRelease", .type = ParamType::Version},
};
constexpr ParamDecl kPartParams[] = {
    {.name = "Number", .type = ParamType::Dword},
    {.name = "Owner", .type = ParamType::Dword},
    {.name = "Label", .type = ParamType::String, .canBeChanged = true},
    {.name = "Grade", .type = ParamType::Enum, .text = "Low|High", .canBeChanged = true},
};
constexpr ArgDecl kTouchArgs[] = {
    {.name = "Step", .type = ParamType::Dword, .defaultNumber = 1},
    {.name = "Note", .type = ParamType::String, .defaultText = "touched"},
};
constexpr ActionDecl kRowActions[] = {{.name = "Touch", .args = kTouchArgs}, {.name = "Break"}};
constexpr ArgDecl kTestArgs[] = {
    {.name = "First", .type = ParamType::Dword, .defaultNumber = 1},
    {.name = "Prefix", .type = ParamType::String, .defaultText = ""},
    {.name = "Mode", .type = ParamType::Enum, .text = "Plain|Upper", .defaultNumber = 0},
    {.name = "Mask", .type = ParamType::Bitmask, .text = "One|Two|Three", .defaultNumber = 7},
    {.name = "Least", .type = ParamType::Version, .defaultText = "0"},
};
constinit const ClassDecl kPart{
    .name = "Part", .params = kPartParams, .canBeAddedAndDeleted = true};
constexpr const ClassDecl* kRowChildren[] = {&kPart};
constinit const ClassDecl kRow{.name = "Row",
                               .params = kRowParams,
                               .children = kRowChildren,
                               .canBeAddedAndDeleted = true,
                               .actions = kRowActions};
constinit const ClassDecl kFixed{.name = "Fixed", .params = kPartParams};
constexpr const ClassDecl* kTestChildren[] = {&kRow, &kFixed};
constinit const ClassDecl kTest{.name = "Test", .children = kTestChildren, .args = kTestArgs};

constexpr ParamDecl kEntryParams[] = {
    {.name = "Id", .type = ParamType::Dword},
    {.name = "Name", .type = ParamType::String},
    {.name = "Group", .type = ParamType::Dword},
};
constexpr ArgDecl kManyArgs[] = {
    {.name = "Count", .type = ParamType::Dword, .defaultNumber = 1000}};
constinit const ClassDecl kEntry{.name = "Entry", .params = kEntryParams};
constexpr const ClassDecl* kManyChildren[] = {&kEntry};
constinit const ClassDecl kMany{.name = "Many", .children = kManyChildren, .args = kManyArgs};

constexpr ArgDecl kSlowArgs[] = {
    {.name = "Duration", .type = ParamType::Dword, .text = "ms", .defaultNumber = 10000}};
constinit const ClassDecl kSlow{.name = "Slow", .children = kManyChildren, .args = kSlowArgs};
constinit const ClassDecl kBroken{.name = "Broken", .children = kManyChildren};
constinit const ClassDecl kThrows{.name = "Throws", .children = kManyChildren};

// What the module Test describes: it stays as it was changed, for the whole process, while items
// come and go with each filling.
class CStored : public CCounted<CStored> {
 public:
  explicit CStored(const ClassDecl& storedDecl) : decl(storedDecl), params(decl.Get()->Params) {}
  const ClassDecl& decl;
  DiagParams params;
  std::vector<Ref<CStored>> children;
  bool isDeleted = false;
};

std::mutex g_storeLock;  // guards everything below the store

void CopyParams(const DiagParams& from, DiagParams& to) {
  for (size_t i = 0; i < from.Count(); ++i) to.Set(MakeRef<DiagParam>(*from.Get(i)), true);
}

Ref<CStored> MakeStored(const ClassDecl& decl, const DiagParams& params) {
  auto stored = MakeRef<CStored>(decl);
  CopyParams(params, stored->params);
  return stored;
}

class CStoredItem : public CFilledItem {
 public:
  explicit CStoredItem(Ref<CStored> stored)
      : CFilledItem(stored->decl.Get()), m_poStored(std::move(stored)) {
    CopyParams(m_poStored->params, Params);
    IsInitialized = true;
  }

 protected:
  bool OnUpdate(const DiagParams& params, QueryMessage&) override {
    std::lock_guard lock(g_storeLock);
    CopyParams(params, m_poStored->params);
    CopyParams(params, Params);
    return true;
  }
  bool OnDelete(QueryMessage&) override {
    std::lock_guard lock(g_storeLock);
    return m_poStored->isDeleted = true;
  }

  const Ref<CStored> m_poStored;
};

class CRowItem : public CStoredItem {
 public:
  using CStoredItem::CStoredItem;

 protected:
  Ref<CVDiagItem> OnAdd(const DiagParams& params, QueryMessage& message) override {
    if (!params.Find("Number", true)) {
      message.RaiseMessage(11000, {"Number"});
      return nullptr;
    }
    std::lock_guard lock(g_storeLock);
    m_poStored->children.push_back(MakeStored(kPart, params));
    return MakeRef<CStoredItem>(m_poStored->children.back());
  }
  bool OnDelete(QueryMessage& message) override { return message.Fail(kErrorAccessDenied); }
  bool OnExecute(const std::string& actionName, const DiagParams& args,
                 QueryMessage& message) override {
    if (actionName == "Break") return message.Fail(kErrorNotReady);
    std::lock_guard lock(g_storeLock);
    DiagParams& params = m_poStored->params;
    DiagParam* pSize = params.Find("Size", true);
    if (pSize) pSize->DWordValue += args.Find("Step", true)->DWordValue;
    if (DiagParam* pText = params.Find("Text", true)) {
      pText->StringValue = args.Find("Note", true)->StringValue;
    }
    return true;
  }
};

struct RowData {
  uint32_t id;
  const char* text;
  int64_t size;  // -1: not set
  int64_t kind;
  int64_t flags;
  int64_t created;
  const char* release;  // null: not set
  const char* other;
};
constexpr RowData kRows[] = {
    {1, "Alpha one", 10, 0, 3, 1136073600, "1.2", "1.2.0"},
    {2, "beta TWO", -1, 1, 0, 1136160000, "1.2.0a", "1.10"},
    {3, "Gamma*three", 30, 2, 8, -1, "2.0", nullptr},
    {4,
     "\xC3\xBC"
     "ber",
     4294967295, -1, -1, 4102444800, nullptr, "3"},
};

Ref<CStored> MakeRow(const RowData& data) {
  auto row = MakeRef<CStored>(kRow);
  row->params.SetNumber("Id", data.id);
  row->params.SetText("Text", data.text);
  const auto setNumber = [&](const char* pName, int64_t number) {
    if (number >= 0) row->params.SetNumber(pName, static_cast<uint32_t>(number));
  };
  setNumber("Size", data.size);
  setNumber("Kind", data.kind);
  setNumber("Flags", data.flags);
  setNumber("Created", data.created);
  if (data.release) row->params.SetVersionIfAny("Release", data.release);
  if (data.other) row->params.SetVersionIfAny("Other", data.other);
  return row;
}

void AddPart(CStored& row, uint32_t number, uint32_t owner, const char* pLabel) {
  auto part = MakeRef<CStored>(kPart);
  part->params.SetNumber("Number", number);
  part->params.SetNumber("Owner", owner);
  if (pLabel) part->params.SetText("Label", pLabel);
  part->params.SetNumber("Grade", number % 2);
  row.children.push_back(std::move(part));
}

std::vector<Ref<CStored>> MakeRows() {
  std::vector<Ref<CStored>> rows;
  for (const RowData& data : kRows) rows.push_back(MakeRow(data));
  AddPart(*rows[0], 1, 1, "bolt");
  AddPart(*rows[0], 2, 1, "nut");
  AddPart(*rows[1], 3, 2, nullptr);
  rows[3]->children.push_back(MakeRow({41, "nested", 5, 0, 1, 0, "0.1", "0.1"}));
  return rows;
}

// With the lock held.
std::vector<Ref<CStored>>& StoredRows() {
  static auto* const pRows = new std::vector<Ref<CStored>>(MakeRows());
  return *pRows;
}

Ref<CVDiagItem> MakeItem(const Ref<CStored>& stored) {
  const bool isRow = &stored->decl == &kRow;
  const Ref<CVDiagItem> item = isRow ? Ref<CVDiagItem>(MakeRef<CRowItem>(stored))
                                     : Ref<CVDiagItem>(MakeRef<CStoredItem>(stored));
  for (const Ref<CStored>& child : stored->children) {
    if (!child->isDeleted) item->Children.Add(MakeItem(child), false);
  }
  return item;
}

class CTestModule : public DiagModule {
 public:
  using CVDiagItem::Init;
  using DiagModule::DiagModule;
  bool Init(bool) override {
    Children.Clear();
    uint32_t first = 1;
    std::string prefix;
    GetArg("First", first);
    GetArg("Prefix", prefix);
    std::lock_guard lock(g_storeLock);
    for (const Ref<CStored>& stored : StoredRows()) {
      if (stored->params.Find("Id", true)->DWordValue < first) continue;
      const Ref<CVDiagItem> row = MakeItem(stored);
      if (DiagParam* pText = row->Params.Find("Text", true))
        pText->StringValue = prefix + pText->StringValue;
      Children.Add(row, false);
    }
    return IsInitialized = true;
  }

 protected:
  bool OnAddOfType(const std::string& newItemType, const DiagParams& params,
                   QueryMessage& message) override {
    if (newItemType != "Row") return message.Fail(kErrorCallNotImplemented);
    std::lock_guard lock(g_storeLock);
    StoredRows().push_back(MakeStored(kRow, params));
    return true;
  }
};

class CManyModule : public DiagModule {
 public:
  using CVDiagItem::Init;
  using DiagModule::DiagModule;
  bool Init(bool, QueryMessage& message) override {
    uint32_t count = 0;
    GetArg("Count", count);
    Children.Clear();
    Children.Reserve(count);
    const Ref<DiagClass> entry = kEntry.Get();
    const DiagParamDef* pId = entry->Params->Get(0);
    const DiagParamDef* pName = entry->Params->Get(1);
    const DiagParamDef* pGroup = entry->Params->Get(2);
    for (uint32_t i = 0; i < count; ++i) {
      if (message.IsTerminatedInLoop()) return false;
      auto item = MakeRef<CFilledItem>(entry);
      item->Params.Set(MakeRef<DiagParam>(pId, i), false);
      item->Params.Set(MakeRef<DiagParam>(pName, fmt::format("entry number {}", i)), false);
      item->Params.Set(MakeRef<DiagParam>(pGroup, i % 100), false);
      item->IsInitialized = true;
      Children.Add(std::move(item), false);
    }
    return IsInitialized = true;
  }
};

class CSlowModule : public DiagModule {
 public:
  using CVDiagItem::Init;
  using DiagModule::DiagModule;
  bool Init(bool, QueryMessage& message) override {
    uint32_t duration = 0;
    GetArg("Duration", duration);
    Children.Add(MakeRef<CFilledItem>(kEntry.Get()), false);  // half content, to be dropped
    const uint32_t start = os::TickCount();
    while (os::TickCount() - start < duration) {
      if (message.IsTerminated()) return false;
      os::Sleep(1);
    }
    return IsInitialized = true;
  }
};

class CBrokenModule : public DiagModule {
 public:
  using CVDiagItem::Init;
  using DiagModule::DiagModule;
  bool Init(bool, QueryMessage& message) override { return message.Fail(kErrorNotReady); }
};

class CThrowsModule : public DiagModule {
 public:
  using CVDiagItem::Init;
  using DiagModule::DiagModule;
  bool Init(bool) override { throw std::runtime_error("out of order"); }
};

template <class T>
Ref<DiagModule> Create(Ref<DiagClass> diagClass, Ref<CMachine> machine) {
  return MakeRef<T>(std::move(diagClass), std::move(machine));
}

}  // namespace

void RestoreTestRows() {
  std::vector<Ref<CStored>> rows = MakeRows();
  std::lock_guard lock(g_storeLock);
  StoredRows().swap(rows);
}

ModuleTable ModulesWithTests() {
  static const auto* pTable = [] {
    const ModuleTable builtIn = BuiltInModules();
    auto* pRows = new std::vector<ModuleRow>(builtIn.begin(), builtIn.end());
    pRows->push_back({&kTest, Create<CTestModule>});
    pRows->push_back({&kMany, Create<CManyModule>});
    pRows->push_back({&kSlow, Create<CSlowModule>});
    pRows->push_back({&kBroken, Create<CBrokenModule>});
    pRows->push_back({&kThrows, Create<CThrowsModule>});
    return pRows;
  }();
  return *pTable;
}

}  // namespace kestra::test
