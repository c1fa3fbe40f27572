// One change of a data file that people write too: bytes in, bytes out, and no I/O.
//
//   std::string bytes = ...;  // of the file; empty for one that is not there
//   CfgEdit edit{.kind = CfgEditKind::SetKey, .parent = {{"net"}}, .target = {"port"},
//                .text = "80"};
//   if (EditCfgBytes(bytes, edit, form, termination) == CfgOutcome::Done) ... write them
//
// What the change does not concern stays byte for byte: comments, blank lines, the order, the line
// ends, a UTF-8 mark at the beginning, the blanks around "=" and a last line without an end. A new
// key stands behind the last key of its section and is spelled as that is; a new section stands at
// the end. A section goes with its lines down to the next one, but for comments that stand directly
// above that. In the Ini layout a section is one of the top.
//
// A change is done only if the new bytes, read again, give the old tree with that very change;
// otherwise the bytes stay as they were.
//
// Only what looks like the text of a data file is changed. A scrambled file is a shuffle of itself
// under any other key than its own, and written back it would be lost. A CR that no LF follows is
// no line end here, and one for others: no line that has such is changed, and nothing is put into
// a file that has one, nor a section taken out of it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "VLib/src/data/CfgNode.h"
#include "VLib/src/threads/TerminationLook.h"

namespace kestra {

// A section or key among those of its parent: the ordinal-th, from 0, of its name.
struct CfgStep {
  std::string name;
  size_t ordinal = 0;
};

enum class CfgEditKind { AddSection, DeleteSection, AddKey, SetKey, DeleteKey };

struct CfgEdit {
  CfgEditKind kind;
  std::vector<CfgStep> parent;  // the section that holds the target; empty for the top
  CfgStep target;               // for Add* the ordinal is of no account
  std::string text;             // of a key
};

// How a file is read and written.
struct CfgForm {
  CfgLayout layout = CfgLayout::Ini;
  uint32_t key = 0;       // of the scramble
  bool compress = false;  // only with a key
  uint32_t quoteFlags = 0;
  bool ignoreCase = false;            // in names of sections and keys
  std::string_view lineEnd = "\r\n";  // of a file that has no line ends yet; CR LF or LF
};

enum class CfgOutcome {
  Done,
  Exists,    // there is a section or key of that name
  Missing,   // there is none, or not the section that should hold it
  NotText,   // not the text of a data file: UTF-16, control bytes, nothing but lines that mean
             // nothing, what a wrong key makes of a file, or a CR in the way
  NotHeld,   // the format cannot hold it, as a section in a section of the Ini layout
  TooLarge,  // more than kCfgMostBytes, or than kCfgMostEntries, as it is or as it would be
  Terminated,
};

// Of a file and of its text. A tree takes many times the text's memory, and a change several trees.
inline constexpr size_t kCfgMostBytes = size_t{16} << 20;
// Sections and keys together, counted over all lines of the text. Letting go of a tree looks at no
// termination event, so that a cancel waits for it.
inline constexpr size_t kCfgMostEntries = 131'072;

// Whether the format can hold it in any place, and other programs read it the same. Line ends and
// control bytes but TAB and VT never; of a section no "]", of a key no "=", no blanks at its ends
// and no ";" or "[" at its beginning; of a value no blanks at its ends, unless quotes are used. No
// empty names.
bool CanBeSectionName(std::string_view name);
bool CanBeKeyName(std::string_view name);
bool CanBeKeyText(std::string_view text, uint32_t quoteFlags);

// May throw std::bad_alloc; the bytes are as they were then, and for any outcome but Done.
CfgOutcome EditCfgBytes(std::string& bytes, const CfgEdit& edit, const CfgForm& form,
                        CTerminationLook& termination);

// Reads the bytes of a file, all layers and a UTF-8 mark taken off, as ReadCfgText does; an empty
// file has nothing. NotText for UTF-16 text with the mark of either order; what else would make no
// sense is read as far as it can be. Done, NotText, TooLarge or Terminated.
CfgOutcome ReadCfgBytes(CfgNode& node, std::string bytes, std::string_view sectionPath,
                        CfgMode mode, const CfgForm& form, CTerminationLook& termination);

}  // namespace kestra
