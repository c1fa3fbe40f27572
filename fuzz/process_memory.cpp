// What a Windows system and its processes tell of themselves: the kernel's list of processes, and
// the memory of a process with its block.
#include <vector>

#include "Modules/Processes/windows/SystemInformationList.h"
#include "Modules/Processes/windows/inspect/ProcessBlock.h"

namespace {

using kestra::SystemError;

// The input is all the memory there is, and begins with what is told of the process.
class CInputProcess final : public kestra::CProcessHandle {
 public:
  CInputProcess(std::string_view memory, bool isRedirected)
      : m_memory(memory), m_isRedirected(isRedirected) {}
  SystemError IsRedirected(bool& isRedirected) override {
    isRedirected = m_isRedirected;
    return kestra::kErrorSuccess;
  }
  SystemError QueryInformation(uint32_t, size_t size, std::string& bytes) override {
    return ReadMemory(0, size, bytes);
  }
  SystemError QueryInformation64(uint32_t, size_t size, std::string& bytes) override {
    return ReadMemory(0, size, bytes);
  }
  SystemError ReadMemory(uint64_t address, size_t size, std::string& bytes) override {
    if (address >= m_memory.size()) return kestra::kErrorInvalidParameter;
    bytes = m_memory.substr(static_cast<size_t>(address), size);
    return kestra::kErrorSuccess;
  }
  SystemError ReadMemory64(uint64_t address, size_t size, std::string& bytes) override {
    return ReadMemory(address, size, bytes);
  }
  SystemError FirstModule(uint64_t&) override { return kestra::kErrorCallNotImplemented; }
  SystemError ModuleBaseName(uint64_t, std::string&) override { return NoText(); }
  SystemError ModuleFileName(uint64_t, std::string&) override { return NoText(); }
  SystemError ImageFileName(std::string&) override { return NoText(); }
  SystemError WorkingSet(uint64_t&) override { return kestra::kErrorCallNotImplemented; }
  SystemError HandleCount(uint32_t&) override { return kestra::kErrorCallNotImplemented; }
  SystemError StartTime(uint64_t&) override { return kestra::kErrorCallNotImplemented; }
  SystemError UserSid(std::string&) override { return NoText(); }

 private:
  static SystemError NoText() { return kestra::kErrorCallNotImplemented; }
  const std::string_view m_memory;
  const bool m_isRedirected;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const std::string_view bytes(reinterpret_cast<const char*>(data), size);
  for (const uint32_t width : {32u, 64u}) {
    std::vector<kestra::ListedProcess> processes;
    kestra::DecodeProcessList({std::string(bytes), 0x1000}, width, processes);
    for (const bool isWideSystem : {false, true}) {
      for (const bool isRedirected : {false, true}) {
        CInputProcess process(bytes, isRedirected);
        kestra::ReadProcessBlock(process, {width, isWideSystem}, true);
      }
    }
  }
  return 0;
}
