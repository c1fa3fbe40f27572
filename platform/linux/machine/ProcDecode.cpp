#include "platform/linux/machine/ProcDecode.h"

#include <charconv>

namespace kestra {
namespace {

constexpr uint32_t kKernelThreadFlag = 0x00200000;  // PF_KTHREAD of the kernel's sched.h
constexpr size_t kCutNameBytes = 15;                // TASK_COMM_LEN without its NUL

template <class T>
bool ParseNumber(std::string_view text, T& number) {
  const auto result = std::from_chars(text.data(), text.data() + text.size(), number);
  return result.ec == std::errc() && result.ptr == text.data() + text.size();
}

// Takes fields that are separated by single blanks.
class CFields {
 public:
  explicit CFields(std::string_view text) : m_rest(text) {}

  std::string_view Next() {
    const size_t end = m_rest.find_first_of(" \n");
    const std::string_view field = m_rest.substr(0, end);
    m_rest.remove_prefix(end == std::string_view::npos ? m_rest.size() : end + 1);
    return field;
  }
  void Skip(int count) {
    for (; count > 0; --count) Next();
  }

 private:
  std::string_view m_rest;
};

void AppendArgument(std::string& line, std::string_view argument) {
  if (!argument.empty() && argument.find_first_of(" \t\n\v\f\r\"'") == std::string_view::npos) {
    line += argument;
    return;
  }
  line += '"';
  for (const char c : argument) {
    if (c == '"' || c == '\\') line += '\\';
    line += c;
  }
  line += '"';
}

// Cuts at the limit, but not inside a UTF-8 character.
void CutLine(std::string& line) {
  if (line.size() <= kMaxCommandLine) return;
  size_t end = kMaxCommandLine;
  while (end > kMaxCommandLine - 3 && (static_cast<unsigned char>(line[end]) & 0xC0) == 0x80) --end;
  line.resize(end);
}

std::string_view FileName(std::string_view path) {
  return path.substr(path.rfind('/') + 1);
}

}  // namespace

bool ProcStat::IsKernelThread() const {
  return (flags & kKernelThreadFlag) != 0;
}

bool DecodeStat(std::string_view line, ProcStat& stat) {
  // The name stands in parentheses and may hold blanks and parentheses; nothing behind it does.
  const size_t open = line.find('(');
  const size_t close = line.rfind(')');
  if (open == std::string_view::npos || close == std::string_view::npos || close < open)
    return false;
  if (close + 2 >= line.size()) return false;
  stat.name = line.substr(open + 1, close - open - 1);
  CFields fields(line.substr(close + 2));
  const std::string_view state = fields.Next();  // field 3
  if (state.size() != 1) return false;
  stat.state = state[0];
  if (!ParseNumber(fields.Next(), stat.parentPid)) return false;
  fields.Skip(4);
  if (!ParseNumber(fields.Next(), stat.flags)) return false;  // field 9
  fields.Skip(12);
  if (!ParseNumber(fields.Next(), stat.startTime)) return false;  // field 22
  fields.Skip(1);
  return ParseNumber(fields.Next(), stat.residentPages);  // field 24
}

std::optional<uint32_t> DecodeEffectiveUid(std::string_view status) {
  constexpr std::string_view kKey = "\nUid:\t";
  const size_t start = status.find(kKey);
  if (start == std::string_view::npos) return std::nullopt;
  status.remove_prefix(start + kKey.size());
  const size_t behindReal = status.find_first_of("\t\n");
  if (behindReal == std::string_view::npos || status[behindReal] != '\t') return std::nullopt;
  status.remove_prefix(behindReal + 1);
  uint32_t uid = 0;
  if (!ParseNumber(status.substr(0, status.find_first_of("\t\n")), uid)) return std::nullopt;
  return uid;
}

std::optional<std::string> DecodeCommandLine(std::string_view bytes) {
  const size_t last = bytes.find_last_not_of('\0');
  if (last == std::string_view::npos) return std::nullopt;
  bytes = bytes.substr(0, last + 1);
  std::string line;
  if (bytes.find('\0') == std::string_view::npos) {
    line = bytes;
  } else {
    line.reserve(bytes.size() + 16);
    for (bool isFirst = true; !bytes.empty(); isFirst = false) {
      const size_t end = bytes.find('\0');
      if (!isFirst) line += ' ';
      AppendArgument(line, bytes.substr(0, end));
      bytes.remove_prefix(end == std::string_view::npos ? bytes.size() : end + 1);
    }
  }
  CutLine(line);
  return line;
}

uint32_t DecodeElfWidth(std::string_view head) {
  constexpr std::string_view kMagic =
      "\x7f"
      "ELF";
  if (head.size() < kElfHeadBytes || !head.starts_with(kMagic)) return 0;
  if (head[4] == 1) return 32;
  return head[4] == 2 ? 64 : 0;
}

std::string DecodeExecutableLink(std::string_view target) {
  constexpr std::string_view kDeleted = " (deleted)";
  if (!target.ends_with(kDeleted)) return std::string(target);
  if (target.starts_with("/memfd:")) return std::string();
  return std::string(target.substr(0, target.size() - kDeleted.size()));
}

std::string DecodeImageName(const std::string& executable, const ProcStat& stat,
                            std::string_view commandLineBytes) {
  if (!executable.empty()) return std::string(FileName(executable));
  if (stat.IsKernelThread() || stat.name.size() < kCutNameBytes) return stat.name;
  const std::string_view full = FileName(commandLineBytes.substr(0, commandLineBytes.find('\0')));
  return full.starts_with(stat.name) ? std::string(full) : stat.name;
}

}  // namespace kestra
