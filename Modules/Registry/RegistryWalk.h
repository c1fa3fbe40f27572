// Finds the keys that a path with wildcards names, depth first, in the order in which the registry
// lists them.
//
//   CRegistryWalk walk(machine, hive, [&] { return message.IsTerminatedInLoop(); }, message);
//   walk.Run("Software\\*\\Run", [&](const std::string& path, std::unique_ptr<CRegistryKey> key) {
//     ...
//     return true;
//   });
//
// What is still to be done is a list and not the stack, since a path may have as many parts as its
// writer likes and an image's registry be as deep as its maker liked. One key is open at a time.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "Modules/Registry/RegistryHive.h"
#include "model/items/QueryMessage.h"

namespace kestra {

class CRegistryWalk {
 public:
  // Asked before each key and each name; its true ends the walk.
  using Stop = std::function<bool()>;
  // Takes a key that was found, opened for reading. False ends the walk.
  using Leaf = std::function<bool(const std::string& subPath, std::unique_ptr<CRegistryKey> key)>;

  // What cannot be read on the way is noted in the message.
  CRegistryWalk(CMachine& machine, const RegistryHive& hive, Stop stop, QueryMessage& message)
      : m_machine(machine), m_hive(hive), m_stop(std::move(stop)), m_message(message) {}

  // To be asked first: an error when the hive as a whole cannot be opened, which is another thing
  // than a key that may not be read. kErrorSuccess for one that the machine does not have.
  SystemError OpenHive();

  // Walks the path behind the hive's word; backslashes at its end count for nothing. Answers
  // - kErrorSuccess at the end of the walk, whoever ended it; for a key that is not there, too;
  // - what is wrong with a path without wildcards, or with listing the keys before the first one;
  // - what we have run out of, such as kErrorNotEnoughMemory.
  // Every other key that cannot be opened or listed is passed over; the log and the notes tell.
  SystemError Run(const std::string& path, const Leaf& leaf);

 private:
  struct Piece {
    std::string text;  // one part, or as many neighbouring ones as have no wildcard
    bool isWild;
  };
  struct Branch {
    std::string subPath;  // the keys on the way
    size_t next;          // the piece behind them
  };
  bool IsOver() { return m_isEnded = m_isEnded || m_stop(); }
  bool ReadPieces(const std::string& path);
  SystemError Visit(Branch branch, const Leaf& leaf);
  void PassOver(const std::string& subPath, SystemError error);
  SystemError ListMatches(CRegistryKey& key, const Branch& branch);

  CMachine& m_machine;
  const RegistryHive& m_hive;
  const Stop m_stop;
  QueryMessage& m_message;
  std::vector<Piece> m_pieces;
  std::vector<Branch> m_open;
  bool m_isEnded = false;
};

// Whether a name fits a pattern, in any case; "?" and "*" are wildcards. False too when stop says
// true.
bool MatchesName(const std::string& name, const std::string& pattern,
                 const std::function<bool()>& stop);

}  // namespace kestra
