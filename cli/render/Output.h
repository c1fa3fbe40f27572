// Where a result is written to.
#pragma once

#include <cstdio>
#include <stdexcept>
#include <string>
#include <string_view>

namespace kestra::cli {

// What could not be written, and why.
class COutputError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// One thread. Write and Flush throw COutputError.
class COutput {
 public:
  virtual ~COutput() = default;
  virtual void Write(std::string_view text) = 0;
  virtual void Flush() {}
  // Whether what is written is shown to somebody at once.
  virtual bool IsTerminal() const { return false; }
};

class CStringOutput final : public COutput {
 public:
  void Write(std::string_view text) override { content.append(text); }
  std::string content;
};

// A stream of the process. What is not flushed is lost. A terminal gets no control characters but
// ends of lines and tabs, whatever the format: the names of files and processes are not to drive
// it.
class CFileOutput final : public COutput {
 public:
  CFileOutput(std::FILE* pFile, std::string name, bool isTerminal = false)
      : m_pFile(pFile), m_name(std::move(name)), m_isTerminal(isTerminal) {}
  // The text ends where a character ends.
  void Write(std::string_view text) override;
  void Flush() override;
  bool IsTerminal() const override { return m_isTerminal; }

 private:
  std::FILE* m_pFile;
  std::string m_name;
  bool m_isTerminal;
  std::string m_buffer;
};

}  // namespace kestra::cli
