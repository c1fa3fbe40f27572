#include "Modules/IniFile/IniItems.h"

#include <charconv>
#include <limits>
#include <optional>
#include <unordered_map>
#include <utility>

#include "Modules/IniFile/IniFileClasses.h"
#include "VLib/src/text/Text.h"

namespace kestra {
namespace {

// Class objects are never given back, so the pointers stay good.
struct IniDefs {
  const DiagParamDef* pSectionName = kIniSectionClass.Get()->Params->Find("Name", false);
  const DiagParamDef* pKeyName = kIniKeyClass.Get()->Params->Find("Name", false);
  const DiagParamDef* pText = kIniKeyClass.Get()->Params->Find("StringValue", false);
  const DiagParamDef* pNumber = kIniKeyClass.Get()->Params->Find("DWORDValue", false);
};

const IniDefs& Defs() {
  static const IniDefs defs;
  return defs;
}

// All of it digits, and no more than 32 bits hold. The greatest number stands for none.
std::optional<uint32_t> NumberOf(const std::string& text) {
  uint32_t number = 0;
  const char* const pEnd = text.data() + text.size();
  const auto [pStop, error] = std::from_chars(text.data(), pEnd, number);
  const bool isNumber = error == std::errc() && pStop == pEnd;
  return isNumber && number != std::numeric_limits<uint32_t>::max() ? std::optional(number)
                                                                    : std::nullopt;
}

// Counts how many of one name there were before.
class CNameCounter {
 public:
  explicit CNameCounter(bool ignoreCase) : m_ignoreCase(ignoreCase) {}
  size_t Count(const std::string& name) { return m_seen[m_ignoreCase ? Fold(name) : name]++; }

 private:
  static std::string Fold(const std::string& name) {
    std::string folded;
    for (size_t at = 0; at < name.size();) {
      const uint32_t character = FoldCharacter(NextCharacter(name, at));
      for (int shift = 0; shift < 32; shift += 8)
        folded += static_cast<char>(character >> shift & 0xFF);
    }
    return folded;
  }

  const bool m_ignoreCase;
  std::unordered_map<std::string, size_t> m_seen;
};

struct Branch {
  CfgNode* pNode;
  DiagItems* pItems;
  const IniPlace* pPlace;
};

bool AddKeys(const Ref<CIniFile>& file, const Branch& branch, QueryMessage& message) {
  CNameCounter counter(file->Form().ignoreCase);
  branch.pItems->Reserve(branch.pNode->Values.size() + branch.pNode->Children.size());
  for (Ref<CfgValue>& value : branch.pNode->Values) {
    if (message.IsTerminatedInLoop()) return false;
    const size_t ordinal = counter.Count(value->Key);
    branch.pItems->Add(MakeRef<CIniKeyItem>(file, branch.pPlace, ordinal, *value), false);
    value = nullptr;
  }
  return true;
}

bool AddSections(const Ref<CIniFile>& file, const Branch& branch, std::vector<Branch>& open,
                 QueryMessage& message) {
  CNameCounter counter(file->Form().ignoreCase);
  for (const Ref<CfgNode>& node : branch.pNode->Children) {
    if (message.IsTerminatedInLoop()) return false;
    const IniPlace* pPlace = file->AddPlace(branch.pPlace, {node->Name, counter.Count(node->Name)});
    auto section = MakeRef<CIniSectionItem>(file, pPlace);
    open.push_back({node.get(), &section->Children, pPlace});
    branch.pItems->Add(std::move(section), false);
  }
  return true;
}

}  // namespace

// From a list and not by recursion, since a file nests its sections as it likes.
bool FillFromNode(const Ref<CIniFile>& file, CfgNode& top, bool withKeys, DiagItems& items,
                  QueryMessage& message) {
  DiagItems found;
  std::vector<Branch> open{{&top, &found, nullptr}};
  while (!open.empty()) {
    const Branch branch = open.back();
    open.pop_back();
    const bool isShown = withKeys || branch.pNode != &top;
    if (isShown && !AddKeys(file, branch, message)) return false;
    if (!AddSections(file, branch, open, message)) return false;
  }
  items.Swap(found);
  return true;
}

bool AddIniItem(CIniFile& file, const IniPlace* pParent, const std::string& newItemType,
                const DiagParams& params, QueryMessage& message) {
  if (EqualsNoCase(newItemType, kIniKeyClass.name)) return file.AddKey(pParent, params, message);
  if (EqualsNoCase(newItemType, kIniSectionClass.name))
    return file.AddSection(pParent, params, message);
  return message.Fail(kErrorCallNotImplemented);
}

CIniSectionItem::CIniSectionItem(Ref<CIniFile> file, const IniPlace* pPlace)
    : CFilledItem(kIniSectionClass.Get()), m_poFile(std::move(file)), m_pPlace(pPlace) {
  Params.Set(MakeRef<DiagParam>(Defs().pSectionName, m_pPlace->step.name), false);
  IsInitialized = true;
}

bool CIniSectionItem::OnAddOfType(const std::string& newItemType, const DiagParams& params,
                                  QueryMessage& message) {
  return AddIniItem(*m_poFile, m_pPlace, newItemType, params, message);
}

bool CIniSectionItem::OnDelete(QueryMessage& message) {
  return m_poFile->DeleteSection(*m_pPlace, message);
}

CIniKeyItem::CIniKeyItem(Ref<CIniFile> file, const IniPlace* pParent, size_t ordinal,
                         CfgValue& value)
    : CFilledItem(kIniKeyClass.Get()),
      m_poFile(std::move(file)),
      m_pParent(pParent),
      m_ordinal(ordinal) {
  const std::optional<uint32_t> number = NumberOf(value.Text);
  Params.Set(MakeRef<DiagParam>(Defs().pKeyName, std::move(value.Key)), false);
  Params.Set(MakeRef<DiagParam>(Defs().pText, std::move(value.Text)), false);
  if (number) Params.Set(MakeRef<DiagParam>(Defs().pNumber, *number), false);
  IsInitialized = true;
}

CfgStep CIniKeyItem::Step() const {
  const DiagParam* pName = Params.Find(*Defs().pKeyName);
  return {pName ? pName->StringValue : std::string(), m_ordinal};
}

bool CIniKeyItem::OnUpdate(const DiagParams& params, QueryMessage& message) {
  return m_poFile->SetKey(m_pParent, Step(), params, message);
}

bool CIniKeyItem::OnDelete(QueryMessage& message) {
  return m_poFile->DeleteKey(m_pParent, Step(), message);
}

}  // namespace kestra
