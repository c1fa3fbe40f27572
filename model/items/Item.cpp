#include "model/items/Item.h"

#include <exception>

#include "VLib/src/log/Log.h"
#include "VLib/src/text/Text.h"
#include "model/classes/Class.h"
#include "platform/os/ThreadLocal.h"

namespace kestra {
namespace {

const std::string kNoName;

// What a filling gets that nobody can cancel: no termination event, and no right to change
// anything. One per thread, since a filling that fails writes its outcome into it.
QueryMessage& FillMessage() {
  static os::CThreadLocal<QueryMessage> messages;
  return messages.Get();
}

}  // namespace

CVDiagItem* DiagItems::Get(size_t index) const {
  return index < m_items.size() ? m_items[index].get() : nullptr;
}

CVDiagItem* DiagItems::Find(std::string_view name, bool ignoreCase) const {
  for (const auto& item : m_items) {
    const std::string& own = item->GetName();
    if (ignoreCase ? EqualsNoCase(own, name) : own == name) return item.get();
  }
  return nullptr;
}

CVDiagItem* DiagItems::Add(Ref<CVDiagItem> item, bool replaceSameName) {
  if (!item) return nullptr;
  CVDiagItem* pItem = item.get();
  if (replaceSameName) {
    for (auto& child : m_items) {
      if (EqualsNoCase(child->GetName(), pItem->GetName())) {
        child = std::move(item);
        return pItem;
      }
    }
  }
  m_items.push_back(std::move(item));
  return pItem;
}

Ref<CVDiagItem> DiagItems::TakeLast() {
  if (m_items.empty()) return nullptr;
  Ref<CVDiagItem> item = std::move(m_items.back());
  m_items.pop_back();
  return item;
}

void DiagItems::TakeAll(DiagItems& other) noexcept {
  if (other.m_items.empty()) return;
  try {
    m_items.reserve(m_items.size() + other.m_items.size());
  } catch (const std::exception&) {
    return;
  }
  for (auto& item : other.m_items) m_items.push_back(std::move(item));
  other.m_items.clear();
}

void DiagItems::RemoveAt(size_t index) {
  m_items.erase(m_items.begin() + static_cast<std::ptrdiff_t>(index));
}

// A tree may be as deep as what it shows, so it is taken apart from a list and not by recursion:
// what nobody else holds gives its children to the list before it goes.
CVDiagItem::~CVDiagItem() {
  DiagItems doomed;
  doomed.Swap(Children);
  while (Ref<CVDiagItem> item = doomed.TakeLast()) {
    if (!item->IsShared()) doomed.TakeAll(item->Children);
  }
}

const std::string& CVDiagItem::GetName() {
  g_Log.Error("CVDiagItem::GetName called.");
  return kNoName;
}

Ref<DiagClass> CVDiagItem::GetTypeInfo() {
  g_Log.Error("CVDiagItem::GetTypeInfo called.");
  return nullptr;
}

Ref<DiagActions> CVDiagItem::GetActions() {
  return nullptr;
}

bool CVDiagItem::Init(bool bInitChild) {
  return Init(bInitChild, FillMessage());
}

bool CVDiagItem::Init(bool bInitChild, QueryMessage&) {
  return Init(bInitChild);
}

Ref<CVDiagItem> CVDiagItem::OnAdd(const DiagParams&, QueryMessage&) {
  return nullptr;
}

bool CVDiagItem::OnAddOfType(const std::string&, const DiagParams& params, QueryMessage& message) {
  return static_cast<bool>(OnAdd(params, message));
}

bool CVDiagItem::OnUpdate(const DiagParams&, QueryMessage&) {
  return false;
}

bool CVDiagItem::OnDelete(QueryMessage&) {
  return false;
}

bool CVDiagItem::OnExecute(const std::string&, const DiagParams&, QueryMessage&) {
  return false;
}

void CVDiagItem::DropContent() {
  Params.Clear();
  Children.Clear();
}

bool CVDiagItem::Init(bool bInitChild, bool bForce, QueryMessage& message) {
  CAutoInterruptibleLock lock(m_lock, message.TerminationEvent());
  // Whatever the event says by now, it has ended the wait.
  if (!lock.IsHeld()) return message.Fail(kErrorCancelled);
  if (IsInitialized && !bForce) return true;
  if (message.IsTerminated()) return false;
  const bool filled = Init(bInitChild, message);
  if (!message.IsTerminated()) return filled;
  DropContent();
  IsInitialized = false;
  return false;
}

bool CVDiagItem::IsFilled() {
  // A wait for the lock that ends at once.
  static const auto* pNow = [] {
    auto* pEvent = new os::CEvent;
    pEvent->Set();
    return pEvent;
  }();
  CAutoInterruptibleLock lock(m_lock, pNow);
  return lock.IsHeld() && IsInitialized;
}

bool CVDiagItem::Update(const DiagParams& params, QueryMessage& message) {
  if (!message.RequireActive()) return false;
  for (size_t i = 0; i < params.Count(); ++i) {
    const DiagParamDef* pDef = params.Get(i)->Def.get();
    if (pDef && pDef->CanBeChanged) continue;
    message.RaiseMessage(11011, {pDef ? pDef->Name : std::string()});
    return false;
  }
  if (!params.CheckValues(message)) return false;
  CAutoInterruptibleLock lock(m_lock, message.TerminationEvent());
  return !message.IsTerminated() && lock.IsHeld() && OnUpdate(params, message);
}

bool CVDiagItem::Delete(QueryMessage& message) {
  if (!message.RequireActive()) return false;
  const Ref<DiagClass> diagClass = GetTypeInfo();
  if (!diagClass || !diagClass->CanBeDeleted) {
    message.RaiseMessage(11012, {GetName()});
    return false;
  }
  CAutoInterruptibleLock lock(m_lock, message.TerminationEvent());
  return !message.IsTerminated() && lock.IsHeld() && OnDelete(message);
}

bool CVDiagItem::Add(const std::string& newItemType, const DiagParams& params,
                     QueryMessage& message) {
  if (!message.RequireActive()) return false;
  const Ref<DiagClass> diagClass = GetTypeInfo();
  // A class that is not declared here is no refusal: the hook decides.
  const DiagClass* pNewClass = FindClass(diagClass.get(), newItemType);
  if (pNewClass && !pNewClass->CanBeAdded) {
    message.RaiseMessage(11013, {GetName()});
    return false;
  }
  if (!params.CheckValues(message)) return false;
  CAutoInterruptibleLock lock(m_lock, message.TerminationEvent());
  return !message.IsTerminated() && lock.IsHeld() && OnAddOfType(newItemType, params, message);
}

bool CVDiagItem::Execute(const std::string& actionName, const DiagParams* pArgs,
                         QueryMessage& message) {
  if (!message.RequireActive()) return false;
  const Ref<DiagActions> actions = GetActions();
  const DiagAction* pAction = actions ? actions->Find(actionName, true) : nullptr;
  if (!pAction) {
    message.RaiseMessage(11014, {GetName(), actionName});
    return false;
  }
  if (pArgs && !(pArgs->Defs() == pAction->Args->Defs())) return false;
  DiagParams args(pAction->Args->Defs());
  for (size_t i = 0; i < pAction->Args->Count(); ++i) {
    args.Set(MakeRef<DiagParam>(*pAction->Args->Get(i)), false);
  }
  for (size_t i = 0; pArgs && i < pArgs->Count(); ++i) {
    args.Set(MakeRef<DiagParam>(*pArgs->Get(i)), true);
  }
  CAutoInterruptibleLock lock(m_lock, message.TerminationEvent());
  return !message.IsTerminated() && lock.IsHeld() && OnExecute(actionName, args, message);
}

DiagParam* CVDiagItem::FindParam(std::string_view path) {
  CVDiagItem* pItem = this;
  for (size_t end = path.find('\\'); end != std::string_view::npos; end = path.find('\\')) {
    pItem = pItem->Children.Find(path.substr(0, end), true);
    if (!pItem) return nullptr;
    path.remove_prefix(end + 1);
  }
  return pItem->Params.Find(path, true);
}

}  // namespace kestra
