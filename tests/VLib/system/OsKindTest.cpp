#include <gtest/gtest.h>

#include "VLib/src/system/OsKind.h"
#include "tests/support/FakeMachine.h"

namespace kestra {
namespace {

using test::CFakeMachine;

constexpr uint32_t kWorkstation = 1, kController = 2, kServer = 3;
constexpr uint32_t kIntel = 0, kAmd64 = 9;

Ref<CFakeMachine> MachineOf(const WindowsVersion& version) {
  auto machine = MakeRef<CFakeMachine>();
  machine->system.windows = version;
  return machine;
}

struct KindCase {
  WindowsVersion version;
  uint32_t kind;
};

TEST(GetOsKind, FollowsTheVersion) {
  const KindCase cases[] = {
      {{.platformId = 0, .major = 3, .minor = 10}, 1},
      {{.platformId = 1, .major = 4, .minor = 0}, 2},
      {{.platformId = 1, .major = 4, .minor = 0, .text = " B"}, 2},  // the letter counts on 98 only
      {{.platformId = 1, .major = 4, .minor = 10}, 3},
      {{.platformId = 1, .major = 4, .minor = 10, .text = " C"}, 3},
      {{.platformId = 1, .major = 4, .minor = 10, .text = " A "}, 4},
      {{.platformId = 1, .major = 4, .minor = 10, .text = "B"}, 4},
      {{.platformId = 1, .major = 4, .minor = 90}, 5},
      {{.platformId = 1, .major = 4, .minor = 91}, 2},
      {{.platformId = 2, .major = 3, .minor = 51}, 6},
      {{.platformId = 2, .major = 4, .minor = 0}, 7},
      {{.platformId = 2, .major = 5, .minor = 0, .productType = kServer}, 8},
      {{.platformId = 2, .major = 5, .minor = 1, .productType = kWorkstation}, 9},
      {{.platformId = 2,
        .major = 5,
        .minor = 2,
        .productType = kWorkstation,
        .architecture = kAmd64},
       9},
      {{.platformId = 2,
        .major = 5,
        .minor = 2,
        .productType = kWorkstation,
        .architecture = kIntel},
       10},
      {{.platformId = 2, .major = 5, .minor = 2, .productType = kWorkstation}, 10},
      {{.platformId = 2, .major = 5, .minor = 2, .productType = kServer, .architecture = kAmd64},
       10},
      {{.platformId = 2, .major = 5, .minor = 2, .productType = kServer, .isServerR2 = true}, 13},
      {{.platformId = 2, .major = 6, .minor = 0, .productType = kWorkstation}, 11},
      {{.platformId = 2, .major = 6, .minor = 0, .productType = kController}, 12},
      {{.platformId = 2, .major = 6, .minor = 0, .productType = kServer, .isServerR2 = true}, 12},
      // Newer than all that is known.
      {{.platformId = 2, .major = 6, .minor = 1, .productType = kWorkstation}, 11},
      {{.platformId = 2, .major = 10, .minor = 0, .productType = kWorkstation}, 11},
      {{.platformId = 2, .major = 10, .minor = 0, .productType = kServer}, 12},
      {{.platformId = 2, .major = 5, .minor = 3, .productType = kServer}, 12},
      // Older, and of no known sort.
      {{.platformId = 2, .major = 2, .minor = 0}, 0},
      {{.platformId = 3, .major = 5, .minor = 0}, 0},
  };
  for (const KindCase& c : cases) {
    EXPECT_EQ(GetOsKind(*MachineOf(c.version)), c.kind)
        << c.version.platformId << " " << c.version.major << "." << c.version.minor;
  }
  EXPECT_EQ(GetOsKind(*MakeRef<CFakeMachine>(SystemFamily::Linux)), 0u);
}

WindowsVersion Server(uint32_t kind, uint32_t suiteMask) {
  WindowsVersion version = test::VersionOfKind(kind);
  version.productType = kServer;
  version.suiteMask = suiteMask;
  return version;
}

WindowsVersion Workstation(uint32_t kind, uint32_t suiteMask) {
  WindowsVersion version = Server(kind, suiteMask);
  version.productType = kWorkstation;
  return version;
}

WindowsVersion Product(uint32_t kind, uint32_t product) {
  WindowsVersion version = test::VersionOfKind(kind);
  version.product = product;
  return version;
}

TEST(GetOsEdition, FollowsTheVersion) {
  WindowsVersion tablet = Workstation(9, 0);
  tablet.isTabletPc = true;
  WindowsVersion newTablet = Product(11, 6);
  newTablet.isTabletPc = true;
  const KindCase cases[] = {
      {Workstation(9, 0x200), 1},
      {Workstation(9, 0x300), 1},
      {Workstation(9, 0x100), 2},
      {Workstation(9, 0), 2},
      {tablet, 20},
      {Server(8, 0), 3},
      {Server(8, 2), 4},
      {Server(10, 0), 10},
      {Server(10, 2), 11},
      {Server(13, 0), 3},
      {Server(13, 2), 4},
      {Server(10, 0x80), 5},
      {Server(10, 0x82), 5},
      {Server(10, 0x102), 11},
      {Server(10, 0x400), 6},
      {Server(10, 0x4400), 6},
      {Server(10, 0x4000), 13},
      {Server(10, 0x4040), 13},
      {Server(10, 0x40), 14},
      {Server(10, 0x100), 15},
      {Server(10, 0x121), 15},
      {Server(10, 0x21), 16},
      {Server(10, 0x20), 17},
      {Server(10, 0x10), 10},  // a bit that decides nothing
      {Product(11, 6), 39},
      {newTablet, 39},
      {Product(12, 0), 33},
      {Product(12, 0xABCDABCD), 59},
      {Workstation(11, 0), 2},  // a system that does not tell its product
      {Product(9, 6), 2},       // one that is too old to be asked
      {test::VersionOfKind(0), 0},
      {test::VersionOfKind(1), 0},
      {test::VersionOfKind(5), 0},
  };
  for (const KindCase& c : cases) {
    EXPECT_EQ(GetOsEdition(*MachineOf(c.version)), c.kind)
        << c.version.major << "." << c.version.minor << " suite " << c.version.suiteMask;
  }
  EXPECT_EQ(GetOsEdition(*MakeRef<CFakeMachine>(SystemFamily::Linux)), 0u);
}

TEST(GetOsEdition, OldSystemsAskTheRegistry) {
  const char* path = "SYSTEM\\CurrentControlSet\\Control\\ProductOptions";
  for (const auto& [type, edition] : {std::pair<const char*, uint32_t>{"WinNT", 2},
                                      {"winnt", 2},
                                      {"ServerNT", 3},
                                      {"LanmanNT", 3},
                                      {"", 2}}) {
    auto machine = MachineOf(test::VersionOfKind(7));
    machine->registry.SetString(RegistryRoot::LocalMachine, path, "ProductType", type);
    EXPECT_EQ(GetOsEdition(*machine), edition) << type;
    machine->registry.DenyKey(RegistryRoot::LocalMachine, path, kErrorAccessDenied);
    EXPECT_EQ(GetOsEdition(*machine), 2u) << type;
    machine->hasRegistry = false;
    EXPECT_EQ(GetOsEdition(*machine), 2u) << type;
  }
}

TEST(GetOsEdition, MediaCentersByGeneration) {
  const char* path = "SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Media Center";
  WindowsVersion version = Workstation(9, 0);
  version.isMediaCenter = version.isTabletPc = true;
  EXPECT_EQ(GetOsEdition(*MachineOf(version)), 7u);
  for (const auto& [ident, edition] : {std::pair<const char*, uint32_t>{"1.0", 7},
                                       {"2.8", 8},
                                       {"3.0", 9},
                                       {"4.0", 12},
                                       {"5.1", 0},
                                       {"x", 7},
                                       {"-3", 7}}) {
    auto machine = MachineOf(version);
    machine->registry.SetString(RegistryRoot::LocalMachine, path, "Ident", ident);
    EXPECT_EQ(GetOsEdition(*machine), edition) << ident;
  }
  auto machine = MachineOf(version);
  machine->registry.SetNumber(RegistryRoot::LocalMachine, path, "Ident", 3);
  EXPECT_EQ(GetOsEdition(*machine), 9u);
}

TEST(GetBitness, FollowsTheWidth) {
  const std::pair<SystemWidth, uint32_t> cases[] = {
      {{}, 0},
      {{.isKnown = false, .isRedirected = true, .isWide = true}, 0},
      {{.isKnown = true}, 1},
      {{.isKnown = true, .isRedirected = false}, 1},
      {{.isKnown = true, .isRedirected = true}, 2},
      {{.isKnown = true, .isRedirected = false, .isWide = true}, 2},
  };
  for (const auto& [width, bitness] : cases) {
    auto machine = MakeRef<CFakeMachine>();
    machine->system.width = width;
    EXPECT_EQ(GetBitness(*machine), bitness);
  }
}

}  // namespace
}  // namespace kestra
