#include "Modules/Declared/DeclaredModules.h"

namespace kestra {
namespace {

using enum ParamType;

constexpr ActionDecl kNetworkDeviceParamActions[] = {{"Obtain"}};
constinit const ClassDecl kNetworkDeviceParam = {.name = "NetworkDeviceParam",
                                                 .actions = kNetworkDeviceParamActions};
constexpr const ClassDecl* kNetworkDeviceChildren[] = {&kNetworkDeviceParam};
constexpr ArgDecl kObtainParamArgs[] = {{"ParamName", String}};
constexpr ActionDecl kNetworkDeviceActions[] = {
    {"Initialize"}, {"ObtainAllParams"}, {"Submit"}, {"ObtainParam", kObtainParamArgs}};
constinit const ClassDecl kNetworkDevice = {
    .name = "NetworkDevice", .children = kNetworkDeviceChildren, .actions = kNetworkDeviceActions};
constexpr const ClassDecl* kNetworkDevicesChildren[] = {&kNetworkDevice};
constexpr ArgDecl kNetworkDevicesArgs[] = {{"VNetDevPath", String},
                                           {"ConfigFile", String},
                                           {"QueryOnDemand", Dword},
                                           {"ObtainParams", String},
                                           {"IPAddress", String, nullptr, 0, "gateways"},
                                           {"Username", String},
                                           {"Password", String},
                                           {"ShowHiddenParams", Dword, nullptr, 1},
                                           {"Timeout", Dword, nullptr, 60000},
                                           {"PluginsPriority", String},
                                           {"HtmlDecode", Dword}};

constinit const ClassDecl kRASDevice = {.name = "RASDevice"};
constexpr const ClassDecl* kRASDevicesChildren[] = {&kRASDevice};
constinit const ClassDecl kRASDevices = {.name = "RASDevices", .children = kRASDevicesChildren};
constinit const ClassDecl kRASEntry = {.name = "RASEntry", .canBeAddedAndDeleted = true};
constexpr const ClassDecl* kRASEntriesChildren[] = {&kRASEntry};
constinit const ClassDecl kRASEntries = {.name = "RASEntries", .children = kRASEntriesChildren};
constinit const ClassDecl kRASConnection = {.name = "RASConnection", .canBeAddedAndDeleted = true};
constexpr const ClassDecl* kRASConnectionsChildren[] = {&kRASConnection};
constinit const ClassDecl kRASConnections = {.name = "RASConnections",
                                             .children = kRASConnectionsChildren};
constinit const ClassDecl kRASEntryLocation = {.name = "RASEntryLocation",
                                               .canBeAddedAndDeleted = true};
constexpr const ClassDecl* kRASEntryLocationsChildren[] = {&kRASEntryLocation};
constinit const ClassDecl kRASEntryLocations = {.name = "RASEntryLocations",
                                                .children = kRASEntryLocationsChildren};
constexpr const ClassDecl* kRASChildren[] = {&kRASDevices, &kRASEntries, &kRASConnections,
                                             &kRASEntryLocations};
constexpr ArgDecl kRASArgs[] = {{"GetCredentialsParams", Dword}, {"ShowSharedConnections", Dword}};

constexpr ArgDecl kInternetArgs[] = {{"ServerURL", String},
                                     {"AntiProxy", Dword},
                                     {"ResponseBufferSize", Dword, nullptr, 50},
                                     {"IncomingPort", Dword},
                                     {"TimeOut", Dword, nullptr, 20},
                                     {"IncomingBufferSize", Dword, nullptr, 10},
                                     {"EncryptionKey", Dword}};

constinit const ClassDecl kTCPConnEntry = {.name = "TCPConnEntry"};
constexpr const ClassDecl* kTCPStatChildren[] = {&kTCPConnEntry};
constinit const ClassDecl kTCPStat = {.name = "TCPStat", .children = kTCPStatChildren};
constinit const ClassDecl kUDPListenerEntry = {.name = "UDPListenerEntry"};
constexpr const ClassDecl* kUDPStatChildren[] = {&kUDPListenerEntry};
constinit const ClassDecl kUDPStat = {.name = "UDPStat", .children = kUDPStatChildren};
constexpr const ClassDecl* kIPStatChildren[] = {&kTCPStat, &kUDPStat};

constinit const ClassDecl kTransportProtocol = {.name = "TransportProtocol",
                                                .canBeAddedAndDeleted = true};
constinit const ClassDecl kNameSpace = {.name = "NameSpace", .canBeAddedAndDeleted = true};
constexpr const ClassDecl* kWinsockChildren[] = {&kTransportProtocol, &kNameSpace};
constexpr ArgDecl kRunProgramArgs[] = {
    {"ProgramPath", String}, {"ComLine", String}, {"WaitEndProc", Dword, nullptr, 16}};
constexpr ActionDecl kWinsockActions[] = {{"RunProgram", kRunProgramArgs}};

constinit const ClassDecl kFirewallRule = {.name = "FirewallRule", .canBeAddedAndDeleted = true};
constexpr const ClassDecl* kFirewallProfileChildren[] = {&kFirewallRule};
constinit const ClassDecl kFirewallProfile = {.name = "FirewallProfile",
                                              .children = kFirewallProfileChildren};
constexpr const ClassDecl* kVistaFirewallChildren[] = {&kFirewallProfile};
constexpr ArgDecl kVistaFirewallArgs[] = {{"ShowAll", Dword}};

constinit const ClassDecl kWifiNetwork = {.name = "WifiNetwork"};
constinit const ClassDecl kWifiProfileInstance = {.name = "WifiProfileInstance",
                                                  .canBeAddedAndDeleted = true};
constexpr const ClassDecl* kWifiCMInstanceChildren[] = {&kWifiNetwork, &kWifiProfileInstance};
constinit const ClassDecl kWifiCMInstance = {.name = "WifiCMInstance",
                                             .children = kWifiCMInstanceChildren};
constexpr const ClassDecl* kWifiAdapterChildren[] = {&kWifiCMInstance};
constinit const ClassDecl kWifiAdapter = {.name = "WifiAdapter", .children = kWifiAdapterChildren};
constinit const ClassDecl kWifiProfile = {.name = "WifiProfile", .canBeAddedAndDeleted = true};
constexpr const ClassDecl* kWifiCMChildren[] = {&kWifiProfile};
constinit const ClassDecl kWifiCM = {.name = "WifiCM", .children = kWifiCMChildren};
constexpr const ClassDecl* kWifiChildren[] = {&kWifiAdapter, &kWifiCM};
constexpr ArgDecl kWifiArgs[] = {{"Timeout", Dword}};

}  // namespace

constinit const ClassDecl kNetworkDevicesModule = {
    .name = "NetworkDevices",
    .children = kNetworkDevicesChildren,
    .args = kNetworkDevicesArgs,
    .description = "Routers and other managed devices on the network, with their parameters."};
constinit const ClassDecl kRASModule = {
    .name = "RAS",
    .children = kRASChildren,
    .args = kRASArgs,
    .description = "Dial-up and VPN devices, phone book entries and connections."};
constinit const ClassDecl kInternetModule = {
    .name = "Internet",
    .args = kInternetArgs,
    .description = "Whether a server on the Internet can be reached."};
constinit const ClassDecl kIPStatModule = {
    .name = "IPStat",
    .children = kIPStatChildren,
    .description = "TCP and UDP statistics, connections and listeners."};
constinit const ClassDecl kWinsockModule = {
    .name = "Winsock",
    .children = kWinsockChildren,
    .actions = kWinsockActions,
    .description = "The socket catalogue: transport protocols and name spaces."};
constinit const ClassDecl kVistaFirewallModule = {
    .name = "VistaFirewall",
    .children = kVistaFirewallChildren,
    .args = kVistaFirewallArgs,
    .description = "Profiles and rules of the system's own firewall."};
constinit const ClassDecl kWifiModule = {
    .name = "Wifi",
    .children = kWifiChildren,
    .args = kWifiArgs,
    .description = "Wireless adapters, the networks in reach, and stored profiles."};

}  // namespace kestra
