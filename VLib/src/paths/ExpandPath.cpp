#include "VLib/src/paths/ExpandPath.h"

#include <algorithm>

#include "VLib/src/paths/MachineFolder.h"
#include "VLib/src/text/Text.h"
#include "platform/machine/Machine.h"
#include "platform/machine/SystemFacts.h"

namespace kestra {
namespace {

struct PathToken {
  std::string_view word;
  Folder folder;
  bool isForFileRows;
  // Stands for nothing, rather than failing, on a machine that does not have the folder.
  bool mayBeAbsent;
};

constexpr PathToken kTokens[] = {
    {"%cddrive%", Folder::CdDrive, true, false},
    {"%desktop%", Folder::Desktop, true, false},
    {"%inf%", Folder::Inf, true, false},
    {"%programs%", Folder::Programs, true, false},
    {"%programfiles%", Folder::ProgramFiles, false, false},
    {"%programfiles32%", Folder::ProgramFiles32, false, false},
    {"%programfiles64%", Folder::ProgramFiles64, true, true},
    {"%startup%", Folder::Startup, true, false},
    {"%system%", Folder::System, true, false},
    {"%systemdrive%", Folder::SystemDrive, true, false},
    {"%temp%", Folder::Temp, true, false},
    {"%windows%", Folder::Windows, true, false},
    {"%appdata%", Folder::AppData, true, false},
    {"%commonappdata%", Folder::CommonAppData, true, false},
};

const PathToken* FindToken(std::string_view text, PathTokens tokens) {
  for (const PathToken& token : kTokens) {
    if (tokens == PathTokens::FileRows && !token.isForFileRows) continue;
    if (EqualsNoCase(text.substr(0, token.word.size()), token.word)) return &token;
  }
  return nullptr;
}

// A folder's path ends in no separator, unless it is a root: "/" and "/etc" make "/etc".
std::string Join(const std::string& folder, std::string_view rest, char separator) {
  if (folder.ends_with(separator) && rest.starts_with(separator)) rest.remove_prefix(1);
  return folder + std::string(rest);
}

bool ExpandToken(std::string_view text, std::string& out, CMachine& machine, PathTokens tokens) {
  const PathToken* token = FindToken(text, tokens);
  if (!token) return false;
  const std::optional<std::string> folder = MachineFolder(token->folder, machine);
  if (!folder && !token->mayBeAbsent) return false;
  out = Join(folder.value_or(std::string()), text.substr(token->word.size()),
             machine.System().PathSeparator());
  return true;
}

}  // namespace

bool ExpandPath(const std::string& in, std::string& out, CMachine& machine, PathTokens tokens) {
  const CSystemFacts& system = machine.System();
  std::string text = in;
  // Queries that were written for Windows machines name the same files here; in a text that has a
  // "/" a backslash is a character like any other.
  if (system.PathSeparator() == '/' && text.find('/') == std::string::npos)
    std::replace(text.begin(), text.end(), '\\', '/');
  if (text.starts_with('%')) return ExpandToken(text, out, machine, tokens);
  if (system.PathSeparator() == '\\' && text.starts_with('\\') && !text.starts_with("\\\\")) {
    text.insert(0, MachineFolder(Folder::SystemDrive, machine).value_or(std::string()));
  }
  out = std::move(text);
  return true;
}

}  // namespace kestra
