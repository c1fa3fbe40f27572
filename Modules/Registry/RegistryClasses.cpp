#include "Modules/Registry/RegistryClasses.h"

namespace kestra {
namespace {

using enum ParamType;

constexpr ParamDecl kRegistryValueParams[] = {
    {.name = "Name", .type = String, .description = "Name; empty for the key's default value"},
    {.name = "Path",
     .type = String,
     .description = "Path of the key, from the hive's word on, and the name behind it"},
    // The place of an option is the number of the registry type.
    {.name = "Type",
     .type = Enum,
     .text = "None|SZ|ExpandSZ|Binary|DWORD|DWORDBigEndian|Link|MultiSZ|ResourceList|"
             "FullResourceDescriptor|ResourceRequirementsList",
     .description = "Type of the data; absent for a value that may not be read"},
    {.name = "StringValue",
     .type = String,
     .canBeChanged = true,
     .description = "Text, as it is stored; the strings of a MultiSZ with the separator between "
                    "them; bytes as pairs of hexadecimal digits"},
    {.name = "DWORDValue",
     .type = Dword,
     .canBeChanged = true,
     .description = "Number of a DWORD of four bytes"},
};

constexpr ParamDecl kRegistryKeyParams[] = {
    {.name = "Name", .type = String, .description = "Last part of the path"},
    {.name = "Path", .type = String, .description = "Whole path, from the hive's word on"},
    {.name = "Class", .type = String, .description = "Class of the key, if it has one"},
    {.name = "LastWriteTime", .type = Datime, .description = "When the key was last written"},
};

constexpr const char* kRegistryKeyExamples[] = {
    "SELECT Path, LastWriteTime FROM REGISTRY.REGISTRYKEY('HKLM64\\Software\\*\\*')",
    "SELECT Name FROM Registry(KeyPath='HKCU\\Software', Levels=1).RegistryKey",
    "INSERT Registry(KeyPath='HKCU\\Software').RegistryKey (Name) VALUES ('Acme\\Tool')",
    "DELETE REGISTRY.REGISTRYKEY('HKCU\\Software\\Acme')",
};

constexpr const char* kRegistryValueExamples[] = {
    "SELECT Path, StringValue FROM REGISTRY.REGISTRYVALUE('HKLM\\Software\\*\\Version')",
    "SELECT Name, StringValue FROM Registry(ValuePath='HKLM64\\Software\\Microsoft\\Windows\\"
    "CurrentVersion\\Run\\*').RegistryValue",
    "INSERT Registry(KeyPath='HKCU\\Software\\Acme').RegistryValue (Name, Type, StringValue) "
    "VALUES ('Level', 'DWORD', '3')",
    "UPDATE REGISTRY.REGISTRYVALUE('HKCU\\Software\\Acme\\Level') SET DWORDValue = 4",
};

constexpr const ClassDecl* kRegistryKeyChildren[] = {&kRegistryValueClass};
constexpr const ClassDecl* kRegistryChildren[] = {&kRegistryKeyClass};

constexpr ArgDecl kRegistryArgs[] = {
    {.name = "KeyPath",
     .type = String,
     .description = "A key; wildcards are allowed in every part but the first, the hive's word. On "
                    "a system of 64 bits that chooses the view: HKLM the one of 32-bit programs, "
                    "HKLM64 the one of 64-bit programs"},
    {.name = "ValuePath",
     .type = String,
     .description = "A key as in KeyPath, and behind the last backslash a pattern for the values; "
                    "instead of KeyPath"},
    {.name = "ValueName",
     .type = String,
     .defaultText = "*",
     .description = "Pattern for the values that are listed under each key"},
    {.name = "Levels",
     .type = Dword,
     .description = "How many levels of keys below those found, at most 100"},
    {.name = "Timeout",
     .type = Dword,
     .defaultNumber = 2000,
     .description =
         "Milliseconds for the whole fill, at most 3600000; it fails when they are over"},
    {.name = "MultiSZSeparator",
     .type = String,
     .defaultText = "\n",
     .description = "What stands between the strings of a MultiSZ in StringValue"},
};

}  // namespace

constinit const ClassDecl kRegistryValueClass = {
    .name = "RegistryValue",
    .params = kRegistryValueParams,
    .canBeAddedAndDeleted = true,
    .description =
        "A value of a registry key. The rows of the source REGISTRY.REGISTRYVALUE are of this "
        "class too.",
    .examples = kRegistryValueExamples};

constinit const ClassDecl kRegistryKeyClass = {
    .name = "RegistryKey",
    .params = kRegistryKeyParams,
    .children = kRegistryKeyChildren,
    .canBeAddedAndDeleted = true,
    .description =
        "A registry key. The rows of the source REGISTRY.REGISTRYKEY are of this class too.",
    .examples = kRegistryKeyExamples};

constinit const ClassDecl kRegistryModule = {.name = "Registry",
                                             .children = kRegistryChildren,
                                             .args = kRegistryArgs,
                                             .description = "Keys and values of the registry."};

}  // namespace kestra
