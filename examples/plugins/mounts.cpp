// A plug-in that reads: what is mounted where.
//
//   kestra --plugins DIR "SELECT Directory, Type FROM Mounts.Mount WHERE Options = 'ReadOnly'"
//   kestra --plugins DIR "SELECT * FROM Mounts(Type='tmpfs').Mount"
#include <fstream>
#include <sstream>

#include "text.h"

KESTRA_PLUGIN("Diagnostic plugin, an example: what is mounted where");

namespace {

constexpr char kClass[] = R"(
[Mounts]
 [_Args]
  [Type]
   Type = String
   Default = ""
  []
 []
 [Mount]
  [_Params]
   [Device]
    Type = String
   []
   [Directory]
    Type = String
   []
   [Type]
    Type = String
   []
   [Options]
    Type = Bitmask
    [_Ops]
     0 = ReadOnly
     1 = NoSetuid
     2 = NoExecute
     3 = NoDevices
    []
   []
  []
 []
[]
)";

// The bits of the class's Options.
uint32_t OptionBits(const std::string& options) {
  constexpr const char* kWords[] = {"ro", "nosuid", "noexec", "nodev"};
  uint32_t bits = 0;
  std::istringstream words(options);
  for (std::string word; std::getline(words, word, ',');) {
    for (uint32_t i = 0; i < 4; ++i) {
      if (word == kWords[i]) bits |= 1u << i;
    }
  }
  return bits;
}

// A blank in a name stands as \040 in the file; see fstab(5).
std::string Unescape(const std::string& field) {
  std::string name;
  for (size_t i = 0; i < field.size(); ++i) {
    const bool isOctal = field[i] == '\\' && field.size() - i > 3 &&
                         field.find_first_not_of("01234567", i + 1) >= i + 4;
    if (isOctal) {
      name += static_cast<char>(std::stoi(field.substr(i + 1, 3), nullptr, 8));
      i += 3;
    } else {
      name += field[i];
    }
  }
  return name;
}

// What stands in Type='tmpfs' among the arguments; empty for none.
std::string WantedType(const std::string& arguments) {
  const size_t open = arguments.find('\'');
  const size_t close = arguments.rfind('\'');
  return close == open ? std::string() : arguments.substr(open + 1, close - open - 1);
}

}  // namespace

extern "C" {

KESTRA_EXPORT BSTR GetModuleNames() {
  return example::ToBstr("Mounts");
}

KESTRA_EXPORT BSTR GetModuleTypeInfo(BSTR) {
  return example::ToBstr(kClass);
}

KESTRA_EXPORT BSTR GetModule(BSTR, BSTR arguments, int, int, int) {
  std::ifstream mounts("/proc/self/mounts");
  if (!mounts) return nullptr;  // could not be read: the query fails rather than show nothing
  const std::string wanted = WantedType(example::FromBstr(arguments));
  example::CSectionWriter out;
  out.Open("Mounts");
  for (std::string line; std::getline(mounts, line);) {
    std::istringstream fields(line);
    std::string device, directory, type, options;
    if (!(fields >> device >> directory >> type >> options)) continue;
    if (!wanted.empty() && type != wanted) continue;
    out.Open("Mount");
    out.Value("Device", Unescape(device));
    out.Value("Directory", Unescape(directory));
    out.Value("Type", type);
    out.Number("Options", OptionBits(options));
    out.Close();
  }
  out.Close();
  return example::ToBstr(out.Text());
}
}
