#include "Modules/DNSResolve/DNSResolveClasses.h"

#include "Modules/DNSResolve/DNSTypes.h"

namespace kestra {
namespace {

using enum ParamType;

constexpr const char* kTypes = dns_types::kOptions.data();

// What every record has.
constexpr ParamDecl kType = {"Type", Enum, kTypes};
constexpr ParamDecl kSection = {"Section", Enum, "Question|Answer|Authority|Additional"};

constexpr ParamDecl kAParams[] = {kType, kSection, {"IPAddress", String}};
constinit const ClassDecl kA = {
    .name = "A", .params = kAParams, .description = "An address of IP version 4."};

constexpr ParamDecl kPTRParams[] = {kType, kSection, {"Hostname", String}};
constinit const ClassDecl kPTR = {
    .name = "PTR", .params = kPTRParams, .description = "A name, of whatever meaning."};

constexpr ParamDecl kSOAParams[] = {
    kType,
    kSection,
    {"NamePrimaryServer", String},
    {"NameAdministrator", String},
    {"SerialNo", Dword},
    {"Refresh", Dword, "seconds"},
    {"Retry", Dword, "seconds"},
    {"Expire", Dword, "seconds"},
    {"DefaultTtl", Dword},
};
constinit const ClassDecl kSOA = {
    .name = "SOA", .params = kSOAParams, .description = "The start of a zone of authority."};

constexpr ParamDecl kMINFOParams[] = {
    kType, kSection, {"NameMailbox", String}, {"NameErrorsMailbox", String}};
constinit const ClassDecl kMINFO = {
    .name = "MINFO", .params = kMINFOParams, .description = "Who is responsible for a mailbox."};

constexpr ParamDecl kMXParams[] = {
    kType, kSection, {"NameExchange", String}, {"Preference", Dword}};
constinit const ClassDecl kMX = {
    .name = "MX", .params = kMXParams, .description = "A mail exchange, or the like of one."};

constexpr ParamDecl kTXTParams[] = {kType, kSection, {"Strings", String}};
constinit const ClassDecl kTXT = {.name = "TXT", .params = kTXTParams, .description = "Texts."};

constexpr ParamDecl kAAAAParams[] = {kType, kSection, {"Ip6Address", String}};
constinit const ClassDecl kAAAA = {
    .name = "AAAA", .params = kAAAAParams, .description = "An address of IP version 6."};

// The outcome of the exchange, on the module itself.
constexpr ParamDecl kDNSResolveParams[] = {
    {"DNSServers", String},
    {"Error", Enum, "None|SocketError|Timeout|ProtocolError|UnknownAnswer|Other"},
    {"DnsError", Enum,
     "None|FormatError|ServerFailure|NameError|NotImplemented|Refused|NoSuchDomain|ShouldNoRRSet|"
     "NoRRSet|NotAuthForZone|NameNotInZone|UNK11|UNK12|UNK13|UNK14|UNK15"},
    {"Authoritative", Dword},
};
constexpr const ClassDecl* kDNSResolveChildren[] = {&kA,  &kPTR, &kSOA, &kMINFO,
                                                    &kMX, &kTXT, &kAAAA};
constexpr ArgDecl kDNSResolveArgs[] = {
    {"Hostname", String},           {"DNSServers", String},
    {"QueryType", Enum, kTypes, 1}, {"Timeout", Dword, nullptr, 8000},
    {"Retries", Dword, nullptr, 3},
};

}  // namespace

constinit const ClassDecl kDNSResolveModule = {
    .name = "DNSResolve",
    .params = kDNSResolveParams,
    .children = kDNSResolveChildren,
    .args = kDNSResolveArgs,
    .description = "What name servers answer when they are asked directly."};

}  // namespace kestra
