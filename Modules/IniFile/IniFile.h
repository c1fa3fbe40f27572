// CIniFile: one data file, as the items of one filling know it, and the one step by which they
// change it: read, change, write.
//
// An item remembers which section or key it is: the how-manieth of its name among its siblings, as
// the file was when it was filled. What the items of the same filling delete is counted off, so
// that a statement over several duplicates meets each of them, and one whose rows are sections in
// sections, or the same section twice, finds the rest of them done.
#pragma once

#include <deque>
#include <map>
#include <mutex>
#include <string>
#include <vector>

#include "VLib/src/data/edit/CfgEdit.h"
#include "model/items/Param.h"
#include "model/items/QueryMessage.h"
#include "platform/machine/Machine.h"

namespace kestra {

// A section of the file. Lives as long as the CIniFile that made it.
struct IniPlace {
  const IniPlace* pParent;  // null at the top
  CfgStep step;
};

// Any thread may change the file; AddPlace is for the one that fills.
class CIniFile : public CCounted<CIniFile> {
 public:
  // hasTopKeys: keys outside any section are seen.
  CIniFile(Ref<CMachine> machine, std::string path, const CfgForm& form, bool hasTopKeys)
      : m_poMachine(std::move(machine)),
        m_path(std::move(path)),
        m_form(form),
        m_hasTopKeys(hasTopKeys),
        m_deletions(NamesakeOrder{form.ignoreCase}) {}

  const std::string& Path() const { return m_path; }
  const CfgForm& Form() const { return m_form; }
  bool HasTopKeys() const { return m_hasTopKeys; }
  const IniPlace* AddPlace(const IniPlace* pParent, CfgStep step);

  // The changes of active statements. False with the message set:
  // - 11000 with the name of a property that is missing, 11002 with that of one whose text the
  //   format cannot hold, or with both names for neither or both of StringValue and DWORDValue;
  // - 16002 with a name that is there already, kErrorFileNotFound for a section or key that is not
  //   there any more; but what items of the same filling deleted is deleted with success;
  // - 15004 with the path and kErrorInvalidData for a file that is none of this format, or has CRs
  //   in the way that end no line;
  // - kErrorFileTooLarge for one with more than kCfgMostBytes or kCfgMostEntries, before the change
  //   or after it; the log tells it, as it tells the one before;
  // - kErrorSharingViolation when others go on changing the file.
  // The file is then what it was. pParent is null for the top.
  bool AddSection(const IniPlace* pParent, const DiagParams& params, QueryMessage& message);
  bool AddKey(const IniPlace* pParent, const DiagParams& params, QueryMessage& message);
  bool SetKey(const IniPlace* pParent, const CfgStep& key, const DiagParams& params,
              QueryMessage& message);
  bool DeleteSection(const IniPlace& section, QueryMessage& message);
  bool DeleteKey(const IniPlace* pParent, const CfgStep& key, QueryMessage& message);
  // False, with message 15004 and a line in the log: the file is none of this format.
  bool RefuseFile(QueryMessage& message) const;

 private:
  // The sections or the keys of one parent that have one name.
  struct Namesakes {
    const IniPlace* pParent;
    bool isKey;
    std::string name;
  };
  struct NamesakeOrder {
    bool ignoreCase;
    bool operator()(const Namesakes& a, const Namesakes& b) const;
  };
  struct Attempt {
    CfgOutcome outcome;
    SystemError error;  // of the system, when the outcome is Done
  };
  bool ReadValue(const DiagParams& params, std::string& text, QueryMessage& message) const;
  bool Change(CfgEditKind kind, const IniPlace* pParent, const CfgStep& target, std::string text,
              QueryMessage& message);
  bool MayChange(QueryMessage& message) const;
  Attempt TryOnce(const CfgEdit& edit, const QueryMessage& message) const;
  bool Explain(CfgOutcome outcome, const CfgEdit& edit, QueryMessage& message) const;
  // How the file has it now; false for what was deleted.
  bool Locate(const IniPlace* pParent, bool isKey, CfgStep& step) const;
  bool LocateParents(const IniPlace* pParent, CfgEdit& edit) const;
  void NoteDeletion(const IniPlace* pParent, bool isKey, const CfgStep& step);

  const Ref<CMachine> m_poMachine;
  const std::string m_path;
  const CfgForm m_form;
  const bool m_hasTopKeys;
  std::deque<IniPlace> m_places;
  mutable std::mutex m_lock;  // guards m_deletions
  // Which of them were deleted, as filled, in ascending order.
  std::map<Namesakes, std::vector<size_t>, NamesakeOrder> m_deletions;
};

}  // namespace kestra
