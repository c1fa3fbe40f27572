#include "Modules/Security/SecurityClasses.h"

namespace kestra {
namespace {

using enum ParamType;

// Products with a richer item than the generic one.
constexpr ParamDecl kVendorParams[] = {
    {"Name", String},
    {"Path", String},
    {"FileVersion", Version},
    {"ProductVersion", Version},
    {"ProductVersionString", String},
    {"CompanyName", String},
    {"Build", String},
};

constexpr ParamDecl kNortonVirusDefinitionParams[] = {{"ModuleName", String}, {"Version", String}};
constinit const ClassDecl kNortonVirusDefinition = {.name = "NortonVirusDefinition",
                                                    .params = kNortonVirusDefinitionParams,
                                                    .description = "A set of virus definitions."};
constexpr const ClassDecl* kNortonAntivirusChildren[] = {&kNortonVirusDefinition};
constinit const ClassDecl kNortonAntivirus = {
    .name = "NortonAntivirus",
    .params = kVendorParams,
    .children = kNortonAntivirusChildren,
    .description = "A virus scanner of the maker that it is named after."};

constexpr ParamDecl kMcAfeeVirusDefinitionParams[] = {
    {"ModuleName", String}, {"Version", String}, {"Date", Datime}};
constinit const ClassDecl kMcAfeeVirusDefinition = {.name = "McAfeeVirusDefinition",
                                                    .params = kMcAfeeVirusDefinitionParams,
                                                    .description = "A set of virus definitions."};
constexpr const ClassDecl* kMcAfeeAntivirusChildren[] = {&kMcAfeeVirusDefinition};
constinit const ClassDecl kMcAfeeAntivirus = {
    .name = "McAfeeAntivirus",
    .params = kVendorParams,
    .children = kMcAfeeAntivirusChildren,
    .description = "A virus scanner of the maker that it is named after."};

constexpr ParamDecl kAntivirusGenericParams[] = {
    {"Name", String},     {"ProductVersion", Version},    {"ProductVersionString", String},
    {"IsRunning", Dword}, {"IsRealTimeProtected", Dword}, {"VirusDefinitionDate", Datime},
};
constinit const ClassDecl kAntivirusGeneric = {.name = "AntivirusGeneric",
                                               .params = kAntivirusGenericParams,
                                               .description = "Any other virus scanner."};

constexpr ParamDecl kFirewallGenericParams[] = {
    {"Name", String},     {"ProductVersion", Version}, {"ProductVersionString", String},
    {"IsEnabled", Dword}, {"IsRunning", Dword},        {"UpdateDate", Datime},
};
constinit const ClassDecl kFirewallGeneric = {
    .name = "FirewallGeneric", .params = kFirewallGenericParams, .description = "A firewall."};

constexpr const ClassDecl* kAntivirusChildren[] = {&kNortonAntivirus, &kMcAfeeAntivirus,
                                                   &kAntivirusGeneric};
constexpr ArgDecl kAntivirusArgs[] = {{"IniFile", String, nullptr, 0, "DAntivirus.cfg"}};
constexpr const ClassDecl* kFirewallsChildren[] = {&kFirewallGeneric};
constexpr ArgDecl kFirewallsArgs[] = {{"IniFile", String, nullptr, 0, "DFirewalls.cfg"}};

}  // namespace

constinit const ClassDecl kAntivirusModule = {
    .name = "Antivirus",
    .children = kAntivirusChildren,
    .args = kAntivirusArgs,
    .description = "Virus scanners that a rule file tells how to find."};

constinit const ClassDecl kFirewallsModule = {
    .name = "Firewalls",
    .children = kFirewallsChildren,
    .args = kFirewallsArgs,
    .description = "Firewalls that a rule file tells how to find."};

}  // namespace kestra
