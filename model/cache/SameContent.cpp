#include "model/cache/SameContent.h"

#include <utility>
#include <vector>

namespace kestra {
namespace {

bool HasSameValues(const CVDiagItem& a, const CVDiagItem& b) {
  if (a.Params.Count() != b.Params.Count()) return false;
  for (size_t i = 0; i < a.Params.Count(); ++i) {
    if (a.Params.Get(i)->Differs(*b.Params.Get(i))) return false;
  }
  return true;
}

}  // namespace

bool IsSameContent(const CVDiagItem& a, const CVDiagItem& b, QueryMessage& message) {
  std::vector<std::pair<const CVDiagItem*, const CVDiagItem*>> pairs{{&a, &b}};
  while (!pairs.empty()) {
    const auto [pA, pB] = pairs.back();
    pairs.pop_back();
    if (message.IsTerminatedInLoop() || !HasSameValues(*pA, *pB)) return false;
    if (pA->Children.Count() != pB->Children.Count()) return false;
    for (size_t i = 0; i < pA->Children.Count(); ++i) {
      CVDiagItem* pChildA = pA->Children.Get(i);
      CVDiagItem* pChildB = pB->Children.Get(i);
      if (pChildA->GetName() != pChildB->GetName()) return false;
      pairs.emplace_back(pChildA, pChildB);
    }
  }
  return true;
}

}  // namespace kestra
