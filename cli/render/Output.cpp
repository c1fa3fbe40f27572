#include "cli/render/Output.h"

#include <cerrno>
#include <system_error>
#include <utility>

#include "cli/render/Width.h"

namespace kestra::cli {
namespace {

constexpr size_t kBufferSize = size_t{64} << 10;

}  // namespace

void CFileOutput::Write(std::string_view text) {
  if (m_isTerminal) {
    m_buffer.append(Printable(text, true));
  } else {
    m_buffer.append(text);
  }
  if (m_buffer.size() >= kBufferSize) Flush();
}

void CFileOutput::Flush() {
  const std::string content = std::exchange(m_buffer, {});
  errno = 0;
  if (std::fwrite(content.data(), 1, content.size(), m_pFile) == content.size() &&
      std::fflush(m_pFile) == 0) {
    return;
  }
  throw COutputError(m_name + ": " + std::generic_category().message(errno));
}

}  // namespace kestra::cli
