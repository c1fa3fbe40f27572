// CVRegKey: an open registry key whose failures are exceptions. Copies share the key, which is
// closed when the last one goes. One thread at a time.
#pragma once

#include <memory>
#include <string>

#include "VLib/src/errors/Exception.h"
#include "platform/machine/Registry.h"

namespace kestra {

class CVRegKey {
 public:
  // A failing registry operation; carries its status.
  class CSystemException : public CVSystemException {
   public:
    using CVSystemException::CVSystemException;
  };
  // A value that is of another kind than the reader wants.
  class CInvalidType : public CVException {
   public:
    explicit CInvalidType(const std::string& valueName);
  };

  CVRegKey() = default;
  CVRegKey(CRegistry& registry, RegistryRoot root);
  explicit CVRegKey(std::unique_ptr<CRegistryKey> key) : m_pKey(std::move(key)) {}

  CVRegKey OpenSubKey(const std::string& path, uint32_t access) const;
  CVRegKey CreateSubKey(const std::string& path, uint32_t access) const;
  void SetNumber(const std::string& name, uint32_t value) const;
  void SetRaw(const std::string& name, uint32_t type, const std::string& data) const;
  void DeleteValue(const std::string& name) const;
  // The value's type; 0 for a value that is not there.
  uint32_t ValueType(const std::string& name) const;
  // The default for a value that is not there. A value that is no kRegDword throws
  // CSystemException with kErrorInvalidData.
  uint32_t ReadNumber(const std::string& name, uint32_t defaultValue) const;
  // The default for a value that is not there or is empty. A value that is no kRegSz throws
  // CInvalidType. The text ends at its first NUL.
  std::string ReadString(const std::string& name, const std::string& defaultValue) const;
  // The bytes as stored. A value that is not there throws.
  std::string ReadRaw(const std::string& name) const;
  // Throws CSystemException with kErrorInvalidHandle for an object that holds no key, as does every
  // operation above.
  CRegistryKey& Key() const;

 private:
  std::shared_ptr<CRegistryKey> m_pKey;
};

}  // namespace kestra
