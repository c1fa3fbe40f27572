#include "VLib/src/data/CfgLine.h"

#include "VLib/src/text/Text.h"

namespace kestra {
namespace {

std::string_view Trim(std::string_view text) {
  const size_t first = text.find_first_not_of(kCfgBlanks);
  return first == std::string_view::npos ? std::string_view()
                                         : TrimRight(text.substr(first), kCfgBlanks);
}

}  // namespace

std::string_view CutCfgLine(std::string_view& rest) {
  const size_t end = rest.find('\n');
  const std::string_view line = rest.substr(0, end);
  rest.remove_prefix(end == std::string_view::npos ? rest.size() : end + 1);
  return line;
}

CfgLine ParseCfgLine(std::string_view line) {
  line = Trim(line);
  if (line.empty()) return {};
  if (line.front() == ';') return {CfgLineKind::Comment};
  if (line.front() == '[') {
    const size_t close = line.find(']');
    if (close == 1) return {CfgLineKind::Close};
    if (close != std::string_view::npos) return {CfgLineKind::Open, line.substr(1, close - 1)};
  }
  const size_t equals = line.find('=');
  if (equals == std::string_view::npos) return {CfgLineKind::Other};
  return {CfgLineKind::Value, Trim(line.substr(0, equals)), Trim(line.substr(equals + 1))};
}

}  // namespace kestra
