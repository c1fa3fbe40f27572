#include "Modules/Network/NetworkClasses.h"

namespace kestra {
namespace {

using enum ParamType;

constexpr ParamDecl kWirelessBaseStationParams[] = {
    {"Current", Dword},
    {"AccessPointMAC", String},
    {"SSID", String},
    {"PrivacyFilter", String},
    {"ConnectionQuality", Dword},
    {"Frequency", Dword},
    {"NetworkTypeInUse", String},
    {"InfrastructureMode", Enum, "IBSS|Infrastructure|Auto"},
    {"RatesSupported", String},
    {"AssociationState", String},
    {"NetworkName", String},
};
constinit const ClassDecl kWirelessBaseStation = {
    .name = "WirelessBaseStation",
    .params = kWirelessBaseStationParams,
    .description = "A wireless base station in reach."};

constexpr ParamDecl kWirelessAdapterInfoParams[] = {
    {"SSID", String},
    {"AccessPointMAC", String},
    {"MAC", String},
    {"TransmitPower", Dword},
    {"ConnectionQuality", Dword},
    {"FragThreshold", Dword},
    {"RTSThreshold", Dword},
    {"NumAntennas", Dword},
    {"AntennaSelected", Dword},
    {"TransmitAntennaSelected", Dword},
    {"RatesSupported", String},
    {"RatesDesired", String},
    {"Frequency", Dword},
    {"OutFragmentCount", Dword},
    {"OutFragmentCountHigh", Dword},
    {"MulticastOutFrameCount", Dword},
    {"MulticastOutFrameCountHigh", Dword},
    {"FailedCount", Dword},
    {"FailedCountHigh", Dword},
    {"RetryCount", Dword},
    {"RetryCountHigh", Dword},
    {"MultipleRetryCount", Dword},
    {"MultipleRetryCountHigh", Dword},
    {"RTSSuccessCount", Dword},
    {"RTSSuccessCountHigh", Dword},
    {"RTSFailureCount", Dword},
    {"RTSFailureCountHigh", Dword},
    {"ACKFailureCount", Dword},
    {"ACKFailureCountHigh", Dword},
    {"FrameDuplicateCount", Dword},
    {"FrameDuplicateCountHigh", Dword},
    {"InFragmentCount", Dword},
    {"InFragmentCountHigh", Dword},
    {"MulticastInFrameCount", Dword},
    {"MulticastInFrameCountHigh", Dword},
    {"FCSErrorCount", Dword},
    {"FCSErrorCountHigh", Dword},
    {"WepStatus", Enum,
     "WEPEnabled|WEPDisabled|WEPKeyAbsent|WEPNotSupported|Encryption2Enabled|Encryption2KeyAbsent|"
     "Encryption3Enabled|Encryption3KeyAbsent"},
    {"AuthenticationMode", Enum,
     "AuthModeOpen|AuthModeShared|AuthModeAutoSwitch|Ndis802_11AuthModeWPA|Ndis802_"
     "11AuthModeWPAPSK|Ndis802_11AuthModeWPANone|Ndis802_11AuthModeWPA2|Ndis802_11AuthModeWPA2PSK|"
     "Unknown"},
    {"PrivacyFilter", Enum, "AcceptAll|WEP"},
    {"IsWZC", Dword, nullptr, true},
    {"BeaconPeriod", Dword},
    {"EnabledAuthAlgorithms", String},
    {"UnicastEncrSupported", String},
    {"UnicastCiphersEnabled", String},
    {"MulticastEncrSupported", String},
    {"MulticastCiphersEnabled", String},
    {"OperationMode", String},
};
constexpr const ClassDecl* kWirelessAdapterInfoChildren[] = {&kWirelessBaseStation};
constinit const ClassDecl kWirelessAdapterInfo = {
    .name = "WirelessAdapterInfo",
    .params = kWirelessAdapterInfoParams,
    .children = kWirelessAdapterInfoChildren,
    .description = "State and counters of a wireless adapter."};

constexpr ParamDecl kNetworkAdapterParams[] = {
    {"Name", String},
    {"DeviceId", String},
    {"InstanceId", String},
    {"SymLink", String},
    {"AdapterType", Bitmask,
     "Dial-Up|Infrared|WAN|IEEE1394|Non-LAN|NetworkBridge|Bridged|Wireless|LAN"},
    {"Hidden", Dword},
    {"StatusOk", Dword},
    {"MediaConnectedState", Dword},
    {"BoundProtocols", Bitmask, "TCP/IP|NetBEUI|IPX/SPX"},
    {"MACAddress", String},
    {"Enabled", Dword, nullptr, true},
};
constexpr const ClassDecl* kNetworkAdapterChildren[] = {&kWirelessAdapterInfo};
constinit const ClassDecl kNetworkAdapter = {.name = "NetworkAdapter",
                                             .params = kNetworkAdapterParams,
                                             .children = kNetworkAdapterChildren,
                                             .canBeAddedAndDeleted = true,
                                             .description = "A network adapter."};

constexpr const ClassDecl* kNetworkAdaptersChildren[] = {&kNetworkAdapter};
constinit const ClassDecl kNetworkAdapters = {.name = "NetworkAdapters",
                                              .children = kNetworkAdaptersChildren,
                                              .description = "All network adapters."};

constexpr ParamDecl kIPEntryParams[] = {
    {"IPAddress", String},
    {"SubnetMask", String},
};
constinit const ClassDecl kIPEntry = {.name = "IPEntry",
                                      .params = kIPEntryParams,
                                      .canBeAddedAndDeleted = true,
                                      .description = "An address of an adapter."};

constexpr ParamDecl kGatewayEntryParams[] = {
    {"Gateway", String},
    {"Metric", Dword},
    {"GatewayMAC", String},
};
constinit const ClassDecl kGatewayEntry = {.name = "GatewayEntry",
                                           .params = kGatewayEntryParams,
                                           .canBeAddedAndDeleted = true,
                                           .description = "A gateway of an adapter."};

constexpr ParamDecl kIPInstanceParams[] = {
    {"AdapterName", String},
    {"SymLink", String},
    {"MACAddress", String},
    {"UseDHCP", Dword, nullptr, true},
    {"DHCPServer", String},
    {"IPAddress", String, nullptr, true},
    {"SubnetMask", String, nullptr, true},
    {"Gateways", String, nullptr, true},
    {"GatewaysMAC", String},
    {"UseWINS", Dword, nullptr, true},
    {"PrimaryWINS", String, nullptr, true},
    {"SecondaryWINS", String, nullptr, true},
    {"LeaseObtained", Datime},
    {"LeaseExpires", Datime},
    {"ConnectedToInternet", Dword},
    {"Connectivity", Dword},
    {"BestConnectivity", Dword},
    {"DNSServers", String, nullptr, true},
    {"CurrentDNSServer", String},
    {"AutoDNS", Dword, nullptr, true},
    {"DNSSuffix", String, nullptr, true},
    {"DNSDynamicUpdate", Dword, nullptr, true},
    {"NetBIOSOverTCPIP", Enum, "UseDHCPSetting|Enable|Disable", true},
    {"Interface", Dword, nullptr, true},
};
constexpr const ClassDecl* kIPInstanceChildren[] = {&kIPEntry, &kGatewayEntry};
constexpr ActionDecl kIPInstanceActions[] = {{"renew"}, {"release"}};
constinit const ClassDecl kIPInstance = {.name = "IPInstance",
                                         .params = kIPInstanceParams,
                                         .children = kIPInstanceChildren,
                                         .actions = kIPInstanceActions,
                                         .description = "The IP configuration of one adapter."};

constexpr ParamDecl kRoutingEntryParams[] = {
    {"NetworkDestination", String},
    {"SubnetMask", String},
    {"Gateway", String},
    {"Interface", Dword},
    {"InterfaceIP", String},
    {"SymLink", String},
    {"Metric", Dword, nullptr, true},
};
constinit const ClassDecl kRoutingEntry = {.name = "RoutingEntry",
                                           .params = kRoutingEntryParams,
                                           .canBeAddedAndDeleted = true,
                                           .description = "A route."};

constexpr ParamDecl kNetworkProtocolParams[] = {
    {"Name", String},
    {"Type", Enum, "NetBEUI|TCP/IP|IPX/SPX|"},
    {"DeviceId", String},
    {"Hidden", Dword},
    {"HostName", String},
    {"DNSDomain", String},
    {"DNSServers", String},
    {"NodeType", Enum, "Unknown|Broadcast|Peer-to-peer|Mixed|Hybrid"},
    {"IPRoutingEnabled", Dword},
    {"ARPProxyEnabled", Dword},
    {"DNSEnabled", Dword},
    {"UseDNSNameDevolution", Dword, nullptr, true},
    {"DNSSuffixes", String, nullptr, true},
};
constexpr const ClassDecl* kNetworkProtocolChildren[] = {&kIPInstance, &kRoutingEntry};
constinit const ClassDecl kNetworkProtocol = {.name = "NetworkProtocol",
                                              .params = kNetworkProtocolParams,
                                              .children = kNetworkProtocolChildren,
                                              .canBeAddedAndDeleted = true,
                                              .description = "A network protocol."};

constexpr const ClassDecl* kNetworkProtocolsChildren[] = {&kNetworkProtocol};
constinit const ClassDecl kNetworkProtocols = {.name = "NetworkProtocols",
                                               .children = kNetworkProtocolsChildren,
                                               .description = "All network protocols."};

constexpr ParamDecl kNetworkServiceParams[] = {
    {"Name", String},
    {"DeviceId", String},
    {"Hidden", Dword},
    {"BoundProtocols", Bitmask, "TCP/IP|NetBEUI|IPX/SPX"},
};
constinit const ClassDecl kNetworkService = {.name = "NetworkService",
                                             .params = kNetworkServiceParams,
                                             .canBeAddedAndDeleted = true,
                                             .description = "A network service."};

constexpr const ClassDecl* kNetworkServicesChildren[] = {&kNetworkService};
constinit const ClassDecl kNetworkServices = {.name = "NetworkServices",
                                              .children = kNetworkServicesChildren,
                                              .description = "All network services."};

constexpr ParamDecl kParams[] = {{"ComputerName", String}};
constexpr const ClassDecl* kChildren[] = {&kNetworkAdapters, &kNetworkProtocols, &kNetworkServices};
constexpr ActionDecl kActions[] = {{"RegisterDNS"}};
constexpr ArgDecl kArgs[] = {{"NoInternetCheck", Dword}, {"EnableIPTables", Dword}};

}  // namespace

constinit const ClassDecl kNetworkModule = {
    .name = "Network",
    .params = kParams,
    .children = kChildren,
    .actions = kActions,
    .args = kArgs,
    .description = "Network adapters, protocols and services, and the IP configuration."};

}  // namespace kestra
