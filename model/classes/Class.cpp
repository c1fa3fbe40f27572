#include "model/classes/Class.h"

#include <mutex>
#include <vector>

#include "VLib/src/text/Text.h"

namespace kestra {
namespace {

// Guards the building of every class. Building a class's children gets them, so it is entered again
// by the thread that holds it.
std::recursive_mutex& ClassLock() {
  static auto* pLock = new std::recursive_mutex;  // never destroyed: sessions may outlive statics
  return *pLock;
}

// The slots that are filled, under the class lock.
std::vector<const CClassSlot*>& BuiltSlots() {
  static auto* pSlots = new std::vector<const CClassSlot*>;
  return *pSlots;
}

Ref<DiagParamDefs> BuildParamDefs(std::span<const ParamDecl> params) {
  if (params.empty()) return EmptyParamDefs();
  auto defs = MakeRef<DiagParamDefs>();
  for (const ParamDecl& param : params) {
    defs->Add(param.name, param.type, param.text, param.canBeChanged, param.description);
  }
  return defs;
}

Ref<DiagParams> BuildArgs(std::span<const ArgDecl> args) {
  if (args.empty()) return EmptyParams();
  auto defs = MakeRef<DiagParamDefs>();
  for (const ArgDecl& arg : args) {
    defs->Add(arg.name, arg.type, arg.text, false, arg.description);
  }
  auto values = MakeRef<DiagParams>(Ref<const DiagParamDefs>(defs));
  for (const ArgDecl& arg : args) {
    if (arg.type == ParamType::String || arg.type == ParamType::Version) {
      values->SetText(arg.name, arg.defaultText);
    } else {
      values->SetNumber(arg.name, arg.defaultNumber);
    }
  }
  return values;
}

Ref<DiagActions> BuildActions(std::span<const ActionDecl> actions) {
  if (actions.empty()) return nullptr;
  auto list = MakeRef<DiagActions>();
  for (const ActionDecl& action : actions) {
    list->Add(MakeRef<DiagAction>(action.name, BuildArgs(action.args), action.description), false);
  }
  return list;
}

}  // namespace

const DiagAction* DiagActions::Get(size_t index) const {
  return index < m_actions.size() ? m_actions[index].get() : nullptr;
}

const DiagAction* DiagActions::Find(std::string_view name, bool ignoreCase) const {
  for (const auto& action : m_actions) {
    if (ignoreCase ? EqualsNoCase(action->Name, name) : action->Name == name) return action.get();
  }
  return nullptr;
}

void DiagActions::Add(Ref<DiagAction> action, bool replaceSameName) {
  if (!action) return;
  if (replaceSameName) {
    for (auto& old : m_actions) {
      if (EqualsNoCase(old->Name, action->Name)) {
        old = std::move(action);
        return;
      }
    }
  }
  m_actions.push_back(std::move(action));
}

DiagClass::DiagClass(std::string name, Ref<DiagParamDefs> params, bool canBeAdded,
                     bool canBeDeleted, Ref<DiagActions> actions, Ref<DiagParams> args)
    : Name(std::move(name)),
      Params(params ? std::move(params) : EmptyParamDefs()),
      CanBeAdded(canBeAdded),
      CanBeDeleted(canBeDeleted),
      Actions(std::move(actions)),
      Args(args ? std::move(args) : EmptyParams()) {}

void DiagClass::BuildChildren() const {
  std::lock_guard lock(ClassLock());
  if (m_areChildrenBuilt.load(std::memory_order_relaxed)) return;
  std::vector<Ref<DiagClass>> children;
  children.reserve(pDeclaration->children.size());
  for (const ClassDecl* pChild : pDeclaration->children) children.push_back(pChild->Get());
  m_childClasses.swap(children);
  m_areChildrenBuilt.store(true, std::memory_order_release);
}

DiagClass* FindClass(DiagClass* pClass, std::string_view name) {
  if (!pClass) return nullptr;
  if (EqualsNoCase(pClass->Name, name)) return pClass;
  for (const auto& child : pClass->ChildClasses()) {
    if (DiagClass* pFound = FindClass(child.get(), name)) return pFound;
  }
  return nullptr;
}

DiagClass* FindModuleClass(DiagClass* pRootClass, std::string_view name) {
  if (!pRootClass) return nullptr;
  for (const auto& child : pRootClass->ChildClasses()) {
    if (EqualsNoCase(child->Name, name)) return child.get();
  }
  return FindClass(pRootClass, name);
}

bool HasActiveContent(const DiagClass& diagClass) {
  if (diagClass.CanBeAdded || diagClass.CanBeDeleted) return true;
  for (size_t i = 0; i < diagClass.Params->Count(); ++i) {
    if (diagClass.Params->Get(i)->CanBeChanged) return true;
  }
  for (const auto& child : diagClass.ChildClasses()) {
    if (child && HasActiveContent(*child)) return true;
  }
  return false;
}

const Ref<DiagParamDefs>& EmptyParamDefs() {
  static const auto* pEmpty = new Ref<DiagParamDefs>(MakeRef<DiagParamDefs>());
  return *pEmpty;
}

const Ref<DiagParams>& EmptyParams() {
  static const auto* pEmpty =
      new Ref<DiagParams>(MakeRef<DiagParams>(Ref<const DiagParamDefs>(EmptyParamDefs())));
  return *pEmpty;
}

Ref<DiagClass> ClassDecl::Get() const {
  if (DiagClass* pBuilt = slot.m_pClass.load(std::memory_order_acquire)) {
    return Ref<DiagClass>(pBuilt);
  }
  std::lock_guard lock(ClassLock());
  if (DiagClass* pBuilt = slot.m_pClass.load(std::memory_order_relaxed)) {
    return Ref<DiagClass>(pBuilt);
  }
  auto built = MakeRef<DiagClass>(name, BuildParamDefs(params), canBeAddedAndDeleted,
                                  canBeAddedAndDeleted, BuildActions(actions), BuildArgs(args));
  built->pDeclaration = this;
  built->m_areChildrenBuilt.store(children.empty(), std::memory_order_relaxed);
  BuiltSlots().push_back(&slot);
  slot.m_pClass.store(Ref<DiagClass>(built).Detach(), std::memory_order_release);
  return built;
}

void DropClasses() {
  std::lock_guard lock(ClassLock());
  for (const CClassSlot* pSlot : BuiltSlots()) {
    Ref<DiagClass>::Attach(pSlot->m_pClass.exchange(nullptr));
  }
  BuiltSlots().clear();
}

}  // namespace kestra
