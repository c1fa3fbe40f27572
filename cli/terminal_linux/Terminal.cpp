#include "cli/Terminal.h"

#include <fcntl.h>
#include <locale.h>
#include <malloc.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdlib>
#include <cwchar>
#include <cwctype>
#include <filesystem>
#include <system_error>

#include "cli/render/Width.h"

namespace kestra::cli {
namespace {

// The locale of the calling thread, as long as an object lives.
class CLocaleScope {
 public:
  explicit CLocaleScope(locale_t locale) : m_former(uselocale(locale)) {}
  ~CLocaleScope() { uselocale(m_former); }
  CLocaleScope(const CLocaleScope&) = delete;
  CLocaleScope& operator=(const CLocaleScope&) = delete;

 private:
  const locale_t m_former;
};

}  // namespace

void ReserveStandardStreams() {
  for (int fd = 0; fd <= 2; ++fd) {
    if (fcntl(fd, F_GETFD) != -1 || errno != EBADF) continue;
    // Opened the wrong way round, so that using it fails. It takes the lowest free number: fd.
    if (open("/dev/null", fd == 0 ? O_WRONLY : O_RDONLY) != fd) return;
  }
}

// By default the heap grows by 128 KiB with each call of the system, and is given back as soon as
// twice that is free; a block above it is mapped anew each time. Our heaps grow to megabytes for a
// moment.
void PrepareHeap() {
  constexpr int kStepBytes = 1 << 20;
  constexpr int kKeptBytes = 32 << 20;
  mallopt(M_TOP_PAD, kStepBytes);
  mallopt(M_TRIM_THRESHOLD, kKeptBytes);
  mallopt(M_MMAP_THRESHOLD, kKeptBytes);
}

std::vector<std::string> CommandLine(int argc, char** argv) {
  return {argv, argv + argc};
}

std::FILE* OpenForReading(const std::string& path) {
  return std::fopen(path.c_str(), "rb");
}

std::FILE* OpenForWriting(const std::string& path) {
  return std::fopen(path.c_str(), "wbe");
}

bool IsDirectory(const std::string& path) {
  std::error_code failure;
  return std::filesystem::is_directory(path, failure);
}

std::vector<FoundPath> PathsBeginningWith(const std::string& begun) {
  constexpr size_t kMostEntries = 10000;
  const std::string directory = begun.substr(0, begun.rfind('/') + 1);
  const std::string name = begun.substr(directory.size());
  std::vector<FoundPath> found;
  std::error_code failure;
  size_t entries = 0;
  std::filesystem::directory_iterator place(directory.empty() ? "." : directory, failure);
  while (!failure && place != std::filesystem::directory_iterator() && entries++ < kMostEntries) {
    const std::string each = place->path().filename().string();
    const bool isHidden = each.starts_with('.') && !name.starts_with('.');
    if (!isHidden && each.starts_with(name) && Printable(each) == each) {
      std::error_code unknown;
      const bool isDirectory = place->is_directory(unknown);
      found.push_back({directory + each + (isDirectory ? "/" : ""), isDirectory});
    }
    place.increment(failure);
  }
  std::sort(found.begin(), found.end(),
            [](const auto& left, const auto& right) { return left.text < right.text; });
  return found;
}

bool IsFullPath(const std::string& text) {
  return text.starts_with('/');
}

std::string FullPath(const std::string& path) {
  std::error_code failure;
  const auto full = std::filesystem::absolute(path, failure);
  if (failure) return path;
  const auto direct = full.lexically_normal();
  return (direct.has_filename() ? direct : direct.parent_path()).string();
}

bool IsTerminal(Stream stream) {
  return isatty(static_cast<int>(stream)) == 1;
}

size_t TerminalWidth(Stream stream) {
  winsize size{};
  if (!IsTerminal(stream) || ioctl(static_cast<int>(stream), TIOCGWINSZ, &size) != 0) return 0;
  return size.ws_col;
}

std::string FoldCase(const std::string& utf8) {
  // The C library has this one built in, whatever the user's language is.
  static const locale_t locale = newlocale(LC_CTYPE_MASK, "C.UTF-8", nullptr);
  const CLocaleScope scope(locale);
  std::string folded;
  for (size_t i = 0; i < utf8.size();) {
    std::mbstate_t reading{};
    std::mbstate_t writing{};
    wchar_t letter = 0;
    char buffer[MB_LEN_MAX];
    const size_t bytes = std::mbrtowc(&letter, utf8.data() + i, utf8.size() - i, &reading);
    const bool isLetter = bytes != 0 && bytes <= utf8.size() - i;
    const size_t written =
        std::wcrtomb(buffer, static_cast<wchar_t>(std::towlower(letter)), &writing);
    if (isLetter && written <= sizeof(buffer)) {
      folded.append(buffer, written);
      i += bytes;
    } else {
      folded += utf8[i++];
    }
  }
  return folded;
}

std::optional<std::string> EnvironmentText(const char* name) {
  const char* text = std::getenv(name);
  return text ? std::optional<std::string>(text) : std::nullopt;
}

// As the XDG base directories are described: a path that is not absolute is ignored.
std::string StateDirectory() {
  const auto state = EnvironmentText("XDG_STATE_HOME");
  if (state && state->starts_with('/')) return *state;
  const auto home = EnvironmentText("HOME");
  return home && home->starts_with('/') ? *home + "/.local/state" : std::string();
}

}  // namespace kestra::cli
