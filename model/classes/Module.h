// DiagModule: a top-level source of a query. It stands directly under the root, has arguments that
// are fixed when it is made, and fills itself and its children from the root's machine.
#pragma once

#include <atomic>
#include <string>
#include <string_view>

#include "model/classes/Class.h"
#include "model/items/Item.h"
#include "platform/machine/Machine.h"

namespace kestra {

class DiagRoot;

class DiagModule : public CVDiagItem {
 public:
  // Its own copy of every default argument, so that setting one never touches the class. The class
  // must not be null; the machine is null only for a module that reads none.
  DiagModule(Ref<DiagClass> diagClass, Ref<CMachine> machine);

  const std::string& GetName() override { return m_poClass->Name; }
  Ref<DiagClass> GetTypeInfo() override { return m_poClass; }
  bool IsModule() override { return true; }
  int GetFillSource() override { return FromCache ? 2 : 0; }
  Ref<DiagActions> GetActions() override { return m_poClass->Actions; }
  // True if the module's arguments are there; also for a module that declares none.
  virtual bool HasArgs() { return static_cast<bool>(Args); }
  virtual Ref<DiagParams> GetDefaultArgs() { return m_poClass->Args; }

  // The present content was read from a cache file. Written under the item's lock.
  std::atomic<bool> FromCache{false};
  // When the present content was taken from the machine, whether a limit or time ended that before
  // its end, and how much could not be read. 0 for content of which nobody knows. Written under the
  // item's lock.
  std::atomic<uint64_t> FilledAt{0};  // FileTime
  std::atomic<bool> IsCutShort{false};
  std::atomic<uint64_t> ProblemCount{0};
  std::atomic<uint64_t> HidingCount{0};  // those for which there may be items that are not here
  Ref<DiagParams> Args;

  // Reading arguments, for fillings. False if there is no such argument.
  bool GetArg(std::string_view name, uint32_t& value);
  bool GetArg(std::string_view name, std::string& value);
  // Applies an argument text such as "Levels=1,Path='a,b'". False at the first piece that does not
  // fit; the pieces before it stay applied.
  bool SetArgs(std::string_view text);
  // Overwrites the arguments that params names. False at a name that this module does not have.
  bool CopyArgs(const DiagParams& params);
  // Whether this module has those arguments. An argument that otherParams does not name is taken
  // for equal, or with useDefaults for its default.
  bool SameArgs(const DiagParams& otherParams, bool useDefaults);
  // The arguments that differ from their defaults, each between prefix and suffix.
  std::string FormatArgs(std::string_view prefix, std::string_view suffix);

  void SetProblems(const CFillNotes::Counts& counts);
  // The filling itself; what it notes in the message is counted here. Under the item's lock.
  bool InitFromMachine(bool bInitChild, bool bForce, QueryMessage& message);
  // The fill of a FROM: an item that is filled stays as it is. timeToLive is in seconds, -1 for no
  // cache; noRead refills what came from a cache file.
  bool CachedInit(bool bInitChild, bool bForce, int32_t timeToLive, bool anyUser, bool noRead,
                  DiagRoot& root, QueryMessage& message);

 protected:
  CMachine& Machine() const { return *m_poMachine; }
  const Ref<CMachine>& MachineRef() const { return m_poMachine; }

 private:
  Ref<DiagClass> m_poClass;
  Ref<CMachine> m_poMachine;
};

// Applies an argument text to a list bound to a class's argument declarations.
bool SetArgsFromText(DiagParams& args, std::string_view text);

// An item that its module's loop fills: it has a class, and its Init only says that it is full.
class CFilledItem : public CVDiagItem {
 public:
  explicit CFilledItem(Ref<DiagClass> diagClass)
      : CVDiagItem(diagClass->Params), m_poClass(std::move(diagClass)) {}
  const std::string& GetName() override { return m_poClass->Name; }
  Ref<DiagClass> GetTypeInfo() override { return m_poClass; }
  Ref<DiagActions> GetActions() override { return m_poClass->Actions; }
  using CVDiagItem::Init;
  bool Init(bool) override { return IsInitialized = true; }

 private:
  Ref<DiagClass> m_poClass;
};

}  // namespace kestra
