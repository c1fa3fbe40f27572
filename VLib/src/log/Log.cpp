#include "VLib/src/log/Log.h"

#include <fmt/format.h>

#include <cstdio>

#include "VLib/src/log/LogDirectory.h"
#include "VLib/src/log/LogSettings.h"
#include "platform/os/Clock.h"
#include "platform/os/HostEnvironment.h"

namespace kestra {
namespace {

constexpr uint32_t kBytesPerKilobyte = 1024;
// The head of a log is some hundred bytes; a file that claims to be all settings is not read on.
constexpr size_t kMaxSettingsHead = 64 * 1024;
constexpr int kLastFileNumber = 9;

std::string TimeStamp() {
  const SystemTime now = os::LocalTime();
  return fmt::format("{:04}/{:02}/{:02} {:02}:{:02}:{:02}:{:03}\t", now.wYear, now.wMonth, now.wDay,
                     now.wHour, now.wMinute, now.wSecond, now.wMilliseconds);
}

const char* LevelLabel(uint32_t level) {
  constexpr const char* kLabels[] = {"SUCCESS", "INFO", "WARNING", "ERROR"};
  return level < std::size(kLabels) ? kLabels[level] : nullptr;
}

std::string Format(const char* text, va_list arguments) {
  // Callers name wide strings by "%b", which printf does not know.
  std::string format(text);
  for (size_t at = format.find("%b"); at != std::string::npos; at = format.find("%b", at + 3)) {
    format.replace(at, 2, "%ls");
  }
  va_list copy;
  va_copy(copy, arguments);
  const int length = std::vsnprintf(nullptr, 0, format.c_str(), copy);
  va_end(copy);
  // A wide string that the C locale cannot convert: the format is worth more than nothing.
  if (length < 0) return text;
  std::string result(static_cast<size_t>(length) + 1, '\0');
  std::vsnprintf(result.data(), result.size(), format.c_str(), arguments);
  result.pop_back();
  return result;
}

}  // namespace

LogHost SystemLogHost() {
  return {os::ReadEnvironment, os::TemporaryDirectory, os::HostRegistry(), os::OpenExclusive};
}

CVLog::CVLog(const std::string& name, bool open, LogHost host) : m_host(std::move(host)) {
  if (open) Open(std::string(), name);
}

CVLog::~CVLog() {
  Close();
}

void CVLog::Open(const std::string& directory, const std::string& name) {
  const std::string logDirectory = FindLogDirectory(m_host, directory);
  const std::string logName = name.empty() ? "glog" : name;
  LogSettings settings{ErrorsOnly, MaxSize, Append};
  const std::string base = logDirectory + os::PathSeparator() + logName;
  if (!logDirectory.empty()) {
    std::string head;
    os::ReadFileHead(base + ".log", kMaxSettingsHead, head);
    ReadLogSettings(head, settings);
  }
  const auto keyPath = m_host.readEnvironment(LogVariableName("RegKey"));
  ReadLogSettings(m_host.pRegistry, keyPath.value_or(std::string()), logName, settings);
  ErrorsOnly = settings.errorsOnly;
  MaxSize = settings.maxSize;
  Append = settings.append;
  if (!logDirectory.empty()) OpenFile(logDirectory, logName);
  WriteSettings();
  // With Append the block has overwritten the old one, but counts a second time: the file grows by
  // its length at each start. Logs of all versions look like that.
  m_file.Truncate(m_file.Size());
  m_file.Write("\nSTART\t" + TimeStamp());
}

// Opens <name>.log or, if another process or another log of this one holds it, <name>_2.log and on.
void CVLog::OpenFile(const std::string& directory, const std::string& name) {
  if (m_file.IsOpen()) return;
  const std::string base = directory + os::PathSeparator() + name;
  for (int number = 1; number <= kLastFileNumber; ++number) {
    const std::string path = number == 1 ? base + ".log" : fmt::format("{}_{}.log", base, number);
    std::unique_ptr<os::CHostFile> file;
    if (m_host.openExclusive(path, file) != kErrorSuccess) continue;
    uint64_t size = 0;
    if (number == 1 && Append) file->Size(size);
    m_file.Open(std::move(file), static_cast<uint32_t>(size));
    m_path = path;
    return;
  }
}

void CVLog::WriteSettings() {
  m_file.Write(LogSettingsBlock({ErrorsOnly, MaxSize, Append}));
}

void CVLog::CloseAtExit() {
  m_file.CloseAtExit("\r\n\r\nFINISH\t" + TimeStamp() + "\r\n\r\n");
}

void CVLog::Close() {
  m_file.Write("\n\nFINISH\t" + TimeStamp() + "\n\n");
  m_file.Close();
  m_path.clear();
}

// An entry that cannot be put together is lost: the log never fails loudly, and destructors write
// to it.
void CVLog::Log(uint32_t level, const char* text, va_list* pArguments) try {
  if (ErrorsOnly && level != static_cast<uint32_t>(LogLevel::Error)) return;
  const char* label = LevelLabel(level);
  if (!label) return;
  const uint32_t limit = MaxSize;
  if (limit > 0 && m_file.Size() / kBytesPerKilobyte >= limit) {
    m_file.Truncate(0);
    WriteSettings();
  }
  m_file.Write(fmt::format("\n\n{}\t{}\n", label, TimeStamp()));
  if (text) m_file.Write(pArguments ? Format(text, *pArguments) : text);
} catch (const std::exception&) {
}

LogFile& CVLog::LogArguments(LogLevel level, const char* format, va_list* pArguments) {
  Log(static_cast<uint32_t>(level), format, pArguments);
  return m_file;
}

LogFile& CVLog::Error(const char* format, ...) {
  va_list arguments;
  va_start(arguments, format);
  LogFile& file = LogArguments(LogLevel::Error, format, &arguments);
  va_end(arguments);
  return file;
}

LogFile& CVLog::Warning(const char* format, ...) {
  va_list arguments;
  va_start(arguments, format);
  LogFile& file = LogArguments(LogLevel::Warning, format, &arguments);
  va_end(arguments);
  return file;
}

LogFile& CVLog::Info(const char* format, ...) {
  va_list arguments;
  va_start(arguments, format);
  LogFile& file = LogArguments(LogLevel::Info, format, &arguments);
  va_end(arguments);
  return file;
}

LogFile& CVLog::Success(const char* format, ...) {
  va_list arguments;
  va_start(arguments, format);
  LogFile& file = LogArguments(LogLevel::Success, format, &arguments);
  va_end(arguments);
  return file;
}

LogFile& CVLog::ErrorText(const std::string& text) {
  return LogArguments(LogLevel::Error, text.c_str(), nullptr);
}

}  // namespace kestra
