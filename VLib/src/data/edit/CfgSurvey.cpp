#include "VLib/src/data/edit/CfgSurvey.h"

#include <algorithm>

#include "VLib/src/data/CfgLine.h"

namespace kestra {
namespace {

bool IsHashComment(std::string_view line) {
  const size_t first = line.find_first_not_of(kCfgBlanks);
  return first != std::string_view::npos && line[first] == '#';
}

bool IsWellFormed(const CfgLine& parsed, std::string_view line) {
  if (parsed.kind == CfgLineKind::Open)
    return line[std::min(line.find_last_not_of(kCfgBlanks), line.size() - 1)] == ']';
  return parsed.kind == CfgLineKind::Value && !parsed.name.empty() &&
         parsed.name.find_first_of("[]") == std::string_view::npos;
}

void CountLine(std::string_view line, CfgSurvey& survey) {
  const CfgLine parsed = ParseCfgLine(line);
  const bool isValue = parsed.kind == CfgLineKind::Value;
  if (isValue || parsed.kind == CfgLineKind::Open) ++survey.entries;
  if (IsWellFormed(parsed, line)) ++survey.wellFormed;
  if (parsed.kind == CfgLineKind::Blank) return;
  const bool isMeaningless = parsed.kind == CfgLineKind::Other || (isValue && parsed.name.empty());
  ++(isMeaningless && !IsHashComment(line) ? survey.rubbish : survey.understood);
}

}  // namespace

bool HasControls(std::string_view text) {
  return std::any_of(text.begin(), text.end(), [](char c) {
    return static_cast<unsigned char>(c) < ' ' && c != '\t' && c != '\n' && c != '\v' && c != '\r';
  });
}

bool HasLoneCr(std::string_view text) {
  for (size_t at = text.find('\r'); at != std::string_view::npos; at = text.find('\r', at + 1)) {
    if (at + 1 == text.size() || text[at + 1] != '\n') return true;
  }
  return false;
}

bool SurveyCfgText(std::string_view text, CTerminationLook& termination, CfgSurvey& survey) {
  std::string_view rest = text;
  while (!rest.empty()) {
    const size_t begin = text.size() - rest.size();
    CutCfgLine(rest);
    const std::string_view line = text.substr(begin, text.size() - rest.size() - begin);
    if (termination.IsOver(line.size())) return false;
    CountLine(line.substr(0, line.find('\n')), survey);
    if (!survey.hasControls) survey.hasControls = HasControls(line);
    if (!survey.hasLoneCr) survey.hasLoneCr = HasLoneCr(line);
  }
  return true;
}

}  // namespace kestra
