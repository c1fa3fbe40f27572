// CSorrel: what a session keeps between queries: the root, its class tree, and the directory of
// plug-ins, behind one lock. The lock covers setting up and swapping the root only, with the scan
// for plug-ins; it is never held while a query runs, and a running query keeps the old root alive.
#pragma once

#include <atomic>
#include <mutex>
#include <string>

#include "front/session/Notices.h"
#include "model/root/Root.h"
#include "query/Evaluate.h"
#include "query/diagnose/Completion.h"
#include "query/diagnose/Diagnosis.h"

namespace kestra {

// What a root is made of. The default is this machine with the built-in modules; tests bring their
// own.
struct SessionSetup {
  ModuleTable modules;
  Ref<CMachine> machine;
  // Where results are kept; empty: where the variable KESTRA_CacheDir says, if it is set.
  std::string cacheDirectory{};
  // What the machine has to say; null for one that says nothing.
  Ref<CNotices> notices{};
};
SessionSetup LiveSetup();
// The Windows system whose volume is in a directory, for userName (empty: its only user). It has
// neither plug-ins nor a cache: both speak of this machine. False, with a sentence that says why,
// for a directory that holds none and a user that it does not know.
bool ImageSetup(const std::string& directory, const std::string& userName, SessionSetup& setup,
                std::string& refusal);

// Any thread.
class CSorrel {
 public:
  explicit CSorrel(SessionSetup setup) : m_setup(std::move(setup)) {}
  CSorrel(const CSorrel&) = delete;
  CSorrel& operator=(const CSorrel&) = delete;

  // Drops every module, so that the next query that asks for one makes it anew; the root and its
  // class tree stay. True when there is a root.
  bool ReInitRoot();
  // Reads plug-ins from a directory; the root with all its modules is made anew. False, with
  // everything as it was, for a path that is no directory and for a machine that is only read; also
  // when the new root could not be made.
  bool SetPluginsDir(const std::string& directory);
  // Back to the built-in modules alone. Nothing happens if there is no directory.
  void ClearPlugins();
  // The next query makes a new root. Waits for nothing.
  void RebuildRoot();
  // The module item for a name and an argument text; null if there is none.
  Ref<DiagModule> GetModule(const std::string& name, const std::string& args);
  // The same module anew, not filled yet; the root lets go of the old one.
  Ref<DiagModule> GetFreshModule(DiagModule& old, const std::string& args);
  // The class tree; null when the root could not be made.
  Ref<DiagClass> GetClass();
  // Whether the text parses.
  bool CheckSyntax(const std::string& text);
  // See Diagnose and Complete. False when the root could not be made.
  bool DiagnoseText(const std::string& text, Ref<QueryMessage> message,
                    std::optional<Diagnosis>& diagnosis);
  bool CompleteText(const std::string& text, size_t cursor, Ref<QueryMessage> message,
                    Completions& completions);
  // How the text would be run, for a reader; false for one that does not parse.
  bool Explain(const std::string& text, std::string& plan);
  // Whether a module of that name can show anything; nothing if there is none.
  std::optional<ModuleState> StateOf(const std::string& moduleName);
  // Runs a query; false when the root could not be made. result is then untouched.
  bool ProcessQuery(const std::string& text, Value& result, uint32_t timeOut,
                    Ref<QueryMessage> message, QueryReport* pReport);

 private:
  // What gives way to a new root. It goes when the lock is not held any more: its modules may have
  // plug-ins to tell.
  struct OldRoot {
    Ref<DiagRoot> root;
    Ref<DiagClass> rootClass;
  };
  // Makes the root anew, with the lock held.
  bool Initialize(OldRoot& old);
  // Whether there is a root, made if need be, with the lock held.
  bool IsReady(OldRoot& old);
  Ref<DiagRoot> MakeRoot() const;
  // The root, made if need be; null if it could not be.
  Ref<DiagRoot> TakeRoot();

  const SessionSetup m_setup;
  std::mutex m_lock;  // guards everything below
  Ref<DiagRoot> m_poRoot;
  Ref<DiagClass> m_poClass;
  std::string m_pluginsDirectory;  // absolute; empty for none
  bool m_isInitialized = false;
  std::atomic<bool> m_isStale{false};  // set without the lock
};

}  // namespace kestra
