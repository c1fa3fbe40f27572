#include "Modules/AtomTime/AtomTimeClasses.h"

namespace kestra {
namespace {

using enum ParamType;

constexpr ParamDecl kAtomTimeParams[] = {
    {"LocalTime", Datime},
    {"SystemTime", Datime},
    {"RemoteUTCTime", Datime},
    {"DifferenceTime", Dword, "sec"},
    {"DifferenceTimeSign", Enum, "+|-"},
    {"TimeServerName", String},
};
constexpr ArgDecl kAtomTimeArgs[] = {
    {"CfgFile", String, nullptr, 0, "DAtomTime.cfg"},
    {"TimeServers", String},
    {"PortServers", Dword, nullptr, 37},
};

}  // namespace

constinit const ClassDecl kAtomTimeModule = {
    .name = "AtomTime",
    .params = kAtomTimeParams,
    .args = kAtomTimeArgs,
    .description = "How far the machine's clock is from that of a time server (RFC 868)."};

}  // namespace kestra
