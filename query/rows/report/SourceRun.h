// One run of a source: how long it takes, what it could not read, and how many rows it looks at. At
// its end all of it is added to the source's entry in the query's report.
//
//   CSourceRun run(context);
//   run.BeginModule(module, isForChange);    // or BeginBuiltIn("FILES.FILE", path, state)
//   run.EndFill(module.CachedInit(...));     // of a module only
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "query/QueryContext.h"
#include "query/Stopwatch.h"

namespace kestra {

class CSourceRun {
 public:
  // The clock is read here and at the end. A run that nothing begins has no entry.
  explicit CSourceRun(QueryContext& context);
  ~CSourceRun();
  CSourceRun(const CSourceRun&) = delete;
  CSourceRun& operator=(const CSourceRun&) = delete;

  // The source is that module, which is now filled unless it is already; or a built-in one, which
  // reads the machine as it goes. isForChange: content of the cache is filled anew.
  void BeginModule(DiagModule& module, bool isForChange);
  void BeginBuiltIn(std::string_view name, const std::string& path, ModuleState state);
  // Whether the module's content was there when it began, and has stayed.
  bool WasFilledBefore() const { return m_wasFilled && !m_poNotes; }
  // The module is filled, or could not be.
  void EndFill(bool isFilled);
  // A built-in source could not be read at all.
  void SetFailed();
  // The reading ended before its end.
  void SetCutShort();
  void AddRows(uint64_t seen, uint64_t kept);

 private:
  void ListenTo(std::string_view what);
  void SetFillSource(SourceReport& entry) const;
  SourceReport& Entry() { return m_context.Sources.At(*m_index); }

  QueryContext& m_context;
  const CStopwatch m_watch;
  std::optional<size_t> m_index;  // of the entry
  bool m_isNew = false;
  DiagModule* m_pModule = nullptr;  // held by the entry's list
  bool m_wasFilled = false;
  bool m_wasFromCache = false;
  bool m_wasSuccess = true;   // of the message
  Ref<CFillNotes> m_poNotes;  // null for content that is there already
  std::optional<CNotesScope> m_listening;
  std::optional<CFillProgress> m_progress;
};

}  // namespace kestra
