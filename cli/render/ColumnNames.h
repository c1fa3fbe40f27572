// CColumnNames: what the columns of a result are called, so that no two are alike.
#pragma once

#include <string>
#include <unordered_map>

namespace kestra::cli {

class CColumnNames {
 public:
  // The wanted name, or that with a number behind it if it was given before: "PID_2".
  std::string Fresh(const std::string& wanted);
  // For the column of that number, from 0, that nobody named: "Value1".
  std::string FreshForNumber(size_t number);

 private:
  std::unordered_map<std::string, int> m_lastNumbers;  // by the names that were given
};

}  // namespace kestra::cli
