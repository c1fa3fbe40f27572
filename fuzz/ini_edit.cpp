// A change of a data file: the first bytes say which, the rest is the file.
#include <cstdint>
#include <string>

#include "VLib/src/data/edit/CfgEdit.h"
#include "VLib/src/data/edit/CfgTreeEdit.h"
#include "fuzz/support/Require.h"

namespace {

using namespace kestra;

CfgStep StepOf(uint8_t byte, bool isSection) {
  const char* const sections[] = {"a", "b", "new", " a"};
  const char* const keys[] = {"x", "y", "new", "z\xC3\xA4"};
  return {(isSection ? sections : keys)[byte & 3], static_cast<size_t>(byte >> 2 & 1)};
}

// How many bytes two texts have in common at both ends.
size_t CommonBytes(const std::string& a, const std::string& b) {
  const size_t most = a.size() < b.size() ? a.size() : b.size();
  size_t front = 0, back = 0;
  while (front < most && a[front] == b[front]) ++front;
  while (back < most - front && a[a.size() - 1 - back] == b[b.size() - 1 - back]) ++back;
  return front + back;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  constexpr size_t kHead = 3;
  if (size < kHead) return 0;
  CTerminationLook never(nullptr);
  CfgForm form{.layout = data[0] & 1 ? CfgLayout::Ini : CfgLayout::Cfg};
  if (data[0] & 2) form.key = 77;
  form.compress = (data[0] & 4) != 0 && form.key != 0;
  if (data[0] & 8) form.quoteFlags = kCfgQuotes;
  form.ignoreCase = (data[0] & 16) != 0;
  const auto kind = static_cast<CfgEditKind>(data[1] % 5);
  const bool isSection = kind == CfgEditKind::AddSection || kind == CfgEditKind::DeleteSection;
  const char* const texts[] = {"", "v", "\"q\"", "a=b]"};
  CfgEdit edit{kind, {}, StepOf(data[1] >> 5, isSection), texts[data[0] >> 6]};
  for (int i = 0; i < (data[1] >> 3 & 3); ++i)
    edit.parent.push_back(StepOf(data[2] >> 3 * i, true));

  const std::string before(reinterpret_cast<const char*>(data + kHead), size - kHead);
  std::string after = before;
  const CfgOutcome outcome = EditCfgBytes(after, edit, form, never);
  if (outcome != CfgOutcome::Done) {
    fuzz::Require(after == before);
    return 0;
  }
  CfgNode expected, read;
  ReadCfgBytes(expected, before, {}, CfgMode::All, form, never);
  fuzz::Require(EditCfgTree(expected, edit, form.ignoreCase) == CfgOutcome::Done);
  ReadCfgBytes(read, after, {}, CfgMode::All, form, never);
  fuzz::Require(IsSameCfgTree(expected, read, never));
  // Nothing goes by an addition, and nothing comes by a deletion.
  const bool isNew = kind == CfgEditKind::AddSection || kind == CfgEditKind::AddKey;
  if (form.key != 0 || kind == CfgEditKind::SetKey) return 0;
  fuzz::Require(CommonBytes(before, after) == (isNew ? before : after).size());
  return 0;
}
