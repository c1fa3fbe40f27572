#include "Modules/IniFile/IniFileClasses.h"

namespace kestra {
namespace {

using enum ParamType;

constexpr ParamDecl kIniKeyParams[] = {
    {"Name", String},
    {"StringValue", String, nullptr, true},
    {"DWORDValue", Dword, nullptr, true},
};

constexpr ParamDecl kIniSectionParams[] = {{"Name", String}};
constexpr const ClassDecl* kIniSectionChildren[] = {&kIniKeyClass};

constexpr ParamDecl kIniFileParams[] = {{"Path", String}};
// Keys that stand before the first section are children of the file itself.
constexpr const ClassDecl* kIniFileChildren[] = {&kIniKeyClass, &kIniSectionClass};

constexpr ArgDecl kIniFileArgs[] = {
    {"Path", String},       {"Format", Enum, "Cfg|Ini", 1},
    {"ScrambleKey", Dword}, {"Compress", Dword, nullptr, 4294967295},
    {"API", Dword},         {"Section", String},
};

}  // namespace

constinit const ClassDecl kIniKeyClass = {.name = "IniKey",
                                          .params = kIniKeyParams,
                                          .canBeAddedAndDeleted = true,
                                          .description = "A key with its value."};

constinit const ClassDecl kIniSectionClass = {.name = "IniSection",
                                              .params = kIniSectionParams,
                                              .children = kIniSectionChildren,
                                              .canBeAddedAndDeleted = true,
                                              .description = "A section of keys."};

constinit const ClassDecl kIniFileModule = {
    .name = "IniFile",
    .params = kIniFileParams,
    .children = kIniFileChildren,
    .args = kIniFileArgs,
    .description = "Sections and keys of a data file, plain, scrambled or compressed."};

}  // namespace kestra
