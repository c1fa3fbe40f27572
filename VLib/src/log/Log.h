// CVLog: the one text log of the library.
//
// The file begins with the settings that it was written under; they are read back at the next
// start, so a support person changes what is logged by editing the head of the file, by registry
// values, or both. By default only errors are written. Lines end in CR LF.
//
// The log never reports a failure and never throws: a directory that cannot be made, or in which
// other users may write, falls back to the temporary one, a file that another process holds to
// <name>_2.log to <name>_9.log, and a log that cannot be opened loses its entries.
//
// Any thread may write, at any time; entries of two threads may interleave piece by piece.
#pragma once

#include <atomic>
#include <cstdarg>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>

#include "platform/os/HostFile.h"

namespace kestra {

class CRegistry;

enum class LogLevel : uint32_t { Success = 0, Info = 1, Warning = 2, Error = 3 };

// What the log takes from the process it runs in. The default is the host itself.
struct LogHost {
  std::function<std::optional<std::string>(const std::string&)> readEnvironment;
  std::function<std::string()> temporaryDirectory;
  CRegistry* pRegistry = nullptr;
  std::function<SystemError(const std::string&, std::unique_ptr<os::CHostFile>&)> openExclusive;
};
LogHost SystemLogHost();

// The open file, and what the log believes it to hold. Insertion continues the entry just begun.
class LogFile {
 public:
  LogFile& operator<<(std::string_view text);
  LogFile& operator<<(int number);

  bool IsOpen() const;
  void Open(std::unique_ptr<os::CHostFile> file, uint32_t size);
  void Close();
  // For the end of the process: writes a last text and closes, unless another thread holds the
  // file. Threads that the system has ended in the middle of a write hold it for ever.
  void CloseAtExit(std::string_view lastText);
  // Every LF becomes CR LF; a failure to write is ignored.
  void Write(std::string_view text);
  uint32_t Size() const { return m_size.load(std::memory_order_relaxed); }
  // Cuts the file at size and moves there.
  void Truncate(uint32_t size);

 private:
  mutable std::mutex m_lock;  // guards m_pFile
  std::unique_ptr<os::CHostFile> m_pFile;
  std::atomic<uint32_t> m_size{0};
};

class CVLog {
 public:
  // Settings, with the values they have before anything is read. Atomic, since threads may write
  // entries while Open reads the settings.
  std::atomic<bool> ErrorsOnly{true};
  std::atomic<uint32_t> MaxSize{100};  // kilobytes; 0 is no limit
  std::atomic<bool> Append{false};

  explicit CVLog(const std::string& name = std::string(), bool open = false,
                 LogHost host = SystemLogHost());
  virtual ~CVLog();
  CVLog(const CVLog&) = delete;
  CVLog& operator=(const CVLog&) = delete;

  // Finds the directory, reads the settings, opens the file and writes the run heading. Either
  // argument may be empty. Called once; a second call keeps the open file and writes the settings
  // and the heading behind what is there.
  void Open(const std::string& directory, const std::string& name);
  // Writes the close marker and closes the file. Entries are dropped from then on.
  void Close();
  // The same for the end of the process: see LogFile::CloseAtExit.
  void CloseAtExit();

  // Entries with printf formats; "%b" stands for a wide string.
  LogFile& Error(const char* format, ...) __attribute__((format(printf, 2, 3)));
  LogFile& Warning(const char* format, ...) __attribute__((format(printf, 2, 3)));
  LogFile& Info(const char* format, ...) __attribute__((format(printf, 2, 3)));
  LogFile& Success(const char* format, ...) __attribute__((format(printf, 2, 3)));
  // An ERROR entry of a text that is taken as it stands.
  LogFile& ErrorText(const std::string& text);
  // The common operation. Without arguments the text is copied as it stands; a null text writes
  // the heading alone. A level that is none writes nothing.
  void Log(uint32_t level, const char* text, va_list* pArguments);

  // Path of the open file; empty while closed. Not while Open runs on another thread.
  const std::string& Path() const { return m_path; }

 private:
  LogFile& LogArguments(LogLevel level, const char* format, va_list* pArguments);
  void OpenFile(const std::string& directory, const std::string& name);
  void WriteSettings();

  LogHost m_host;
  LogFile m_file;
  std::string m_path;
};

// The process-wide instance. Opened by the first session of the process; never destroyed, but its
// close marker is written when the process ends in the ordinary way.
CVLog& GlobalLog();
#define g_Log ::kestra::GlobalLog()
// Opens g_Log and writes the entry about the loaded library, once per process. directory, if not
// empty, is where the file is wanted; it counts at the first call only.
void OpenGlobalLog(const std::string& directory = std::string());

}  // namespace kestra
