// Class descriptors: what a module or item class declares about itself, once per process.
//
// A built-in class is a ClassDecl, a constant table in its module's folder; Get() builds the
// DiagClass from it at first use, under the one class lock, and keeps it. What can be seen of a
// class object never changes, so it is read from any thread without a lock, by all sessions.
#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "model/items/Param.h"

namespace kestra {

struct ClassDecl;

// An action and its arguments with their defaults.
class DiagAction : public CCounted<DiagAction> {
 public:
  DiagAction(std::string name, Ref<DiagParams> args, std::string description = {})
      : Name(std::move(name)), Args(std::move(args)), Description(std::move(description)) {}
  const std::string Name;
  const Ref<DiagParams> Args;  // never null; empty for an action without arguments
  const std::string Description;
};

class DiagActions : public CCounted<DiagActions> {
 public:
  size_t Count() const { return m_actions.size(); }
  const DiagAction* Get(size_t index) const;
  const DiagAction* Find(std::string_view name, bool ignoreCase) const;
  void Add(Ref<DiagAction> action, bool replaceSameName);

 private:
  std::vector<Ref<DiagAction>> m_actions;
};

class DiagClass : public CCounted<DiagClass> {
 public:
  DiagClass(std::string name, Ref<DiagParamDefs> params, bool canBeAdded, bool canBeDeleted,
            Ref<DiagActions> actions, Ref<DiagParams> args);

  const std::string Name;           // also the GetName of every instance
  const Ref<DiagParamDefs> Params;  // never null; empty for a class without properties
  const bool CanBeAdded;            // INSERT may make instances
  const bool CanBeDeleted;          // DELETE may remove instances
  const Ref<DiagActions> Actions;   // null for none
  const Ref<DiagParams> Args;       // arguments with their defaults; never null
  // The declaration of a built-in class, for what only a user reads (descriptions, examples); null
  // for a class that came from elsewhere.
  const ClassDecl* pDeclaration = nullptr;

  // Those of a declared class are built when somebody asks for them first: most queries name one
  // module and look at no class of another.
  std::span<const Ref<DiagClass>> ChildClasses() const {
    if (!m_areChildrenBuilt.load(std::memory_order_acquire)) BuildChildren();
    return m_childClasses;
  }
  // Only while the class is being built.
  void AddChildClass(Ref<DiagClass> child) { m_childClasses.push_back(std::move(child)); }

 private:
  friend struct ClassDecl;
  void BuildChildren() const;

  mutable std::vector<Ref<DiagClass>> m_childClasses;  // changed under the class lock, once
  mutable std::atomic<bool> m_areChildrenBuilt{true};  // false for a declared class at first
};

// How deep classes and items that are read from a text may nest: far deeper than any module, and
// shallow enough that walks that recurse over them are safe on the smallest stack.
inline constexpr size_t kDeepestReadTree = 100;

// Depth first and in order, the class itself first, names in any case. Null if there is none.
DiagClass* FindClass(DiagClass* pClass, std::string_view name);
// The class of a module: a child of the root's class, or, where none has that name, whatever
// FindClass gives.
DiagClass* FindModuleClass(DiagClass* pRootClass, std::string_view name);
// Whether anything in this class or below it can be changed.
bool HasActiveContent(const DiagClass& diagClass);
// The empty lists that classes without properties and arguments share.
const Ref<DiagParamDefs>& EmptyParamDefs();
const Ref<DiagParams>& EmptyParams();

// --- Declarations: constant tables ---

struct ParamDecl {
  const char* name;
  ParamType type;
  const char* text = nullptr;  // the unit of a Dword, the options of an Enum or Bitmask
  bool canBeChanged = false;
  const char* description = "";  // one line, for the reference
};

struct ArgDecl {
  const char* name;
  ParamType type;
  const char* text = nullptr;    // options of an Enum or Bitmask, unit of a Dword
  uint32_t defaultNumber = 0;    // Dword, Enum and Bitmask
  const char* defaultText = "";  // String and Version
  const char* description = "";
};

struct ActionDecl {
  const char* name;
  std::span<const ArgDecl> args = {};
  const char* description = "";
};

// Holds the one DiagClass of a declaration. Part of the declaration, so that a table is all that a
// class needs.
class CClassSlot {
 public:
  constexpr CClassSlot() = default;
  constexpr CClassSlot(const CClassSlot&) {}

 private:
  friend struct ClassDecl;
  friend void DropClasses();
  mutable std::atomic<DiagClass*> m_pClass{nullptr};  // owns one count once built
};

struct ClassDecl {
  const char* name;
  std::span<const ParamDecl> params = {};
  std::span<const ClassDecl* const> children = {};
  bool canBeAddedAndDeleted = false;  // the two flags go together in every built-in class
  std::span<const ActionDecl> actions = {};
  std::span<const ArgDecl> args = {};
  const char* description = "";                // one line, for the reference
  std::span<const char* const> examples = {};  // queries that show the class; they run as tests
  CClassSlot slot = {};

  // Builds the class at first use. Thread-safe; never null.
  Ref<DiagClass> Get() const;
};

// Lets go of every class that was built, in the order of building; one that is asked for afterwards
// is built anew. Only for the unloading of the library: what looks classes up keeps bare pointers.
void DropClasses();

}  // namespace kestra
