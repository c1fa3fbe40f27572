// Files of a volume: found without regard to case, and never anything beside them.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/xattr.h>

#include <algorithm>
#include <filesystem>
#include <vector>

#include "platform/image/files/VolumeFiles.h"
#include "tests/support/TempDirectory.h"

namespace kestra::image {
namespace {

namespace fs = std::filesystem;
using test::CTempDirectory;

class VolumeFilesTest : public testing::Test {
 protected:
  VolumeFilesTest() {
    for (const char* name : {"Windows/System32/drivers", "Users/J\xC3\xBCrgen", "twin", "TWIN"})
      fs::create_directories(m_root / name);
    Write("Windows/System32/Kernel32.DLL", "kernel");
    Write("Users/J\xC3\xBCrgen/Notes.TXT", "notes");
    Write("twin/lower", "l");
    Write("TWIN/upper", "u");
  }
  void Write(const std::string& name, const std::string& content) {
    test::WriteWholeFile((m_root / name).string(), content);
  }
  void Link(const std::string& target, const std::string& name) {
    fs::create_symlink(target, m_root / name);
  }
  // What a file holds, or the error as "#2".
  std::string Read(const std::string& path, LastLink lastLink = LastLink::Follow) {
    std::unique_ptr<CFileReader> reader;
    std::string content;
    SystemError error = m_pFiles->OpenFile(path, lastLink, reader);
    if (error == kErrorSuccess) error = reader->Read(1000, content);
    return error == kErrorSuccess ? content : "#" + std::to_string(error);
  }
  std::string Names(const std::string& path) {
    std::unique_ptr<CDirectoryListing> listing;
    const SystemError error = m_pFiles->OpenDirectory(path, listing);
    if (error != kErrorSuccess) return "#" + std::to_string(error);
    std::vector<std::string> names;
    for (std::string name; listing->Next(name) == kErrorSuccess;) {
      if (name.front() != '.') names.push_back(name);
    }
    std::sort(names.begin(), names.end());
    std::string all;
    for (const std::string& name : names) all += name + " ";
    return all;
  }

  CTempDirectory m_around;
  const fs::path m_root = fs::canonical(m_around.Path()) / "volume";
  bool m_isMade = fs::create_directory(m_root);
  CVolume m_volume{CUniqueFd(open(m_root.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC)),
                   m_root.string()};
  std::unique_ptr<CFileSystem> m_pFiles = MakeVolumeFiles(m_volume);
};

TEST_F(VolumeFilesTest, PathsLeadToFiles) {
  const struct {
    const char* path;
    const char* expected;
  } cases[] = {
      {"C:\\Windows\\System32\\Kernel32.DLL", "kernel"},
      {"c:\\WINDOWS\\system32\\kernel32.dll", "kernel"},
      {"C:\\\\Windows\\.\\Users\\..\\System32\\Kernel32.dll", "kernel"},
      {"C:\\..\\..\\windows\\system32\\kernel32.dll", "kernel"},
      {"C:\\users\\J\xC3\x9CRGEN\\notes.txt", "notes"},
      {"C:\\twin\\LOWER", "l"},
      {"C:\\TWIN\\Upper", "u"},
      // The first in byte order, where none is spelled so.
      {"C:\\Twin\\upper", "u"},
      {"C:\\Twin\\lower", "#2"},
      {"C:\\Windows\\System32\\none.dll", "#2"},
      {"C:\\Windows\\none\\none.dll", "#3"},
      {"C:\\twin\\lower\\x", "#3"},
      {"C:\\twin", "#5"},
      {"C:\\", "#5"},
      {"D:\\twin\\lower", "#3"},
      {"\\\\server\\share\\twin\\lower", "#3"},
      {"twin\\lower", "#3"},
      {"C:twin\\lower", "#3"},
      {"/twin/lower", "#3"},
      {"C:\\twin/lower", "l"},
      {"C:/twin/../twin\\lower", "l"},
      {"\\\\?\\c:\\twin\\lower", "l"},
      {"\\\\?\\D:\\twin\\lower", "#3"},
      {"C:\\twin.\\lower. .", "l"},
      {"C:\\twin..\\lower", "#3"},
      {"C:\\twin \\lower", "#3"},
      {"C:\\twin\\...", "#5"},
      {"", "#3"},
  };
  for (const auto& one : cases) EXPECT_EQ(Read(one.path), one.expected) << one.path;
  EXPECT_EQ(Read(std::string("C:\\twin\\lo\0wer", 14)), "#123");
  EXPECT_EQ(Names("c:\\WINDOWS"), "System32 ");
  EXPECT_EQ(Names("C:"), "TWIN Users Windows twin ");
  EXPECT_EQ(Names("C:\\twin\\lower"), "#267");
}

TEST_F(VolumeFilesTest, LinksStayInside) {
  test::WriteWholeFile(m_around / "outside", "of the analyst");
  fs::create_directory(m_around / "folder");
  test::WriteWholeFile((fs::path(m_around.Path()) / "folder" / "secret").string(), "secret");
  Link("windows/SYSTEM32", "junction");
  Link((m_root / "Windows").string(), "mounted");
  Link("../junction/../../Users", "twin/Documents");
  Link("/etc/passwd", "passwd");
  Link("../outside", "up");
  Link("../../../../../../../../etc", "far");
  Link((fs::path(m_around.Path()) / "folder").string(), "beside");
  Link(m_root.string() + "-other", "prefix");
  Link("circle", "circle");
  Link("nowhere", "loose");
  const struct {
    const char* path;
    const char* expected;
  } cases[] = {
      {"C:\\junction\\kernel32.dll", "kernel"},
      {"C:\\mounted\\system32\\kernel32.dll", "kernel"},
      {"C:\\twin\\documents\\J\xC3\xBCrgen\\notes.txt", "notes"},
      {"C:\\passwd", "#1921"},
      // ".." ends at the root, where "outside" is not.
      {"C:\\up", "#2"},
      {"C:\\far\\passwd", "#3"},
      {"C:\\beside\\secret", "#1921"},
      {"C:\\prefix\\x", "#1921"},
      {"C:\\circle", "#1921"},
      {"C:\\loose", "#2"},
  };
  for (const auto& one : cases) EXPECT_EQ(Read(one.path), one.expected) << one.path;
  EXPECT_EQ(Read("C:\\junction\\kernel32.dll", LastLink::Refuse), "kernel");
  EXPECT_EQ(Read("C:\\loose", LastLink::Refuse), "#5");

  FileInfo info;
  ASSERT_EQ(m_pFiles->Info("C:\\JUNCTION", info), kErrorSuccess);
  EXPECT_EQ(info.kind, FileKind::Link);
  EXPECT_EQ(info.attributes, kFileAttributeDirectory | kFileAttributeReparsePoint);
  for (const char* path : {"C:\\passwd", "C:\\beside", "C:\\circle"}) {
    ASSERT_EQ(m_pFiles->Info(path, info), kErrorSuccess) << path;
    EXPECT_EQ(info.attributes, kFileAttributeReparsePoint) << path;
  }
}

TEST_F(VolumeFilesTest, WhatIsNoFileIsNotOpened) {
  ASSERT_EQ(mkfifo((m_root / "pipe").c_str(), 0600), 0);
  EXPECT_EQ(Read("C:\\pipe"), "#5");
  FileInfo info;
  ASSERT_EQ(m_pFiles->Info("C:\\PIPE", info), kErrorSuccess);
  EXPECT_EQ(info.kind, FileKind::Other);
  // No path of Windows could name it.
  Write("back\\slash", "x");
  EXPECT_EQ(Names("C:\\"), "TWIN Users Windows pipe twin ");
}

TEST_F(VolumeFilesTest, AttributesComeFromTheVolume) {
  const auto attributes = [&](const std::string& path) {
    FileInfo info;
    EXPECT_EQ(m_pFiles->Info(path, info), kErrorSuccess) << path;
    EXPECT_TRUE(info.isTrusted);
    return info.attributes;
  };
  EXPECT_EQ(attributes("C:\\twin\\lower"), kFileAttributeNormal);
  // A dot hides nothing on Windows.
  Write(".dot", "x");
  EXPECT_EQ(attributes("C:\\.dot"), kFileAttributeNormal);
  chmod((m_root / "twin/lower").c_str(), 0444);
  EXPECT_EQ(attributes("C:\\twin\\lower"), kFileAttributeReadOnly);
  const std::string upper = (m_root / "TWIN/upper").string();
  if (setxattr(upper.c_str(), "user.DOSATTRIB", "0x26", 4, 0) != 0)
    GTEST_SKIP() << "the temporary directory keeps no extended attributes";
  EXPECT_EQ(attributes("C:\\TWIN\\upper"), kFileAttributeHidden | kFileAttributeSystem);
  setxattr(upper.c_str(), "user.DOSATTRIB", "22", 2, 0);
  EXPECT_EQ(attributes("C:\\TWIN\\upper"), kFileAttributeNormal);
}

TEST_F(VolumeFilesTest, NothingIsEverChanged) {
  CFileSystem& files = *m_pFiles;
  const std::string path = "C:\\twin\\lower", other = "C:\\twin\\other";
  std::unique_ptr<CFileWriter> writer;
  const SystemError answers[] = {
      files.BeginWrite(path, LastLink::Follow, Existing::Replace, NewRights::Usual, writer),
      files.RemoveFile(path),
      files.MakeDirectory(other, NewRights::Usual),
      files.RemoveEmptyDirectory("C:\\Windows\\System32\\drivers"),
      files.Rename(path, other),
      files.CopyPlainFile(path, other, nullptr),
      files.SetAttributes(path, kFileAttributeReadOnly),
      files.GrantEveryone(path),
      files.MoveAtBoot(path, other),
  };
  for (const SystemError answer : answers) EXPECT_EQ(answer, kErrorWriteProtect);
  EXPECT_FALSE(writer);
  EXPECT_EQ(Names("C:\\twin"), "lower ");
  EXPECT_EQ(Read(path), "l");
}

}  // namespace
}  // namespace kestra::image
