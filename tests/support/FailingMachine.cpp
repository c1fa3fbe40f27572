#include "tests/support/FailingMachine.h"

#include "platform/machine/FileSystem.h"
#include "platform/machine/Processes.h"
#include "platform/machine/Registry.h"

namespace kestra::test {
namespace {

// Counts a call and runs it unless it is the one that fails.
template <class Operation>
SystemError Run(CFaultPlan& plan, Facility facility, Operation operation) {
  const SystemError error = plan.Count(facility);
  return error == kErrorSuccess ? operation() : error;
}

class CFailingListing final : public CDirectoryListing {
 public:
  CFailingListing(CFaultPlan& plan, std::unique_ptr<CDirectoryListing> inner)
      : m_plan(plan), m_inner(std::move(inner)) {}
  SystemError OwnInfo(FileInfo& info) override {
    return Run(m_plan, Facility::Files, [&] { return m_inner->OwnInfo(info); });
  }
  SystemError Next(std::string& name) override {
    return Run(m_plan, Facility::Files, [&] { return m_inner->Next(name); });
  }
  SystemError Info(FileInfo& info) override {
    return Run(m_plan, Facility::Files, [&] { return m_inner->Info(info); });
  }

 private:
  CFaultPlan& m_plan;
  std::unique_ptr<CDirectoryListing> m_inner;
};

class CFailingReader final : public CFileReader {
 public:
  CFailingReader(CFaultPlan& plan, std::unique_ptr<CFileReader> inner)
      : m_plan(plan), m_inner(std::move(inner)) {}
  SystemError Info(FileInfo& info) override {
    return Run(m_plan, Facility::Files, [&] { return m_inner->Info(info); });
  }
  SystemError Read(size_t limit, std::string& bytes) override {
    return Run(m_plan, Facility::Files, [&] { return m_inner->Read(limit, bytes); });
  }
  SystemError Seek(uint64_t offset) override {
    return Run(m_plan, Facility::Files, [&] { return m_inner->Seek(offset); });
  }

 private:
  CFaultPlan& m_plan;
  std::unique_ptr<CFileReader> m_inner;
};

class CFailingWriter final : public CFileWriter {
 public:
  CFailingWriter(CFaultPlan& plan, std::unique_ptr<CFileWriter> inner)
      : m_plan(plan), m_inner(std::move(inner)) {}
  SystemError Write(std::string_view bytes) override {
    return Run(m_plan, Facility::Files, [&] { return m_inner->Write(bytes); });
  }
  void ExpectUnchanged(const FileInfo& read) override { m_inner->ExpectUnchanged(read); }
  SystemError Commit() override {
    return Run(m_plan, Facility::Files, [&] { return m_inner->Commit(); });
  }

 private:
  CFaultPlan& m_plan;
  std::unique_ptr<CFileWriter> m_inner;
};

class CFailingFileSystem final : public CFileSystem {
 public:
  CFailingFileSystem(CFaultPlan& plan, CFileSystem& inner) : m_plan(plan), m_inner(inner) {}
  SystemError OpenDirectory(const std::string& path,
                            std::unique_ptr<CDirectoryListing>& listing) override {
    return Run(m_plan, Facility::Files, [&] {
      std::unique_ptr<CDirectoryListing> inner;
      const SystemError error = m_inner.OpenDirectory(path, inner);
      if (error == kErrorSuccess)
        listing = std::make_unique<CFailingListing>(m_plan, std::move(inner));
      return error;
    });
  }
  SystemError Info(const std::string& path, FileInfo& info) override {
    return Run(m_plan, Facility::Files, [&] { return m_inner.Info(path, info); });
  }
  SystemError ShortPath(const std::string& path, std::string& shortPath) override {
    return Run(m_plan, Facility::Files, [&] { return m_inner.ShortPath(path, shortPath); });
  }
  SystemError OpenFile(const std::string& path, LastLink lastLink,
                       std::unique_ptr<CFileReader>& reader) override {
    return Run(m_plan, Facility::Files, [&] {
      std::unique_ptr<CFileReader> inner;
      const SystemError error = m_inner.OpenFile(path, lastLink, inner);
      if (error == kErrorSuccess)
        reader = std::make_unique<CFailingReader>(m_plan, std::move(inner));
      return error;
    });
  }
  SystemError BeginWrite(const std::string& path, LastLink lastLink, Existing existing,
                         NewRights rights, std::unique_ptr<CFileWriter>& writer) override {
    return Run(m_plan, Facility::Files, [&] {
      std::unique_ptr<CFileWriter> inner;
      const SystemError error = m_inner.BeginWrite(path, lastLink, existing, rights, inner);
      if (error == kErrorSuccess)
        writer = std::make_unique<CFailingWriter>(m_plan, std::move(inner));
      return error;
    });
  }
  SystemError RemoveFile(const std::string& path) override {
    return Run(m_plan, Facility::Files, [&] { return m_inner.RemoveFile(path); });
  }
  SystemError MakeDirectory(const std::string& path, NewRights rights) override {
    return Run(m_plan, Facility::Files, [&] { return m_inner.MakeDirectory(path, rights); });
  }
  SystemError RemoveEmptyDirectory(const std::string& path) override {
    return Run(m_plan, Facility::Files, [&] { return m_inner.RemoveEmptyDirectory(path); });
  }
  SystemError Rename(const std::string& from, const std::string& to) override {
    return Run(m_plan, Facility::Files, [&] { return m_inner.Rename(from, to); });
  }
  SystemError CopyPlainFile(const std::string& from, const std::string& to,
                            const os::CWaitable* pTermination) override {
    return Run(m_plan, Facility::Files,
               [&] { return m_inner.CopyPlainFile(from, to, pTermination); });
  }
  SystemError SetAttributes(const std::string& path, uint32_t attributes) override {
    return Run(m_plan, Facility::Files, [&] { return m_inner.SetAttributes(path, attributes); });
  }
  SystemError VolumeFlags(const std::string& path, uint32_t& flags) override {
    return Run(m_plan, Facility::Files, [&] { return m_inner.VolumeFlags(path, flags); });
  }
  SystemError GrantEveryone(const std::string& path) override {
    return Run(m_plan, Facility::Files, [&] { return m_inner.GrantEveryone(path); });
  }
  SystemError MoveAtBoot(const std::string& from, const std::string& to) override {
    return Run(m_plan, Facility::Files, [&] { return m_inner.MoveAtBoot(from, to); });
  }

 private:
  CFaultPlan& m_plan;
  CFileSystem& m_inner;
};

class CFailingKey final : public CRegistryKey {
 public:
  CFailingKey(CFaultPlan& plan, std::unique_ptr<CRegistryKey> inner)
      : m_plan(plan), m_inner(std::move(inner)) {}
  SystemError OpenSubKey(const std::string& path, uint32_t access,
                         std::unique_ptr<CRegistryKey>& key) override {
    return Call(
        [&] { return Wrap(key, [&](auto& k) { return m_inner->OpenSubKey(path, access, k); }); });
  }
  SystemError OpenLinkItself(const std::string& path, uint32_t access,
                             std::unique_ptr<CRegistryKey>& key) override {
    return Call([&] {
      return Wrap(key, [&](auto& k) { return m_inner->OpenLinkItself(path, access, k); });
    });
  }
  SystemError CreateSubKey(const std::string& path, uint32_t access,
                           std::unique_ptr<CRegistryKey>& key) override {
    return Call(
        [&] { return Wrap(key, [&](auto& k) { return m_inner->CreateSubKey(path, access, k); }); });
  }
  SystemError DeleteSubKey(const std::string& path, uint32_t access) override {
    return Call([&] { return m_inner->DeleteSubKey(path, access); });
  }
  SystemError QueryInfo(RegistryKeyInfo& info) override {
    return Call([&] { return m_inner->QueryInfo(info); });
  }
  SystemError EnumSubKey(uint32_t index, std::string& name) override {
    return Call([&] { return m_inner->EnumSubKey(index, name); });
  }
  SystemError EnumValue(uint32_t index, std::string& name) override {
    return Call([&] { return m_inner->EnumValue(index, name); });
  }
  SystemError QueryValue(const std::string& name, uint32_t& type, std::string& data) override {
    return Call([&] { return m_inner->QueryValue(name, type, data); });
  }
  SystemError SetValue(const std::string& name, uint32_t type, const std::string& data) override {
    return Call([&] { return m_inner->SetValue(name, type, data); });
  }
  SystemError DeleteValue(const std::string& name) override {
    return Call([&] { return m_inner->DeleteValue(name); });
  }

 private:
  template <class Operation>
  SystemError Call(Operation operation) {
    return Run(m_plan, Facility::Registry, operation);
  }
  template <class Operation>
  SystemError Wrap(std::unique_ptr<CRegistryKey>& key, Operation operation) {
    std::unique_ptr<CRegistryKey> inner;
    const SystemError error = operation(inner);
    if (error == kErrorSuccess) key = std::make_unique<CFailingKey>(m_plan, std::move(inner));
    return error;
  }

  CFaultPlan& m_plan;
  std::unique_ptr<CRegistryKey> m_inner;
};

class CFailingRegistry final : public CRegistry {
 public:
  CFailingRegistry(CFaultPlan& plan, CRegistry& inner) : m_plan(plan), m_inner(inner) {}
  SystemError OpenRoot(RegistryRoot root, std::unique_ptr<CRegistryKey>& key) override {
    return Run(m_plan, Facility::Registry, [&] {
      std::unique_ptr<CRegistryKey> inner;
      const SystemError error = m_inner.OpenRoot(root, inner);
      if (error == kErrorSuccess) key = std::make_unique<CFailingKey>(m_plan, std::move(inner));
      return error;
    });
  }

 private:
  CFaultPlan& m_plan;
  CRegistry& m_inner;
};

class CFailingProcess final : public CProcess {
 public:
  CFailingProcess(CFaultPlan& plan, std::unique_ptr<CProcess> inner)
      : m_plan(plan), m_inner(std::move(inner)) {}
  os::NativeHandle Native() const override { return m_inner->Native(); }
  SystemError RequestClose() override {
    return Run(m_plan, Facility::Processes, [&] { return m_inner->RequestClose(); });
  }
  SystemError Terminate() override {
    return Run(m_plan, Facility::Processes, [&] { return m_inner->Terminate(); });
  }

 private:
  CFaultPlan& m_plan;
  std::unique_ptr<CProcess> m_inner;
};

class CFailingProcessList final : public CProcessList {
 public:
  CFailingProcessList(CFaultPlan& plan, std::unique_ptr<CProcessList> inner)
      : m_plan(plan), m_inner(std::move(inner)) {}
  SystemError Next(ProcessRecord& record) override {
    return Run(m_plan, Facility::Processes, [&] { return m_inner->Next(record); });
  }

 private:
  CFaultPlan& m_plan;
  std::unique_ptr<CProcessList> m_inner;
};

class CFailingProcesses final : public CProcesses {
 public:
  CFailingProcesses(CFaultPlan& plan, CProcesses& inner) : m_plan(plan), m_inner(inner) {}
  SystemError Enumerate(uint32_t wanted, std::unique_ptr<CProcessList>& list) override {
    return Run(m_plan, Facility::Processes, [&] {
      std::unique_ptr<CProcessList> inner;
      const SystemError error = m_inner.Enumerate(wanted, inner);
      if (error == kErrorSuccess)
        list = std::make_unique<CFailingProcessList>(m_plan, std::move(inner));
      return error;
    });
  }
  SystemError Open(uint32_t pid, uint64_t startTime, std::unique_ptr<CProcess>& process) override {
    return Run(m_plan, Facility::Processes, [&] {
      std::unique_ptr<CProcess> inner;
      const SystemError error = m_inner.Open(pid, startTime, inner);
      if (error == kErrorSuccess)
        process = std::make_unique<CFailingProcess>(m_plan, std::move(inner));
      return error;
    });
  }
  CWindowsProcesses* Windows() override { return m_inner.Windows(); }

 private:
  CFaultPlan& m_plan;
  CProcesses& m_inner;
};

}  // namespace

CFailingMachine::CFailingMachine(Ref<CMachine> inner) : m_inner(std::move(inner)) {
  if (m_inner->Files()) m_pFiles = std::make_unique<CFailingFileSystem>(m_plan, *m_inner->Files());
  if (m_inner->Registry())
    m_pRegistry = std::make_unique<CFailingRegistry>(m_plan, *m_inner->Registry());
  if (m_inner->Processes())
    m_pProcesses = std::make_unique<CFailingProcesses>(m_plan, *m_inner->Processes());
}

CFailingMachine::~CFailingMachine() = default;

void CFailingMachine::FailCall(uint32_t number, SystemError error, Facility facility) {
  m_plan.FailCall(number, error, facility);
}

CFileSystem* CFailingMachine::Files() {
  return m_pFiles.get();
}
CRegistry* CFailingMachine::Registry() {
  return m_pRegistry.get();
}
CProcesses* CFailingMachine::Processes() {
  return m_pProcesses.get();
}

}  // namespace kestra::test
