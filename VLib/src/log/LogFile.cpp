#include <new>

#include "VLib/src/log/Log.h"
#include "platform/os/Clock.h"

namespace kestra {

LogFile& LogFile::operator<<(std::string_view text) {
  Write(text);
  return *this;
}

LogFile& LogFile::operator<<(int number) {
  Write(std::to_string(number));
  return *this;
}

bool LogFile::IsOpen() const {
  std::lock_guard guard(m_lock);
  return m_pFile != nullptr;
}

void LogFile::Open(std::unique_ptr<os::CHostFile> file, uint32_t size) {
  std::lock_guard guard(m_lock);
  m_pFile = std::move(file);
  m_size.store(size, std::memory_order_relaxed);
}

void LogFile::Close() {
  std::lock_guard guard(m_lock);
  m_pFile.reset();
}

void LogFile::CloseAtExit(std::string_view lastText) {
  constexpr int kTries = 10;
  std::unique_lock guard(m_lock, std::try_to_lock);
  for (int i = 0; i < kTries && !guard; ++i) {
    os::Sleep(1);
    guard = std::unique_lock(m_lock, std::try_to_lock);
  }
  if (!guard || !m_pFile) return;
  size_t written = 0;
  m_pFile->Write(lastText, written);
  m_pFile.reset();
}

// Without memory for the text it is lost: the log never fails loudly.
void LogFile::Write(std::string_view text) try {
  std::string lines;
  lines.reserve(text.size() + 8);
  for (const char c : text) {
    if (c == '\n') lines += '\r';
    lines += c;
  }
  std::lock_guard guard(m_lock);
  if (!m_pFile) return;
  size_t written = 0;
  m_pFile->Write(lines, written);
  m_size.fetch_add(static_cast<uint32_t>(written), std::memory_order_relaxed);
} catch (const std::bad_alloc&) {
}

void LogFile::Truncate(uint32_t size) {
  std::lock_guard guard(m_lock);
  if (!m_pFile) return;
  m_pFile->SetEnd(size);
  m_size.store(size, std::memory_order_relaxed);
}

}  // namespace kestra
