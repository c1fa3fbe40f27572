// Items: the tree that describes a machine. The engine reads parameters, walks children, and calls
// the guarded operations below; what an item means only its module knows.
//
// A module's writer overrides the hooks. Callers go through the guarded operations, which check
// permissions, take the item's lock, and look at the termination event.
//
// Threads: the lock is held for the whole of a hook, so two threads that reach one item see one
// filling. Reading Params and Children is not locked: a reader has passed Init first. A refill
// while another thread walks the same item is not guarded. Locks nest downwards only: a hook fills
// its children and never calls up the tree. An item lives as long as anybody holds it.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "VLib/src/threads/InterruptibleLock.h"
#include "model/items/Param.h"
#include "model/items/QueryMessage.h"

namespace kestra {

class CVDiagItem;
class DiagClass;
class DiagActions;

// The children of an item, in order.
class DiagItems {
 public:
  size_t Count() const { return m_items.size(); }
  // Null beyond the end.
  CVDiagItem* Get(size_t index) const;
  // The first of that name; null if there is none.
  CVDiagItem* Find(std::string_view name, bool ignoreCase) const;
  // With replaceSameName the first child of the same name gives up its place. A null item adds
  // nothing. Answers the item that was added.
  CVDiagItem* Add(Ref<CVDiagItem> item, bool replaceSameName);
  void Clear() { m_items.clear(); }
  void RemoveAt(size_t index);
  // The last item, which is then no longer in the list; null for an empty list.
  Ref<CVDiagItem> TakeLast();
  // Appends all of other's items, and leaves other empty. Without memory for that other stays as it
  // is.
  void TakeAll(DiagItems& other) noexcept;
  void Swap(DiagItems& other) { m_items.swap(other.m_items); }
  void Reserve(size_t count) { m_items.reserve(count); }

 private:
  std::vector<Ref<CVDiagItem>> m_items;
};

class CVDiagItem : public CCounted<CVDiagItem> {
 public:
  explicit CVDiagItem(Ref<const DiagParamDefs> defs) : Params(std::move(defs)) {}
  virtual ~CVDiagItem();
  CVDiagItem(const CVDiagItem&) = delete;
  CVDiagItem& operator=(const CVDiagItem&) = delete;

  bool IsInitialized = false;  // the item has been filled; set by the Init hook
  DiagParams Params;
  DiagItems Children;

  // What every concrete class must answer. The text lives as long as the item.
  virtual const std::string& GetName();
  virtual Ref<DiagClass> GetTypeInfo();
  virtual bool IsModule() { return false; }
  // 2 when the content came from a cache file, else 0.
  virtual int GetFillSource() { return 0; }
  virtual Ref<DiagActions> GetActions();

  // --- Guarded operations ---

  // The one way in for filling: does nothing on an item that is filled, unless bForce. A filling
  // that was cut off by the termination event leaves no half content.
  bool Init(bool bInitChild, bool bForce, QueryMessage& message);
  // Whether the item is filled now. Does not wait: an item that is being filled counts as not.
  bool IsFilled();
  bool Update(const DiagParams& params, QueryMessage& message);
  bool Delete(QueryMessage& message);
  bool Add(const std::string& newItemType, const DiagParams& params, QueryMessage& message);
  // args may be null: the action's defaults.
  bool Execute(const std::string& actionName, const DiagParams* pArgs, QueryMessage& message);

  // A parameter by a path of child names and a parameter name, separated by backslashes. Null when
  // any of them is missing.
  DiagParam* FindParam(std::string_view path);

  CInterruptibleLock& Lock() { return m_lock; }

  // --- Hooks ---

  // Filling that cannot be interrupted, or the same with a message to look at. A class overrides
  // exactly one of the two.
  virtual bool Init(bool bInitChild);
  virtual bool Init(bool bInitChild, QueryMessage& message);

 protected:
  virtual Ref<CVDiagItem> OnAdd(const DiagParams& params, QueryMessage& message);
  virtual bool OnAddOfType(const std::string& newItemType, const DiagParams& params,
                           QueryMessage& message);
  virtual bool OnUpdate(const DiagParams& params, QueryMessage& message);
  virtual bool OnDelete(QueryMessage& message);
  virtual bool OnExecute(const std::string& actionName, const DiagParams& args,
                         QueryMessage& message);
  // Called under the lock when a filling was cut off.
  virtual void DropContent();

 private:
  CInterruptibleLock m_lock;
};

}  // namespace kestra
