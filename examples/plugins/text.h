// The texts that a plug-in and Kestra hand each other: sections of values, as kestra/plugin.h
// tells. Part of the examples, and free to be copied.
#pragma once

#include <kestra/plugin.h>

#include <algorithm>
#include <cstdint>
#include <map>
#include <string>

namespace example {

// Writes sections.
class CSectionWriter {
 public:
  void Open(const std::string& name) { m_text += "[" + name + "]\n"; }
  void Close() { m_text += "[]\n"; }
  // The quotes keep blanks at both ends. A line end would end the value, so it becomes a blank.
  void Value(const std::string& key, std::string text) {
    for (char& c : text) {
      if (c == '\n' || c == '\r') c = ' ';
    }
    m_text += key + " = \"" + text + "\"\n";
  }
  void Number(const std::string& key, uint32_t number) {
    m_text += key + " = " + std::to_string(number) + "\n";
  }
  const std::string& Text() const { return m_text; }

 private:
  std::string m_text;
};

// Reads sections into one flat list: "_Op", "_Params\Text".
inline std::map<std::string, std::string> ReadSections(const std::string& text) {
  const auto trim = [](std::string part) {
    part.erase(0, part.find_first_not_of(" \t\r\v"));
    part.erase(part.find_last_not_of(" \t\r\v") + 1);
    return part;
  };
  std::map<std::string, std::string> values;
  std::string path;  // with a backslash behind each name
  for (size_t start = 0; start < text.size();) {
    const size_t end = std::min(text.find('\n', start), text.size());
    const std::string line = trim(text.substr(start, end - start));
    start = end + 1;
    const size_t equals = line.find('=');
    if (line == "[]") {
      const size_t above = path.size() < 2 ? std::string::npos : path.rfind('\\', path.size() - 2);
      path.erase(above == std::string::npos ? 0 : above + 1);
    } else if (line.size() > 2 && line.front() == '[') {
      path += line.substr(1, line.find(']') - 1) + "\\";
    } else if (equals != std::string::npos) {
      values[path + trim(line.substr(0, equals))] = trim(line.substr(equals + 1));
    }
  }
  return values;
}

inline BSTR ToBstr(const std::string& text) {
  return SysAllocStringByteLen(text.data(), static_cast<unsigned int>(text.size()));
}

inline std::string FromBstr(BSTR text) {
  return text ? std::string(text, SysStringByteLen(text)) : std::string();
}

}  // namespace example
