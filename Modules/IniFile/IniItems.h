// The items of a data file: its sections and keys. They are full when they are made, and know where
// they come from in the file.
#pragma once

#include <string>

#include "Modules/IniFile/IniFile.h"
#include "model/classes/Module.h"

namespace kestra {

// Keys and sections of one parent, filled from its node, whose texts they take: a large tree is
// never there twice, nor has to be let go of twice by a cancel. False, with nothing added, when the
// query was cancelled. What is left in the node is of no use. Sections in sections (the Cfg layout
// has them) are items below the section's, behind its keys. withKeys is false for a top whose keys
// are not shown.
bool FillFromNode(const Ref<CIniFile>& file, CfgNode& top, bool withKeys, DiagItems& items,
                  QueryMessage& message);

// Adds an IniSection or IniKey to a section, or with null to the top. kErrorCallNotImplemented for
// an item of another class.
bool AddIniItem(CIniFile& file, const IniPlace* pParent, const std::string& newItemType,
                const DiagParams& params, QueryMessage& message);

class CIniSectionItem : public CFilledItem {
 public:
  // The place is one of the file's.
  CIniSectionItem(Ref<CIniFile> file, const IniPlace* pPlace);

 protected:
  bool OnAddOfType(const std::string& newItemType, const DiagParams& params,
                   QueryMessage& message) override;
  bool OnDelete(QueryMessage& message) override;

 private:
  const Ref<CIniFile> m_poFile;
  const IniPlace* const m_pPlace;
};

class CIniKeyItem : public CFilledItem {
 public:
  // The parent is a section of the file, or null for the top. Takes the texts out of the value.
  CIniKeyItem(Ref<CIniFile> file, const IniPlace* pParent, size_t ordinal, CfgValue& value);

 protected:
  // StringValue or DWORDValue. The item shows what it was until its module is filled again.
  bool OnUpdate(const DiagParams& params, QueryMessage& message) override;
  bool OnDelete(QueryMessage& message) override;

 private:
  CfgStep Step() const;

  const Ref<CIniFile> m_poFile;
  const IniPlace* const m_pParent;
  const size_t m_ordinal;
};

}  // namespace kestra
