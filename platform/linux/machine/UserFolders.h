// The user's and the system's folders by the XDG conventions.
// Sources: XDG Base Directory Specification; xdg-user-dirs, the file user-dirs.dirs.
#pragma once

#include <optional>
#include <string>

namespace kestra {

// $HOME, else the home directory of the account; nothing if neither is an absolute path.
std::optional<std::string> HomeFolder();
// The folder that variable names if it holds an absolute path, else fallback below the home folder.
std::optional<std::string> BaseFolder(const char* variable, const std::string& fallback);
// The user's desktop: $XDG_DESKTOP_DIR, the line of that name in user-dirs.dirs, else "Desktop".
std::optional<std::string> DesktopFolder();
// The value of XDG_DESKTOP_DIR in the text of a user-dirs.dirs file. Values are absolute or begin
// with "$HOME/"; nothing for any other.
std::optional<std::string> DecodeDesktopEntry(const std::string& content, const std::string& home);
// Where the first optical drive is mounted, or /media/cdrom if that exists.
std::optional<std::string> CdDriveFolder();

}  // namespace kestra
