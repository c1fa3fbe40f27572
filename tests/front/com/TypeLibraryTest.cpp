// What hosts are built against, word for word: identifiers, dispatch ids, names, kinds, parameters
// and defaults. None of it may ever change.
#include <map>

#include "tests/front/com/Host.h"

namespace kestra::test {
namespace {

struct Member {
  long id;
  std::wstring name;
  const char* kind;              // "get", "method" or "event"
  std::vector<VARTYPE> types{};  // of the parameters; one that is handed out has VT_BYREF
  std::vector<long> defaults{};  // of the optional ones
};

struct Described {
  const wchar_t* name;
  const wchar_t* guid;
  TYPEKIND kind;
  std::vector<Member> members{};
};

constexpr VARTYPE kOut = VT_BYREF;

const Described kLibrary[] = {
    {L"SorrelCOM", L"{511A59C1-2C14-4894-BCCD-5ECCFA1D3FF8}", TKIND_COCLASS},
    {L"ValueCOM", L"{41C70BD8-82B8-43CF-9685-49725950B1A2}", TKIND_COCLASS},
    {L"ValuesCOM", L"{C83D1A35-2A17-4690-91D1-C19164E59C4E}", TKIND_COCLASS},
    {L"LanternCOM", L"{847C19F2-96BA-4185-B897-4CEC8C5934D2}", TKIND_COCLASS},
    {L"ISorrelCOM",
     L"{112E64AF-CB0C-4FC4-8071-3569E64417D5}",
     TKIND_DISPATCH,
     {{1, L"DiagRoot", "get", {kOut | VT_VARIANT}},
      {2, L"RunQuery", "method", {VT_BSTR, VT_I4}},
      {3, L"ReInitDiagRoot", "method"},
      {4, L"SetPluginsDir", "method", {VT_BSTR}},
      {5, L"ClearPlugins", "method"},
      {6, L"CheckQuerySyntax", "method", {VT_BSTR, kOut | VT_I4}},
      {7, L"CancelQuery", "method"},
      {8, L"InitDiagModule", "method", {VT_BSTR, VT_BSTR, VT_I4}},
      {9, L"AllowActive", "method", {VT_I4}},
      {10, L"RunQuerySync", "method", {VT_BSTR, VT_VARIANT, VT_I4, kOut | VT_VARIANT}},
      {11, L"DisableAsyncMode", "method"}}},
    {L"_SorrelEvents",
     L"{54CB085C-04AF-4FE0-8F84-12AC4707F89D}",
     TKIND_DISPATCH,
     {{1, L"OnQueryComplete", "event", {VT_VARIANT}}}},
    {L"IValueCOM",
     L"{CC965C9B-AA15-4C9F-9280-57497E5BB4D8}",
     TKIND_DISPATCH,
     {{1, L"IsUndefined", "get", {kOut | VT_I4}},
      {2, L"IsError", "get", {kOut | VT_I4}},
      {3, L"IsBoolean", "get", {kOut | VT_I4}},
      {4, L"asBool", "get", {kOut | VT_I4}},
      {5, L"IsNumber", "get", {kOut | VT_I4}},
      {6, L"asLong", "get", {kOut | VT_I4}},
      {7, L"IsString", "get", {kOut | VT_I4}},
      {8, L"asString", "get", {kOut | VT_BSTR}},
      {9, L"IsDatime", "get", {kOut | VT_I4}},
      {10, L"asDatime", "get", {kOut | VT_I4}},
      {11, L"IsVDiagItem", "get", {kOut | VT_I4}},
      {12, L"asVDIagItem", "get", {kOut | VT_DISPATCH}},
      {13, L"IsVector", "get", {kOut | VT_I4}},
      {14, L"asVector", "get", {kOut | VT_DISPATCH}}}},
    {L"IValuesCOM",
     L"{2CBBF1AB-D233-4440-8E4E-3E5044E8B1C9}",
     TKIND_DISPATCH,
     {{1, L"ValuesCount", "get", {kOut | VT_I4}},
      {2, L"Value", "get", {VT_I4, kOut | VT_DISPATCH}}}},
    {L"IDiagItem",
     L"{26419AEF-F5AB-4149-877D-831DFAA01D87}",
     TKIND_DISPATCH,
     {{1, L"Name", "get", {kOut | VT_BSTR}},
      {2, L"DiagItems", "get", {kOut | VT_VARIANT}},
      {3, L"Params", "get", {kOut | VT_VARIANT}},
      {4, L"Init", "method", {VT_I4, kOut | VT_I4}},
      {5, L"XMLDump", "get", {VT_I4, kOut | VT_BSTR}, {0}}}},
    {L"IDiagItems",
     L"{D2733F1A-808E-43B9-9C20-FDC8E298D272}",
     TKIND_DISPATCH,
     {{1, L"Count", "get", {kOut | VT_I4}},
      {-4, L"_NewEnum", "get", {kOut | VT_UNKNOWN}},
      {0, L"Item", "get", {VT_I4, kOut | VT_VARIANT}}}},
    {L"IDiagParams",
     L"{1CD1E25E-E26E-4A8E-A976-F455796DEE95}",
     TKIND_DISPATCH,
     {{1, L"Count", "get", {kOut | VT_I4}},
      {-4, L"_NewEnum", "get", {kOut | VT_UNKNOWN}},
      {0, L"Item", "get", {VT_I4, kOut | VT_VARIANT}}}},
    {L"IDiagParam",
     L"{D12374FA-4C67-4C59-A295-BF73A3CCA221}",
     TKIND_DISPATCH,
     {{1, L"Name", "get", {kOut | VT_BSTR}},
      {2, L"StringValue", "get", {kOut | VT_BSTR}},
      {3, L"DWordValue", "get", {kOut | VT_I4}},
      {4, L"Type", "get", {kOut | VT_I4}}}},
    {L"ILanternCOM",
     L"{6B148CE1-DB9C-42B6-9565-F9237B560E14}",
     TKIND_DISPATCH,
     {{1, L"Init", "method", {VT_BSTR, VT_BSTR, VT_BSTR, VT_BSTR}},
      {2, L"Post", "method", {VT_BSTR, VT_BSTR, VT_I4}, {2}},
      {3, L"Cancel", "method"},
      {4, L"View", "method", {VT_I4}, {0}}}},
    {L"_ILanternPostEvents",
     L"{7C5ED535-99D3-45F7-AA94-1E7E9DF8C201}",
     TKIND_DISPATCH,
     {{1, L"OnFinished", "event", {VT_I4, VT_BSTR}},
      {2, L"OnError", "event", {VT_I4, VT_BSTR}},
      {3, L"OnProgress", "event", {VT_I4, VT_I4, VT_I4, VT_BSTR}}}},
};

VARTYPE TypeOf(const TYPEDESC& type) {
  if (type.vt != VT_PTR) return type.vt;
  const TYPEDESC& inner = *type.lptdesc;
  if (inner.vt != VT_PTR) return static_cast<VARTYPE>(kOut | inner.vt);
  return static_cast<VARTYPE>(kOut | inner.lptdesc->vt);
}

// As it stands in the table above. An interface of OLE's is told by the library's own reference.
Member Describe(ITypeInfo& info, const FUNCDESC& function, bool isEvent) {
  Member member{function.memid, L"", "method"};
  if (isEvent) member.kind = "event";
  if (function.invkind == INVOKE_PROPERTYGET) member.kind = "get";
  CBstr name;
  info.GetDocumentation(function.memid, name.Place(), nullptr, nullptr, nullptr);
  member.name = name.Text();
  for (SHORT i = 0; i < function.cParams; ++i) {
    const ELEMDESC& element = function.lprgelemdescParam[i];
    member.types.push_back(TypeOf(element.tdesc));
    if (element.paramdesc.wParamFlags & PARAMFLAG_FHASDEFAULT) {
      member.defaults.push_back(element.paramdesc.pparamdescex->varDefaultValue.lVal);
    }
  }
  return member;
}

// The interface as the compiler sees it: with its out parameters.
CComPtr<ITypeInfo> WithOutParameters(ITypeInfo& info) {
  HREFTYPE reference = 0;
  CComPtr<ITypeInfo> other;
  if (SUCCEEDED(info.GetRefTypeOfImplType(static_cast<UINT>(-1), &reference))) {
    info.GetRefTypeInfo(reference, other.Place());
  }
  return other ? other : CComPtr<ITypeInfo>(&info);
}

std::string Told(const Member& member) {
  std::string text = std::to_string(member.id) + " " + member.kind + " " +
                     std::string(member.name.begin(), member.name.end()) + "(";
  for (const VARTYPE type : member.types)
    text += std::to_string(type & ~VT_BYREF) + (type & kOut ? "*," : ",");
  for (const long value : member.defaults) text += "=" + std::to_string(value);
  return text + ")";
}

void Compare(ITypeInfo& info, const Described& described) {
  const auto whole = WithOutParameters(info);
  const bool isEvent = described.name[0] == L'_';
  TYPEATTR* pAttributes = nullptr;
  ASSERT_EQ(whole->GetTypeAttr(&pAttributes), S_OK);
  std::map<std::string, int> found;
  for (WORD i = 0; i < pAttributes->cFuncs; ++i) {
    FUNCDESC* pFunction = nullptr;
    ASSERT_EQ(whole->GetFuncDesc(i, &pFunction), S_OK);
    // IDispatch's own are there too where its base is not told apart.
    if (pFunction->memid < 0x60000000) {
      Member member = Describe(*whole.get(), *pFunction, isEvent);
      for (VARTYPE& type : member.types) {
        if (type == (kOut | VT_USERDEFINED)) {
          type = member.id == -4 ? kOut | VT_UNKNOWN : kOut | VT_DISPATCH;
        }
      }
      ++found[Told(member)];
    }
    whole->ReleaseFuncDesc(pFunction);
  }
  whole->ReleaseTypeAttr(pAttributes);
  std::map<std::string, int> expected;
  for (const Member& member : described.members) ++expected[Told(member)];
  EXPECT_EQ(found, expected) << testing::PrintToString(described.name);
}

TEST(TypeLibrary, IsWhatHostsAreBuiltAgainst) {
  const CApartment apartment;
  CComPtr<ITypeLib> library;
  ASSERT_EQ(LoadTypeLibEx(KESTRA_PRODUCT, REGKIND_NONE, library.Place()), S_OK);
  CBstr name;
  library->GetDocumentation(-1, name.Place(), nullptr, nullptr, nullptr);
  EXPECT_EQ(name.Text(), L"SORRELLib");
  TLIBATTR* pAttributes = nullptr;
  ASSERT_EQ(library->GetLibAttr(&pAttributes), S_OK);
  wchar_t text[64] = L"";
  StringFromGUID2(pAttributes->guid, text, 64);
  EXPECT_STREQ(text, L"{7C42EBB5-02F1-40B9-A9E9-4D197F8DCCE8}");
  library->ReleaseTLibAttr(pAttributes);
  EXPECT_EQ(library->GetTypeInfoCount(), std::size(kLibrary));

  for (const Described& described : kLibrary) {
    GUID guid{};
    ASSERT_EQ(CLSIDFromString(described.guid, &guid), S_OK);
    CComPtr<ITypeInfo> info;
    ASSERT_EQ(library->GetTypeInfoOfGuid(guid, info.Place()), S_OK)
        << testing::PrintToString(described.name);
    CBstr typeName;
    info->GetDocumentation(-1, typeName.Place(), nullptr, nullptr, nullptr);
    EXPECT_EQ(typeName.Text(), described.name);
    TYPEATTR* pType = nullptr;
    ASSERT_EQ(info->GetTypeAttr(&pType), S_OK);
    EXPECT_EQ(pType->typekind, described.kind) << testing::PrintToString(described.name);
    const bool isDual = (pType->wTypeFlags & TYPEFLAG_FDUAL) != 0;
    info->ReleaseTypeAttr(pType);
    if (described.kind == TKIND_COCLASS) continue;
    EXPECT_EQ(isDual, described.name[0] == L'I') << testing::PrintToString(described.name);
    Compare(*info.get(), described);
  }
}

TEST(Product, CarriesItsResources) {
  const HMODULE module = LoadLibraryExW(KESTRA_PRODUCT, nullptr, LOAD_LIBRARY_AS_DATAFILE);
  ASSERT_NE(module, nullptr);
  const struct {
    const wchar_t* name;
    const wchar_t* type;
  } kResources[] = {{MAKEINTRESOURCEW(1), L"TYPELIB"},
                    {MAKEINTRESOURCEW(204), L"REGISTRY"},
                    {L"LANTERN_PUBLICKEY", L"PUBLICKEY"},
                    {MAKEINTRESOURCEW(1), MAKEINTRESOURCEW(16)}};  // the version
  for (const auto& resource : kResources) {
    EXPECT_NE(FindResourceW(module, resource.name, resource.type), nullptr);
  }
  wchar_t word[32] = L"";
  EXPECT_GT(LoadStringW(module, 100, word, 32), 0);
  EXPECT_STREQ(word, L"Kestra");
  FreeLibrary(module);
}

}  // namespace
}  // namespace kestra::test
