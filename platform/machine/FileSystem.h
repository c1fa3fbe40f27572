// Facility "file system" of the diagnosed machine.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "platform/base/FileTime.h"
#include "platform/base/SystemError.h"
#include "platform/os/Wait.h"

namespace kestra {

// The attribute word's bits. Source: the Win32 page "File Attribute Constants".
inline constexpr uint32_t kFileAttributeReadOnly = 0x1;
inline constexpr uint32_t kFileAttributeHidden = 0x2;
inline constexpr uint32_t kFileAttributeSystem = 0x4;
inline constexpr uint32_t kFileAttributeDirectory = 0x10;
inline constexpr uint32_t kFileAttributeNormal = 0x80;
inline constexpr uint32_t kFileAttributeReparsePoint = 0x400;
inline constexpr uint32_t kFileAttributeCompressed = 0x800;

// A bit of a volume's flags. Source: the Win32 page of GetVolumeInformation.
inline constexpr uint32_t kFilePersistentAcls = 0x8;

// What a file is, before anybody opens it. Only plain files may be opened and only plain
// directories descended into.
enum class FileKind { File, Directory, Link, Other };

// Which file it is, whatever its name: numbers that mean nothing but that two are equal or not. A
// file that goes while nobody holds it open may leave its numbers to a later one. All 0 where the
// system does not tell.
struct FileIdentity {
  uint64_t volume = 0;
  uint64_t file = 0;
  friend bool operator==(const FileIdentity&, const FileIdentity&) = default;
};

// What the file system says of one file. A time of 0 ticks is not known.
struct FileInfo {
  FileKind kind = FileKind::File;
  uint32_t attributes = 0;  // the directory bit says whether it counts as a directory; a link to a
                            // directory counts as what it leads to
  uint64_t size = 0;        // bytes
  FileTime creationTime{};
  FileTime lastAccessTime{};
  FileTime lastWriteTime{};
  // Nobody but the caller and the machine's administrator can have written it: it is theirs, and
  // others have no right to write. Always true where access lists settle that, never for a link.
  bool isTrusted = true;
  // There are bytes behind it. Not so for what a system makes up while it is read, as below /proc
  // and /sys, where a read may wait or set something off, and for a file that is one hole.
  bool isStored = true;
  FileIdentity identity{};
  // Another number after each change of the content or of the attributes, as far as the system's
  // clock tells two moments apart (on Linux the time of the last status change); 0 is not known.
  uint64_t changeStamp = 0;
};

// Whether two descriptions are of one file in one state.
inline bool IsSameState(const FileInfo& a, const FileInfo& b) {
  return a.identity == b.identity && a.changeStamp == b.changeStamp && a.size == b.size &&
         a.lastWriteTime == b.lastWriteTime;
}

// Whether something is another file than the one that was described before, where that can be told:
// it has other numbers, or was made at another time (numbers are used again).
inline bool IsAnotherFile(const FileInfo& before, const FileInfo& now) {
  const FileIdentity unknown;
  if (before.identity == unknown || now.identity == unknown) return false;
  const uint64_t madeBefore = before.creationTime.ticks, madeNow = now.creationTime.ticks;
  return before.identity != now.identity ||
         (madeBefore != 0 && madeNow != 0 && madeBefore != madeNow);
}

// The entries of one directory, "." and ".." among them only if the system lists them. One thread
// at a time.
class CDirectoryListing {
 public:
  virtual ~CDirectoryListing() = default;
  // Of the directory that is open, whatever its name has come to mean since.
  virtual SystemError OwnInfo(FileInfo& info) = 0;
  // The next name, in the system's order. kErrorNoMoreFiles after the last one.
  virtual SystemError Next(std::string& name) = 0;
  // What the entry is that Next gave last. kErrorFileNotFound when it went away in between.
  virtual SystemError Info(FileInfo& info) = 0;
};

// An open plain file that is read, from its start. One thread at a time.
class CFileReader {
 public:
  virtual ~CFileReader() = default;
  // Of the file that is open, whatever its name has come to mean since.
  virtual SystemError Info(FileInfo& info) = 0;
  // Appends the bytes from the position on, at most limit of them, and moves the position behind
  // them. Fewer than limit may come at any time; none, with success, only at the end of the file.
  virtual SystemError Read(size_t limit, std::string& bytes) = 0;
  virtual SystemError Seek(uint64_t offset) = 0;
};

// A plain file that is being written. What its name stood for before stays in place, and whole,
// until Commit; an object that goes without a Commit that succeeded leaves nothing behind. One
// thread at a time.
class CFileWriter {
 public:
  virtual ~CFileWriter() = default;
  virtual SystemError Write(std::string_view bytes) = 0;
  // For what was read, changed and is written again: Commit answers kErrorSharingViolation, and
  // changes nothing, unless the file in place is still the one that read told of (a reader's Info),
  // in the same state, so that no other writer's change is lost that came in between. Keep that
  // reader open until then. Of two writers that expect the same state at most one succeeds: they
  // take turns by a lock on the old file (on Linux flock(2)), and a lock that is taken is a sharing
  // violation too. Only with Existing::Replace, and before Commit.
  virtual void ExpectUnchanged(const FileInfo& read) = 0;
  // Brings it to the disk, then puts it in the name's place: in one step (two before Windows 10, if
  // others have it open). Only once. After a failure the name stands for what it stood for before.
  virtual SystemError Commit() = 0;
};

// What a link in a path's last place means for an operation: the file that it leads to, or
// kErrorAccessDenied. A link that leads nowhere is kErrorFileNotFound. On Linux it is not followed
// either, with kErrorAccessDenied, where another user may have laid it as a trap: it is neither the
// caller's nor root's, in a directory that others can write (with or without the sticky bit; the
// owner of a directory, other than root, can write it). The same holds for each further link that
// such a link leads to, but not for links in the place of a directory on the way.
enum class LastLink { Follow, Refuse };

// What may stand where a file is written. What is replaced loses its streams and auditing list.
enum class Existing {
  Replace,  // a plain file: its attributes pass over to the new one; another hard link keeps what
            // it held. On Linux the owner, mode and access list pass over too, and Commit fails
            // with kErrorAccessDenied where the system does not let us set the owner or the list;
            // where it does not let us set the group, rights are taken away and none are given
  Refuse,   // nothing: kErrorFileExists otherwise, also when it came while we wrote
};

// Who gets at what is newly made. Where access lists settle that, the directory's decides for both.
enum class NewRights {
  Usual,      // as the system does it: on Linux by the umask
  OwnerOnly,  // the caller alone
};

// All methods may be called from any thread. Paths are the machine's own, absolute, UTF-8; a
// trailing separator is allowed on directories. "Not found" is kErrorFileNotFound for the last
// part and kErrorPathNotFound for a directory on the way. A machine that is only read answers every
// change with kErrorWriteProtect.
class CFileSystem {
 public:
  virtual ~CFileSystem() = default;
  virtual SystemError OpenDirectory(const std::string& path,
                                    std::unique_ptr<CDirectoryListing>& listing) = 0;
  virtual SystemError Info(const std::string& path, FileInfo& info) = 0;
  // The short (8.3) form of a path. kErrorNotSupported where the file system has none.
  virtual SystemError ShortPath(const std::string& path, std::string& shortPath) = 0;
  // Opens a plain file. kErrorAccessDenied for what is none, without waiting for anything.
  virtual SystemError OpenFile(const std::string& path, LastLink lastLink,
                               std::unique_ptr<CFileReader>& reader) = 0;

  // Begins to write a plain file, whose directory must exist. A new file belongs to the caller;
  // rights are of no account for one that is replaced. With Existing::Replace a file that the
  // caller may not write is refused with kErrorAccessDenied, also where the right to replace it in
  // its directory would be there. With LastLink::Follow the file that the link leads to is written,
  // and the link stays. Since the new file takes the old one's place, on Linux a file in a
  // directory that the caller may not write cannot be replaced (kErrorAccessDenied), nor one that
  // is a mount point of its own (kErrorBusy, from Commit); nothing is changed then.
  virtual SystemError BeginWrite(const std::string& path, LastLink lastLink, Existing existing,
                                 NewRights rights, std::unique_ptr<CFileWriter>& writer) = 0;
  // Removes a file, or a link but not what it leads to. kErrorAccessDenied for a directory.
  virtual SystemError RemoveFile(const std::string& path) = 0;
  // Makes one directory. kErrorAlreadyExists if there is anything of that name.
  virtual SystemError MakeDirectory(const std::string& path, NewRights rights) = 0;
  // Removes a directory that has nothing in it. kErrorDirNotEmpty for one that has, kErrorDirectory
  // for what is no directory, a link to one among it.
  virtual SystemError RemoveEmptyDirectory(const std::string& path) = 0;
  // Gives a file, a link or a directory with all that is in it another path on the same volume, in
  // one step. Never replaces anything: kErrorAlreadyExists then. kErrorNotSameDevice on another
  // volume; kErrorNotSupported where the file system cannot do it without the risk of replacing.
  virtual SystemError Rename(const std::string& from, const std::string& to) = 0;
  // Copies a plain file, or the one that a link leads to, with its attributes and its write time,
  // on Linux with its mode as far as the umask leaves it. Never replaces anything: kErrorFileExists
  // then. The copy gets its name when it is whole; kErrorCancelled when pTermination (may be null)
  // is signalled before. The volume keeps nothing of a copy that failed.
  virtual SystemError CopyPlainFile(const std::string& from, const std::string& to,
                                    const os::CWaitable* pTermination) = 0;
  // Sets the bits kFileAttributeReadOnly, -Hidden and -System of a file or directory, and leaves
  // the others as they are. On Linux read-only takes away every right to write and its absence
  // gives the owner's back; a change of the others is kErrorNotSupported, and so is a link's.
  virtual SystemError SetAttributes(const std::string& path, uint32_t attributes) = 0;
  // The file system flags of the volume that holds the path; none are known on Linux (0).
  virtual SystemError VolumeFlags(const std::string& path, uint32_t& flags) = 0;
  // Gives every user of the machine full access to a file or directory. Does nothing, with success,
  // where files keep their owner's rights (Linux).
  virtual SystemError GrantEveryone(const std::string& path) = 0;
  // Has the system rename a path when it starts next; an empty target removes it. Only for a
  // machine that can do that; kErrorCallNotImplemented otherwise.
  virtual SystemError MoveAtBoot(const std::string& from, const std::string& to) = 0;
};

}  // namespace kestra
