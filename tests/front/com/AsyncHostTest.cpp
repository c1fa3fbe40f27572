// Asynchronous queries: the event comes on the owner's thread, and only while it pumps messages.
#include <thread>

#include "tests/front/com/Host.h"

namespace kestra::test {
namespace {

constexpr DWORD kLongMs = 20000;  // for what comes at once on a machine that is not busy

class AsyncHost : public testing::Test {
 protected:
  AsyncHost() : m_session(m_library.MakeSession()) { m_cookie = Advise(*m_session.get(), m_sink); }
  ~AsyncHost() override {
    if (m_session) Unadvise(*m_session.get(), m_cookie);
    m_session = {};
    EXPECT_EQ(m_sink.References(), 0u);
    EXPECT_FALSE(m_library.IsInUse());
    EXPECT_EQ(m_library.Unload(), m_unloads);
  }
  HRESULT Start(const wchar_t* query, long timeOut = -1) {
    return m_session->RunQuery(CBstr(query).get(), timeOut);
  }

  CApartment m_apartment;
  CLibrary m_library;
  CSink m_sink;
  CComPtr<ISorrelCOM> m_session;
  DWORD m_cookie = 0;
  bool m_unloads = true;
};

// The session's window, of all that this thread has.
HWND SessionWindow() {
  HWND found = nullptr;
  const auto look = [](HWND window, LPARAM place) -> BOOL {
    wchar_t name[64] = L"";
    GetClassNameW(window, name, 64);
    if (std::wstring(name) == L"VSorrelCOMObjWindow") *reinterpret_cast<HWND*>(place) = window;
    return TRUE;
  };
  EnumThreadWindows(GetCurrentThreadId(), look, reinterpret_cast<LPARAM>(&found));
  return found;
}

TEST_F(AsyncHost, EachResultComesOnTheOwnersThread) {
  const struct {
    const wchar_t* query;
    long timeOut;
    const wchar_t* text;
  } kCases[] = {
      {L"1 + 1", -1, L"2"},
      {L"SELECT Id FROM Test.Row", -1, L"<Vector>"},
      {L"SELECT Nope FROM Test.Row", -1, L"<ERROR: Syntax error>"},
      {L"SELECT Id FROM Test.Row", 0, L"<NULL>"},  // parsed only
      {L"SELECT", 0, L"<ERROR: Syntax error>"},
      {L"LEN('\x00E4\x4E2D')", -1, L"2"},
      {L"SELECT Id FROM Throws.Entry", -1, L"<ERROR: Unknown error>"},
  };
  size_t count = 0;
  for (const auto& test : kCases) {
    ASSERT_EQ(Start(test.query, test.timeOut), S_OK);
    ASSERT_TRUE(PumpUntil(m_sink, ++count, kLongMs));
    EXPECT_EQ(m_sink.events.back().text, test.text);
    EXPECT_EQ(m_sink.events.back().threadId, GetCurrentThreadId());
  }
}

TEST_F(AsyncHost, WithoutMessagesThereIsNoEventAndNoSecondQuery) {
  ASSERT_EQ(Start(L"1 + 1"), S_OK);
  Sleep(300);  // it has ended by now; only the message waits
  EXPECT_TRUE(m_sink.events.empty());
  EXPECT_EQ(Start(L"2 + 2"), E_FAIL);
  ASSERT_TRUE(PumpUntil(m_sink, 1, kLongMs));
  EXPECT_EQ(Start(L"3 + 3"), S_OK);
  ASSERT_TRUE(PumpUntil(m_sink, 2, kLongMs));
  EXPECT_EQ(m_sink.events.back().text, L"6");
}

TEST_F(AsyncHost, ACancelledQueryIsNotReported) {
  ASSERT_EQ(Start(kSlow), S_OK);
  PumpFor(50);
  const DWORD start = GetTickCount();
  EXPECT_EQ(m_session->CancelQuery(), S_OK);
  EXPECT_LT(GetTickCount() - start, 2000u);
  ASSERT_EQ(Start(L"1 + 1"), S_OK);  // ends, and is cancelled while its message waits
  Sleep(300);
  EXPECT_EQ(m_session->CancelQuery(), S_OK);
  PumpFor(300);
  EXPECT_TRUE(m_sink.events.empty());
  ASSERT_EQ(Start(L"2 + 2"), S_OK);
  ASSERT_TRUE(PumpUntil(m_sink, 1, kLongMs));
  EXPECT_EQ(m_sink.events.back().text, L"4");
}

TEST_F(AsyncHost, ASessionGoesInTheMiddleOfAQuery) {
  ASSERT_EQ(Start(kSlow), S_OK);
  PumpFor(50);
  Unadvise(*m_session.get(), m_cookie);
  const DWORD start = GetTickCount();
  m_session = {};
  EXPECT_LT(GetTickCount() - start, 2000u);
  PumpFor(300);
  EXPECT_TRUE(m_sink.events.empty());
}

TEST_F(AsyncHost, ASinkLetsGoOfTheSessionInTheEvent) {
  m_sink.onEvent = [this] { m_session = {}; };
  ASSERT_EQ(Start(L"1 + 1"), S_OK);
  ASSERT_TRUE(PumpUntil(m_sink, 1, kLongMs));
  EXPECT_FALSE(m_session);
  PumpFor(50);
  EXPECT_EQ(m_sink.events.back().text, L"2");
}

TEST_F(AsyncHost, EverySinkIsCalledInOrderUntilItIsTakenOff) {
  CSink second;
  const DWORD cookie = Advise(*m_session.get(), second);
  ASSERT_EQ(Start(L"1 + 1"), S_OK);
  ASSERT_TRUE(PumpUntil(second, 1, kLongMs));
  EXPECT_EQ(m_sink.events.size(), 1u);
  Unadvise(*m_session.get(), cookie);
  EXPECT_EQ(second.References(), 0u);
  ASSERT_EQ(Start(L"1 + 2"), S_OK);
  ASSERT_TRUE(PumpUntil(m_sink, 2, kLongMs));
  EXPECT_EQ(second.events.size(), 1u);
}

TEST_F(AsyncHost, WithoutAsyncModeThereIsNoWindow) {
  const HWND window = SessionWindow();
  ASSERT_NE(window, nullptr);
  wchar_t title[64] = L"";
  EXPECT_GT(GetWindowTextW(window, title, 64), 0);
  EXPECT_STREQ(title, L"VSorrelCOMObjWindow");
  EXPECT_EQ(GetWindowLongPtrW(window, GWL_STYLE) & WS_VISIBLE, 0);
  EXPECT_EQ(m_session->DisableAsyncMode(), S_OK);
  EXPECT_EQ(SessionWindow(), nullptr);
  EXPECT_EQ(Start(L"1 + 1"), E_FAIL);
  EXPECT_EQ(RunText(*m_session.get(), L"1 + 1"), L"2");
}

TEST_F(AsyncHost, AsyncModeEndsWhileAQueryRuns) {
  ASSERT_EQ(Start(L"SELECT COUNT(*) FROM Slow(Duration=200).Entry"), S_OK);
  EXPECT_EQ(m_session->DisableAsyncMode(), S_OK);
  PumpFor(400);
  EXPECT_TRUE(m_sink.events.empty());
}

TEST_F(AsyncHost, ASessionGoesWhileTheMessageWaits) {
  ASSERT_EQ(Start(L"1 + 1"), S_OK);
  Sleep(300);
  Unadvise(*m_session.get(), m_cookie);
  m_session = {};
  PumpFor(50);
  EXPECT_TRUE(m_sink.events.empty());
}

// What a sink does in the event counts as if it came after it.
TEST_F(AsyncHost, ASinkCallsTheSession) {
  std::vector<std::function<void()>> steps = {
      [this] { EXPECT_EQ(Start(L"2 + 2"), S_OK); },
      [this] { EXPECT_EQ(RunText(*m_session.get(), L"10 + 10"), L"20"); },
      [this] {
        EXPECT_EQ(Start(kSlow), S_OK);
        EXPECT_EQ(m_session->CancelQuery(), S_OK);
      },
      [this] { EXPECT_EQ(m_session->DisableAsyncMode(), S_OK); }};
  size_t step = 0;
  m_sink.onEvent = [&] { steps[step++](); };
  ASSERT_EQ(Start(L"1 + 1"), S_OK);
  ASSERT_TRUE(PumpUntil(m_sink, 2, kLongMs));
  for (const wchar_t* query : {L"1 + 2", L"1 + 3"}) {
    const size_t before = m_sink.events.size();
    ASSERT_EQ(Start(query), S_OK);
    ASSERT_TRUE(PumpUntil(m_sink, before + 1, kLongMs));
  }
  PumpFor(50);
  EXPECT_EQ(step, steps.size());
  EXPECT_EQ(Start(L"1 + 1"), E_FAIL);
  m_sink.onEvent = nullptr;
}

TEST_F(AsyncHost, WarmingUpEndsWithTheSession) {
  EXPECT_EQ(m_session->InitDiagModule(CBstr(L"Slow").get(), CBstr(L"Duration=60000").get(), 0),
            S_OK);
  Unadvise(*m_session.get(), m_cookie);
  const DWORD start = GetTickCount();
  m_session = {};
  EXPECT_LT(GetTickCount() - start, 2000u);
}

// Against the rules of apartments, as programs are: the window stays for its own thread to destroy,
// and until then the library cannot go.
TEST_F(AsyncHost, TheLastReferenceGoesOnAnotherThread) {
  Unadvise(*m_session.get(), m_cookie);
  std::thread([session = m_session.Detach()] { session->Release(); }).join();
  EXPECT_TRUE(m_library.IsInUse());
  PumpFor(50);
  EXPECT_EQ(SessionWindow(), nullptr);
}

// The limit for a thread that does not stop, after which it is ended wherever it is.
TEST_F(AsyncHost, AQueryThatDoesNotLookIsEndedByForce) {
  m_unloads = false;  // what the thread held, it holds for ever
  ASSERT_EQ(Start(L"SELECT COUNT(*) FROM Deaf(Duration=60000).AngryEntry"), S_OK);
  PumpFor(100);
  const DWORD start = GetTickCount();
  EXPECT_EQ(m_session->CancelQuery(), S_OK);
  const DWORD took = GetTickCount() - start;
  EXPECT_GE(took, 9900u);
  EXPECT_LT(took, 15000u);
  ASSERT_EQ(Start(L"SELECT COUNT(*) FROM Test.Row WHERE Id = 1"), S_OK);
  ASSERT_TRUE(PumpUntil(m_sink, 1, kLongMs));
  EXPECT_EQ(m_sink.events.back().text, L"1");
}

}  // namespace
}  // namespace kestra::test
