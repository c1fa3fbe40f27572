// The module IniFile: one data file, as its sections and the keys in them. Keys outside any section
// stand below the module itself.
//
// The path is absolute. On a Windows machine a bare name is a file in the Windows folder, as the
// profile functions take it; on Linux it would be one in "/", which nobody means, and is refused.
//
// With the argument API the file is read and changed by the rules of the Win32 profile functions
// (GetPrivateProfileSection and its kin): the Ini layout without any layer; names of sections and
// keys compare without regard to case; keys outside sections are not seen; double quotes around a
// value are taken off, and put there where the value would be trimmed otherwise. Section chooses
// one section, and without it all are listed.
//
// A UTF-8 mark at the beginning of a file is kept and passed over; UTF-16 is refused. A file of
// more than 16 MiB (kCfgMostBytes), without its layers too, or of more than 131,072 sections and
// keys together (kCfgMostEntries) is neither shown nor changed: kErrorFileTooLarge.
#pragma once

#include <string>

#include "Modules/IniFile/IniFile.h"
#include "model/classes/Module.h"

namespace kestra {

class CIniFileModule : public DiagModule {
 public:
  using DiagModule::DiagModule;

  // A file that is not there, an empty one, or one without the section asked for, has no items. A
  // file that cannot be read gives false with the system error, one of another format (UTF-16) with
  // message 15004 and the path; the log tells both. A path without a file name, or that is not
  // absolute, gives false with kErrorInvalidName. False too when the query was cancelled.
  using DiagModule::Init;
  bool Init(bool bInitChild, QueryMessage& message) override;

 protected:
  // An IniSection, or an IniKey outside any section.
  bool OnAddOfType(const std::string& newItemType, const DiagParams& params,
                   QueryMessage& message) override;

 private:
  bool ReadPath(std::string& path, QueryMessage& message);
  Ref<CIniFile> ReadArguments(QueryMessage& message);  // null for what does not fit
  bool Load(const Ref<CIniFile>& file, CfgNode& top, QueryMessage& message);
};

// The module with the default arguments for this file, of no root.
Ref<CIniFileModule> MakeIniFile(Ref<CMachine> machine, const std::string& path);

}  // namespace kestra
