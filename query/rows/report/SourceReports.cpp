#include "query/rows/report/SourceReports.h"

#include <utility>

namespace kestra {

size_t CSourceReports::Find(DiagModule& module, bool& isNew) {
  isNew = false;
  if (const auto found = m_modules.find(&module); found != m_modules.end())
    return found->second.index;
  const size_t index = Find(module.GetName(), module.FormatArgs("", ","), isNew);
  if (m_modules.size() < kMostOwnEntries)
    m_modules.emplace(&module, Known{Ref<DiagModule>(&module), index});
  return index;
}

size_t CSourceReports::Find(std::string_view name, std::string arguments, bool& isNew) {
  isNew = false;
  const auto keyOf = [&] { return std::string(name) + '(' + arguments; };
  auto found = m_entries.find(keyOf());
  if (found == m_entries.end() && m_entries.size() >= kMostOwnEntries) {
    arguments = "...";
    found = m_entries.find(keyOf());
  }
  if (found != m_entries.end()) return found->second;
  isNew = true;
  const size_t index = m_report.sources.size();
  m_entries.emplace(keyOf(), index);
  SourceReport& source = m_report.sources.emplace_back();
  source.name = name;
  source.arguments = std::move(arguments);
  return index;
}

}  // namespace kestra
