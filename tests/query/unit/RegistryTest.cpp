// The registry by queries, over a registry in memory: the sources, the module, every refusal of a
// statement that changes something, and the view in which that finds its key.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "Modules/ModuleTable.h"
#include "platform/os/MessageText.h"
#include "query/Evaluate.h"
#include "tests/query/unit/RunningQuery.h"
#include "tests/support/FailingMachine.h"
#include "tests/support/FakeMachine.h"

namespace kestra::test {
namespace {

constexpr RegistryRoot kHklm = RegistryRoot::LocalMachine;

Ref<CFakeMachine> RegistryMachine() {
  auto machine = MakeRef<CFakeMachine>();
  machine->system.width.isWide = true;
  CFakeRegistry& registry = machine->registry;
  registry.SetString(kHklm, "Soft\\Acme", "Version", "1.0");
  registry.SetString(kHklm, "Soft\\Acme", "Name", "acme");
  registry.SetNumber(kHklm, "Soft\\Acme", "Count", 3);
  registry.SetValue(kHklm, "Soft\\Acme", "Bytes", kRegBinary, "\x01\x02");
  registry.SetValue(kHklm, "Soft\\Acme", "List", kRegMultiSz, std::string("a\0b\0\0", 5));
  registry.SetString(kHklm, "Soft\\Beta", "Version", "2.0");
  registry.SetString(kHklm, "Soft\\Beta\\Inner", "Version", "2.1");
  registry.AddKey(kHklm, "Soft\\None");
  registry.DenyKey(kHklm, "Soft\\Closed", kErrorAccessDenied);
  registry.DenyKey(kHklm, "Closed", kErrorAccessDenied);
  registry.DenyKey(RegistryRoot::CurrentUser, "", kErrorNoSuchUser);
  for (const uint32_t view : {kKeyWow64Key32, kKeyWow64Key64}) {
    auto key = registry.AddViewKey(view, kHklm, "Soft\\Own");
    const std::string text = view == kKeyWow64Key32 ? "32" : "64";
    key->values.push_back({.name = "Width", .type = kRegSz, .data = text + '\0'});
    registry.AddViewKey(view, kHklm, "Soft\\Own\\Sub" + text);
  }
  return machine;
}

std::string ShortText(const Value& value) {
  if (value.IsUndefined()) return "-";
  if (value.IsVDiagItem()) {
    const DiagParam* pPath = value.asVDIagItem()->Params.Find("Path", false);
    return pPath ? pPath->StringValue : "?";
  }
  if (!value.IsVector()) return value.asString();
  std::string text;
  for (size_t i = 0; i < value.asVector().Count(); ++i)
    text += (i > 0 ? " " : "") + ShortText(value.asVector()[i]);
  return text;
}

std::string Answer(const Ref<CMachine>& machine, const std::string& query,
                   bool allowActive = false) {
  const auto root = MakeRef<DiagRoot>("", BuiltInModules(), machine);
  Value value;
  EvaluateQuery(value, query, root, kNoTimeOut,
                MakeRef<QueryMessage>(Ref<os::CEvent>(), allowActive));
  return value.IsError() ? "! " + value.asString() : ShortText(value);
}

struct QueryCase {
  const char* query;
  const char* result;
};

TEST(RegistryQueries, Sources) {
  const QueryCase cases[] = {
      {"SELECT StringValue FROM REGISTRY.REGISTRYVALUE('HKLM\\Soft\\*\\Version')", "1.0 2.0"},
      {"SELECT Path FROM REGISTRY.REGISTRYVALUE('HKLM64\\*\\Beta\\Inner\\Version')",
       "HKLM\\Soft\\Beta\\Inner\\Version"},
      {"SELECT Name FROM REGISTRY.REGISTRYVALUE('HKLM\\Soft\\Acme\\?o*')", "Count"},
      {"SELECT DWORDValue FROM REGISTRY.REGISTRYVALUE('HKLM\\Soft\\Acme\\Count')", "3"},
      {"SELECT Type FROM REGISTRY.REGISTRYVALUE('HKLM\\Soft\\Acme\\Count')", "DWORD"},
      {"SELECT StringValue FROM REGISTRY.REGISTRYVALUE('HKLM\\Soft\\Acme\\Count')", "-"},
      {"SELECT Name FROM REGISTRY.REGISTRYVALUE('HKLM\\Soft\\Acme\\*') WHERE Type = 'SZ'",
       "Version Name"},
      {"SELECT Name FROM REGISTRY.REGISTRYVALUE('HKLM\\Soft\\Acme\\Nope')", ""},
      {"SELECT Name FROM REGISTRY.REGISTRYVALUE('HKLM\\Soft\\Nope\\Version')", ""},
      {"SELECT Name FROM REGISTRY.REGISTRYVALUE('HKLM\\Soft\\Acme\\')", ""},
      {"SELECT Name FROM REGISTRY.REGISTRYVALUE('HKLM\\Closed\\*')", ""},
      {"SELECT Name FROM REGISTRY.REGISTRYVALUE('HKLM')", "! <ERROR>"},
      {"SELECT StringValue FROM REGISTRY.REGISTRYVALUE('HKLM\\Soft\\Own\\Width')", "32"},
      {"SELECT StringValue FROM REGISTRY.REGISTRYVALUE('HKLM64\\Soft\\Own\\Width')", "64"},
      {"SELECT Path FROM REGISTRY.REGISTRYKEY('hkey_local_machine64\\soft\\own\\*')",
       "hkey_local_machine\\soft\\own\\Sub64"},
      {"SELECT Name FROM REGISTRY.REGISTRYKEY('HKLM\\Soft\\*')", "Acme Beta None Own"},
      {"SELECT Name FROM REGISTRY.REGISTRYKEY('HKLM')", "HKLM"},
      {"SELECT Name FROM REGISTRY.REGISTRYKEY('HKLM\\Soft\\*\\*')", "Inner Sub32"},
      {"SELECT Name FROM REGISTRY.REGISTRYKEY('HKLM\\Soft\\No*\\x')", ""},
      {"SELECT Name FROM REGISTRY.REGISTRYKEY('HKLM\\Closed')", ""},
      {"SELECT Name FROM REGISTRY.REGISTRYKEY('HKLX\\Soft')", "! <ERROR>"},
      {"SELECT Name FROM REGISTRY.REGISTRYKEY('HK')", "! <ERROR>"},
      {"SELECT Name FROM REGISTRY.REGISTRYKEY('')", "! <ERROR>"},
      // A hive that cannot be opened is not the same as one that is empty.
      {"SELECT Name FROM REGISTRY.REGISTRYKEY('HKCU\\Soft\\*')", "! <ERROR>"},
      {"SELECT Name FROM REGISTRY.REGISTRYVALUE('HKCU\\Soft\\x')", "! <ERROR>"},
      {"SELECT Name FROM Registry(KeyPath='HKCU\\*').RegistryKey", "! <ERROR>"},
      {"(SELECT k.Name FROM REGISTRY.REGISTRYKEY('HKLM\\Soft\\*') k)", "! <ERROR>"},
      {"SELECT v.Name FROM REGISTRY.REGISTRYKEY('HKLM\\Soft\\*') k JOIN Registry.RegistryValue v "
       "ON v.ATTACHEDTO = k.ITEMID WHERE k.Name = 'Acme'",
       "Version Name Count Bytes List"},
      {"SELECT StringValue FROM Registry(ValuePath='HKLM64\\Soft\\Own\\W*').RegistryValue", "64"},
      {"SELECT Name FROM Registry(KeyPath='HKLM\\Soft\\Beta', Levels=1).RegistryKey", "Beta Inner"},
      {"SELECT Name FROM Registry(KeyPath='HKLM\\Closed').RegistryKey", "! <ERROR>"},
      {"SELECT Name FROM Registry(KeyPath='HKLM\\*', Timeout=0).RegistryKey", "! <ERROR>"},
  };
  const auto machine = RegistryMachine();
  for (const QueryCase& c : cases) EXPECT_EQ(Answer(machine, c.query), c.result) << c.query;
}

// All that the registry holds below HKLM\Soft, in both views.
std::string Dump(const FakeRegistryKey& key) {
  std::string text = key.name + std::to_string(key.view) + "(";
  for (const auto& value : key.values)
    text += value.name + ":" + std::to_string(value.type) + "=" + value.data + ",";
  for (const auto& subKey : key.subKeys) text += Dump(*subKey);
  return text + ")";
}

struct Refusal {
  const char* statement;
  const char* error;  // what stands in its text: the number of the message and what it names
};

TEST(RegistryQueries, RefusedStatementsChangeNothing) {
  const std::string denied = *os::SystemErrorLine(kErrorAccessDenied);
  const std::string missing = *os::SystemErrorLine(kErrorFileNotFound);
  const std::string tooLong = *os::SystemErrorLine(kErrorFilenameExceedsRange);
  const std::string badName = *os::SystemErrorLine(kErrorInvalidName);
  const std::string insertValue = "INSERT Registry(KeyPath='HKLM\\Soft\\Acme').RegistryValue ";
  const std::string insertKey = "INSERT Registry(KeyPath='HKLM\\Soft\\Acme').RegistryKey ";
  const std::string updateValue = "UPDATE REGISTRY.REGISTRYVALUE('HKLM\\Soft\\Acme\\";
  const std::string longName(256, 'n');
  const std::vector<std::pair<std::string, const char*>> cases = {
      {insertValue + "(Type, StringValue) VALUES ('SZ', 'x')", "11000*strings: Name."},
      {insertValue + "(Name, StringValue) VALUES ('n', 'x')", "11000*strings: Type."},
      {insertValue + "(Name, Type, Path, StringValue) VALUES ('n', 'SZ', 'p', 'x')",
       "11007*strings: Path."},
      {insertValue + "(Name, Type, StringValue) VALUES ('" + longName + "', 'SZ', 'x')",
       tooLong.c_str()},
      {insertValue + "(Name, Type, StringValue) VALUES ('version', 'SZ', 'x')",
       "16002*strings: version."},
      {insertValue + "(Name, Type) VALUES ('n', 'SZ')", "11000*strings: StringValue."},
      {insertValue + "(Name, Type, DWORDValue) VALUES ('n', 'SZ', 1)",
       "11000*strings: StringValue."},
      {insertValue + "(Name, Type, StringValue, DWORDValue) VALUES ('n', 'ExpandSZ', 'x', 1)",
       "11010*strings: StringValue, DWORDValue."},
      {insertValue + "(Name, Type, StringValue) VALUES ('n', 'Binary', 'xyz')",
       "11000*strings: xyz."},
      {insertValue + "(Name, Type) VALUES ('n', 'DWORD')",
       "11000*strings: StringValue or DWORDValue."},
      {insertValue + "(Name, Type, StringValue) VALUES ('n', 'MultiSZ', 'a\n\nb')", "16003"},
      {insertValue + "(Name, Type, StringValue) VALUES ('n', 'None', 'x')", "11007*strings: Type."},
      {insertValue + "(Name, Type, StringValue) VALUES ('n', 'Link', 'x')", "11007*strings: Type."},
      {insertValue + "(Name, Type, StringValue) VALUES ('n', 'NoType', 'x')",
       "10002*strings: Type."},
      {insertValue + "(Name, Type, StringValue) VALUES ('n', 11, 'x')", "11002*strings: Type"},
      {"INSERT Registry(KeyPath='HKLM\\Soft\\Nope').RegistryValue (Name, Type, StringValue) "
       "VALUES ('n', 'SZ', 'x')",
       "10006*strings: RegistryValue."},
      {"INSERT Registry.RegistryKey (Name) VALUES ('n')", "10004*strings: Registry."},
      {insertKey + "(Class) VALUES ('c')", "11000*strings: Name."},
      {insertKey + "(Name) VALUES ('')", "11000*strings: Name."},
      {insertKey + "(Name, Path) VALUES ('n', 'p')", "11007*strings: Path."},
      {insertKey + "(Name, Class) VALUES ('n', 'c')", "11007*strings: Class."},
      {insertKey + "(Name) VALUES ('" + longName + "')", tooLong.c_str()},
      {"INSERT Registry(KeyPath='HKLM\\Soft').RegistryKey (Name) VALUES ('ACME')",
       "16002*strings: ACME."},
      {"INSERT Registry(KeyPath='HKLM\\Soft\\A*').RegistryKey (Name) VALUES ('n')",
       badName.c_str()},
      {"INSERT Registry(KeyPath='HKLM\\Soft\\Nope').RegistryKey (Name) VALUES ('n')",
       missing.c_str()},
      {"INSERT Registry(ValuePath='HKLM\\Soft\\Acme\\x').RegistryKey (Name) VALUES ('n')",
       "11000*strings: KeyPath."},
      {updateValue + "Version') SET DWORDValue = 1", "11000*strings: StringValue."},
      {updateValue + "Version') SET StringValue = 'x', DWORDValue = 1",
       "11010*strings: StringValue, DWORDValue."},
      {updateValue + "Version') SET Type = 'DWORD', DWORDValue = 1", "11011*strings: Type."},
      {updateValue + "Version') SET Name = 'n'", "11011*strings: Name."},
      {updateValue + "Bytes') SET DWORDValue = 1", "11000*strings: StringValue."},
      {updateValue + "Bytes') SET StringValue = '01', DWORDValue = 1",
       "11000*strings: DWORDValue."},
      {updateValue + "Bytes') SET StringValue = '01 2'", "11000*strings: 01 2."},
      {updateValue + "Count') SET StringValue = 'three'", "11002*strings: StringValue, three."},
      {updateValue + "List') SET StringValue = 'a\n\nb'", "16003"},
      {updateValue + "List') SET StringValue = 'a', DWORDValue = 1",
       "11010*strings: StringValue, DWORDValue."},
      {"DELETE REGISTRY.REGISTRYKEY('HKLM')", denied.c_str()},
      {"UPDATE REGISTRY.REGISTRYKEY('HKLM\\Soft\\Acme') SET Name = 'n'", "11011*strings: Name."},
  };
  const auto machine = RegistryMachine();
  const auto top = machine->registry.Find(kHklm, "");
  const std::string before = Dump(*top);
  for (const auto& [statement, pError] : cases) {
    SCOPED_TRACE(statement);
    const std::string result = Answer(machine, statement, true);
    const std::string_view expected = pError;
    const size_t star = expected.find('*');
    EXPECT_EQ(result.substr(0, 2), "! ");
    EXPECT_NE(result.find(expected.substr(0, star)), std::string::npos) << result;
    if (star != expected.npos) {
      EXPECT_NE(result.find(expected.substr(star + 1)), std::string::npos) << result;
    }
    EXPECT_EQ(Dump(*top), before);
    // Without permission nothing else is looked at.
    const std::string forbidden = Answer(machine, statement);
    EXPECT_EQ(forbidden.substr(0, 2), "! ");
    EXPECT_EQ(Dump(*top), before);
  }
}

TEST(RegistryQueries, StatementsChangeWhatTheyName) {
  const QueryCase cases[] = {
      {"INSERT Registry(KeyPath='HKLM\\Soft\\None').RegistryValue (Name, Type, StringValue) "
       "VALUES ('n', 'DWORD', '7')",
       "1"},
      {"SELECT DWORDValue FROM REGISTRY.REGISTRYVALUE('HKLM\\Soft\\None\\n')", "7"},
      {"INSERT Registry(KeyPath='HKLM\\Soft\\None', MultiSZSeparator=';').RegistryValue (Name, "
       "Type, StringValue) VALUES ('', 'MultiSZ', 'a;b')",
       "1"},
      {"SELECT StringValue FROM REGISTRY.REGISTRYVALUE('HKLM\\Soft\\None\\')", "a\nb"},
      {"UPDATE REGISTRY.REGISTRYVALUE('HKLM\\Soft\\*\\Version') SET StringValue = StringValue + "
       "'.1'",
       "2"},
      {"SELECT StringValue FROM REGISTRY.REGISTRYVALUE('HKLM\\Soft\\*\\Version')", "1.0.1 2.0.1"},
      {"UPDATE Registry(ValuePath='HKLM\\Soft\\Acme\\Count').RegistryValue SET DWORDValue = "
       "DWORDValue + 1",
       "1"},
      {"SELECT DWORDValue FROM REGISTRY.REGISTRYVALUE('HKLM\\Soft\\Acme\\Count')", "4"},
      {"DELETE REGISTRY.REGISTRYVALUE('HKLM\\Soft\\Acme\\*') WHERE Type <> 'SZ'", "3"},
      {"SELECT Name FROM REGISTRY.REGISTRYVALUE('HKLM\\Soft\\Acme\\*')", "Version Name"},
      {"INSERT Registry(KeyPath='HKLM\\Soft\\Acme\\').RegistryKey (Name) VALUES ('x\\y')", "1"},
      {"INSERT Registry(KeyPath='HKLM\\Soft').RegistryKey (ATTACHEDTO, Name) SELECT k.ITEMID, "
       "'New' FROM "
       "REGISTRY.REGISTRYKEY('HKLM\\Soft\\Acme\\x\\*') k",
       "1"},
      {"SELECT Path FROM REGISTRY.REGISTRYKEY('HKLM\\Soft\\Acme\\*\\*\\*')",
       "HKLM\\Soft\\Acme\\x\\y\\New"},
      // The rows below go with the first one.
      {"DELETE Registry(KeyPath='HKLM\\Soft\\Acme', Levels=9).RegistryKey", "4"},
      {"SELECT Name FROM REGISTRY.REGISTRYKEY('HKLM\\Soft\\Acme')", ""},
  };
  const auto machine = RegistryMachine();
  for (const QueryCase& c : cases) EXPECT_EQ(Answer(machine, c.query, true), c.result) << c.query;
}

// The path of a row does not tell the view; the item does.
TEST(RegistryQueries, StatementsMeetTheViewThatWasListed) {
  const std::string sources[] = {"REGISTRY.REGISTRYVALUE('HKLM64\\Soft\\Own\\Width')",
                                 "Registry(KeyPath='HKLM64\\Soft\\Own').RegistryValue"};
  for (const std::string& source : sources) {
    const auto machine = RegistryMachine();
    const auto key = [&](uint32_t view) {
      return machine->registry.Find(kHklm, "Soft\\Own", view);
    };
    EXPECT_EQ(Answer(machine, "UPDATE " + source + " SET StringValue = 'new'", true), "1");
    EXPECT_EQ(key(kKeyWow64Key64)->FindValue("Width")->data, std::string("new\0", 4));
    EXPECT_EQ(key(kKeyWow64Key32)->FindValue("Width")->data, std::string("32\0", 3));
    EXPECT_EQ(Answer(machine, "DELETE " + source, true), "1");
    EXPECT_EQ(key(kKeyWow64Key64)->values.size(), 0u);
    EXPECT_EQ(key(kKeyWow64Key32)->values.size(), 1u);
    const std::string insert = "INSERT Registry(KeyPath='HKLM64\\Soft\\Own').";
    EXPECT_EQ(Answer(machine, insert + "RegistryKey (Name) VALUES ('Sub64\\n')", true), "1");
    EXPECT_TRUE(machine->registry.Find(kHklm, "Soft\\Own\\Sub64\\n", kKeyWow64Key64));
    EXPECT_EQ(Answer(machine, "DELETE REGISTRY.REGISTRYKEY('HKLM\\Soft\\Own')", true), "1");
    EXPECT_FALSE(key(kKeyWow64Key32));
    EXPECT_TRUE(key(kKeyWow64Key64));
  }
}

TEST(RegistryQueries, AMachineWithoutRegistry) {
  const auto machine = MakeRef<CFakeMachine>(SystemFamily::Linux);
  EXPECT_EQ(Answer(machine, "SELECT Name FROM Registry(KeyPath='HKLM\\Soft').RegistryKey"), "");
  EXPECT_EQ(Answer(machine, "SELECT Name FROM REGISTRY.REGISTRYKEY('HKLM\\Soft')"), "");
  const std::string refused = Answer(
      machine, "INSERT Registry(KeyPath='HKLM\\Soft').RegistryKey (Name) VALUES ('n')", true);
  EXPECT_EQ(refused, "! <ERROR: " + *os::SystemErrorLine(kErrorCallNotImplemented) + ">");
}

class RegistryEnds : public testing::TestWithParam<const char*> {};

// Wherever a cancel comes, the query ends at once as an Error, unless all was found by then.
TEST_P(RegistryEnds, AtACancel) {
  const auto machine = RegistryMachine();
  const std::string whole = Answer(machine, GetParam());
  for (uint32_t n = 1;; ++n) {
    const auto event = MakeRef<os::CEvent>();
    uint32_t calls = 0;
    machine->registry.onCall = [&] {
      if (++calls == n) event->Set();
    };
    const auto root = MakeRef<DiagRoot>("", BuiltInModules(), Ref<CMachine>(machine));
    Value value;
    EvaluateQuery(value, GetParam(), root, kNoTimeOut, MakeRef<QueryMessage>(event, false));
    if (calls < n) {
      EXPECT_TRUE(value.IsVector());
      break;
    }
    EXPECT_LE(calls, n + 2) << n;  // a key that is open shows what it is
    EXPECT_TRUE(calls == n || value.IsError()) << n;
    EXPECT_TRUE(value.IsError() || ShortText(value) == whole) << n;
  }
}

TEST_P(RegistryEnds, InTime) {
  const auto machine = RegistryMachine();
  uint32_t calls = 0;
  machine->registry.onCall = [&] {
    if (++calls == 3) os::Sleep(60);
  };
  const auto root = MakeRef<DiagRoot>("", BuiltInModules(), Ref<CMachine>(machine));
  Value value;
  EvaluateQuery(value, GetParam(), root, 50, MakeRef<QueryMessage>(Ref<os::CEvent>(), false));
  EXPECT_TRUE(value.IsError()) << ShortText(value);
  EXPECT_EQ(value.asString(), "<ERROR>");
}

INSTANTIATE_TEST_SUITE_P(
    Queries, RegistryEnds,
    testing::Values("SELECT Name FROM REGISTRY.REGISTRYKEY('HKLM\\Soft\\*')",
                    "SELECT Name FROM REGISTRY.REGISTRYVALUE('HKLM\\Soft\\*\\Version')",
                    "SELECT Name FROM REGISTRY.REGISTRYVALUE('HKLM\\Soft\\*\\*')"));

}  // namespace
}  // namespace kestra::test
