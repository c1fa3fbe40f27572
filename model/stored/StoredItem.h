// Items whose content was read from a text rather than found: what a cache entry and a plug-in's
// answer turn into.
#pragma once

#include <functional>
#include <string>

#include "VLib/src/data/CfgNode.h"
#include "model/classes/Module.h"

namespace kestra {

// An item that a cache entry holds.
class StoredItem : public CFilledItem {
 public:
  StoredItem(Ref<DiagClass> diagClass, int level)
      : CFilledItem(std::move(diagClass)), m_level(level) {}
  int GetFillSource() override { return m_level; }
  // Only reports what LoadFromNode has made of it.
  using CFilledItem::Init;
  bool Init(bool) override { return IsInitialized; }

 protected:
  // What is behind it is not at hand: a statement that changes something asks the machine first.
  bool OnAddOfType(const std::string&, const DiagParams&, QueryMessage& message) override {
    return message.Fail(kErrorNotSupported);
  }
  bool OnUpdate(const DiagParams&, QueryMessage& message) override {
    return message.Fail(kErrorNotSupported);
  }
  bool OnDelete(QueryMessage& message) override { return message.Fail(kErrorNotSupported); }
  bool OnExecute(const std::string&, const DiagParams&, QueryMessage& message) override {
    return message.Fail(kErrorNotSupported);
  }

 private:
  const int m_level;
};

// Makes the item for one child section: parent is the item above, number the child's place in it.
using MakeChildItem =
    std::function<Ref<CVDiagItem>(CVDiagItem& parent, Ref<DiagClass> diagClass, size_t number)>;

// Fills an item and everything below it from node. The item's class says what may stand in it: a
// value that is no declared property of its item's class, a section that names no class of the
// tree, and too deep a nesting give false; what could be read is then in the item, which does not
// count as filled. Values whose keys begin with "_" are passed over. False too when the message's
// termination event is signalled.
bool LoadFromNode(CVDiagItem& item, const CfgNode& node, const MakeChildItem& makeChild,
                  QueryMessage& message);
// With a StoredItem of that level for every child.
bool LoadFromNode(CVDiagItem& item, const CfgNode& node, int level, QueryMessage& message);

}  // namespace kestra
