#include "Modules/NetworkMap/NetworkMapClasses.h"

namespace kestra {
namespace {

using enum ParamType;

constexpr const char* kProtocols = "Ping|NetBios|Arp|Linksys|DHCP|PPPoE";

constexpr ParamDecl kNetworkMapNodeParams[] = {
    {"IPAddress", String},
    {"MAC", String},
    {"HostName", String},
    {"OS", Enum, "Unknown|Windows|Unix"},
    {"Type", Bitmask, "Linksys|DHCP|PPPoE"},
};
constinit const ClassDecl kNetworkMapNode = {.name = "NetworkMapNode",
                                             .params = kNetworkMapNodeParams,
                                             .description = "A host that answered."};

constexpr ParamDecl kNetworkMapAdapterParams[] = {
    {"AdapterDescription", String},
    {"AdapterIP", String},
    {"AdapterSubnetMask", String},
    {"AdapterMAC", String},
    {"AdapterType", String},
    {"SymLink", String},
    {"ProtocolsTimedOut", Bitmask, kProtocols},
    {"ProtocolsFailed", Bitmask, kProtocols},
};
constexpr const ClassDecl* kNetworkMapAdapterChildren[] = {&kNetworkMapNode};
constinit const ClassDecl kNetworkMapAdapter = {
    .name = "NetworkMapAdapter",
    .params = kNetworkMapAdapterParams,
    .children = kNetworkMapAdapterChildren,
    .description = "An adapter, and the network that it is on."};

constexpr const ClassDecl* kNetworkMapChildren[] = {&kNetworkMapAdapter};
constexpr ArgDecl kNetworkMapArgs[] = {
    {"MaxItemCount", Dword},
    {"TotalTimeout", Dword, nullptr, 15000},
    {"ArpMode", Dword, nullptr, 4294967295},
    {"Protocols", Bitmask, kProtocols, 3},
    {"ArpTimeout", Dword, nullptr, 13},
    {"AdapterFilter_Name", String},
    {"IpFirst", String},
    {"IpLast", String},
    {"AllowLoopback", Dword, nullptr, 1},
    {"SmartBigNet", Dword},
    {"OSDetection", Dword},
    {"IpList", String},
};

}  // namespace

constinit const ClassDecl kNetworkMapModule = {
    .name = "NetworkMap",
    .children = kNetworkMapChildren,
    .args = kNetworkMapArgs,
    .description = "What answers on the local networks, per adapter."};

}  // namespace kestra
