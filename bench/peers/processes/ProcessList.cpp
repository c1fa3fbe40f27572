// Lists all processes with libproc2: the same fields as "SELECT * FROM
// Processes(ShowUserAndComLine=1).Process" has on Linux, one process a line, separated by tabs. The
// count of descriptors and the width of the program, which the library does not offer, are read as
// cheaply as it goes: the width once for each program.
#include <fcntl.h>
#include <libproc2/pids.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <iterator>
#include <string>
#include <unordered_map>

namespace {

// The macro that reads a field takes pInfo in some versions of the library, and not in others.
enum Field { kPid, kParent, kName, kPath, kResident, kUser, kCommand, kFieldCount };
pids_item g_items[] = {PIDS_ID_PID, PIDS_ID_PPID,  PIDS_CMD,    PIDS_EXE,
                       PIDS_RSS,    PIDS_ID_EUSER, PIDS_CMDLINE};
static_assert(std::size(g_items) == kFieldCount);

// Since Linux 6.2 the size of the directory is the number of descriptors.
long DescriptorCount(int pid) {
  const std::string path = "/proc/" + std::to_string(pid) + "/fd";
  struct stat status {};
  if (stat(path.c_str(), &status) != 0) return -1;
  if (status.st_size > 0) return status.st_size;
  std::error_code error;
  long count = 0;
  std::filesystem::directory_iterator entry(path, error);
  for (; !error && entry != std::filesystem::directory_iterator(); entry.increment(error)) ++count;
  return count;
}

// 32 or 64; 0 if it cannot be told. The fifth byte of an ELF file tells it.
int Width(int pid, const std::string& program) {
  static std::unordered_map<std::string, int> widths;
  const auto [known, isNew] = widths.try_emplace(program, 0);
  if (!isNew) return known->second;
  const int file = open(("/proc/" + std::to_string(pid) + "/exe").c_str(), O_RDONLY | O_CLOEXEC);
  char head[5];
  if (file >= 0 && read(file, head, sizeof head) == sizeof head) {
    known->second = head[4] == 1 ? 32 : head[4] == 2 ? 64 : 0;
  }
  if (file >= 0) close(file);
  return known->second;
}

void Print(pids_stack* pStack, [[maybe_unused]] pids_info* pInfo, long pageKB) {
  const int pid = PIDS_VAL(kPid, s_int, pStack, pInfo);
  const std::string path = PIDS_VAL(kPath, str, pStack, pInfo);
  const bool hasProgram = path.starts_with('/');
  const unsigned long resident = PIDS_VAL(kResident, ul_int, pStack, pInfo);
  std::printf("%d\t%d\t%s\t%s\t%lu\t%ld\t%s\t%s\t%d\n", pid,
              PIDS_VAL(kParent, s_int, pStack, pInfo), PIDS_VAL(kName, str, pStack, pInfo),
              path.c_str(), resident * static_cast<unsigned long>(pageKB),
              hasProgram ? DescriptorCount(pid) : 0, PIDS_VAL(kUser, str, pStack, pInfo),
              PIDS_VAL(kCommand, str, pStack, pInfo), hasProgram ? Width(pid, path) : 0);
}

}  // namespace

int main() {
  pids_info* pInfo = nullptr;
  if (procps_pids_new(&pInfo, g_items, kFieldCount) < 0) {
    std::fputs("the library does not begin\n", stderr);
    return 1;
  }
  const long pageKB = sysconf(_SC_PAGESIZE) / 1024;
  while (pids_stack* pStack = procps_pids_get(pInfo, PIDS_FETCH_TASKS_ONLY)) {
    Print(pStack, pInfo, pageKB);
  }
  procps_pids_unref(&pInfo);
  return std::fflush(stdout) == 0 ? 0 : 1;
}
