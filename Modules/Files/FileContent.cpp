#include "Modules/Files/FileContent.h"

#include <algorithm>

#include "VLib/src/text/Text.h"

namespace kestra {
namespace {

constexpr size_t kPiece = 65536;  // bytes that are read at once
constexpr size_t kLongestCharacter = 4;

// How many bytes the character has that begins so, if it is one.
size_t CharacterLength(char first) {
  const auto byte = static_cast<unsigned char>(first);
  if (byte >= 0xF0 && byte <= 0xF4) return 4;
  if (byte >= 0xE0 && byte < 0xF0) return 3;
  return byte >= 0xC2 && byte < 0xE0 ? 2 : 1;
}

// The bytes of the first count characters.
size_t LengthOfCharacters(std::string_view text, size_t count) {
  size_t position = 0;
  for (; count > 0 && position < text.size(); --count) NextCharacter(text, position);
  return position;
}

// Collects the lines of a file. Of a line only as much is kept as may be shown of it.
class CLineCutter {
 public:
  CLineCutter(const FilesOptions& options, const std::function<void(uint32_t, std::string)>& take)
      : m_options(options), m_take(take) {}

  bool IsDone() const { return m_taken >= m_options.lineCount; }
  // Takes a line's bytes and goes on behind its end. False in the middle of a line, with nothing
  // left of bytes.
  bool TakeLine(std::string_view& bytes) {
    while (!bytes.empty()) {
      const size_t feed = bytes.find('\n');
      Append(bytes.substr(0, feed));
      if (feed == std::string_view::npos) break;
      bytes.remove_prefix(feed + 1);
      if (EndsLine()) return EndLine();
      Append("\n");
    }
    bytes = {};
    return false;
  }
  void End() {
    if (m_length > 0 && !IsDone()) EndLine();
  }

 private:
  static constexpr size_t kMostKept = FilesOptions::kLongestLine * kLongestCharacter + 1;

  void Append(std::string_view bytes) {
    if (bytes.empty()) return;
    m_line += bytes.substr(0, kMostKept - m_line.size());
    m_length += bytes.size();
    m_isReturn = bytes.back() == '\r';
  }
  // Of a line feed: whether it does, with what stands before it.
  bool EndsLine() {
    if (!m_isReturn) return m_options.isLfLineEnd;
    if (m_length == m_line.size()) m_line.pop_back();
    return true;
  }
  bool EndLine() {
    ++m_number;
    if (m_number >= m_options.lineFrom) TakeIfMatching();
    m_line.clear();
    m_length = 0;
    m_isReturn = false;
    return true;
  }
  void TakeIfMatching() {
    const size_t most = std::min(m_options.lineSize, FilesOptions::kLongestLine);
    std::string line = m_line.substr(0, LengthOfCharacters(m_line, most));
    const std::string& pattern = m_options.linePattern;
    if (pattern != "*" && !Matches(line, pattern, true, false)) return;
    m_take(m_number, std::move(line));
    ++m_taken;
  }

  const FilesOptions& m_options;
  const std::function<void(uint32_t, std::string)>& m_take;
  std::string m_line;       // the beginning of the present line
  uint64_t m_length = 0;    // its bytes until now
  bool m_isReturn = false;  // it ends in a carriage return until now
  uint32_t m_number = 0;    // of the line before
  uint32_t m_taken = 0;
};

}  // namespace

SystemError ReadCharacters(CFileReader& reader, uint32_t from, uint32_t count,
                           const StopReading& stop, std::string& text) {
  text.clear();
  if (from == 0 || count == 0) return kErrorSuccess;
  uint64_t skipped = from - 1;  // characters still to be passed over
  uint64_t wanted = count;      // and to be taken
  std::string bytes;
  for (bool isEnd = false; !isEnd && wanted > 0;) {
    if (stop()) return kErrorCancelled;
    const size_t before = bytes.size();
    // No character has less than a byte, so this much is never too much.
    const uint64_t most = skipped + wanted;
    const size_t limit = most > before ? std::min<uint64_t>(most - before, kPiece) : 1;
    const SystemError error = reader.Read(limit, bytes);
    if (error != kErrorSuccess) return error;
    isEnd = bytes.size() == before;
    size_t position = 0;
    while (wanted > 0 && position < bytes.size()) {
      const size_t begin = position;
      // The rest of it comes with the next piece.
      if (!isEnd && CharacterLength(bytes[begin]) > bytes.size() - begin) break;
      NextCharacter(bytes, position);
      if (skipped > 0) {
        --skipped;
        continue;
      }
      text.append(bytes, begin, position - begin);
      --wanted;
    }
    bytes.erase(0, position);
  }
  return kErrorSuccess;
}

SystemError ReadLines(CFileReader& reader, const FilesOptions& options, const StopReading& stop,
                      const std::function<void(uint32_t, std::string)>& take) {
  CLineCutter cutter(options, take);
  std::string piece;
  for (;;) {
    if (stop()) return kErrorCancelled;
    piece.clear();
    const SystemError error = reader.Read(kPiece, piece);
    if (error != kErrorSuccess) return error;
    if (piece.empty()) break;
    std::string_view bytes = piece;
    while (cutter.TakeLine(bytes)) {
      if (cutter.IsDone()) return kErrorSuccess;
      if (stop()) return kErrorCancelled;
    }
  }
  cutter.End();
  return kErrorSuccess;
}

}  // namespace kestra
