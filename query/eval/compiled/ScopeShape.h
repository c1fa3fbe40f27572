// Which aliases stand where on the scope: what a compiled expression is compiled for.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "query/QueryContext.h"

namespace kestra {

class CScopeShape {
 public:
  static constexpr size_t kNone = static_cast<size_t>(-1);

  CScopeShape() = default;
  explicit CScopeShape(const std::vector<ScopeEntry>& scope) {
    for (const ScopeEntry& entry : scope) Add(entry.Alias);
  }
  void Add(std::string_view alias) { m_aliases.emplace_back(alias); }

  size_t Count() const { return m_aliases.size(); }
  // The entry that a column with that alias reads: the first one with exactly that alias, or
  // without an alias the last one. kNone if there is none.
  size_t FindSlot(std::string_view alias) const;
  // Whether the first entries of a scope, up to and without count, are these.
  bool Begins(const std::vector<ScopeEntry>& scope, size_t count) const;

 private:
  std::vector<std::string> m_aliases;
};

}  // namespace kestra
