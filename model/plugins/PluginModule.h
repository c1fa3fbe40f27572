// Modules and items that a plug-in makes. They look to the engine like built-in ones: the module
// fills itself from the plug-in's text, and changes to it or to what stands below it go to the
// plug-in as operations.
#pragma once

#include <string>

#include "VLib/src/data/CfgNode.h"
#include "model/classes/Module.h"
#include "model/plugins/Plugin.h"

namespace kestra {

// What an operation is sent for: the plug-in, and the id that it knows the item by (empty when it
// gave the module none).
class CPluginTarget {
 public:
  CPluginTarget(Ref<DiagPlugin> plugin, std::string id)
      : m_poPlugin(std::move(plugin)), m_id(std::move(id)) {}
  virtual ~CPluginTarget() = default;
  CPluginTarget(const CPluginTarget&) = delete;
  CPluginTarget& operator=(const CPluginTarget&) = delete;

  // The target for the number-th child of this one.
  std::string ChildId(size_t number) const;
  const Ref<DiagPlugin>& Plugin() const { return m_poPlugin; }
  const std::string& Id() const { return m_id; }

 protected:
  // The four operations, as CVDiagItem's hooks have them.
  bool SendAdd(const std::string& newItemType, const DiagParams& params, QueryMessage& message);
  bool SendChange(const DiagParams& params, QueryMessage& message);
  bool SendDelete(QueryMessage& message);
  bool SendAction(const std::string& actionName, const DiagParams& args, QueryMessage& message);
  void SetId(std::string id) { m_id = std::move(id); }

 private:
  // Sends one operation and reads the outcome into the message. False, without a word, for a
  // plug-in that has no operations or does not answer in the form that is told.
  bool SendOperation(CfgNode& request, const char* operation, const DiagParams* pParams,
                     QueryMessage& message);

  const Ref<DiagPlugin> m_poPlugin;
  std::string m_id;
};

class PluginItem final : public CFilledItem, public CPluginTarget {
 public:
  PluginItem(Ref<DiagClass> diagClass, Ref<DiagPlugin> plugin, std::string id)
      : CFilledItem(std::move(diagClass)), CPluginTarget(std::move(plugin), std::move(id)) {}
  using CFilledItem::Init;
  bool Init(bool) override { return IsInitialized; }

 protected:
  bool OnAddOfType(const std::string& newItemType, const DiagParams& params,
                   QueryMessage& message) override {
    return SendAdd(newItemType, params, message);
  }
  bool OnUpdate(const DiagParams& params, QueryMessage& message) override {
    return SendChange(params, message);
  }
  bool OnDelete(QueryMessage& message) override { return SendDelete(message); }
  bool OnExecute(const std::string& actionName, const DiagParams& args,
                 QueryMessage& message) override {
    return SendAction(actionName, args, message);
  }
};

class PluginModule final : public DiagModule, public CPluginTarget {
 public:
  PluginModule(Ref<DiagClass> diagClass, Ref<CMachine> machine, Ref<DiagPlugin> plugin)
      : DiagModule(std::move(diagClass), std::move(machine)),
        CPluginTarget(std::move(plugin), std::string()) {}
  ~PluginModule() override;
  using DiagModule::Init;
  bool Init(bool bInitChild, QueryMessage& message) override;

 protected:
  bool OnAddOfType(const std::string& newItemType, const DiagParams& params,
                   QueryMessage& message) override {
    return HasPluginsContent(message) && SendAdd(newItemType, params, message);
  }
  bool OnUpdate(const DiagParams& params, QueryMessage& message) override {
    return HasPluginsContent(message) && SendChange(params, message);
  }
  bool OnDelete(QueryMessage& message) override {
    return HasPluginsContent(message) && SendDelete(message);
  }
  bool OnExecute(const std::string& actionName, const DiagParams& args,
                 QueryMessage& message) override {
    return HasPluginsContent(message) && SendAction(actionName, args, message);
  }

 private:
  bool Fill(QueryMessage& message);
  bool HasPluginsContent(QueryMessage& message);
  // Lets the plug-in forget what it kept for this module.
  void Forget() noexcept;
};

}  // namespace kestra
