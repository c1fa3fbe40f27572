#include "VLib/src/data/edit/CfgEdit.h"

#include <utility>

#include "VLib/src/data/CfgLayers.h"
#include "VLib/src/data/CfgLine.h"
#include "VLib/src/data/CfgReader.h"
#include "VLib/src/data/edit/CfgSurvey.h"
#include "VLib/src/data/edit/CfgTextEdit.h"
#include "VLib/src/data/edit/CfgTreeEdit.h"

namespace kestra {
namespace {

constexpr std::string_view kUtf8Mark = "\xEF\xBB\xBF";
// Nothing that would end a line for some program or other, or make a file that is refused later.
bool CanBeInLine(std::string_view text) {
  return text.find_first_of("\r\n") == std::string_view::npos && !HasControls(text);
}

bool IsTrimmed(std::string_view text) {
  return text.empty() || (kCfgBlanks.find(text.front()) == std::string_view::npos &&
                          kCfgBlanks.find(text.back()) == std::string_view::npos);
}

CfgOutcome TakeLayersOff(std::string& bytes, uint32_t key, CTerminationLook& termination) {
  if (HasUtf16Mark(bytes) || bytes.starts_with("\xFE\xFF")) return CfgOutcome::NotText;
  if (bytes.size() > kCfgMostBytes) return CfgOutcome::TooLarge;
  if (!DecodeCfgLayers(bytes, key, termination)) return CfgOutcome::Terminated;
  return bytes.size() > kCfgMostBytes ? CfgOutcome::TooLarge : CfgOutcome::Done;
}

std::string_view MarkOf(std::string_view text, const CfgForm& form) {
  return form.key == 0 && text.starts_with(kUtf8Mark) ? kUtf8Mark : std::string_view();
}

// A jumble that has as many line ends and "=" as the text it was has lines of all kinds; a text has
// few that mean nothing.
bool IsMostlyRubbish(const CfgSurvey& survey) {
  return survey.rubbish > 0 && survey.rubbish - 1 > survey.understood / 4;
}

bool IsFlawless(const CfgSurvey& survey) {
  return !survey.hasControls && !survey.hasLoneCr && survey.rubbish == 0;
}

// With a key, what was shuffled. Its line ends hardly ever stay what they were by chance.
bool IsUnshuffled(const CfgSurvey& survey, std::string_view raw, CTerminationLook& termination) {
  if (survey.hasLoneCr || IsMostlyRubbish(survey)) return false;
  // A file that makes better sense as it stands was never scrambled.
  CfgSurvey plain;
  if (!SurveyCfgText(raw, termination, plain)) return false;
  const bool isPlainBetter = survey.rubbish > 0 || plain.wellFormed > survey.wellFormed;
  return !isPlainBetter || !IsFlawless(plain);
}

CfgOutcome Judge(std::string_view text, std::string_view raw, const CfgForm& form,
                 CTerminationLook& termination) {
  CfgSurvey survey;
  text.remove_prefix(MarkOf(text, form).size());
  const bool isSurveyed = SurveyCfgText(text, termination, survey);
  const bool isUnderstood = survey.understood > 0 || survey.rubbish == 0;
  const bool isText = isSurveyed && !survey.hasControls && isUnderstood &&
                      (form.key == 0 || IsUnshuffled(survey, raw, termination));
  if (termination.IsOverNow()) return CfgOutcome::Terminated;
  if (!isText) return CfgOutcome::NotText;
  return survey.entries > kCfgMostEntries ? CfgOutcome::TooLarge : CfgOutcome::Done;
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
  const std::string raw = form.key != 0 ? bytes : std::string();
  const CfgOutcome outcome = TakeLayersOff(bytes, form.key, termination);
  return outcome == CfgOutcome::Done ? Judge(bytes, raw, form, termination) : outcome;
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
  return !name.empty() && name.find(']') == std::string_view::npos && CanBeInLine(name);
}

bool CanBeKeyName(std::string_view name) {
  return !name.empty() && IsTrimmed(name) && name.find('=') == std::string_view::npos &&
         name.front() != ';' && name.front() != '[' && CanBeInLine(name);
}

bool CanBeKeyText(std::string_view text, uint32_t quoteFlags) {
  return ((quoteFlags & kCfgQuotes) != 0 || IsTrimmed(text)) && CanBeInLine(text);
}

CfgOutcome EditCfgBytes(std::string& bytes, const CfgEdit& edit, const CfgForm& form,
                        CTerminationLook& termination) {
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
  CfgSurvey survey;
  if (!SurveyCfgText(text, termination, survey)) return CfgOutcome::Terminated;
  if (survey.entries > kCfgMostEntries) return CfgOutcome::TooLarge;
  return ReadCfgText(node, text, sectionPath, mode, form.quoteFlags, form.layout, termination)
             ? CfgOutcome::Done
             : CfgOutcome::Terminated;
}

}  // namespace kestra
