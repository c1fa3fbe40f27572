#include "Modules/Registry/RegistryClasses.h"

namespace kestra {
namespace {

using enum ParamType;

constexpr ParamDecl kRegistryValueParams[] = {
    {"Name", String},
    {"Path", String},
    // The place of an option is the number of the registry type.
    {"Type", Enum,
     "None|SZ|ExpandSZ|Binary|DWORD|DWORDBigEndian|Link|MultiSZ|ResourceList|"
     "FullResourceDescriptor|ResourceRequirementsList"},
    {"StringValue", String, nullptr, true},
    {"DWORDValue", Dword, nullptr, true},
};

constexpr ParamDecl kRegistryKeyParams[] = {
    {"Name", String},
    {"Path", String},
    {"Class", String},
    {"LastWriteTime", Datime},
};

constexpr const ClassDecl* kRegistryKeyChildren[] = {&kRegistryValueClass};
constexpr const ClassDecl* kRegistryChildren[] = {&kRegistryKeyClass};

constexpr ArgDecl kRegistryArgs[] = {
    {"KeyPath", String},
    {"ValuePath", String},
    {"ValueName", String, nullptr, 0, "*"},
    {"Levels", Dword},
    {"Timeout", Dword, nullptr, 2000},
    {"MultiSZSeparator", String, nullptr, 0, "\n"},
};

}  // namespace

constinit const ClassDecl kRegistryValueClass = {.name = "RegistryValue",
                                                 .params = kRegistryValueParams,
                                                 .canBeAddedAndDeleted = true,
                                                 .description = "A value of a registry key."};

constinit const ClassDecl kRegistryKeyClass = {.name = "RegistryKey",
                                               .params = kRegistryKeyParams,
                                               .children = kRegistryKeyChildren,
                                               .canBeAddedAndDeleted = true,
                                               .description = "A registry key."};

constinit const ClassDecl kRegistryModule = {.name = "Registry",
                                             .children = kRegistryChildren,
                                             .args = kRegistryArgs,
                                             .description = "Keys and values of the registry."};

}  // namespace kestra
