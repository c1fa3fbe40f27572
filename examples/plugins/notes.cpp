// A plug-in that changes: notes, one a line, in a text file of the user's.
//
//   N="Notes(File='/home/me/notes')"
//   kestra --plugins DIR "SELECT Text, Done FROM $N.Note"
//   kestra --plugins DIR --active "INSERT $N.Note (Text) VALUES ('call Ann')"
//   kestra --plugins DIR --active "UPDATE $N.Note SET Done = 'yes' WHERE Text = 'call Ann'"
//   kestra --plugins DIR --active "EXECUTE Action(SELECT * FROM $N.Notes, 'Tidy')"
//
// A line of the file is a note; one that is done begins with "x ".
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <map>
#include <mutex>
#include <system_error>
#include <vector>

#include "text.h"

KESTRA_PLUGIN("Diagnostic plugin, an example: notes in a text file");

namespace {

constexpr char kClass[] = R"(
[Notes]
 [_Args]
  [File]
   Type = String
   Default = ""
  []
 []
 [_Actions]
  [Tidy]
  []
 []
 [Note]
  _CanBeAdded = 1
  _CanBeDeleted = 1
  [_Params]
   [Text]
    Type = String
    _CanBeChanged = 1
   []
   [Done]
    Type = Enum
    _CanBeChanged = 1
    [_Ops]
     0 = no
     1 = yes
    []
   []
  []
 []
[]
)";

constexpr uint32_t kErrorFileNotFound = 2;
constexpr uint32_t kErrorAccessDenied = 5;
constexpr uint32_t kErrorInvalidParameter = 87;

struct Note {
  std::string text;
  bool isDone = false;
  bool isGone = false;  // deleted since; the numbers of the others stay
};

// What was given out under one _ModuleId, so that a later change means the same notes.
struct KeptModule {
  std::string file;
  std::vector<Note> notes;
};

std::mutex g_lock;  // guards the two below, and the files
std::map<std::string, KeptModule> g_modules;
unsigned g_lastId = 0;

bool ReadNotes(const std::string& file, std::vector<Note>& notes) {
  std::ifstream in(file);
  for (std::string line; std::getline(in, line);) {
    const bool isDone = line.rfind("x ", 0) == 0;
    if (!line.empty()) notes.push_back({isDone ? line.substr(2) : line, isDone});
  }
  return in.eof() && !in.bad();
}

// Beside the file, and then in its place, so that a full disk loses no note.
bool WriteNotes(const KeptModule& module) {
  const std::string fresh = module.file + ".new";
  std::ofstream out(fresh, std::ios::trunc);
  for (const Note& note : module.notes) {
    if (!note.isGone) out << (note.isDone ? "x " : "") << note.text << '\n';
  }
  out.close();
  std::error_code error;
  if (out) std::filesystem::rename(fresh, module.file, error);  // also over a file that is there
  if (out && !error) return true;
  std::remove(fresh.c_str());
  return false;
}

std::string Answer(uint32_t error) {
  example::CSectionWriter out;
  out.Number("_Result", error == 0 ? 1 : 0);
  out.Open("_Ops");
  out.Number("_Result", error == 0 ? 1 : 0);
  out.Number("_SystemErr", error);
  out.Close();
  return out.Text();
}

using Request = std::map<std::string, std::string>;

std::string ValueOf(const Request& request, const std::string& key, const std::string& fallback) {
  const auto found = request.find(key);
  return found == request.end() ? fallback : found->second;
}

// One change to what is kept; an error number.
uint32_t Change(KeptModule& module, size_t number, const Request& request) {
  const std::string op = ValueOf(request, "_Op", "");
  if (op == "Add") {
    module.notes.push_back(
        {ValueOf(request, "_Params\\Text", ""), ValueOf(request, "_Params\\Done", "0") == "1"});
    return module.notes.back().text.empty() ? kErrorInvalidParameter : 0;
  }
  if (op == "Action") {  // there is but one
    for (Note& note : module.notes) note.isGone = note.isGone || note.isDone;
    return 0;
  }
  if (number >= module.notes.size() || module.notes[number].isGone) return kErrorFileNotFound;
  Note& note = module.notes[number];
  note.isGone = op == "Delete";
  note.text = ValueOf(request, "_Params\\Text", note.text);
  note.isDone = ValueOf(request, "_Params\\Done", note.isDone ? "1" : "0") == "1";
  return note.text.empty() ? kErrorInvalidParameter : 0;
}

// "7-0" is the first note of module 7.
uint32_t Apply(const Request& request) {
  const std::string item = ValueOf(request, "_Item", "");
  const size_t dash = item.find('-');
  const auto found = g_modules.find(item.substr(0, dash));
  if (found == g_modules.end()) return kErrorFileNotFound;
  const size_t number =
      dash == std::string::npos ? SIZE_MAX : std::stoul("0" + item.substr(dash + 1));
  KeptModule changed = found->second;
  if (const uint32_t error = Change(changed, number, request)) return error;
  if (!WriteNotes(changed)) return kErrorAccessDenied;
  found->second = std::move(changed);
  return 0;
}

}  // namespace

extern "C" {

KESTRA_EXPORT BSTR GetModuleNames() {
  return example::ToBstr("Notes");
}

KESTRA_EXPORT BSTR GetModuleTypeInfo(BSTR) {
  return example::ToBstr(kClass);
}

KESTRA_EXPORT BSTR GetModule(BSTR, BSTR arguments, int, int, int) {
  const std::string text = example::FromBstr(arguments);  // File='...', or nothing
  const size_t open = text.find('\'');
  KeptModule module;
  if (open == std::string::npos) return nullptr;
  module.file = text.substr(open + 1, text.rfind('\'') - open - 1);
  const std::lock_guard guard(g_lock);
  if (!ReadNotes(module.file, module.notes)) return nullptr;
  const std::string id = std::to_string(++g_lastId);
  example::CSectionWriter out;
  out.Open("Notes");
  out.Value("_ModuleId", id);
  for (const Note& note : module.notes) {
    out.Open("Note");
    out.Value("Text", note.text);
    out.Number("Done", note.isDone ? 1 : 0);
    out.Close();
  }
  out.Close();
  g_modules[id] = std::move(module);
  return example::ToBstr(out.Text());
}

KESTRA_EXPORT void ClearModule(BSTR id, int) {
  const std::lock_guard guard(g_lock);
  g_modules.erase(example::FromBstr(id));
}

KESTRA_EXPORT BSTR Update(BSTR request, int) {
  const std::lock_guard guard(g_lock);
  return example::ToBstr(Answer(Apply(example::ReadSections(example::FromBstr(request)))));
}
}
