// Operations on what a plug-in made: the request, and the answer.
#include <fmt/format.h>

#include "model/plugins/PluginModule.h"

namespace kestra {
namespace {

// A text with a line end would be read as several lines.
bool FitsOneLine(const DiagParams& params) {
  for (size_t i = 0; i < params.Count(); ++i) {
    if (params.Get(i)->GetText().find('\n') != std::string::npos) return false;
  }
  return true;
}

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

void WriteMeans(CfgNode& request, const QueryMessage& message) {
  CfgNode& section = request.AddSection("_Ops");
  const os::CWaitable* pEvent = message.TerminationEvent();
  section.SetText("_Termination", fmt::to_string(pEvent ? pEvent->Native() : os::kNoHandle));
  section.SetNumber("_Active", message.AllowActive ? 1 : 0);
}

// How the operation ended, as the plug-in tells it.
void ReadOutcome(const CfgNode& outcome, QueryMessage& message) {
  constexpr int kMostInserts = 9;  // their numbers have one digit
  constexpr std::string_view kMissing = " ";
  message.Success = outcome.GetNumber("_Result") == 1;
  message.Source = static_cast<uint32_t>(outcome.GetNumber("_MsgSrc"));
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
  if (pParams && !FitsOneLine(*pParams)) return message.Fail(kErrorInvalidParameter);
  request.SetText("_Op", operation);
  request.SetText("_Item", m_id);
  if (pParams) WriteParams(request, *pParams);
  WriteMeans(request, message);
  std::string text;
  request.Dump(text, 0, 0, CfgLayout::Cfg);
  // A call that is left behind still looks at the termination event.
  const Ref<os::CEvent> keptEvent = message.OwnTerminationEvent();
  const auto reply = m_poPlugin->Update(text, keptEvent, message.TerminationEvent());
  CfgNode answer;
  if (!reply || !answer.LoadText(*reply, kCfgQuotes, CfgLayout::Cfg)) return false;
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
