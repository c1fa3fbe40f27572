// Synchronous queries, and what ends them.
#include <atomic>
#include <thread>
#include <tuple>

#include "tests/front/com/Host.h"

namespace kestra::test {
namespace {

class SyncHost : public testing::Test {
 protected:
  SyncHost() : m_session(m_library.MakeSession()) { m_session->DisableAsyncMode(); }
  ~SyncHost() override {
    m_session = {};
    EXPECT_FALSE(m_library.IsInUse());
    EXPECT_TRUE(m_library.Unload());
  }
  // The text of a slow query that is given this event; the time is bounded by the query's own.
  std::wstring RunSlow(VARIANT event, long timeOut) {
    VARIANT result = NoEvent();
    EXPECT_EQ(m_session->RunQuerySync(CBstr(kSlow).get(), event, timeOut, &result), S_OK);
    const auto value = As<IValueCOM>(result.vt == VT_DISPATCH ? result.pdispVal : nullptr);
    VariantClear(&result);
    return value ? TextOf(*value.get()) : L"no value";
  }

  CApartment m_apartment;
  CLibrary m_library;
  CComPtr<ISorrelCOM> m_session;
};

TEST_F(SyncHost, AnEventOfTheHostsEndsAQuery) {
  const wchar_t* const kName = L"kestra-test-termination-\x00E4";
  const HANDLE event = CreateEventW(nullptr, TRUE, TRUE, kName);
  ASSERT_NE(event, nullptr);
  CBstr name(kName);
  VARIANT byName = NoEvent(), byHandle = NoEvent(), byReference = NoEvent();
  byName.vt = VT_BSTR;
  byName.bstrVal = name.get();
  byHandle.vt = VT_UI4;
  byHandle.ulVal = static_cast<ULONG>(reinterpret_cast<ULONG_PTR>(event));
  byReference.vt = VT_BYREF | VT_VARIANT;
  byReference.pvarVal = &byName;
  const std::pair<const char*, VARIANT> kCases[] = {
      {"name", byName}, {"handle", byHandle}, {"reference", byReference}};
  for (const auto& [what, given] : kCases) {
    const DWORD start = GetTickCount();
    EXPECT_EQ(RunSlow(given, -1), L"<ERROR>") << what;
    EXPECT_LT(GetTickCount() - start, 5000u) << what;
    EXPECT_EQ(WaitForSingleObject(event, 0), WAIT_OBJECT_0) << what;  // still open, still set
  }
  CloseHandle(event);
}

// What is no event of the host's leaves the session's own, which CancelQuery sets.
TEST_F(SyncHost, OtherwiseCancelQueryEndsIt) {
  CBstr unknown(L"kestra-no-event-bears-this-name"), empty(L"");
  VARIANT kCases[5];
  for (VARIANT& given : kCases) given = NoEvent();
  kCases[0].vt = VT_BSTR;
  kCases[0].bstrVal = unknown.get();
  kCases[1].vt = VT_BSTR;
  kCases[1].bstrVal = empty.get();
  kCases[2].vt = VT_I4;  // a number, but not VT_UI4
  kCases[2].lVal = 4;
  kCases[3].vt = VT_ERROR;  // how a script leaves an argument out
  kCases[3].scode = DISP_E_PARAMNOTFOUND;
  for (const VARIANT& given : kCases) {
    EXPECT_EQ(m_session->CancelQuery(), S_OK);  // an old one counts for nothing
    std::atomic<bool> isOver{false};
    std::thread canceller([&] {
      while (!isOver) {  // one that comes before the query begins counts for nothing
        Sleep(50);
        m_session->CancelQuery();
      }
    });
    EXPECT_EQ(RunSlow(given, -1), L"<ERROR>") << given.vt;
    isOver = true;
    canceller.join();
  }
}

TEST_F(SyncHost, CheckQuerySyntaxNeverRuns) {
  const std::pair<const wchar_t*, long> kCases[] = {
      {L"1 + 1", -1}, {L"DELETE Test.Part WHERE Number = 1", -1}, {L"SELECT", 0},
      {L"", 0},       {L"SELECT Nope FROM Test.Row", 0},
  };
  for (const auto& [query, good] : kCases) {
    long answer = 5;
    EXPECT_EQ(m_session->CheckQuerySyntax(CBstr(query).get(), &answer), S_OK);
    EXPECT_EQ(answer, good) << testing::PrintToString(query);
  }
  long answer = 5;
  EXPECT_EQ(m_session->CheckQuerySyntax(nullptr, &answer), S_OK);  // a null BSTR is an empty text
  EXPECT_EQ(answer, 0);
}

TEST_F(SyncHost, TextsAreExplained) {
  const struct {
    const wchar_t* query;
    HRESULT result;
    long error, line, column;
    const wchar_t* suggestions;
  } kCases[] = {
      {L"1 + 1", S_FALSE, 0, 0, 0, L""},
      {L"SELECT id\nFROM Test.Row", S_OK, 1, 1, 8, L"Id"},
      {L"SELECT Id\nFROM Test.Row WHERE \x00E4 = 1", S_OK, 1, 2, 21, L""},
      {L"SELECT Id FROM Test.Row WHERE Text LIKE 'a%'", S_OK, 0, 1, 41, L"'a*'"},
  };
  const auto diagnosis = As<ISorrelDiagnosis>(m_session.get());
  ASSERT_NE(diagnosis.get(), nullptr);
  for (const auto& test : kCases) {
    long error = 7, line = 7, column = 7;
    CBstr suggestions, sentence;
    EXPECT_EQ(diagnosis->Diagnose(CBstr(test.query).get(), &error, &line, &column,
                                  suggestions.Place(), sentence.Place()),
              test.result);
    EXPECT_EQ(std::tie(error, line, column), std::tie(test.error, test.line, test.column))
        << testing::PrintToString(test.query);
    EXPECT_EQ(suggestions.Text().substr(0, wcslen(test.suggestions)), test.suggestions);
    EXPECT_EQ(sentence.Text().empty(), test.result == S_FALSE);
  }
  CBstr sentence;  // the rest may be null, and the sentence may not
  CBstr wrong(L"SELECT");
  EXPECT_EQ(diagnosis->Diagnose(wrong.get(), nullptr, nullptr, nullptr, nullptr, sentence.Place()),
            S_OK);
  EXPECT_EQ(diagnosis->Diagnose(wrong.get(), nullptr, nullptr, nullptr, nullptr, nullptr),
            E_POINTER);
}

TEST_F(SyncHost, NothingIsChangedUnlessAllowed) {
  const wchar_t* const kUpdate = L"UPDATE Test.Row SET Text='new' WHERE Id = 1";
  EXPECT_EQ(RunText(*m_session.get(), kUpdate).substr(0, 24), L"<ERROR: Message Id: 1101");
  m_session->AllowActive(5);
  EXPECT_EQ(TextOf(*RunFirst(*m_session.get(), kUpdate).get()), L"1");
  m_session->AllowActive(0);
  EXPECT_EQ(RunText(*m_session.get(), kUpdate).substr(0, 7), L"<ERROR:");
}

TEST_F(SyncHost, InitDiagModuleWarmsUp) {
  const struct {
    const wchar_t* module;
    const wchar_t* args;
    HRESULT result;
  } kCases[] = {
      {L"Many", L"Count=5", S_OK}, {L"many", L"", S_OK},   {L"NoSuchModule", L"", E_POINTER},
      {L"", L"", E_POINTER},       {L"Throws", L"", S_OK},  // the filling is on a thread of its own
  };
  for (const auto& test : kCases) {
    EXPECT_EQ(m_session->InitDiagModule(CBstr(test.module).get(), CBstr(test.args).get(), 0),
              test.result)
        << testing::PrintToString(test.module);
  }
  EXPECT_EQ(RunText(*m_session.get(), L"SELECT COUNT(*) FROM Many(Count=5).Entry"), L"5");
}

}  // namespace
}  // namespace kestra::test
