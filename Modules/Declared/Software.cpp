#include "Modules/Declared/DeclaredModules.h"

namespace kestra {
namespace {

using enum ParamType;

constinit const ClassDecl kRecentDocs = {.name = "RecentDocs"};
constexpr const ClassDecl* kDesktopChildren[] = {&kRecentDocs};
constexpr ArgDecl kDesktopArgs[] = {{"ShowRecentDocs", Dword}};
constexpr ArgDecl kModeArgs[] = {{"Mode", Dword}};
constexpr ActionDecl kDesktopActions[] = {{"ClearRecentlyDocs", kModeArgs}};

constinit const ClassDecl kInstalledProgram = {.name = "InstalledProgram"};
constexpr const ClassDecl* kInstalledProgramsChildren[] = {&kInstalledProgram};
constexpr ArgDecl kInstalledProgramsArgs[] = {{"ShowSystemPrograms", Dword}};

constinit const ClassDecl kIEToolbar = {.name = "IEToolbar"};
constinit const ClassDecl kIEExplorerBar = {.name = "IEExplorerBar"};
constinit const ClassDecl kIEExtension = {.name = "IEExtension"};
constinit const ClassDecl kIEDial = {.name = "IEDial"};
constinit const ClassDecl kIEDownloadedProgram = {.name = "IEDownloadedProgram",
                                                  .canBeAddedAndDeleted = true};
constinit const ClassDecl kIEZoneOption = {.name = "IEZoneOption"};
constexpr const ClassDecl* kIEZoneChildren[] = {&kIEZoneOption};
constinit const ClassDecl kIEZone = {.name = "IEZone", .children = kIEZoneChildren};
constinit const ClassDecl kIEAdvancedOption = {.name = "IEAdvancedOption"};
constinit const ClassDecl kIEFavorite = {.name = "IEFavorite", .canBeAddedAndDeleted = true};
constinit const ClassDecl kIEHistory = {.name = "IEHistory"};
constexpr const ClassDecl* kIEChildren[] = {
    &kIEToolbar, &kIEExplorerBar,    &kIEExtension, &kIEDial,   &kIEDownloadedProgram,
    &kIEZone,    &kIEAdvancedOption, &kIEFavorite,  &kIEHistory};
constexpr ArgDecl kIEArgs[] = {{"CheckCacheUsedSize", Dword},   {"ShowLocalIntranet", Dword},
                               {"ShowTrustedSites", Dword},     {"ShowRestrictedSites", Dword},
                               {"ShowFavorites", Dword},        {"ShowHistory", Dword},
                               {"ShowDownloadedProgram", Dword}};
constexpr ActionDecl kIEActions[] = {
    {"EmptyCache", kModeArgs}, {"ClearHistory", kModeArgs}, {"ClearSSLState"}, {"ClearFavorites"}};

constinit const ClassDecl kXMLAttribute = {.name = "XMLAttribute", .canBeAddedAndDeleted = true};
constexpr const ClassDecl* kXMLElementChildren[] = {&kXMLAttribute};
constinit const ClassDecl kXMLElement = {
    .name = "XMLElement", .children = kXMLElementChildren, .canBeAddedAndDeleted = true};
constexpr const ClassDecl* kXMLFileChildren[] = {&kXMLElement};
constexpr ArgDecl kXMLFileArgs[] = {
    {"Path", String}, {"Timeout", Dword, nullptr, 20000}, {"ScrambleKey", Dword}};

}  // namespace

constinit const ClassDecl kDesktopModule = {
    .name = "Desktop",
    .children = kDesktopChildren,
    .actions = kDesktopActions,
    .args = kDesktopArgs,
    .description = "The user's desktop and recently used documents."};
constinit const ClassDecl kInstalledProgramsModule = {
    .name = "InstalledPrograms",
    .children = kInstalledProgramsChildren,
    .args = kInstalledProgramsArgs,
    .description = "Programs that are installed on the machine."};
constinit const ClassDecl kIEModule = {
    .name = "IE",
    .children = kIEChildren,
    .actions = kIEActions,
    .args = kIEArgs,
    .description = "Settings, extensions, favourites and history of the system's web browser."};
constinit const ClassDecl kXMLFileModule = {
    .name = "XMLFile",
    .children = kXMLFileChildren,
    .args = kXMLFileArgs,
    .description = "Elements and attributes of an XML file."};

}  // namespace kestra
