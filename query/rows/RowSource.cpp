#include "query/rows/RowSource.h"

#include <vector>

#include "VLib/src/text/Text.h"
#include "query/eval/Actions.h"
#include "query/eval/Operands.h"
#include "query/rows/FileRowSource.h"
#include "query/rows/FromResult.h"
#include "query/rows/IniRowSource.h"
#include "query/rows/ModuleRowSource.h"
#include "query/rows/RegistryRowSource.h"
#include "query/rows/report/SourceRun.h"

namespace kestra {

bool ReadDescriptor(const Value& value, SourceDescriptor& descriptor) {
  const ValueVector& elements = value.asVector();
  if (!value.IsVector() || elements.Count() < 5) return false;
  descriptor.moduleName = elements[0].asString();
  descriptor.className = elements[1].asString();
  descriptor.arguments = elements[2];
  descriptor.cacheAge = elements[3].asLong();
  descriptor.anyUser = elements[4].asBool();
  if (elements.Count() > 5) descriptor.alias = elements[5].asString();
  return true;
}

RowSource::RowSource(ParseNode& node, const SourceDescriptor& descriptor, int32_t limit)
    : m_node(node),
      m_alias(descriptor.alias),
      m_filter(*node.Context,
               node.Context->FilterStack.empty() ? nullptr : node.Context->FilterStack.back()),
      m_limit(limit),
      m_isOnlyCounted(node.Context->UsesShortcuts && node.Rule->Action == RunSource &&
                      IsOnlyCounted(node)) {
  m_rows.SetVector(MakeRef<ValueVector>());
}

void RowSource::SetUndecided() {
  m_rows.SetAny();
  m_decided = false;
}

bool RowSource::Run(Value& error) {
  CSourceRun run(Context());
  const bool isDone = Find(run, error);
  run.AddRows(m_seen, static_cast<uint64_t>(m_count));
  Value unused;
  if (!isDone &&
      (Context().Message->SystemError == kErrorCancelled || Context().CheckTimeOut(unused)))
    run.SetCutShort();
  return isDone;
}

bool RowSource::AddRow(CVDiagItem& item) {
  ++m_seen;
  bool passes = true;
  if (!m_filter.IsEmpty()) {
    const CBoundItem bound(Context(), m_alias, item);
    if (!m_filter.Test(passes, m_decided)) return false;
  }
  if (!passes) return true;
  Value row;
  if (!m_isOnlyCounted) row.SetDiagItem(Ref<CVDiagItem>(&item));
  m_rows.asVector().Append(std::move(row));
  ++m_count;
  return true;
}

void RowSource::UseRows(ValueVector& rows) {
  m_rows.SetVector(Ref<ValueVector>(&rows));
  m_seen = rows.Count();
  m_count = static_cast<int32_t>(rows.Count());
}

bool RowSource::WalkItems(CVDiagItem& top, const std::string& className) {
  struct Level {
    CVDiagItem* pItem;
    size_t next;
  };
  std::vector<Level> levels;
  // Most items share their name's text with the one before.
  const std::string* pLastName = nullptr;
  bool isLastOfClass = false;
  const auto visit = [&](CVDiagItem& item) {
    const std::string& name = item.GetName();
    if (&name != pLastName) {
      pLastName = &name;
      isLastOfClass = EqualsNoCase(name, className);
    }
    if (isLastOfClass && !AddRow(item)) return false;
    Value error;
    if (item.Children.Count() == 0) return true;
    if (Context().CheckTimeOut(error)) return false;
    levels.push_back({&item, 0});
    return true;
  };
  // Of a class that stands further below there may be none at all.
  CVDiagItem* const pFirst = IsWholeListing() ? top.Children.Get(0) : nullptr;
  if (pFirst && EqualsNoCase(pFirst->GetName(), className))
    m_rows.asVector().Reserve(top.Children.Count());
  if (!visit(top)) return false;
  while (!levels.empty()) {
    Level& level = levels.back();
    CVDiagItem* pChild = IsFull() ? nullptr : level.pItem->Children.Get(level.next++);
    if (!pChild) {
      levels.pop_back();
      continue;
    }
    if (Context().IsCancelled() || !visit(*pChild)) return false;
  }
  return true;
}

std::unique_ptr<RowSource> MakeRowSource(ParseNode& node, const SourceDescriptor& descriptor,
                                         int32_t limit) {
  const bool hasPath = descriptor.arguments.IsString();
  if (EqualsNoCase(descriptor.moduleName, "FILES") && hasPath) {
    if (!EqualsNoCase(descriptor.className, "FILE")) return nullptr;
    return std::make_unique<FileRowSource>(node, descriptor, limit);
  }
  if (EqualsNoCase(descriptor.moduleName, "REGISTRY") && hasPath) {
    if (EqualsNoCase(descriptor.className, "REGISTRYKEY"))
      return std::make_unique<RegistryKeyRowSource>(node, descriptor, limit);
    if (EqualsNoCase(descriptor.className, "REGISTRYVALUE"))
      return std::make_unique<RegistryValueRowSource>(node, descriptor, limit);
    return nullptr;
  }
  if (EqualsNoCase(descriptor.moduleName, "INIFILES")) {
    return std::make_unique<IniRowSource>(node, descriptor, limit);
  }
  return std::make_unique<ModuleRowSource>(node, descriptor, limit);
}

}  // namespace kestra
