#include "platform/image/registry/KeyResolver.h"

#include <algorithm>
#include <deque>

#include "platform/base/text/Characters.h"
#include "platform/base/text/Utf16.h"

namespace kestra::image {
namespace {

// Windows nests keys 512 deep and follows 64 links in one name at most.
constexpr size_t kMostPieces = 512;
constexpr int kMostLinks = 64;

struct Piece {
  std::string name;
  bool isViewed = false;  // the view counts: not where a link leads, nor for what the view put in
  bool isOfView = false;  // the view put it in
};

std::deque<Piece> Pieces(std::string_view path, bool isViewed) {
  std::deque<Piece> pieces;
  while (!path.empty() && pieces.size() <= kMostPieces) {
    const size_t end = std::min(path.find('\\'), path.size());
    if (end != 0) pieces.push_back({std::string(path.substr(0, end)), isViewed, false});
    path.remove_prefix(std::min(end + 1, path.size()));
  }
  return pieces;
}

class CResolver {
 public:
  CResolver(CVolumeLayout& layout, const VolumeNode& start, std::string_view path, bool isNarrow,
            LastKey lastKey)
      : m_layout(layout),
        m_node(start),
        m_pieces(Pieces(path, isNarrow)),
        m_keepsLink(lastKey == LastKey::KeepLink) {
    m_isEndViewed = isNarrow && !m_pieces.empty();
  }

  SystemError Resolve(VolumeNode& node) {
    if (m_pieces.size() > kMostPieces) return kErrorInvalidName;
    while (TakeViewIn(), !m_pieces.empty()) {
      if (const SystemError error = Step()) return error;
    }
    node = std::move(m_node);
    return kErrorSuccess;
  }

 private:
  // Puts what the 32-bit view asks for before the next piece, or behind the last one.
  void TakeViewIn() {
    const bool isEnd = m_pieces.empty();
    if (isEnd ? !m_isEndViewed : !m_pieces.front().isViewed) return;
    const std::string next = isEnd ? std::string() : m_pieces.front().name;
    VolumeNode shared;
    if (m_layout.IsNarrowed(m_node, next)) {
      if (!isEnd) m_pieces.front().isViewed = false;
      m_pieces.push_front({std::string(kNarrowKey), false, true});
    } else if (m_layout.IsShared(m_node, next, shared)) {
      m_node = std::move(shared);
    }
    if (isEnd) m_isEndViewed = false;
  }

  SystemError Step() {
    const Piece piece = std::move(m_pieces.front());
    m_pieces.pop_front();
    VolumeNode child;
    if (const SystemError error = m_layout.Child(m_node, piece.name, child)) return error;
    if (IsLink(child)) {
      if (!m_keepsLink || !m_pieces.empty()) return Follow(child);
      m_isEndViewed = false;  // every view has the link itself
      m_node = std::move(child);
      return kErrorSuccess;
    }
    const auto isLink = [](const KeyLayer& layer) { return layer.pFile->Tree().IsLink(layer.key); };
    std::erase_if(child.layers, isLink);
    if (piece.isOfView && m_node.zone == Zone::Software) child.zone = Zone::SoftwareNarrow;
    m_node = std::move(child);
    return kErrorSuccess;
  }

  // The layer that counts decides.
  static bool IsLink(const VolumeNode& node) {
    return !node.layers.empty() &&
           node.layers.front().pFile->Tree().IsLink(node.layers.front().key);
  }

  // The target is a path of the kernel's, as \Registry\Machine\Software\X.
  SystemError Follow(const VolumeNode& link) {
    if (++m_linkCount > kMostLinks) return kErrorCannotResolveFilename;
    uint32_t type = 0;
    std::string data;
    if (const SystemError error = FindValue(link, "SymbolicLinkValue", type, data)) return error;
    if (type != kRegLink) return kErrorFileNotFound;
    std::string target = Utf8FromUtf16(data);
    target.resize(std::min(target.find('\0'), target.size()));
    std::deque<Piece> pieces = Pieces(target, false);
    if (pieces.size() < 2 || !EqualsNoCase(pieces[0].name, "Registry")) return kErrorFileNotFound;
    if (pieces.size() + m_pieces.size() > kMostPieces + 2) return kErrorInvalidName;
    const SystemError error = StartAt(pieces[1].name);
    m_pieces.insert(m_pieces.begin(), pieces.begin() + 2, pieces.end());
    return error;
  }

  SystemError StartAt(std::string_view name) {
    if (EqualsNoCase(name, "Machine")) return m_layout.MachineRoot(m_node);
    if (EqualsNoCase(name, "User")) return m_layout.UsersRoot(m_node);
    return kErrorFileNotFound;
  }

  CVolumeLayout& m_layout;
  VolumeNode m_node;
  std::deque<Piece> m_pieces;
  const bool m_keepsLink;  // the last one
  bool m_isEndViewed = false;
  int m_linkCount = 0;
};

}  // namespace

SystemError ResolveKey(CVolumeLayout& layout, const VolumeNode& start, std::string_view path,
                       bool isNarrow, VolumeNode& node, LastKey lastKey) {
  return CResolver(layout, start, path, isNarrow, lastKey).Resolve(node);
}

}  // namespace kestra::image
