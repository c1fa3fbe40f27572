// What goes wrong inside, or comes in wrong, ends in an HRESULT, and leaves no object behind.
#include <functional>

#include "tests/front/com/Host.h"

namespace kestra::test {
namespace {

class Failure : public testing::Test {
 protected:
  ~Failure() override {
    m_library.SetAngry(false);
    m_session = {};
    EXPECT_FALSE(m_library.IsInUse());
    EXPECT_TRUE(m_library.Unload());
  }
  void MakeSession() {
    m_session = m_library.MakeSession();
    m_session->DisableAsyncMode();
  }

  CApartment m_apartment;
  CLibrary m_library;
  CComPtr<ISorrelCOM> m_session;
};

TEST_F(Failure, ANullPlaceIsRefusedByEveryMember) {
  MakeSession();
  const auto value = RunValue(*m_session.get(), L"SELECT * FROM Test.Row WHERE Id = 1");
  CComPtr<IDispatch> vector;
  ASSERT_EQ(value->get_asVector(vector.Place()), S_OK);
  const auto values = As<IValuesCOM>(vector.get());
  const auto item = FirstItem(*m_session.get(), L"SELECT * FROM Test.Row WHERE Id = 1");
  ASSERT_TRUE(item);
  VARIANT itemList, paramList, param;
  ASSERT_EQ(item->get_DiagItems(&itemList), S_OK);
  ASSERT_EQ(item->get_Params(&paramList), S_OK);
  const auto items = As<IDiagItems>(itemList.pdispVal);
  const auto params = As<IDiagParams>(paramList.pdispVal);
  ASSERT_EQ(params->get_Item(1, &param), S_OK);
  const auto one = As<IDiagParam>(param.pdispVal);
  const auto container = As<IConnectionPointContainer>(m_session.get());
  CComPtr<IConnectionPoint> point;
  ASSERT_EQ(container->FindConnectionPoint(__uuidof(_SorrelEvents), point.Place()), S_OK);

  CComPtr<IUnknown> enumerator;
  ASSERT_EQ(params->get__NewEnum(enumerator.Place()), S_OK);
  const auto each = As<IEnumVARIANT>(enumerator.get());

  const std::pair<const char*, std::function<HRESULT()>> kCalls[] = {
      {"DiagRoot", [&] { return m_session->get_DiagRoot(nullptr); }},
      {"CheckQuerySyntax", [&] { return m_session->CheckQuerySyntax(nullptr, nullptr); }},
      {"RunQuerySync", [&] { return m_session->RunQuerySync(nullptr, NoEvent(), -1, nullptr); }},
      {"QueryInterface", [&] { return m_session->QueryInterface(__uuidof(IUnknown), nullptr); }},
      {"GetTypeInfo", [&] { return m_session->GetTypeInfo(0, 0, nullptr); }},
      {"GetTypeInfoCount", [&] { return m_session->GetTypeInfoCount(nullptr); }},
      {"GetIDsOfNames", [&] { return m_session->GetIDsOfNames(IID_NULL, nullptr, 1, 0, nullptr); }},
      {"Invoke",
       [&] {
         return m_session->Invoke(3, IID_NULL, 0, DISPATCH_METHOD, nullptr, nullptr, nullptr,
                                  nullptr);
       }},
      {"GetClassInfo",
       [&] { return As<IProvideClassInfo>(m_session.get())->GetClassInfo(nullptr); }},
      {"GetGUID",
       [&] {
         return As<IProvideClassInfo2>(m_session.get())
             ->GetGUID(GUIDKIND_DEFAULT_SOURCE_DISP_IID, nullptr);
       }},
      {"EnumConnectionPoints", [&] { return container->EnumConnectionPoints(nullptr); }},
      {"FindConnectionPoint",
       [&] { return container->FindConnectionPoint(__uuidof(_SorrelEvents), nullptr); }},
      {"Advise", [&] { return point->Advise(nullptr, nullptr); }},
      {"Advise without a place", [&] { return point->Advise(m_session.get(), nullptr); }},
      {"Advise without a sink",
       [&] {
         DWORD cookie = 0;
         return point->Advise(nullptr, &cookie);
       }},
      {"Next", [&] { return each->Next(2, nullptr, nullptr); }},
      {"Clone", [&] { return each->Clone(nullptr); }},
      {"EnumConnections", [&] { return point->EnumConnections(nullptr); }},
      {"GetConnectionInterface", [&] { return point->GetConnectionInterface(nullptr); }},
      {"GetConnectionPointContainer", [&] { return point->GetConnectionPointContainer(nullptr); }},
      {"IsUndefined", [&] { return value->get_IsUndefined(nullptr); }},
      {"IsError", [&] { return value->get_IsError(nullptr); }},
      {"IsBoolean", [&] { return value->get_IsBoolean(nullptr); }},
      {"asBool", [&] { return value->get_asBool(nullptr); }},
      {"IsNumber", [&] { return value->get_IsNumber(nullptr); }},
      {"asLong", [&] { return value->get_asLong(nullptr); }},
      {"IsString", [&] { return value->get_IsString(nullptr); }},
      {"asString", [&] { return value->get_asString(nullptr); }},
      {"IsDatime", [&] { return value->get_IsDatime(nullptr); }},
      {"asDatime", [&] { return value->get_asDatime(nullptr); }},
      {"IsVDiagItem", [&] { return value->get_IsVDiagItem(nullptr); }},
      {"asVDIagItem", [&] { return value->get_asVDIagItem(nullptr); }},
      {"IsVector", [&] { return value->get_IsVector(nullptr); }},
      {"asVector", [&] { return value->get_asVector(nullptr); }},
      {"ValuesCount", [&] { return values->get_ValuesCount(nullptr); }},
      {"Value", [&] { return values->get_Value(0, nullptr); }},
      {"item.Name", [&] { return item->get_Name(nullptr); }},
      {"DiagItems", [&] { return item->get_DiagItems(nullptr); }},
      {"Params", [&] { return item->get_Params(nullptr); }},
      {"Init", [&] { return item->Init(0, nullptr); }},
      {"XMLDump", [&] { return item->get_XMLDump(0, nullptr); }},
      {"items.Count", [&] { return items->get_Count(nullptr); }},
      {"items._NewEnum", [&] { return items->get__NewEnum(nullptr); }},
      {"items.Item", [&] { return items->get_Item(1, nullptr); }},
      {"params.Count", [&] { return params->get_Count(nullptr); }},
      {"params._NewEnum", [&] { return params->get__NewEnum(nullptr); }},
      {"params.Item", [&] { return params->get_Item(1, nullptr); }},
      {"param.Name", [&] { return one->get_Name(nullptr); }},
      {"StringValue", [&] { return one->get_StringValue(nullptr); }},
      {"DWordValue", [&] { return one->get_DWordValue(nullptr); }},
      {"Type", [&] { return one->get_Type(nullptr); }},
  };
  for (const auto& [name, call] : kCalls) EXPECT_EQ(call(), E_POINTER) << name;
  VariantClear(&param);
  VariantClear(&paramList);
  VariantClear(&itemList);
}

TEST_F(Failure, AThrowInAnyLayerEndsAtTheMethod) {
  MakeSession();
  const auto item = FirstItem(*m_session.get(), L"SELECT * FROM Angry.AngryEntry");
  ASSERT_TRUE(item);
  VARIANT list;
  ASSERT_EQ(item->get_Params(&list), S_OK);
  const auto params = As<IDiagParams>(list.pdispVal);
  m_library.SetAngry(true);

  CBstr text;
  long number = 0;
  VARIANT place = NoEvent();
  CComPtr<IUnknown> unknown;
  EXPECT_EQ(item->get_Name(text.Place()), E_FAIL);
  EXPECT_EQ(item->get_XMLDump(0, text.Place()), E_FAIL);
  EXPECT_EQ(text.get(), nullptr);
  EXPECT_EQ(item->Init(0, &number), E_FAIL);
  EXPECT_EQ(params->get_Count(&number), E_FAIL);
  EXPECT_EQ(params->get_Item(2, &place), E_FAIL);
  EXPECT_EQ(place.vt, VT_EMPTY);
  EXPECT_EQ(params->get__NewEnum(unknown.Place()), E_FAIL);
  EXPECT_FALSE(unknown);
  EXPECT_EQ(m_session->InitDiagModule(CBstr(L"Deaf").get(), nullptr, 0), E_FAIL);
  m_session->ReInitDiagRoot();
  EXPECT_EQ(RunText(*m_session.get(), L"SELECT * FROM Angry.AngryEntry").substr(0, 6), L"<ERROR");
  EXPECT_EQ(RunText(*m_session.get(), L"1 + 1"), L"2");

  m_library.SetAngry(false);
  EXPECT_EQ(params->get_Count(&number), S_OK);
  EXPECT_EQ(number, 2);
  EXPECT_EQ(RunText(*m_session.get(), L"SELECT Late FROM Angry.AngryEntry"), L"<Vector>");
  VariantClear(&list);
}

TEST_F(Failure, ASessionThatCannotBeMadeLeavesNothing) {
  CComPtr<IClassFactory> factory;
  ASSERT_EQ(m_library.ClassObject(__uuidof(SorrelCOM), __uuidof(IClassFactory),
                                  reinterpret_cast<void**>(factory.Place())),
            S_OK);
  CComPtr<IUnknown> made;
  void** place = reinterpret_cast<void**>(made.Place());
  m_library.SetAngry(true);
  EXPECT_EQ(factory->CreateInstance(nullptr, __uuidof(IUnknown), place), E_FAIL);
  m_library.SetAngry(false);
  EXPECT_EQ(factory->CreateInstance(factory.get(), __uuidof(IUnknown), place),
            CLASS_E_NOAGGREGATION);
  EXPECT_EQ(factory->CreateInstance(nullptr, __uuidof(IStream), place), E_NOINTERFACE);
  EXPECT_EQ(factory->CreateInstance(nullptr, __uuidof(IUnknown), nullptr), E_POINTER);
  EXPECT_FALSE(made);
  factory = {};
  EXPECT_FALSE(m_library.IsInUse());
}

TEST_F(Failure, ValuesOfAnotherKindAreNoItemsAndNoVectors) {
  MakeSession();
  CComPtr<IDispatch> inner;
  for (const wchar_t* query : {L"42", L"'text'", L"SELECT", L"1 = 1"}) {
    const auto value = RunFirst(*m_session.get(), query);
    EXPECT_EQ(value->get_asVector(inner.Place()), E_POINTER) << testing::PrintToString(query);
    EXPECT_EQ(value->get_asVDIagItem(inner.Place()), E_POINTER) << testing::PrintToString(query);
    EXPECT_FALSE(inner);
  }
}

using GetIds = HRESULT STDAPICALLTYPE(GUID*, GUID*);

TEST_F(Failure, TheExportsTakeNullsAndUnknownClasses) {
  for (const char* name : {"DllGetCLSIDs", "DllGetFRCLSIDs"}) {
    auto* const getIds = m_library.Export<GetIds>(name);
    GUID clsid{}, events{};
    EXPECT_EQ(getIds(nullptr, nullptr), S_OK);
    EXPECT_EQ(getIds(&clsid, nullptr), S_OK);
    EXPECT_EQ(getIds(nullptr, &events), S_OK);
    EXPECT_FALSE(IsEqualGUID(clsid, GUID{}));
    EXPECT_FALSE(IsEqualGUID(events, GUID{}));
  }
  CComPtr<IUnknown> factory;
  void** place = reinterpret_cast<void**>(factory.Place());
  EXPECT_EQ(m_library.ClassObject(__uuidof(IUnknown), __uuidof(IClassFactory), place),
            CLASS_E_CLASSNOTAVAILABLE);
  EXPECT_EQ(m_library.ClassObject(__uuidof(SorrelCOM), __uuidof(IStream), place), E_NOINTERFACE);
  EXPECT_EQ(m_library.ClassObject(__uuidof(SorrelCOM), __uuidof(IClassFactory), nullptr),
            E_POINTER);
}

TEST_F(Failure, LockServerKeepsTheLibrary) {
  CComPtr<IClassFactory> factory;
  ASSERT_EQ(m_library.ClassObject(__uuidof(SorrelCOM), __uuidof(IClassFactory),
                                  reinterpret_cast<void**>(factory.Place())),
            S_OK);
  EXPECT_EQ(factory->LockServer(TRUE), S_OK);
  factory = {};
  EXPECT_TRUE(m_library.IsInUse());
  ASSERT_EQ(m_library.ClassObject(__uuidof(SorrelCOM), __uuidof(IClassFactory),
                                  reinterpret_cast<void**>(factory.Place())),
            S_OK);
  EXPECT_EQ(factory->LockServer(FALSE), S_OK);
}

}  // namespace
}  // namespace kestra::test
