// Operations on what a plug-in made: the request, and the answer.
#include <fmt/format.h>

#include <charconv>

#include "model/plugins/PluginModule.h"
#include "platform/os/MessageText.h"

namespace kestra {
namespace {

void WriteParams(CfgNode& request, const DiagParams& params) {
  CfgNode& section = request.AddSection("_Params");
  for (size_t i = 0; i < params.Count(); ++i) {
    const DiagParam& param = *params.Get(i);
    if (!param.Def) continue;
    const bool isText =
        param.Def->Type == ParamType::String || param.Def->Type == ParamType::Version;
    if (isText) {
      section.SetText(param.Def->Name, param.GetText());
    } else {
      section.SetNumber(param.Def->Name, static_cast<int32_t>(param.DWordValue));
    }
  }
}

void WriteMeans(CfgNode& request, const os::CKeptEvent* pEvent, bool isActive) {
  CfgNode& section = request.AddSection("_Ops");
  section.SetText("_Termination", fmt::to_string(pEvent ? pEvent->Native() : os::kNoHandle));
  section.SetNumber("_Active", isActive ? 1 : 0);
}

// The module that the message's text is in: its handle as a decimal number of 64 bits. What is no
// module of this process counts for nothing, and the message is then this library's own.
MessageSource SourceOf(const CfgNode& outcome) {
  const std::string text = outcome.GetText("_MsgSrc");
  uint64_t handle = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), handle);
  if (error != std::errc() || end != text.data() + text.size()) return 0;
  return os::ModuleFileName(handle) ? static_cast<MessageSource>(handle) : 0;
}

// How the operation ended, as the plug-in tells it.
void ReadOutcome(const CfgNode& outcome, QueryMessage& message) {
  constexpr int kMostInserts = 9;  // their numbers have one digit
  constexpr std::string_view kMissing = " ";
  message.Success = outcome.GetNumber("_Result") == 1;
  message.Source = SourceOf(outcome);
  message.MessageId = static_cast<uint32_t>(outcome.GetNumber("_Msg"));
  message.Args.clear();
  for (int i = 1; i <= kMostInserts; ++i) {
    std::string insert = outcome.GetText(fmt::format("_MsgArg{}", i), kMissing);
    if (insert == kMissing) break;
    message.Args.push_back(std::move(insert));
  }
  message.SystemError = static_cast<SystemError>(outcome.GetNumber("_SystemErr"));
  message.Restart = outcome.GetNumber("_Restart") == 1;
}

}  // namespace

std::string CPluginTarget::ChildId(size_t number) const {
  return m_id.empty() ? std::string() : fmt::format("{}-{}", m_id, number);
}

bool CPluginTarget::SendOperation(CfgNode& request, const char* operation,
                                  const DiagParams* pParams, QueryMessage& message) {
  request.SetText("_Op", operation);
  request.SetText("_Item", m_id);
  if (pParams) WriteParams(request, *pParams);
  // A call that is left behind still looks at its event, whatever has become of the query's.
  const os::CWaitable* pEvent = message.TerminationEvent();
  const Ref<os::CKeptEvent> keptEvent = pEvent ? MakeRef<os::CKeptEvent>(*pEvent) : nullptr;
  WriteMeans(request, keptEvent.get(), message.AllowActive);
  // A line end in a value, or blanks at its ends, would not reach the plug-in as they are.
  if (!request.ReadsBack(0, CfgLayout::Cfg)) return message.Fail(kErrorInvalidParameter);
  std::string text;
  request.Dump(text, 0, 0, CfgLayout::Cfg);
  const auto reply = m_poPlugin->Update(text, keptEvent, message.TerminationEvent());
  CfgNode answer;
  if (!reply || !answer.LoadText(*reply, kCfgQuotes, CfgLayout::Cfg)) {
    message.IsTerminated();  // which then is why
    return false;
  }
  const CfgNode* pOutcome = answer.Section("_Ops");
  if (!pOutcome) return false;
  ReadOutcome(*pOutcome, message);
  return answer.GetNumber("_Result") == 1;
}

bool CPluginTarget::SendAdd(const std::string& newItemType, const DiagParams& params,
                            QueryMessage& message) {
  CfgNode request;
  request.SetText("_NewItemType", newItemType);
  return SendOperation(request, "Add", &params, message);
}

bool CPluginTarget::SendChange(const DiagParams& params, QueryMessage& message) {
  CfgNode request;
  return SendOperation(request, "Change", &params, message);
}

bool CPluginTarget::SendDelete(QueryMessage& message) {
  CfgNode request;
  return SendOperation(request, "Delete", nullptr, message);
}

bool CPluginTarget::SendAction(const std::string& actionName, const DiagParams& args,
                               QueryMessage& message) {
  CfgNode request;
  request.SetText("_Action", actionName);
  return SendOperation(request, "Action", &args, message);
}

}  // namespace kestra
