#include "query/rows/report/SourceRun.h"

#include <new>

#include "platform/os/Clock.h"

namespace kestra {
namespace {

constexpr uint64_t kTicksPerSecond = 10'000'000;

// 0 where it is not known, and for content that is younger than the clock.
uint32_t AgeOf(const DiagModule& module) {
  const uint64_t filled = module.FilledAt;
  const uint64_t now = os::SystemTimeAsFileTime().ticks;
  if (filled == 0 || now <= filled) return 0;
  const uint64_t seconds = (now - filled) / kTicksPerSecond;
  return seconds < UINT32_MAX ? static_cast<uint32_t>(seconds) : UINT32_MAX;
}

std::string NameOf(const SourceReport& entry) {
  return entry.arguments.empty() ? entry.name : entry.name + '(' + entry.arguments + ')';
}

// Why a source could not be filled, as far as its message tells.
std::string ReasonOf(const QueryMessage& message, bool wasSuccess) {
  std::string reason;
  if (wasSuccess && !message.Success) reason = message.GetText();
  return reason.empty() ? "it could not be filled" : reason;
}

}  // namespace

CSourceRun::CSourceRun(QueryContext& context)
    : m_context(context), m_wasSuccess(context.Message->Success) {}

void CSourceRun::BeginModule(DiagModule& module, bool isForChange) {
  m_pModule = &module;
  m_index = m_context.Sources.Find(module, m_isNew);
  if (m_isNew) {
    const auto state = m_context.Root->StateOf(module.GetName());
    Entry().state = state.value_or(ModuleState::Ready);
  }
  m_wasFilled = module.IsFilled();
  m_wasFromCache = module.FromCache;
  if (!m_wasFilled || (m_wasFromCache && isForChange)) ListenTo(module.GetName());
}

void CSourceRun::BeginBuiltIn(std::string_view name, const std::string& path, ModuleState state) {
  m_index = m_context.Sources.Find(name, '\'' + path + '\'', m_isNew);
  Entry().state = state;
  ListenTo(name);
}

void CSourceRun::ListenTo(std::string_view what) {
  m_poNotes = MakeRef<CFillNotes>();
  m_listening.emplace(*m_context.Message, m_poNotes);
  m_progress.emplace(*m_context.Message, what);
}

void CSourceRun::SetFillSource(SourceReport& entry) const {
  // A statement that changes something has content of the cache filled anew.
  const bool isAsBefore = m_wasFilled && m_wasFromCache == m_pModule->FromCache;
  const FillSource now = m_pModule->FromCache ? FillSource::CacheFile : FillSource::Machine;
  entry.fill = isAsBefore ? FillSource::Memory : now;
  if (entry.fill != FillSource::Machine) entry.ageSeconds = AgeOf(*m_pModule);
}

// The walk that follows may fill other sources.
void CSourceRun::EndFill(bool isFilled) {
  m_listening.reset();
  m_progress.reset();
  if (!isFilled) {
    SetFailed();
  } else if (m_isNew) {
    SetFillSource(Entry());
  }
  if (isFilled && m_pModule->IsCutShort) SetCutShort();
  // Of content that was there before, it is only known how much could not be read.
  if (isFilled && m_isNew && Entry().fill != FillSource::Machine) {
    Entry().problemCount += m_pModule->ProblemCount;
    Entry().hidingCount += m_pModule->HidingCount;
  }
}

void CSourceRun::SetFailed() {
  const QueryMessage& message = *m_context.Message;
  SourceReport& entry = Entry();
  entry.isFilled = false;
  if (message.SystemError == kErrorCancelled) {
    entry.isCutShort = true;
    return;
  }
  if (!m_poNotes) m_poNotes = MakeRef<CFillNotes>();
  if (!m_poNotes->HasProblems())
    m_poNotes->NoteProblem(NameOf(entry), ReasonOf(message, m_wasSuccess));
}

void CSourceRun::SetCutShort() {
  if (m_index) Entry().isCutShort = true;
}

void CSourceRun::AddRows(uint64_t seen, uint64_t kept) {
  if (!m_index) return;
  Entry().rowsSeen += seen;
  Entry().rowsKept += kept;
}

CSourceRun::~CSourceRun() {
  m_listening.reset();
  m_progress.reset();
  if (!m_index) return;
  SourceReport& entry = Entry();
  entry.microseconds += m_watch.Microseconds();
  if (!m_poNotes) return;
  if (m_poNotes->IsCutShort()) entry.isCutShort = true;
  CFillNotes::Counts counts;
  try {
    for (FillProblem& problem : m_poNotes->TakeProblems(counts)) {
      if (entry.problems.size() >= CFillNotes::kMostKept) break;
      entry.problems.push_back(std::move(problem));
    }
  } catch (const std::bad_alloc&) {
    // Nothing may leave a destructor. The numbers tell that there is more than is named.
  }
  entry.problemCount += counts.all;
  entry.hidingCount += counts.hidingItems;
}

}  // namespace kestra
