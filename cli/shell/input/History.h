// CHistory: what was typed, in a file of the user's that several shells add to.
#pragma once

#include <string>
#include <vector>

namespace kestra::cli {

// One thread. Nothing here fails: a file that cannot be read or written is told once, on standard
// error.
class CHistory {
 public:
  // Reads the file: that of the variable KESTRA_HISTORY, else kestra/history where the user's
  // programs keep such things. There is none where the variable is empty.
  CHistory();

  // The entries that were found, the oldest first.
  const std::vector<std::string>& Entries() const { return m_entries; }
  // False for an entry that is the same as the one before, which is not kept again.
  bool Add(const std::string& entry);

 private:
  void Tell(const std::string& failure);

  std::string m_path;  // empty: none
  std::vector<std::string> m_entries;
  std::string m_last;
};

}  // namespace kestra::cli
