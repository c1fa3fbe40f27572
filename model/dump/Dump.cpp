#include "model/dump/Dump.h"

#include <fmt/format.h>

#include <vector>

#include "VLib/src/text/Text.h"

namespace kestra {
namespace {

constexpr size_t kLongestLineValue = 255;

bool IsXml(DumpFormat format) {
  return format == DumpFormat::XmlForReading || format == DumpFormat::XmlRaw;
}

bool IsLines(DumpFormat format) {
  return format == DumpFormat::TreeLines || format == DumpFormat::TreeLinesArrow;
}

// What stands before an item's values.
void OpenItem(CVDiagItem& item, std::string& out, DumpFormat format, uint32_t depth) {
  if (IsXml(format)) {
    out += fmt::format("<I n=\"{}\">\r\n", item.GetName());
  } else if (IsLines(format)) {
    out += fmt::format("{}\t{}\t", depth, UpperCase(item.GetName()));
  } else {
    out += fmt::format("[{}]\r\n", item.GetName());
  }
}

void CloseItem(std::string& out, DumpFormat format) {
  if (IsXml(format)) {
    out += "</I>\r\n";
  } else if (!IsLines(format)) {
    out += "[]\r\n";
  }
}

void DumpValues(CVDiagItem& item, std::string& out, DumpFormat format) {
  for (size_t i = 0; i < item.Params.Count(); ++i) DumpParam(*item.Params.Get(i), out, format);
  if (IsLines(format)) out += '\n';
}

}  // namespace

// The tree is as deep as what it shows (directories, sections), so it is walked and not recursed
// into.
void Dump(CVDiagItem& item, std::string& out, QueryMessage& message, DumpFormat format,
          uint32_t depth) {
  if (!IsXml(format) && !IsLines(format) && format != DumpFormat::Sections) return;
  struct Level {
    CVDiagItem* pItem;
    size_t next;
  };
  std::vector<Level> levels;
  const auto open = [&](CVDiagItem& opened) {
    const auto shownDepth = static_cast<uint32_t>(depth + levels.size());
    OpenItem(opened, out, format, shownDepth);
    DumpValues(opened, out, format);
    levels.push_back({&opened, 0});
  };
  bool isTerminated = message.IsTerminated();
  if (!isTerminated) open(item);
  while (!levels.empty() && !isTerminated) {
    CVDiagItem* pChild = levels.back().pItem->Children.Get(levels.back().next++);
    isTerminated = message.IsTerminatedInLoop();
    if (isTerminated) break;
    if (pChild) {
      open(*pChild);
    } else {
      CloseItem(out, format);
      levels.pop_back();
    }
  }
  if (isTerminated && !IsLines(format)) out.clear();
}

namespace {

std::string ReadingText(const DiagParam& param) {
  if (!param.Def || param.Def->Type != ParamType::Dword) return param.GetText();
  const std::string& unit = param.Def->GetUnit();
  return unit.empty() ? fmt::to_string(param.DWordValue)
                      : fmt::format("{} {}", param.DWordValue, unit);
}

std::string SignedText(const DiagParam& param) {
  return fmt::to_string(static_cast<int32_t>(param.DWordValue));
}

std::string RawText(const DiagParam& param) {
  const bool isNumber =
      param.Def && (param.Def->HoldsNumber() || param.Def->Type == ParamType::Datime);
  return isNumber ? SignedText(param) : param.GetText();
}

std::string LineText(const DiagParam& param) {
  if (param.Def && param.Def->HoldsNumber()) return SignedText(param);
  std::string quoted = "'";
  for (const char c : param.GetText().substr(0, kLongestLineValue)) {
    if (c == '\'') quoted += '\'';
    quoted += c == '\t' || c == '\n' ? ' ' : c;
  }
  return quoted + "'";
}

}  // namespace

void DumpParam(const DiagParam& param, std::string& out, DumpFormat format) {
  const std::string& name = param.Def ? param.Def->Name : std::string();
  switch (format) {
    case DumpFormat::XmlForReading:
    case DumpFormat::XmlRaw:
      out += fmt::format(
          "<P n=\"{}\">{}</P>\r\n", name,
          EscapeXml(format == DumpFormat::XmlRaw ? RawText(param) : ReadingText(param)));
      break;
    case DumpFormat::TreeLines:
      out += fmt::format(", @D${}={}", UpperCase(name), LineText(param));
      break;
    case DumpFormat::TreeLinesArrow:
      out += fmt::format(", D${}=>{}", UpperCase(name), LineText(param));
      break;
    case DumpFormat::Sections:
      out += fmt::format("{}={}\r\n", name, RawText(param));
      break;
  }
}

std::string EscapeXml(const std::string& text) {
  std::string escaped;
  escaped.reserve(text.size());
  for (size_t position = 0; position < text.size();) {
    const size_t start = position;
    const uint32_t character = NextCharacter(text, position);
    switch (character) {
      case '&':
        escaped += "&amp;";
        continue;
      case '<':
        escaped += "&lt;";
        continue;
      case '>':
        escaped += "&gt;";
        continue;
      case '"':
        escaped += "&quot;";
        continue;
      default:
        break;
    }
    const bool isAllowed = character == 9 || character == 10 || character == 13 ||
                           (character >= 32 && character <= 55295) ||
                           (character >= 57344 && character <= 65533);
    if (isAllowed) {
      escaped.append(text, start, position - start);
    } else {
      // A byte that is no UTF-8 goes out under its own number.
      const bool isByte = character >= 0x110000;
      escaped += fmt::format("&#{};", isByte ? character - 0x110000 : character);
    }
  }
  return escaped;
}

}  // namespace kestra
