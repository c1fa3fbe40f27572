// Queries of all kinds in one session, by the hundred thousand: memory, descriptors and threads
// stay what they were after the first thousand.
//
//   kestra_soak PLUGINS-FOLDER WORDS-LIBRARY [QUERIES]
//
// Prints a line after the first thousand, after each tenth of the rest, and at the end, each time
// with a root that was just made. The exit status is 1 if the process holds more blocks of memory
// than it may, is larger, or has more descriptors or threads, or if a query did not give what it
// must. Linux alone: it reads /proc/self.
#include <kestra/kestra.h>

#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <string>
#include <thread>
#include <vector>

#include "tests/support/FailingMemory.h"
#include "tests/support/TempDirectory.h"

namespace {

namespace fs = std::filesystem;

constexpr uint64_t kFirst = 1000;
constexpr uint64_t kUsualQueries = 5000;
// Nothing is left of a query; what little may come and go is in flight on another thread.
constexpr int64_t kMostBlocks = 100;
constexpr int64_t kMostGrowth = 16384;  // KiB of resident memory, which has holes in it
// A thread that has once waited for a lock keeps the event that it waits on (CInterruptibleLock),
// and of the threads here only the first lives on. Whether it ever has to wait is chance.
constexpr int64_t kMostDescriptors = 1;
constexpr int kSettleTurns = 50;

struct State {
  int64_t blocks = 0;
  int64_t residentKiB = 0;
  int64_t descriptors = 0;
  int64_t threads = 0;
};

int64_t CountEntries(const char* folder) {
  return std::distance(fs::directory_iterator(folder), fs::directory_iterator());
}

State Now() {
  State state;
  std::ifstream status("/proc/self/status");
  for (std::string line; std::getline(status, line);) {
    if (line.rfind("VmRSS:", 0) == 0) state.residentKiB = std::atoll(line.c_str() + 6);
  }
  state.blocks = kestra::test::OutstandingBlocks();
  state.descriptors = CountEntries("/proc/self/fd");
  state.threads = CountEntries("/proc/self/task");
  return state;
}

class CSoak {
 public:
  CSoak(const char* pPlugins, const char* pWords) : m_plugins(pPlugins), m_words(pWords) {
    const std::string cache = m_directory.Path() + "/cache";
    kestra_options options{};
    options.struct_size = sizeof options;
    options.cache_directory = cache.c_str();
    Check(kestra_session_create(&options, &m_pSession), "create");
    Check(kestra_session_allow_active(m_pSession, 1), "allow_active");
    Check(kestra_session_set_query_complete(m_pSession, &OnComplete, this), "sink");
    m_ini = m_directory.Write("a.ini", "[s]\nk=v\n[t]\nk=w\n");
    m_notes = m_directory.Write("notes", "call Ann\nx write\n");
    for (int i = 0; i < 20; ++i) m_directory.Write("f" + std::to_string(i) + ".txt", "text");
    MakeQueries();
  }
  ~CSoak() { kestra_session_destroy(m_pSession); }
  CSoak(const CSoak&) = delete;
  CSoak& operator=(const CSoak&) = delete;

  void Turn(uint64_t number) {
    const Query& query = m_queries[number % m_queries.size()];
    Run(query);
    if (number % 7 == 0) LookAt(query.text);
    if (number % 50 == 0) RunAsync();
    if (number % 101 == 0) Cancel();
    if (number % 500 == 0) Rebuild(number / 500);
  }
  // Makes the session hold as much each time: no worker, no ended filling, and a root that was just
  // made.
  void Level();
  uint64_t Faults() const { return m_faults; }

 private:
  struct Query {
    std::string text;
    bool isError = false;
    uint32_t timeOut = KESTRA_NO_TIMEOUT;
  };

  void Check(kestra_status status, const std::string& what) {
    if (status == KESTRA_OK) return;
    if (++m_faults < 20) std::cerr << what << ": status " << status << "\n";
  }

  void MakeQueries();
  void Run(const Query& query);
  void Read(const kestra_value* value);
  void ReadItem(kestra_item* item);
  void LookAt(const std::string& text);
  void RunAsync();
  void Cancel();
  void Rebuild(uint64_t number);
  static void OnComplete(void* context, kestra_value*) {
    ++static_cast<CSoak*>(context)->m_completed;
  }

  const kestra::test::CTempDirectory m_directory;
  const std::string m_plugins, m_words;
  std::string m_ini, m_notes;
  kestra_session* m_pSession = nullptr;
  std::vector<Query> m_queries;
  uint64_t m_completed = 0;
  uint64_t m_faults = 0;
};

void CSoak::MakeQueries() {
  const std::string dir = m_directory.Path();
  const std::string ini = "IniFile(Path='" + m_ini + "')";
  const std::string notes = "Notes(File='" + m_notes + "')";
  std::string longList = "'x'";
  for (int i = 0; i < 300; ++i) longList += ",'element " + std::to_string(i) + "'";
  m_queries = {
      {"1 + 2 * 3 - 4"},
      {"'a' + RIGHT('abc', 2)"},
      {"LEN('" + std::string(5000, 'x') + "')"},
      {longList},
      {"'element 299' IN (" + longList + ")"},
      {"DATEADD(dd, 1, GETDATE())"},
      {"CONVERT(VERSION, '1.2b') > CONVERT(VERSION, '1.2')"},
      {"SELECT", true},
      {"SELECT a FROM", true},
      {"'open", true},
      {"SELECT Nope FROM Processes.Process", true},
      {"1 / 0", true},
      {std::string(2000, '('), true},
      {"SELECT PID, ImageName FROM Processes.Process WHERE MemoryUsage > 1000"},
      {"SELECT * FROM Processes.Process WHERE ImageName LIKE '*s*'"},
      {"SELECT a.PID FROM Processes.Process a JOIN Processes.Process b ON a.ParentProcessID = "
       "b.PID"},
      {"SELECT MAX(MemoryUsage) FROM Processes(ShowUserAndComLine=1)#60.Process"},
      {"SELECT PID FROM Processes.Process WHERE PID = (SELECT MIN(PID) FROM Processes.Process)"},
      {"SELECT FileName, Size FROM FILES.FILE('" + dir + "/*.txt') WHERE Size > 0"},
      {"SELECT FileName FROM FILES.FILE('" + dir + "/none')"},
      {"SELECT * FROM Files(DirPath='" + dir + "', Levels=2).File"},
      {"SELECT Name, StringValue FROM " + ini + ".IniKey"},
      {"UPDATE " + ini + ".IniKey SET StringValue = 'new' WHERE Name = 'k'"},
      {"SELECT Text FROM " + notes + "#60.Note"},
      {"UPDATE " + notes + ".Note SET Done = 'yes' WHERE Text = 'call Ann'"},
      {"UPDATE " + notes + ".Note SET Done = 'no' WHERE Text = 'call Ann'"},
      {"CREATE PROCEDURE a AS SELECT PID FROM Processes.Process CREATE PROCEDURE b AS 1 / 0"},
      {"CALLDLL('" + m_words + "', 'Join', 'a', 'b')"},
      {"CALLDLL('" + m_words + "', 'Fail')", true},
      {"SELECT FileName FROM FILES.FILE('/usr/share/*/*/*')", true, 1},
      {"SELECT Id FROM FILES.FILE('/*')", true},
      {"DROP MODULE Processes"},
  };
}

void CSoak::ReadItem(kestra_item* item) {
  kestra_params* params = nullptr;
  const char* text = nullptr;
  Check(kestra_item_xml_dump(item, 0, &text, nullptr), "dump");
  Check(kestra_item_params(item, &params), "params");
  int32_t count = 0;
  kestra_params_count(params, &count);
  for (int32_t i = 1; i <= count; ++i) {
    kestra_param* param = nullptr;
    Check(kestra_params_item(params, i, &param), "param");
    kestra_param_string_value(param, &text, nullptr);
    kestra_param_release(param);
  }
  kestra_params_release(params);
}

void CSoak::Read(const kestra_value* value) {
  kestra_values* values = nullptr;
  kestra_item* item = nullptr;
  if (kestra_value_as_vdiag_item(value, &item) == KESTRA_OK) {
    ReadItem(item);
    kestra_item_release(item);
  }
  if (kestra_value_as_vector(value, &values) != KESTRA_OK) return;
  int32_t count = 0;
  kestra_values_count(values, &count);
  for (int32_t i = 0; i < count && i < 10; ++i) {
    kestra_value* element = nullptr;
    const char* text = nullptr;
    Check(kestra_values_value(values, i, &element), "element");
    kestra_value_as_string(element, &text, nullptr);
    Read(element);
    kestra_value_release(element);
  }
  kestra_values_release(values);
}

void CSoak::Run(const Query& query) {
  kestra_value* value = nullptr;
  const auto size = query.text.size();
  Check(kestra_session_run_query_sync_n(m_pSession, query.text.data(), size, nullptr, query.timeOut,
                                        &value),
        query.text);
  int32_t isError = 0;
  kestra_value_is_error(value, &isError);
  const bool isTimed = query.timeOut != KESTRA_NO_TIMEOUT;
  if (!isTimed && (isError != 0) != query.isError && ++m_faults < 20) {
    const char* text = "";
    kestra_value_as_string(value, &text, nullptr);
    std::cerr << query.text.substr(0, 200) << ": " << text << "\n";
  }
  Read(value);
  kestra_value_release(value);
}

// What a shell asks beside the query itself.
void CSoak::LookAt(const std::string& text) {
  const char* plan = nullptr;
  kestra_diagnosis* diagnosis = nullptr;
  kestra_completions* completions = nullptr;
  kestra_columns* columns = nullptr;
  kestra_session_explain(m_pSession, text.data(), text.size(), &plan);
  if (kestra_session_diagnose(m_pSession, text.data(), text.size(), &diagnosis) == KESTRA_OK) {
    kestra_diagnosis_release(diagnosis);
  }
  Check(
      kestra_session_complete(m_pSession, text.data(), text.size(), text.size() / 2, &completions),
      "complete");
  kestra_completions_release(completions);
  Check(kestra_session_columns(m_pSession, &columns), "columns");
  kestra_columns_release(columns);
  kestra_session_next_notice(m_pSession, &plan);
}

void CSoak::RunAsync() {
  const std::string text = "SELECT COUNT(*) FROM Processes.Process";
  const uint64_t before = m_completed;
  Check(kestra_session_run_query(m_pSession, text.data(), text.size(), KESTRA_NO_TIMEOUT), "async");
  for (int i = 0; i < 20000 && m_completed == before; ++i) {
    kestra_session_dispatch_events(m_pSession, nullptr);
    if (m_completed == before) std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
  if (m_completed == before) Check(KESTRA_E_FAIL, "nothing was dispatched");
}

void CSoak::Cancel() {
  const std::string text = "SELECT COUNT(*) FROM Files(DirPath='/usr', Levels=20).File";
  Check(kestra_session_run_query(m_pSession, text.data(), text.size(), KESTRA_NO_TIMEOUT), "async");
  Check(kestra_session_cancel_query(m_pSession), "cancel");
}

// What makes the root anew, and what fills it on other threads.
void CSoak::Rebuild(uint64_t number) {
  switch (number % 4) {
    case 0:
      Check(kestra_session_set_plugins_dir(m_pSession, m_plugins.c_str()), "set_plugins_dir");
      break;
    case 1:
      Check(kestra_session_init_diag_module(m_pSession, "Processes", nullptr, 1), "init_module");
      break;
    case 2:
      Check(kestra_session_reinit_diag_root(m_pSession), "reinit");
      break;
    default:
      Check(kestra_session_clear_plugins(m_pSession), "clear_plugins");
      Check(kestra_session_set_plugins_dir(m_pSession, m_plugins.c_str()), "set_plugins_dir");
  }
}

void CSoak::Level() {
  Rebuild(0);
  Run({"(SELECT COUNT(*) FROM Processes.Process) > 0"});
  Check(kestra_session_cancel_query(m_pSession), "cancel");
  // One that is filled is not filled again, but ended threads are forgotten.
  Check(kestra_session_init_diag_module(m_pSession, "Processes", nullptr, 0), "init_module");
  Check(kestra_session_reinit_diag_root(m_pSession), "reinit");
  Run({"1"});
}

// A filling that still runs ends in a moment.
State Settled(CSoak& soak, const State* pBefore) {
  State state;
  for (int i = 0; i < kSettleTurns; ++i) {
    soak.Level();
    state = Now();
    const bool isCalm = !pBefore || (state.threads <= pBefore->threads &&
                                     state.descriptors <= pBefore->descriptors);
    if (isCalm && i > 0) break;
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
  }
  return state;
}

void Print(uint64_t queries, const State& state) {
  std::cout << queries << " queries: " << state.blocks << " blocks, " << state.residentKiB
            << " KiB, " << state.descriptors << " descriptors, " << state.threads << " threads"
            << std::endl;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 3) {
    std::cerr << "kestra_soak PLUGINS-FOLDER WORDS-LIBRARY [QUERIES]\n";
    return 2;
  }
  const uint64_t given = argc > 3 ? static_cast<uint64_t>(std::atoll(argv[3])) : kUsualQueries;
  const uint64_t queries = given > kFirst ? given : kUsualQueries;
  const uint64_t step = queries / 10;
  CSoak soak(argv[1], argv[2]);
  State first{};
  for (uint64_t i = 0; i < queries; ++i) {
    soak.Turn(i);
    const bool isFirst = i + 1 == kFirst;
    if (!isFirst && (i + 1 < kFirst || (i + 1) % step != 0)) continue;
    const State state = Settled(soak, isFirst ? nullptr : &first);
    if (isFirst) first = state;
    Print(i + 1, state);
  }
  const State last = Settled(soak, &first);
  Print(queries, last);
  const bool hasGrown = last.blocks > first.blocks + kMostBlocks ||
                        last.residentKiB > first.residentKiB + kMostGrowth ||
                        last.descriptors > first.descriptors + kMostDescriptors ||
                        last.threads > first.threads;
  std::cout << (hasGrown ? "has grown" : "has not grown") << ", " << soak.Faults() << " faults\n";
  return hasGrown || soak.Faults() > 0 ? 1 : 0;
}
