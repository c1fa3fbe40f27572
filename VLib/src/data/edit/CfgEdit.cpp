#include "VLib/src/data/edit/CfgEdit.h"

#include <utility>

#include "VLib/src/data/CfgLayers.h"
#include "VLib/src/data/CfgLine.h"
#include "VLib/src/data/CfgReader.h"
#include "VLib/src/data/edit/CfgTextEdit.h"
#include "VLib/src/data/edit/CfgTreeEdit.h"

namespace kestra {
namespace {

constexpr std::string_view kUtf8Mark = "\xEF\xBB\xBF";
// Bytes that would end a line for some program or other, or a text.
constexpr std::string_view kNeverHeld("\r\n\0", 3);

bool IsTrimmed(std::string_view text) {
  return text.empty() || (kCfgBlanks.find(text.front()) == std::string_view::npos &&
                          kCfgBlanks.find(text.back()) == std::string_view::npos);
}

CfgOutcome TakeLayersOff(std::string& bytes, uint32_t key, CTerminationLook& termination) {
  if (HasUtf16Mark(bytes) || bytes.starts_with("\xFE\xFF")) return CfgOutcome::NotText;
  return DecodeCfgLayers(bytes, key, termination) ? CfgOutcome::Done : CfgOutcome::Terminated;
}

std::string_view MarkOf(std::string_view text, const CfgForm& form) {
  return form.key == 0 && text.starts_with(kUtf8Mark) ? kUtf8Mark : std::string_view();
}

// What a scramble is taken off is a shuffle of itself under any other key than its own, and so is
// a text that was never scrambled. Written back it would be lost.
bool IsWhollyText(std::string_view text, CTerminationLook& termination) {
  if (!text.empty() && text.back() != '\n') return false;
  while (!text.empty()) {
    std::string_view line = CutCfgLine(text);
    if (termination.IsOver(line.size() + 1)) return false;
    if (line.ends_with('\r')) line.remove_suffix(1);
    if (line.find('\r') != std::string_view::npos) return false;
    if (ParseCfgLine(line).kind == CfgLineKind::Other) return false;
  }
  return true;
}

CfgOutcome ReadText(CfgNode& node, std::string_view text, const CfgForm& form,
                    CTerminationLook& termination) {
  text.remove_prefix(MarkOf(text, form).size());
  return ReadCfgText(node, text, {}, CfgMode::All, form.quoteFlags, form.layout, termination)
             ? CfgOutcome::Done
             : CfgOutcome::Terminated;
}

// Has only what an edit can deal with.
CfgOutcome OpenText(std::string& bytes, const CfgForm& form, CTerminationLook& termination) {
  const CfgOutcome outcome = TakeLayersOff(bytes, form.key, termination);
  if (outcome != CfgOutcome::Done) return outcome;
  if (bytes.size() > kCfgMostEdited) return CfgOutcome::TooLarge;
  const bool isText =
      bytes.find('\0') == std::string::npos && (form.key == 0 || IsWhollyText(bytes, termination));
  if (termination.IsOverNow()) return CfgOutcome::Terminated;
  return isText ? CfgOutcome::Done : CfgOutcome::NotText;
}

CfgOutcome EditText(std::string& text, const CfgEdit& edit, const CfgForm& form,
                    CTerminationLook& termination) {
  const std::string mark(MarkOf(text, form));
  text.erase(0, mark.size());
  const CfgOutcome outcome = EditCfgText(text, edit, form, termination);
  text.insert(0, mark);
  return outcome;
}

CfgOutcome PutLayersOn(const std::string& text, const CfgForm& form, CTerminationLook& termination,
                       std::string& bytes) {
  if (form.key == 0) {
    bytes = text;
    return CfgOutcome::Done;
  }
  return EncodeCfgLayers(text, form.key, form.compress, termination, bytes)
             ? CfgOutcome::Done
             : CfgOutcome::Terminated;
}

}  // namespace

bool CanBeSectionName(std::string_view name) {
  return !name.empty() && name.find(']') == std::string_view::npos &&
         name.find_first_of(kNeverHeld) == std::string_view::npos;
}

bool CanBeKeyName(std::string_view name) {
  return !name.empty() && IsTrimmed(name) && name.find('=') == std::string_view::npos &&
         name.front() != ';' && name.front() != '[' &&
         name.find_first_of(kNeverHeld) == std::string_view::npos;
}

bool CanBeKeyText(std::string_view text, uint32_t quoteFlags) {
  return ((quoteFlags & kCfgQuotes) != 0 || IsTrimmed(text)) &&
         text.find_first_of(kNeverHeld) == std::string_view::npos;
}

CfgOutcome EditCfgBytes(std::string& bytes, const CfgEdit& edit, const CfgForm& form,
                        CTerminationLook& termination) {
  if (bytes.size() > kCfgMostEdited) return CfgOutcome::TooLarge;
  std::string text = bytes;
  CfgOutcome outcome = OpenText(text, form, termination);
  CfgNode expected;
  if (outcome == CfgOutcome::Done) outcome = ReadText(expected, text, form, termination);
  if (outcome == CfgOutcome::Done) outcome = EditCfgTree(expected, edit, form.ignoreCase);
  if (outcome == CfgOutcome::Done) outcome = EditText(text, edit, form, termination);
  std::string changed;
  if (outcome == CfgOutcome::Done) outcome = PutLayersOn(text, form, termination, changed);
  CfgNode again;
  if (outcome == CfgOutcome::Done)
    outcome = ReadCfgBytes(again, changed, {}, CfgMode::All, form, termination);
  if (outcome != CfgOutcome::Done) return outcome;
  const bool isSame = IsSameCfgTree(expected, again, termination);
  if (termination.IsOverNow()) return CfgOutcome::Terminated;
  if (!isSame) return CfgOutcome::NotHeld;
  bytes = std::move(changed);
  return CfgOutcome::Done;
}

CfgOutcome ReadCfgBytes(CfgNode& node, std::string bytes, std::string_view sectionPath,
                        CfgMode mode, const CfgForm& form, CTerminationLook& termination) {
  const CfgOutcome outcome = TakeLayersOff(bytes, form.key, termination);
  if (outcome != CfgOutcome::Done) return outcome;
  std::string_view text = bytes;
  text.remove_prefix(MarkOf(text, form).size());
  return ReadCfgText(node, text, sectionPath, mode, form.quoteFlags, form.layout, termination)
             ? CfgOutcome::Done
             : CfgOutcome::Terminated;
}

}  // namespace kestra
