#include "cli/render/ColumnNames.h"

namespace kestra::cli {

std::string CColumnNames::Fresh(const std::string& wanted) {
  const auto [entry, isNew] = m_lastNumbers.try_emplace(wanted, 1);
  if (isNew) return wanted;
  int& lastNumber = entry->second;
  std::string name;
  do {
    name = wanted + "_" + std::to_string(++lastNumber);
  } while (!m_lastNumbers.try_emplace(name, 1).second);
  return name;
}

std::string CColumnNames::FreshForNumber(size_t number) {
  return Fresh("Value" + std::to_string(number + 1));
}

}  // namespace kestra::cli
