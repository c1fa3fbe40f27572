// The guarded operations of items: in which order they check, and what they call.
#include <gtest/gtest.h>

#include <functional>
#include <stdexcept>
#include <string>
#include <vector>

#include "model/classes/Class.h"
#include "model/items/Item.h"
#include "platform/os/Thread.h"

namespace kestra::test {
namespace {

constexpr ParamDecl kProbeParams[] = {
    {.name = "Fixed", .type = ParamType::Enum, .text = "A|B"},
    {.name = "Free", .type = ParamType::Enum, .text = "A|B", .canBeChanged = true},
};
constexpr ArgDecl kTouchArgs[] = {
    {.name = "Step", .type = ParamType::Dword, .defaultNumber = 1},
    {.name = "Note", .type = ParamType::String, .defaultText = "x"},
    {.name = "Mode", .type = ParamType::Enum, .text = "Off|On", .defaultNumber = 0},
};
constexpr ActionDecl kProbeActions[] = {{.name = "Touch", .args = kTouchArgs}, {.name = "Rest"}};
constinit const ClassDecl kOpenChild{.name = "OpenChild", .canBeAddedAndDeleted = true};
constinit const ClassDecl kClosedChild{.name = "ClosedChild"};
constexpr const ClassDecl* kProbeChildren[] = {&kOpenChild, &kClosedChild};
constinit const ClassDecl kOpen{.name = "Open",
                                .params = kProbeParams,
                                .children = kProbeChildren,
                                .canBeAddedAndDeleted = true,
                                .actions = kProbeActions};
constinit const ClassDecl kClosed{
    .name = "Closed", .params = kProbeParams, .children = kProbeChildren};

// Writes down which hooks were called.
class CProbe : public CVDiagItem {
 public:
  explicit CProbe(const ClassDecl& decl) : CVDiagItem(decl.Get()->Params), m_poClass(decl.Get()) {}
  const std::string& GetName() override { return m_poClass->Name; }
  Ref<DiagClass> GetTypeInfo() override { return m_poClass; }
  Ref<DiagActions> GetActions() override { return m_poClass->Actions; }
  using CVDiagItem::Init;
  bool Init(bool bInitChild, QueryMessage& message) override {
    calls += bInitChild ? "init+ " : "init ";
    if (onInit) onInit(message);
    return IsInitialized = answer;
  }

  std::string calls;
  bool answer = true;
  std::function<void(QueryMessage&)> onInit;

 protected:
  bool OnUpdate(const DiagParams& params, QueryMessage&) override {
    calls += "update " + std::to_string(params.Count()) + " ";
    return answer;
  }
  bool OnDelete(QueryMessage&) override {
    calls += "delete ";
    return answer;
  }
  bool OnAddOfType(const std::string& newItemType, const DiagParams&, QueryMessage&) override {
    calls += "add " + newItemType + " ";
    return answer;
  }
  bool OnExecute(const std::string& actionName, const DiagParams& args, QueryMessage&) override {
    calls += actionName + "(";
    for (size_t i = 0; i < args.Count(); ++i) {
      const DiagParam& arg = *args.Get(i);
      calls += arg.Def->Name + "=" + std::to_string(arg.DWordValue) + arg.StringValue + " ";
    }
    calls += ") ";
    return answer;
  }

 private:
  Ref<DiagClass> m_poClass;
};

Ref<QueryMessage> Message(bool allowActive, bool isTerminated) {
  const auto event = MakeRef<os::CEvent>();
  if (isTerminated) event->Set();
  return MakeRef<QueryMessage>(event, allowActive);
}

// "" for success, else what the message tells: "11012 Open", "error 1223", "-" for nothing.
std::string Outcome(bool result, const QueryMessage& message) {
  if (result) return message.Success ? "" : "a message with success";
  if (message.SystemError) return "error " + std::to_string(message.SystemError);
  if (message.MessageId == 0) return "-";
  std::string text = std::to_string(message.MessageId);
  for (const std::string& insert : message.Args) text += " " + insert;
  return text;
}

DiagParams ParamsOf(const ClassDecl& decl,
                    std::initializer_list<std::pair<const char*, uint32_t>> values) {
  DiagParams params{Ref<const DiagParamDefs>(decl.Get()->Params)};
  for (const auto& [pName, number] : values) params.SetNumber(pName, number);
  return params;
}

TEST(Item, UpdateChecksInOrder) {
  const struct {
    bool allowActive, isTerminated;
    DiagParams params;
    const char* pOutcome;
    const char* pCalls;
  } cases[] = {
      {false, true, ParamsOf(kOpen, {{"Fixed", 9}}), "11015", ""},
      {true, true, ParamsOf(kOpen, {{"Free", 9}, {"Fixed", 0}}), "11011 Fixed", ""},
      {true, true, ParamsOf(kOpen, {{"Free", 2}}), "11002 Free ", ""},
      {true, true, ParamsOf(kOpen, {{"Free", 1}}), "error 1223", ""},
      {true, false, ParamsOf(kOpen, {{"Free", 1}}), "", "update 1 "},
      {true, false, ParamsOf(kOpen, {}), "", "update 0 "},
  };
  for (const auto& c : cases) {
    const auto item = MakeRef<CProbe>(kOpen);
    const auto message = Message(c.allowActive, c.isTerminated);
    EXPECT_EQ(Outcome(item->Update(c.params, *message), *message), c.pOutcome);
    EXPECT_EQ(item->calls, c.pCalls) << c.pOutcome;
  }
}

TEST(Item, DeleteChecksInOrder) {
  const struct {
    const ClassDecl* pClass;
    bool allowActive, isTerminated, answer;
    const char* pOutcome;
    const char* pCalls;
  } cases[] = {
      {&kClosed, false, true, true, "11015", ""},
      {&kClosed, true, true, true, "11012 Closed", ""},
      {&kOpen, true, true, true, "error 1223", ""},
      {&kOpen, true, false, true, "", "delete "},
      {&kOpen, true, false, false, "-", "delete "},
  };
  for (const auto& c : cases) {
    const auto item = MakeRef<CProbe>(*c.pClass);
    item->answer = c.answer;
    const auto message = Message(c.allowActive, c.isTerminated);
    EXPECT_EQ(Outcome(item->Delete(*message), *message), c.pOutcome);
    EXPECT_EQ(item->calls, c.pCalls) << c.pOutcome;
  }
}

TEST(Item, AddChecksInOrder) {
  const struct {
    const ClassDecl* pClass;
    bool allowActive, isTerminated;
    const char* pType;
    uint32_t number;  // 2 is invalid
    const char* pOutcome;
    const char* pCalls;
  } cases[] = {
      {&kOpen, false, true, "ClosedChild", 2, "11015", ""},
      {&kOpen, true, true, "cLOSEDcHILD", 2, "11013 Open", ""},
      {&kClosed, true, true, "Closed", 2, "11013 Closed", ""},
      {&kOpen, true, true, "OpenChild", 2, "11002 Free ", ""},
      {&kOpen, true, true, "OpenChild", 1, "error 1223", ""},
      {&kOpen, true, false, "OpenChild", 1, "", "add OpenChild "},
      {&kClosed, true, false, "OpenChild", 1, "", "add OpenChild "},
      {&kOpen, true, false, "NoSuch", 1, "", "add NoSuch "},  // the hook decides
  };
  for (const auto& c : cases) {
    const auto item = MakeRef<CProbe>(*c.pClass);
    const auto message = Message(c.allowActive, c.isTerminated);
    const DiagParams params = ParamsOf(kOpen, {{"Free", c.number}});
    EXPECT_EQ(Outcome(item->Add(c.pType, params, *message), *message), c.pOutcome) << c.pType;
    EXPECT_EQ(item->calls, c.pCalls) << c.pType;
  }
}

TEST(Item, ExecuteChecksInOrderAndFillsInDefaults) {
  const Ref<const DiagParamDefs> touch = kOpen.Get()->Actions->Find("Touch", false)->Args->Defs();
  DiagParams none(touch), some(touch), twice(touch), foreign = ParamsOf(kOpen, {{"Free", 1}});
  some.SetText("Note", "new");
  some.SetNumber("Mode", 1);
  twice.SetNumber("Step", 5);
  twice.SetNumber("Step", 6);
  const struct {
    const ClassDecl* pClass;
    bool allowActive, isTerminated;
    const char* pAction;
    const DiagParams* pArgs;
    const char* pOutcome;
    const char* pCalls;
  } cases[] = {
      {&kOpen, false, true, "NoSuch", &foreign, "11015", ""},
      {&kOpen, true, true, "NoSuch", &foreign, "11014 Open NoSuch", ""},
      {&kClosed, true, true, "Touch", &foreign, "11014 Closed Touch", ""},
      {&kOpen, true, false, "Touch", &foreign, "-", ""},
      {&kOpen, true, true, "Touch", nullptr, "error 1223", ""},
      {&kOpen, true, false, "Touch", nullptr, "", "Touch(Step=1 Note=0x Mode=0 ) "},
      {&kOpen, true, false, "tOUCH", &none, "", "tOUCH(Step=1 Note=0x Mode=0 ) "},
      {&kOpen, true, false, "Touch", &some, "", "Touch(Step=1 Note=0new Mode=1 ) "},
      {&kOpen, true, false, "Touch", &twice, "", "Touch(Step=6 Note=0x Mode=0 ) "},
      {&kOpen, true, false, "Rest", nullptr, "", "Rest() "},
      {&kOpen, true, false, "Rest", &none, "-", ""},
  };
  for (const auto& c : cases) {
    const auto item = MakeRef<CProbe>(*c.pClass);
    const auto message = Message(c.allowActive, c.isTerminated);
    EXPECT_EQ(Outcome(item->Execute(c.pAction, c.pArgs, *message), *message), c.pOutcome);
    EXPECT_EQ(item->calls, c.pCalls) << c.pAction;
  }
  EXPECT_EQ(kOpen.Get()->Actions->Find("Touch", false)->Args->Get(0)->DWordValue, 1u);
}

// An item that overrides nothing: it can do nothing, and says so without a message.
TEST(Item, BaseHooksDoNothing) {
  class CBare : public CVDiagItem {
   public:
    CBare() : CVDiagItem(kOpen.Get()->Params) {}
    const std::string& GetName() override { return kOpen.Get()->Name; }
    Ref<DiagClass> GetTypeInfo() override { return kOpen.Get(); }
    Ref<DiagActions> GetActions() override { return kOpen.Get()->Actions; }
  };
  const auto item = MakeRef<CBare>();
  const auto message = Message(true, false);
  EXPECT_EQ(Outcome(item->Update(ParamsOf(kOpen, {}), *message), *message), "-");
  EXPECT_EQ(Outcome(item->Delete(*message), *message), "-");
  EXPECT_EQ(Outcome(item->Add("OpenChild", ParamsOf(kOpen, {}), *message), *message), "-");
  EXPECT_EQ(Outcome(item->Execute("Rest", nullptr, *message), *message), "-");
}

bool Fill(CProbe& item, QueryMessage& message, bool bForce = false, bool bInitChild = false) {
  return static_cast<CVDiagItem&>(item).Init(bInitChild, bForce, message);
}

TEST(ItemInit, FillsOnceUnlessForced) {
  const auto item = MakeRef<CProbe>(kOpen);
  QueryMessage message;
  EXPECT_TRUE(Fill(*item, message, false, true));
  EXPECT_TRUE(Fill(*item, message));
  EXPECT_EQ(item->calls, "init+ ");
  EXPECT_TRUE(Fill(*item, message, true));
  EXPECT_EQ(item->calls, "init+ init ");
}

TEST(ItemInit, OfAFailureIsTriedAgain) {
  const auto item = MakeRef<CProbe>(kOpen);
  QueryMessage message;
  item->answer = false;
  EXPECT_FALSE(Fill(*item, message));
  EXPECT_FALSE(item->IsInitialized);
  item->answer = true;
  EXPECT_TRUE(Fill(*item, message));
  EXPECT_EQ(item->calls, "init init ");
}

TEST(ItemInit, DoesNotBeginWhenTerminated) {
  const auto item = MakeRef<CProbe>(kOpen);
  const auto message = Message(false, true);
  EXPECT_EQ(Outcome(Fill(*item, *message), *message), "error 1223");
  EXPECT_EQ(item->calls, "");
  QueryMessage free;
  EXPECT_TRUE(Fill(*item, free));
  const auto again = Message(false, true);
  EXPECT_TRUE(Fill(*item, *again)) << "what is filled already costs nothing";
  EXPECT_EQ(Outcome(Fill(*item, *again, true), *again), "error 1223");
  EXPECT_EQ(item->calls, "init ");
  EXPECT_TRUE(item->IsInitialized) << "a refill that did not begin drops nothing";
}

TEST(ItemInit, DropsHalfContentWhenTerminatedMeanwhile) {
  for (const bool answer : {true, false}) {
    const auto item = MakeRef<CProbe>(kOpen);
    const auto event = MakeRef<os::CEvent>();
    QueryMessage message(event, false);
    item->answer = answer;
    item->onInit = [&](QueryMessage&) {
      item->Params.SetNumber("Free", 1);
      item->Children.Add(MakeRef<CProbe>(kOpenChild), false);
      event->Set();
    };
    EXPECT_EQ(Outcome(Fill(*item, message), message), "error 1223");
    EXPECT_EQ(item->Params.Count(), 0u);
    EXPECT_EQ(item->Children.Count(), 0u);
    EXPECT_FALSE(item->IsInitialized);
  }
}

// A filling that throws leaves the lock free for another thread.
TEST(ItemInit, LetsAnExceptionPass) {
  const auto item = MakeRef<CProbe>(kOpen);
  QueryMessage message;
  item->onInit = [](QueryMessage&) { throw std::runtime_error("filling"); };
  EXPECT_THROW(Fill(*item, message), std::runtime_error);
  item->onInit = nullptr;
  bool filled = false;
  const auto thread = os::StartThread(
      [&] {
        const auto other = MakeRef<QueryMessage>();
        filled = Fill(*item, *other);
      },
      0);
  ASSERT_EQ(os::WaitAny({thread.get()}, 20000), 0);
  thread->Join();
  EXPECT_TRUE(filled);
}

// A hook may ask for its own item and fills its children under its own lock.
TEST(ItemInit, MayBeEnteredAgainByItsOwnThread) {
  const auto item = MakeRef<CProbe>(kOpen);
  QueryMessage message;
  item->onInit = [&](QueryMessage& inner) {
    item->onInit = nullptr;
    EXPECT_TRUE(Fill(*item, inner, true));
  };
  EXPECT_TRUE(Fill(*item, message));
  EXPECT_EQ(item->calls, "init init ");
}

Ref<CProbe> Tree() {
  const auto top = MakeRef<CProbe>(kOpen);
  top->Params.SetNumber("Free", 1);
  const auto child = MakeRef<CProbe>(kClosed);
  child->Params.SetNumber("Fixed", 1);
  const auto grandChild = MakeRef<CProbe>(kOpen);
  grandChild->Params.SetNumber("Free", 0);
  const auto twin = MakeRef<CProbe>(kClosed);
  twin->Params.SetNumber("Free", 1);
  child->Children.Add(grandChild, false);
  top->Children.Add(child, false);
  top->Children.Add(twin, false);
  return top;
}

TEST(Item, FindParam) {
  constexpr struct {
    const char* pPath;
    const char* pText;  // null: not found
  } kCases[] = {
      {"Free", "B"},
      {"fREE", "B"},
      {"Fixed", nullptr},
      {"", nullptr},
      {"Closed\\Fixed", "B"},
      {"cLOSED\\fIXED", "B"},
      {"Closed\\Free", nullptr},  // the first child of that name decides
      {"Closed\\Open\\Free", "A"},
      {"Closed\\Open\\Fixed", nullptr},
      {"Open\\Free", nullptr},
      {"NoSuch\\Open\\Free", nullptr},
      {"Closed\\NoSuch\\Free", nullptr},
      {"Closed\\", nullptr},
      {"\\Free", nullptr},
      {"Closed\\\\Fixed", nullptr},
      {"Closed", nullptr},
  };
  const Ref<CProbe> top = Tree();
  for (const auto& c : kCases) {
    const DiagParam* pParam = top->FindParam(c.pPath);
    EXPECT_EQ(pParam ? pParam->GetText() : "none", c.pText ? c.pText : "none") << c.pPath;
  }
}

TEST(DiagItems, AddReplacesInItsPlace) {
  DiagItems items;
  EXPECT_EQ(items.Add(nullptr, false), nullptr);
  const auto first = MakeRef<CProbe>(kOpen), second = MakeRef<CProbe>(kClosed),
             third = MakeRef<CProbe>(kOpen);
  items.Add(first, true);
  items.Add(second, true);
  EXPECT_EQ(items.Add(third, true), third.get());
  ASSERT_EQ(items.Count(), 2u);
  EXPECT_EQ(items.Get(0), third.get());
  items.Add(first, false);
  EXPECT_EQ(items.Count(), 3u);
  EXPECT_EQ(items.Find("oPEN", true), third.get());
  EXPECT_EQ(items.Find("oPEN", false), nullptr);
  EXPECT_EQ(items.Get(3), nullptr);
}

TEST(DiagClass, KnowsWhatCanBeChanged) {
  constinit static const ClassDecl kBare{.name = "Bare"};
  static constexpr const ClassDecl* kInner[] = {&kBare, &kOpenChild};
  constinit static const ClassDecl kOuter{.name = "Outer", .children = kInner};
  static constexpr const ClassDecl* kOutermost[] = {&kOuter};
  constinit static const ClassDecl kTop{.name = "Top", .children = kOutermost};
  EXPECT_FALSE(HasActiveContent(*kBare.Get()));
  EXPECT_TRUE(HasActiveContent(*kTop.Get())) << "two levels below";
  EXPECT_TRUE(HasActiveContent(*kClosed.Get())) << "a property and a child";
}

}  // namespace
}  // namespace kestra::test
