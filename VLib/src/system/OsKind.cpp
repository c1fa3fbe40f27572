#include "VLib/src/system/OsKind.h"

#include "VLib/src/registry/RegistryText.h"
#include "VLib/src/text/Text.h"
#include "platform/machine/SystemFacts.h"

namespace kestra {
namespace {

constexpr uint32_t kPlatformDos = 0;
constexpr uint32_t kPlatform9x = 1;
constexpr uint32_t kPlatformNt = 2;
constexpr uint32_t kWorkstation = 1;
constexpr uint32_t kAmd64 = 9;

constexpr uint32_t kSuiteEnterprise = 0x2;
constexpr uint32_t kSuiteDatacenter = 0x80;
constexpr uint32_t kSuitePersonal = 0x200;

constexpr uint32_t kFirstProduct = 33;
constexpr uint32_t kUnlicensed = 0xABCDABCD;  // GetProductInfo of a system whose licence ran out
constexpr uint32_t kUnlicensedEdition = 59;

constexpr uint32_t kKindServer52 = 10;

bool IsWorkstation(const WindowsVersion& version) {
  return version.productType == kWorkstation;
}

uint32_t KindOf9x(const WindowsVersion& version) {
  if (version.minor == 90) return 5;
  if (version.minor != 10) return 2;
  return version.text.find_first_of("AB") != std::string::npos ? 4 : 3;
}

// What is newer than all that is known counts as the newest of its sort, so that what works there
// keeps working.
uint32_t KindOfNt(const WindowsVersion& version) {
  if (version.major < 3) return 0;
  if (version.major == 3) return 6;
  if (version.major == 4) return 7;
  if (version.major > 5 || version.minor > 2) return IsWorkstation(version) ? 11 : 12;
  if (version.minor == 0) return 8;
  if (version.minor == 1) return 9;
  if (IsWorkstation(version) && version.architecture == kAmd64) return 9;
  return version.isServerR2 ? 13 : kKindServer52;
}

uint32_t KindOf(const WindowsVersion& version) {
  switch (version.platformId) {
    case kPlatformDos:
      return 1;
    case kPlatform9x:
      return KindOf9x(version);
    case kPlatformNt:
      return KindOfNt(version);
    default:
      return 0;
  }
}

uint32_t MediaCenterEdition(CMachine& machine) {
  const auto ident =
      ReadRegistryText(machine, RegistryRoot::LocalMachine,
                       "SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Media Center", "Ident");
  size_t consumed = 0;
  switch (const int32_t generation = ident ? ParseInt32(*ident, consumed) : 0) {
    case 2:
      return 8;
    case 3:
      return 9;
    case 4:
      return 12;
    default:
      return generation < 2 ? 7 : 0;
  }
}

// Systems of before the product type have it in their registry.
bool IsWorkstationEdition(const WindowsVersion& version, CMachine& machine) {
  if (version.productType) return IsWorkstation(version);
  const auto type =
      ReadRegistryText(machine, RegistryRoot::LocalMachine,
                       "SYSTEM\\CurrentControlSet\\Control\\ProductOptions", "ProductType");
  return !type || EqualsNoCase(*type, "WinNT");
}

uint32_t ServerEdition(const WindowsVersion& version) {
  struct Suite {
    uint32_t bit;
    uint32_t edition;
  };
  static constexpr Suite kSuites[] = {{0x400, 6},  {0x4000, 13}, {0x40, 14},
                                      {0x100, 15}, {0x1, 16},    {0x20, 17}};
  const bool is52 = KindOf(version) == kKindServer52;
  // A datacenter server is an advanced one too, and either may say of itself that it serves single
  // users: the sort of server decides before what was added to it.
  if (version.suiteMask & kSuiteDatacenter) return 5;
  if (version.suiteMask & kSuiteEnterprise) return is52 ? 11 : 4;
  for (const Suite& suite : kSuites) {
    if (version.suiteMask & suite.bit) return suite.edition;
  }
  return is52 ? 10 : 3;
}

}  // namespace

uint32_t GetOsKind(CMachine& machine) {
  const auto version = machine.System().Windows();
  return version ? KindOf(*version) : 0;
}

uint32_t GetOsEdition(CMachine& machine) {
  const auto version = machine.System().Windows();
  if (!version || KindOf(*version) < kFirstNtKind) return 0;
  if (version->major >= 6 && version->product) {
    return *version->product == kUnlicensed ? kUnlicensedEdition
                                            : kFirstProduct + *version->product;
  }
  if (version->isMediaCenter) return MediaCenterEdition(machine);
  if (version->isTabletPc) return 20;
  if (version->suiteMask & kSuitePersonal) return 1;
  return IsWorkstationEdition(*version, machine) ? 2 : ServerEdition(*version);
}

uint32_t GetBitness(CMachine& machine) {
  const SystemWidth width = machine.System().Width();
  if (!width.isKnown) return 0;
  return width.isRedirected.value_or(false) || width.isWide ? 2 : 1;
}

}  // namespace kestra
