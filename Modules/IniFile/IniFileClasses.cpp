#include "Modules/IniFile/IniFileClasses.h"

namespace kestra {
namespace {

using enum ParamType;

constexpr ParamDecl kIniKeyParams[] = {
    {.name = "Name", .type = String, .description = "Name of the key"},
    {.name = "StringValue", .type = String, .canBeChanged = true, .description = "Its text"},
    {.name = "DWORDValue",
     .type = Dword,
     .canBeChanged = true,
     .description = "Its text as a number, when all of it is digits and below 4294967295"},
};

constexpr ParamDecl kIniSectionParams[] = {
    {.name = "Name", .type = String, .description = "Name of the section"}};
constexpr const ClassDecl* kIniSectionChildren[] = {&kIniKeyClass};

constexpr ParamDecl kIniFileParams[] = {
    {.name = "Path", .type = String, .description = "Whole path of the file"}};
// Keys that stand before the first section are children of the file itself.
constexpr const ClassDecl* kIniFileChildren[] = {&kIniKeyClass, &kIniSectionClass};

constexpr ArgDecl kIniFileArgs[] = {
    {.name = "Path",
     .type = String,
     .description = "The file; on Windows a bare name is one in the Windows folder"},
    {.name = "Format",
     .type = Enum,
     .text = "Cfg|Ini",
     .defaultNumber = 1,
     .description = "Ini: a section ends where the next one begins. Cfg: at \"[]\", so that "
                    "sections stand in sections"},
    {.name = "ScrambleKey",
     .type = Dword,
     .description = "Key of a file whose bytes are scrambled; 0 for a plain one"},
    {.name = "Compress",
     .type = Dword,
     .defaultNumber = 4294967295,
     .description = "Whether a scrambled file is written compressed; 0 and 4294967295 for no"},
    {.name = "API",
     .type = Dword,
     .description = "Not 0: by the rules of the Windows profile functions, which know neither "
                    "layers nor keys outside sections, and take double quotes off a value"},
    {.name = "Section",
     .type = String,
     .description = "Only this section, by its name or a path of names. Of the sections in it the "
                    "first one is shown, by its name only"},
};

constexpr const char* kIniFileExamples[] = {
    "SELECT Path FROM IniFile(Path='/etc/adduser.conf').IniFile",
};

constexpr const char* kIniSectionExamples[] = {
    "SELECT Name FROM IniFile(Path='/etc/gai.ini').IniSection",
    "SELECT s.Name, k.Name, k.StringValue FROM IniFile(Path='/etc/sample.ini').IniSection s JOIN "
    "IniFile.IniKey k ON k.ATTACHEDTO = s.ITEMID",
};

constexpr const char* kIniKeyExamples[] = {
    "SELECT Name, StringValue FROM INIFILES.IniKey('/etc/adduser.conf')",
    "SELECT DWORDValue FROM IniFile(Path='/etc/sample.ini', Section='net').IniKey "
    "WHERE Name = 'port'",
};

}  // namespace

constinit const ClassDecl kIniKeyClass = {
    .name = "IniKey",
    .params = kIniKeyParams,
    .canBeAddedAndDeleted = true,
    .description =
        "A key with its value. INSERT and UPDATE take one of StringValue and "
        "DWORDValue. A key that is inserted without ATTACHEDTO goes to the top of the file, "
        "outside any section, also with the argument Section.",
    .examples = kIniKeyExamples};

constinit const ClassDecl kIniSectionClass = {
    .name = "IniSection",
    .params = kIniSectionParams,
    .children = kIniSectionChildren,
    .canBeAddedAndDeleted = true,
    .description =
        "A section of keys. In the Cfg layout the sections in it are items below it. A change of "
        "sections or keys replaces the file in one step: its directory must be writable, and "
        "another hard link to it keeps the old content. What does not look like text of this "
        "format is not changed, and no line with a CR that ends no line; while there is such a CR "
        "anywhere in the file, nothing is inserted and no section is deleted (message 15004, "
        "system error 13).",
    .examples = kIniSectionExamples};

constinit const ClassDecl kIniFileModule = {
    .name = "IniFile",
    .params = kIniFileParams,
    .children = kIniFileChildren,
    .args = kIniFileArgs,
    .description =
        "Sections and keys of a data file, plain, scrambled or compressed. A file of more than 16 "
        "MiB, or of more than 131072 sections and keys together, is neither shown nor changed "
        "(system error 223). A change of a file leaves its other lines as they are.",
    .examples = kIniFileExamples};

}  // namespace kestra
