// Events, waits and threads, in what is Windows' own.
#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <thread>
#include <vector>

#include "platform/os/Clock.h"
#include "platform/os/Event.h"
#include "platform/os/Thread.h"
#include "platform/win32/os/NativeHandle.h"

namespace kestra::os {
namespace {

std::vector<const CWaitable*> PointersTo(const std::vector<std::unique_ptr<CAutoResetEvent>>& all) {
  std::vector<const CWaitable*> pointers;
  for (const auto& event : all) pointers.push_back(event.get());
  return pointers;
}

TEST(CKeptEvent, OutlivesTheOther) {
  auto first = std::make_unique<CEvent>();
  const CKeptEvent kept(*first);
  const CKeptEvent keptAgain(static_cast<const CWaitable&>(kept));
  EXPECT_EQ(WaitAny({&kept}, 0), kWaitTimeOut);
  first->Set();
  first.reset();
  EXPECT_EQ(WaitAny({&kept}, 0), 0);
  EXPECT_EQ(WaitAny({&keptAgain}, 0), 0);
  // To the system the number of "none" is the process itself.
  EXPECT_EQ(CKeptEvent(CBorrowedEvent(kNoHandle)).Native(), kNoHandle);
  EXPECT_EQ(CKeptEvent(CBorrowedEvent(0)).Native(), kNoHandle);
}

// On both sides of what the system takes at once.
TEST(WaitAny, TakesOneSignalOfMany) {
  for (const size_t count : {63u, 64u, 65u, 128u, 129u, 300u}) {
    std::vector<std::unique_ptr<CAutoResetEvent>> events(count);
    for (auto& event : events) event = std::make_unique<CAutoResetEvent>();
    const auto objects = PointersTo(events);
    EXPECT_EQ(WaitAny(objects, 0), kWaitTimeOut) << count;
    events[count - 1]->Set();
    events[count - 2]->Set();
    EXPECT_EQ(WaitAny(objects, kInfinite), static_cast<int>(count - 2));
    EXPECT_EQ(WaitAny(objects, kInfinite), static_cast<int>(count - 1));
    EXPECT_EQ(WaitAny(objects, 30), kWaitTimeOut) << count;
    std::thread setter([&] {
      Sleep(30);
      events[count - 1]->Set();
    });
    EXPECT_EQ(WaitAny(objects, 10'000), static_cast<int>(count - 1));
    setter.join();
  }
}

TEST(WaitAny, TakesAMutexWhoseOwnerHasDied) {
  const CUniqueHandle mutex(CreateMutexW(nullptr, FALSE, nullptr));
  std::thread([&] { WaitForSingleObject(mutex.get(), INFINITE); }).join();
  const CBorrowedEvent waited(NativeOf(mutex.get()));
  const CEvent never;
  EXPECT_EQ(WaitAny({&never, nullptr, &waited}, 1000), 2);
  ReleaseMutex(mutex.get());
}

TEST(WaitAny, FailsForWhatCannotBeWaitedFor) {
  const CEvent never;  // first, or it would get the closed one's number
  HANDLE closed = CreateEventW(nullptr, TRUE, FALSE, nullptr);
  CloseHandle(closed);
  const CBorrowedEvent broken(NativeOf(closed));
  EXPECT_EQ(WaitAny({&never, &broken}, 1000), kWaitFailed);
  const CBorrowedEvent null(0);
  EXPECT_EQ(WaitAny({&null}, kInfinite), kWaitFailed);
}

constexpr UINT kMessage = WM_APP + 1;
std::atomic<int> s_received = 0;

LRESULT CALLBACK Count(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
  if (message == kMessage) ++s_received;
  // One that always has something to paint.
  if (message == WM_PAINT) return 0;
  return DefWindowProcW(window, message, wParam, lParam);
}

// A window of the calling thread's.
class CWindow {
 public:
  CWindow() {
    WNDCLASSW windowClass{};
    windowClass.lpfnWndProc = Count;
    windowClass.hInstance = GetModuleHandleW(nullptr);
    windowClass.lpszClassName = L"KestraTest";
    RegisterClassW(&windowClass);
    window = CreateWindowExW(0, L"KestraTest", L"", 0, 0, 0, 0, 0, HWND_MESSAGE, nullptr,
                             windowClass.hInstance, nullptr);
    s_received = 0;
  }
  ~CWindow() { DestroyWindow(window); }
  CWindow(const CWindow&) = delete;
  CWindow& operator=(const CWindow&) = delete;
  HWND window;
};

TEST(WaitAnyDispatching, LetsWindowsGoOn) {
  const CWindow window;
  ASSERT_NE(window.window, nullptr);
  CEvent end;
  PostMessageW(window.window, kMessage, 0, 0);  // there before the wait
  std::thread other([&] {
    for (int i = 0; i < 250; ++i) PostMessageW(window.window, kMessage, 0, 0);
    SendMessageW(window.window, kMessage, 0, 0);  // overtakes what is posted
    for (int i = 0; i < 10'000 && s_received < 252; ++i) Sleep(1);
    end.Set();
  });
  EXPECT_EQ(WaitAnyDispatching({nullptr, &end}, 20'000), 1);
  other.join();
  EXPECT_EQ(s_received, 252);
}

TEST(WaitAnyDispatching, BeginsAnewWithEachInput) {
  const CWindow window;
  std::thread other([&] {
    for (int i = 0; i < 4; ++i) {
      Sleep(100);
      PostMessageW(window.window, kMessage, 0, 0);
    }
  });
  const CEvent never;
  const uint32_t start = TickCount();
  EXPECT_EQ(WaitAnyDispatching({&never}, 250), kWaitTimeOut);
  EXPECT_GE(TickCount() - start, 600u);
  other.join();
}

TEST(WaitAnyDispatching, KeepsTheWishToEnd) {
  CEvent end;
  PostQuitMessage(5);
  EXPECT_EQ(WaitAnyDispatching({&end}, 30), kWaitTimeOut);
  MSG message{};
  ASSERT_TRUE(PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE));
  EXPECT_EQ(message.message, static_cast<UINT>(WM_QUIT));
  EXPECT_EQ(message.wParam, 5u);
}

TEST(StartThread, EndsByForce) {
  CEvent isIn;
  const CEvent never;
  const auto thread = StartThread(
      [&] {
        isIn.Set();
        WaitAny({&never}, kInfinite);
      },
      0);
  ASSERT_TRUE(thread);
  ASSERT_EQ(WaitAny({&isIn}, 10'000), 0);
  EXPECT_EQ(WaitAny({thread.get()}, 0), kWaitTimeOut);
  EXPECT_TRUE(thread->Terminate());
  thread->Join();
  EXPECT_EQ(WaitAny({thread.get()}, 0), 0);
}

}  // namespace
}  // namespace kestra::os
