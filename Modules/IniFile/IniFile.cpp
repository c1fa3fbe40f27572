#include "Modules/IniFile/IniFile.h"

#include <algorithm>
#include <functional>
#include <limits>
#include <utility>

#include "Modules/IniFile/IniFileIo.h"
#include "VLib/src/log/Log.h"
#include "VLib/src/text/Text.h"
#include "platform/os/Wait.h"

namespace kestra {
namespace {

const std::string* NameOf(const DiagParams& params) {
  const DiagParam* pName = params.Find("Name", true);
  return pName && !pName->StringValue.empty() ? &pName->StringValue : nullptr;
}

bool Refuse(QueryMessage& message, uint32_t id, std::initializer_list<std::string> inserts) {
  message.RaiseMessage(id, inserts);
  return false;
}

}  // namespace

bool CIniFile::NamesakeOrder::operator()(const Namesakes& a, const Namesakes& b) const {
  if (a.isKey != b.isKey) return a.isKey;
  if (a.pParent != b.pParent) return std::less<>()(a.pParent, b.pParent);
  return ignoreCase ? CompareNoCase(a.name, b.name) < 0 : a.name < b.name;
}

const IniPlace* CIniFile::AddPlace(const IniPlace* pParent, CfgStep step) {
  return &m_places.emplace_back(IniPlace{pParent, std::move(step)});
}

bool CIniFile::AddSection(const IniPlace* pParent, const DiagParams& params,
                          QueryMessage& message) {
  const std::string* pName = NameOf(params);
  if (!pName) return Refuse(message, 11000, {"Name"});
  if (!CanBeSectionName(*pName)) return Refuse(message, 11002, {"Name", *pName});
  // Sections of that layout have none in them.
  if (pParent && m_form.layout == CfgLayout::Ini) return message.Fail(kErrorNotSupported);
  return Change(CfgEditKind::AddSection, pParent, {*pName}, {}, message);
}

bool CIniFile::AddKey(const IniPlace* pParent, const DiagParams& params, QueryMessage& message) {
  const std::string* pName = NameOf(params);
  if (!pName) return Refuse(message, 11000, {"Name"});
  if (!CanBeKeyName(*pName)) return Refuse(message, 11002, {"Name", *pName});
  if (!pParent && !m_hasTopKeys) return message.Fail(kErrorNotSupported);
  std::string text;
  return ReadValue(params, text, message) &&
         Change(CfgEditKind::AddKey, pParent, {*pName}, std::move(text), message);
}

bool CIniFile::SetKey(const IniPlace* pParent, const CfgStep& key, const DiagParams& params,
                      QueryMessage& message) {
  std::string text;
  return ReadValue(params, text, message) &&
         Change(CfgEditKind::SetKey, pParent, key, std::move(text), message);
}

bool CIniFile::DeleteSection(const IniPlace& section, QueryMessage& message) {
  return Change(CfgEditKind::DeleteSection, section.pParent, section.step, {}, message);
}

bool CIniFile::DeleteKey(const IniPlace* pParent, const CfgStep& key, QueryMessage& message) {
  return Change(CfgEditKind::DeleteKey, pParent, key, {}, message);
}

// Exactly one of the two: nobody could say which of them should win.
bool CIniFile::ReadValue(const DiagParams& params, std::string& text, QueryMessage& message) const {
  const DiagParam* pText = params.Find("StringValue", true);
  const DiagParam* pNumber = params.Find("DWORDValue", true);
  if (!pText == !pNumber) return Refuse(message, 11002, {"StringValue", "DWORDValue"});
  text = pText ? pText->StringValue : std::to_string(pNumber->DWordValue);
  // It would read back as no number.
  if (pNumber && pNumber->DWordValue == std::numeric_limits<uint32_t>::max())
    return Refuse(message, 11002, {"DWORDValue", text});
  return CanBeKeyText(text, m_form.quoteFlags) || Refuse(message, 11002, {"StringValue", text});
}

bool CIniFile::MayChange(QueryMessage& message) const {
  if (m_poMachine->IsReadOnly()) return message.Fail(kErrorWriteProtect);
  if (!m_poMachine->Files()) return message.Fail(kErrorCallNotImplemented);
  // Only a scrambled file can be compressed.
  return !m_form.compress || m_form.key != 0 || message.Fail(kErrorInvalidParameter);
}

bool CIniFile::Change(CfgEditKind kind, const IniPlace* pParent, const CfgStep& target,
                      std::string text, QueryMessage& message) {
  constexpr uint32_t kMostTries = 40;
  constexpr uint32_t kLongestPauseMs = 10;
  if (!MayChange(message)) return false;
  const bool isKey = kind != CfgEditKind::AddSection && kind != CfgEditKind::DeleteSection;
  const bool isNew = kind == CfgEditKind::AddSection || kind == CfgEditKind::AddKey;
  CfgEdit edit{kind, {}, target, std::move(text)};
  const bool isDeletion = kind == CfgEditKind::DeleteSection || kind == CfgEditKind::DeleteKey;
  if (!LocateParents(pParent, edit) || (!isNew && !Locate(pParent, isKey, edit.target)))
    return isDeletion || message.Fail(kErrorFileNotFound);
  Attempt attempt{CfgOutcome::Done, kErrorSharingViolation};
  for (uint32_t i = 0; i < kMostTries && attempt.error == kErrorSharingViolation; ++i) {
    // Gives another writer the time to come to its end.
    if (i > 0) os::WaitAny({message.TerminationEvent()}, std::min(i, kLongestPauseMs));
    if (message.IsTerminated()) return false;
    attempt = TryOnce(edit, message);
  }
  if (attempt.outcome != CfgOutcome::Done) return Explain(attempt.outcome, edit, message);
  if (attempt.error != kErrorSuccess) return message.Fail(attempt.error);
  if (isDeletion) NoteDeletion(pParent, isKey, target);
  return true;
}

void CIniFile::NoteDeletion(const IniPlace* pParent, bool isKey, const CfgStep& step) {
  const std::lock_guard guard(m_lock);
  std::vector<size_t>& gone = m_deletions[{pParent, isKey, step.name}];
  gone.insert(std::lower_bound(gone.begin(), gone.end(), step.ordinal), step.ordinal);
}

CIniFile::Attempt CIniFile::TryOnce(const CfgEdit& edit, const QueryMessage& message) const {
  CTerminationLook termination(message.TerminationEvent());
  CFileSystem& files = *m_poMachine->Files();
  IniContent content;
  const SystemError error = ReadIniFile(files, m_path, termination, content);
  if (error != kErrorSuccess) return {CfgOutcome::Done, error};
  std::string bytes = content.bytes;
  const CfgOutcome outcome = EditCfgBytes(bytes, edit, m_form, termination);
  if (outcome != CfgOutcome::Done) return {outcome, kErrorSuccess};
  return {outcome, WriteIniFile(files, m_path, content, bytes, termination)};
}

bool CIniFile::Explain(CfgOutcome outcome, const CfgEdit& edit, QueryMessage& message) const {
  const bool isSection = edit.kind == CfgEditKind::AddSection;
  switch (outcome) {
    case CfgOutcome::Done:
      return true;
    case CfgOutcome::Exists:
      return Refuse(message, 16002, {edit.target.name});
    case CfgOutcome::Missing:
      return message.Fail(kErrorFileNotFound);
    case CfgOutcome::NotText:
      return RefuseFile(message);
    case CfgOutcome::NotHeld:
      return Refuse(message, 11002,
                    {isSection ? "Name" : "StringValue", isSection ? edit.target.name : edit.text});
    case CfgOutcome::TooLarge:
      g_Log.Error("IniFile: a file is, or would become, too large to be changed: %s",
                  m_path.c_str());
      return message.Fail(kErrorFileTooLarge);
    case CfgOutcome::Terminated:
      return message.Fail(kErrorCancelled);
  }
  return false;
}

bool CIniFile::RefuseFile(QueryMessage& message) const {
  g_Log.Error(
      "IniFile: no file of this format, another key than its own, or CRs that end no line: %s",
      m_path.c_str());
  message.RaiseMessage(15004, {m_path});
  return message.Fail(kErrorInvalidData);
}

bool CIniFile::Locate(const IniPlace* pParent, bool isKey, CfgStep& step) const {
  const std::lock_guard guard(m_lock);
  const auto found = m_deletions.find({pParent, isKey, step.name});
  if (found == m_deletions.end()) return true;
  const std::vector<size_t>& gone = found->second;
  const auto at = std::lower_bound(gone.begin(), gone.end(), step.ordinal);
  if (at != gone.end() && *at == step.ordinal) return false;
  step.ordinal -= static_cast<size_t>(at - gone.begin());
  return true;
}

bool CIniFile::LocateParents(const IniPlace* pParent, CfgEdit& edit) const {
  for (const IniPlace* pPlace = pParent; pPlace; pPlace = pPlace->pParent) {
    edit.parent.push_back(pPlace->step);
    if (!Locate(pPlace->pParent, false, edit.parent.back())) return false;
  }
  std::reverse(edit.parent.begin(), edit.parent.end());
  return true;
}

}  // namespace kestra
