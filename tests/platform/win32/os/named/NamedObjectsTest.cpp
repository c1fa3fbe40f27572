// What lies behind named locks and shared records on Windows: objects of the system.
#include <gtest/gtest.h>

#include <cstring>
#include <set>
#include <thread>

#include "platform/os/Clock.h"
#include "platform/os/Event.h"
#include "platform/os/SharedRecord.h"
#include "platform/win32/base/UniqueHandle.h"
#include "platform/win32/base/Wide.h"
#include "platform/win32/os/named/MutexLock.h"
#include "platform/win32/os/named/ObjectName.h"
#include "tests/support/UniqueName.h"

namespace kestra::os {
namespace {

using test::CUniqueName;

TEST(ObjectName, IsTheNameItselfWhereItCanBe) {
  EXPECT_EQ(ObjectName("Optex_MMF_VXMLOptex"), L"Optex_MMF_VXMLOptex");
  EXPECT_EQ(ObjectName("C:_a b/{\xC3\xA4}100%"), L"C:_a b/{\u00E4}100%");
}

TEST(ObjectName, IsNeverSharedByTwo) {
  const std::string longName(300, 'a');
  const std::string names[] = {"",
                               "a",
                               "A",
                               "a\\b",
                               "a%5cb",
                               "%a%5cb",
                               "%25a",
                               "%",
                               "Global\\a",
                               std::string("a\0b", 3),
                               std::string("a\0c", 3),
                               "\xC3\xA4",
                               "\xE4",
                               "\xE5",
                               "+",
                               std::string(200, 'a'),
                               longName,
                               longName + "a",
                               "b" + longName,
                               std::string(67, '\\'),
                               std::string(66, '\\')};
  std::set<std::wstring> seen;
  for (const std::string& name : names) {
    const std::wstring object = ObjectName(name);
    EXPECT_TRUE(seen.insert(object).second) << name;
    EXPECT_TRUE(!object.empty() && object.size() <= 240) << name;
    EXPECT_EQ(object.find_first_of(std::wstring(L"\\\0", 2)), std::wstring::npos) << name;
  }
}

// Another program's mutex of that name is the same lock, however its owner goes.
TEST(NamedLock, IsAMutexOfTheMachine) {
  const CUniqueName name;
  const std::wstring object = L"Global\\" + Wide(std::string(name));
  const CUniqueHandle mutex(CreateMutexW(nullptr, FALSE, object.c_str()));
  ASSERT_TRUE(mutex);
  CEvent mayEnd;
  CEvent isHeld;
  std::thread other([&] {
    WaitForSingleObject(mutex.get(), INFINITE);
    isHeld.Set();
    WaitAny({&mayEnd}, kInfinite);  // and ends without letting go
  });
  ASSERT_EQ(WaitAny({&isHeld}, 10'000), 0);
  std::unique_ptr<CNamedLock> lock;
  EXPECT_EQ(AcquireNamedLock(name, nullptr, 30, lock), NamedLockResult::TimedOut);
  mayEnd.Set();
  other.join();
  EXPECT_EQ(AcquireNamedLock(name, nullptr, 10'000, lock), NamedLockResult::Held);
}

SystemError Open(const std::string& name, SharedRecord& record,
                 std::span<const CWaitable* const> stops = {}) {
  return OpenSharedRecord("memory_" + name, 16, "event_" + name, record, stops);
}

// Other programs know the two by their names.
TEST(SharedRecord, IsASystemObjectOfThatName) {
  const CUniqueName name;
  SharedRecord record;
  ASSERT_EQ(Open(name, record), kErrorSuccess);
  std::memcpy(record.memory->Data(), "0123456789abcdef", 16);
  const CUniqueHandle mapping(
      OpenFileMappingW(FILE_MAP_READ, FALSE, Wide("memory_" + std::string(name)).c_str()));
  ASSERT_TRUE(mapping);
  const void* const pView = MapViewOfFile(mapping.get(), FILE_MAP_READ, 0, 0, 16);
  ASSERT_NE(pView, nullptr);
  EXPECT_EQ(std::memcmp(pView, "0123456789abcdef", 16), 0);
  UnmapViewOfFile(pView);
  const CUniqueHandle event(
      OpenEventW(EVENT_MODIFY_STATE, FALSE, Wide("event_" + std::string(name)).c_str()));
  ASSERT_TRUE(event);
  SetEvent(event.get());
  EXPECT_EQ(WaitAny({record.event.get()}, 0), 0);
}

TEST(SharedRecord, NamesAreOfOneKindAndSpace) {
  const CUniqueName name;
  SharedRecord record;
  EXPECT_EQ(OpenSharedRecord(name, 16, name, record), kErrorInvalidHandle);
  EXPECT_EQ(record.memory, nullptr);
  EXPECT_EQ(record.event, nullptr);
  EXPECT_EQ(Open("Global\\" + std::string(name), record), kErrorSuccess);
}

TEST(SharedRecord, DoesNotWaitForEverForItsTurn) {
  const CUniqueName name;
  std::unique_ptr<CNamedLock> turn;
  ASSERT_EQ(AcquireMutexLock(NameSpace::Session,
                             ObjectName("memory_" + std::string(name) + "_Opening"), {}, 0, turn),
            NamedLockResult::Held);
  CEvent stop;
  stop.Set();
  const CWaitable* const stops[] = {nullptr, &stop};
  SharedRecord record;
  uint32_t start = TickCount();
  EXPECT_EQ(Open(name, record, stops), kErrorCancelled);
  EXPECT_LT(TickCount() - start, 250u);
  start = TickCount();
  EXPECT_EQ(Open(name, record, {stops, 1}), kErrorTimeout);
  const uint32_t passed = TickCount() - start;
  EXPECT_TRUE(passed >= 990 && passed < 2500) << passed;
  turn.reset();
  EXPECT_EQ(Open(name, record), kErrorSuccess);
}

}  // namespace
}  // namespace kestra::os
