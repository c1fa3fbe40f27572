// Walking results: values, vectors, items and their properties, by the interfaces and by IDispatch.
#include "tests/front/com/Host.h"

namespace kestra::test {
namespace {

class Results : public testing::Test {
 protected:
  Results() : m_session(m_library.MakeSession()) { m_session->DisableAsyncMode(); }
  ~Results() override {
    m_session = {};
    EXPECT_FALSE(m_library.IsInUse());
    EXPECT_TRUE(m_library.Unload());
  }

  CApartment m_apartment;
  CLibrary m_library;
  CComPtr<ISorrelCOM> m_session;
};

// As a script does it; the HRESULT of the member, and the value for a property that has one.
HRESULT Get(IDispatch* pObject, const wchar_t* member, VARIANT* pResult,
            std::vector<VARIANT> arguments = {}) {
  auto* name = const_cast<wchar_t*>(member);
  DISPID id = 0;
  const HRESULT found = pObject->GetIDsOfNames(IID_NULL, &name, 1, LOCALE_USER_DEFAULT, &id);
  if (FAILED(found)) return found;
  DISPPARAMS params{arguments.data(), nullptr, static_cast<UINT>(arguments.size()), 0};
  VariantInit(pResult);
  EXCEPINFO exception{};
  const HRESULT result =
      pObject->Invoke(id, IID_NULL, LOCALE_USER_DEFAULT, DISPATCH_METHOD | DISPATCH_PROPERTYGET,
                      &params, pResult, &exception, nullptr);
  return result == DISP_E_EXCEPTION ? exception.scode : result;
}

long Number(IDispatch* pObject, const wchar_t* member) {
  VARIANT result;
  EXPECT_EQ(Get(pObject, member, &result), S_OK) << testing::PrintToString(member);
  EXPECT_EQ(result.vt, VT_I4) << testing::PrintToString(member);
  return result.lVal;
}

TEST_F(Results, AValueTellsItsKindAndConverts) {
  constexpr const wchar_t* kTests[] = {L"IsUndefined", L"IsError",  L"IsBoolean",   L"IsNumber",
                                       L"IsString",    L"IsDatime", L"IsVDiagItem", L"IsVector"};
  const struct {
    const wchar_t* query;
    const char* kinds;  // one letter for each test: "x" where it holds
    const wchar_t* text;
    long asLong, asBool;
  } kCases[] = {
      {L"SELECT Other FROM Test.Row WHERE Id = 3", "x.......", L"<NULL>", 0, 0},
      {L"SELECT", ".x......", L"<ERROR: Syntax error>", 0, 0},
      {L"1 = 1", "..x.....", L"True", 0, 1},
      {L"1 = 2", "..x.....", L"False", 0, 0},
      {L"42", "...x....", L"42", 42, 0},
      {L"'text'", "....x...", L"text", 0, 0},
      {L"'\x00E4\x4E2D'", "....x...", L"\x00E4\x4E2D", 0, 0},
      {L"SELECT MAX(Created) FROM Test.Row", ".....x..", L"2100-01-01 00:00:00", 0, 0},
      {L"SELECT * FROM Test.Row WHERE Id = 1", "......x.", L"<Diagnostics Item>", 0, 0},
  };
  for (const auto& test : kCases) {
    const auto value = RunFirst(*m_session.get(), test.query);
    ASSERT_TRUE(value) << testing::PrintToString(test.query);
    std::string kinds;
    for (const wchar_t* name : kTests) {
      const long answer = Number(value.get(), name);
      EXPECT_TRUE(answer == 0 || answer == -1) << answer;
      kinds += answer ? 'x' : '.';
    }
    EXPECT_EQ(kinds, test.kinds) << testing::PrintToString(test.query);
    EXPECT_EQ(TextOf(*value.get()), test.text);
    EXPECT_EQ(Number(value.get(), L"asLong"), test.asLong) << testing::PrintToString(test.query);
    EXPECT_EQ(Number(value.get(), L"asBool"), test.asBool) << testing::PrintToString(test.query);
  }
}

TEST_F(Results, AVectorIsCountedFromZeroAndCollectionsFromOne) {
  const auto value = RunValue(*m_session.get(), L"SELECT Id FROM Test.Row");
  CComPtr<IDispatch> vector, element;
  ASSERT_EQ(value->get_asVector(vector.Place()), S_OK);
  const auto values = As<IValuesCOM>(vector.get());
  long count = 0;
  ASSERT_EQ(values->get_ValuesCount(&count), S_OK);
  ASSERT_GT(count, 2);
  for (const long bad : {-1L, count, LONG_MIN, LONG_MAX}) {
    EXPECT_EQ(values->get_Value(bad, element.Place()), E_INVALIDARG) << bad;
    EXPECT_FALSE(element);
  }
  EXPECT_EQ(values->get_Value(0, element.Place()), S_OK);

  const auto item = FirstItem(*m_session.get(), L"SELECT * FROM Test.Row WHERE Id = 1");
  ASSERT_TRUE(item);
  for (const wchar_t* collection : {L"DiagItems", L"Params"}) {
    VARIANT list;
    ASSERT_EQ(Get(item.get(), collection, &list), S_OK);
    ASSERT_EQ(list.vt, VT_DISPATCH);
    const long length = Number(list.pdispVal, L"Count");
    EXPECT_GT(length, 0);
    for (const long bad : {0L, -1L, length + 1, LONG_MIN, LONG_MAX}) {
      VARIANT index, result;
      index.vt = VT_I4;
      index.lVal = bad;
      EXPECT_EQ(Get(list.pdispVal, L"Item", &result, {index}), E_INVALIDARG) << bad;
    }
    VariantClear(&list);
  }
}

// Fetches in pieces, over again, and from a copy; all see the same.
TEST_F(Results, EnumeratorsGiveTheList) {
  const auto item = FirstItem(*m_session.get(), L"SELECT * FROM Test.Row WHERE Id = 1");
  ASSERT_TRUE(item);
  VARIANT list, unknown;
  ASSERT_EQ(item->get_Params(&list), S_OK);
  ASSERT_EQ(Get(list.pdispVal, L"_NewEnum", &unknown), S_OK);
  const long count = Number(list.pdispVal, L"Count");
  const auto each = As<IEnumVARIANT>(unknown.punkVal);
  ASSERT_TRUE(each);
  ULONG fetched = 9;
  std::vector<VARIANT> some(static_cast<size_t>(count) + 1);
  EXPECT_EQ(each->Next(static_cast<ULONG>(count) + 1, some.data(), &fetched), S_FALSE);
  EXPECT_EQ(fetched, static_cast<ULONG>(count));
  const auto first = As<IDiagParam>(some[0].pdispVal);
  CBstr name;
  EXPECT_EQ(first->get_Name(name.Place()), S_OK);
  EXPECT_EQ(name.Text(), L"Id");
  for (ULONG i = 0; i < fetched; ++i) VariantClear(&some[i]);
  EXPECT_EQ(each->Next(1, some.data(), nullptr), S_FALSE);
  EXPECT_EQ(each->Reset(), S_OK);
  EXPECT_EQ(each->Skip(static_cast<ULONG>(count) - 1), S_OK);
  CComPtr<IEnumVARIANT> copy;
  EXPECT_EQ(each->Clone(copy.Place()), S_OK);
  EXPECT_EQ(copy->Next(1, some.data(), nullptr), S_OK);
  VariantClear(&some[0]);
  EXPECT_EQ(copy->Skip(1), S_FALSE);
  EXPECT_EQ(each->Skip(1), S_OK);
  VariantClear(&unknown);
  VariantClear(&list);
}

TEST_F(Results, APropertyHasNameTextNumberAndType) {
  const auto item = FirstItem(*m_session.get(), L"SELECT * FROM Test.Row WHERE Id = 1");
  ASSERT_TRUE(item);
  VARIANT list, param, index, result;
  ASSERT_EQ(item->get_Params(&list), S_OK);
  index.vt = VT_I4;
  const struct {
    long index;
    const wchar_t* name;
    const wchar_t* text;
    long number, type;
  } kCases[] = {{1, L"Id", L"", 1, 2}, {2, L"Text", L"Alpha one", 0, 1}};
  for (const auto& test : kCases) {
    index.lVal = test.index;
    ASSERT_EQ(Get(list.pdispVal, L"Item", &param, {index}), S_OK);
    for (const auto& [member, text] :
         {std::pair(L"Name", test.name), std::pair(L"StringValue", test.text)}) {
      ASSERT_EQ(Get(param.pdispVal, member, &result), S_OK);
      EXPECT_STREQ(result.bstrVal, text) << testing::PrintToString(member);
      VariantClear(&result);
    }
    EXPECT_EQ(Number(param.pdispVal, L"DWordValue"), test.number);
    EXPECT_EQ(Number(param.pdispVal, L"Type"), test.type);
    VariantClear(&param);
  }
  VariantClear(&list);
  CBstr itemName;
  EXPECT_EQ(item->get_Name(itemName.Place()), S_OK);
  EXPECT_EQ(itemName.Text(), L"Row");
}

TEST_F(Results, XMLDumpTakesTheFormatsAndDefaultsToReading) {
  const auto item = FirstItem(*m_session.get(), L"SELECT * FROM Test.Row WHERE Id = 1");
  ASSERT_TRUE(item);
  std::vector<std::wstring> texts;
  for (long format = 0; format <= 4; ++format) {
    CBstr text;
    EXPECT_EQ(item->get_XMLDump(format, text.Place()), S_OK);
    EXPECT_FALSE(text.Text().empty()) << format;
    texts.push_back(text.Text());
  }
  for (const long bad : {-1L, 5L, LONG_MAX}) {
    CBstr text;
    EXPECT_EQ(item->get_XMLDump(bad, text.Place()), S_OK);
    EXPECT_TRUE(text.Text().empty()) << bad;
  }
  VARIANT byDefault;
  ASSERT_EQ(Get(item.get(), L"XMLDump", &byDefault), S_OK);
  EXPECT_EQ(byDefault.bstrVal, texts[0]);
  EXPECT_NE(texts[0], texts[1]);
  VariantClear(&byDefault);
}

// What was taken out of a result lives on without it, and without the session.
TEST_F(Results, AnItemOutlivesItsResult) {
  auto item = FirstItem(*m_session.get(), L"SELECT * FROM Test.Row WHERE Id = 1");
  ASSERT_TRUE(item);
  m_session->ReInitDiagRoot();
  m_session = {};
  VARIANT params;
  ASSERT_EQ(item->get_Params(&params), S_OK);
  item = {};
  EXPECT_GT(Number(params.pdispVal, L"Count"), 0);
  EXPECT_TRUE(m_library.IsInUse());
  VariantClear(&params);
}

TEST_F(Results, TheTypeLibraryDescribesTheSession) {
  CComPtr<ITypeInfo> info;
  ASSERT_EQ(As<IProvideClassInfo>(m_session.get())->GetClassInfo(info.Place()), S_OK);
  TYPEATTR* pAttributes = nullptr;
  ASSERT_EQ(info->GetTypeAttr(&pAttributes), S_OK);
  EXPECT_TRUE(IsEqualGUID(pAttributes->guid, __uuidof(SorrelCOM)));
  EXPECT_EQ(pAttributes->cImplTypes, 2);
  info->ReleaseTypeAttr(pAttributes);
  GUID events{};
  EXPECT_EQ(
      As<IProvideClassInfo2>(m_session.get())->GetGUID(GUIDKIND_DEFAULT_SOURCE_DISP_IID, &events),
      S_OK);
  EXPECT_TRUE(IsEqualGUID(events, __uuidof(_SorrelEvents)));
  VARIANT root;
  EXPECT_EQ(Get(m_session.get(), L"DiagRoot", &root), S_OK);
  EXPECT_EQ(root.vt, VT_EMPTY);
}

}  // namespace
}  // namespace kestra::test
