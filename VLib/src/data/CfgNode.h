// CfgNode: data files. A file is a tree of named sections that hold keys and values in order; its
// text is either nested ("Cfg": a section ends at "[]") or flat ("Ini": a section ends where the
// next one begins).
//
//   auto root = MakeRef<CfgNode>();
//   if (root->LoadFile(files, path, "", CfgMode::All, 0, CfgLayout::Cfg)) ...
//   root->Section("A\\B", true)->SetText("Key", "value");
//   root->Save(files, 0, CfgLayout::Cfg);
//
// Text lines are trimmed of blanks, tabs, CR and vertical tabs at both ends; LF ends a line. Empty
// lines, lines that begin with ";" and lines without "=" are passed over. Keys and names compare
// exactly; duplicates are kept, and a look-up finds the first. A "[]" outside any section ends the
// text.
//
// Around the text there may be two layers: a scramble with a 32-bit key, other than 0 (a shuffle of
// the bytes, no cipher), and inside it a zlib compression.
//
// Threads: one at a time per tree. Nesting costs no stack, in any operation, the destructor's
// included. Time and memory follow the length of the text, whatever a file's header claims; a tree
// of tiny values takes some fifty times its text. The text is the file itself, or, out of a
// compressed file, at most 64 times as long and never beyond 256 MiB, but always up to 1 MiB: what
// claims to be longer is not decompressed, and what would become longer is saved without
// compression. Every load and save takes a termination event that may be null; one that is
// signalled ends it with false.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "platform/base/Ref.h"
#include "platform/machine/FileSystem.h"
#include "platform/os/Wait.h"

namespace kestra {

class CfgValue : public CCounted<CfgValue> {
 public:
  CfgValue(std::string key, std::string text) : Key(std::move(key)), Text(std::move(text)) {}
  std::string Key;
  std::string Text;
};

// The file that a tree came from or went to.
class CfgFileInfo : public CCounted<CfgFileInfo> {
 public:
  std::string Path;
  FileTime LastWrite;  // 0 if there is no such file
};

enum class CfgLayout { Cfg, Ini };

// What a load takes of the section that its path selects.
enum class CfgMode {
  All,      // its keys, and every section below it
  OwnKeys,  // its keys up to its first child, which is kept by name only
  Skip,     // nothing: it is read and forgotten, and the load only tells that it can be read
};

// Bit 0 of the quote flags. Reading: double quotes around a value are taken off. Writing: a value
// that trimming would change is put between double quotes.
inline constexpr uint32_t kCfgQuotes = 1;

inline constexpr size_t kCfgMostIndent = 256;

class CfgNode : public CCounted<CfgNode> {
 public:
  CfgNode() = default;
  explicit CfgNode(std::string name) : Name(std::move(name)) {}
  ~CfgNode();
  CfgNode(const CfgNode&) = delete;
  CfgNode& operator=(const CfgNode&) = delete;

  std::string Name;                    // empty for a root
  std::vector<Ref<CfgNode>> Children;  // in file order
  std::vector<Ref<CfgValue>> Values;   // in file order
  Ref<CfgFileInfo> File;               // null for a tree that was made in memory

  // --- Reading. The content of this node is added to, never replaced; by a load that fails it is
  // left as it is. In the Ini layout a node with a name takes only what comes before a section. ---

  // sectionPath is a path of section names separated by "\", which compare here without regard to
  // case; empty for the whole file. False for a file that cannot be read, an empty one, and one
  // that begins with the mark of UTF-16 text. Afterwards File tells of the file.
  bool LoadFile(CFileSystem& files, const std::string& path, std::string_view sectionPath,
                CfgMode mode, uint32_t key, CfgLayout layout,
                const os::CWaitable* pTermination = nullptr);
  // Out of the bytes of a file, all layers included.
  bool LoadBytes(std::string bytes, std::string_view sectionPath, CfgMode mode, uint32_t key,
                 CfgLayout layout, const os::CWaitable* pTermination = nullptr);
  // Out of text alone.
  bool LoadText(std::string_view text, uint32_t quoteFlags, CfgLayout layout,
                const os::CWaitable* pTermination = nullptr);

  // --- Writing. A save that fails leaves what the file held before. ---

  // Makes File anew for path. compress without a key writes nothing and answers false.
  bool SaveFile(CFileSystem& files, const std::string& path, uint32_t key, bool compress,
                CfgLayout layout, const os::CWaitable* pTermination = nullptr);
  // To the tree's File; false if it has none.
  bool Save(CFileSystem& files, uint32_t key, bool compress, CfgLayout layout,
            const os::CWaitable* pTermination = nullptr);
  // Appends the text form. indent counts blanks; the Ini layout takes none. Each level of nesting
  // adds one, up to kCfgMostIndent: blanks mean nothing to a reader, and without a limit they would
  // grow with the square of the depth.
  void Dump(std::string& out, size_t indent, uint32_t quoteFlags, CfgLayout layout) const;
  // Whether the text form, read into an empty node without a name, gives the same again: the same
  // node if this one has no name, and otherwise one with this as its only section. A line end in a
  // value does not, or blanks at its ends, or sections in sections in the Ini layout.
  bool ReadsBack(uint32_t quoteFlags, CfgLayout layout) const;

  // --- The tree ---

  // The section at a path of names separated by "\"; with create, missing ones are added. Names
  // that are empty are passed over. Null for a path without a name, and for a section that is not
  // there.
  CfgNode* Section(std::string_view path, bool create);
  const CfgNode* Section(std::string_view path) const;
  CfgNode& AddSection(std::string name);
  // Null if there is no such key.
  const CfgValue* Find(std::string_view key) const;
  std::string GetText(std::string_view key, std::string_view fallback = {}) const;
  // The decimal number that the text begins with, 0 if it begins with none (atoi, but that it
  // saturates).
  int32_t GetNumber(std::string_view key, int32_t fallback = 0) const;
  void SetText(std::string_view key, std::string text);
  void SetNumber(std::string_view key, int32_t number);
};

}  // namespace kestra
