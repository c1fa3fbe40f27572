// CEditLineEditor: the line editor of libedit.
#pragma once

#include "cli/shell/input/LineEditor.h"
#include "cli/terminal_linux/EditLibrary.h"
#include "cli/terminal_linux/TerminalMode.h"

namespace kestra::cli {

class CEditLineEditor final : public CLineEditor {
 public:
  // out is a stream that goes to the terminal. Throws std::runtime_error where there is no editing
  // to be had.
  CEditLineEditor(const EditLibrary& edit, std::FILE* out, Completer completer);
  ~CEditLineEditor() override;

  LineInput Read(const std::string& prompt) override;
  void AddHistory(const std::string& entry) override;
  bool HasPendingInput() override;

 private:
  static char* Prompt(EditLine* pLine);
  static unsigned char OnComplete(EditLine* pLine, int key);
  static unsigned char OnInterruptKey(EditLine* pLine, int key);
  static unsigned char OnPasteBegin(EditLine* pLine, int key);
  static unsigned char OnPasteEnd(EditLine* pLine, int key);
  static CEditLineEditor& Of(EditLine* pLine);

  static int ReadCharacter(EditLine* pLine, wchar_t* pCharacter);
  int ReadByte(char& byte);
  bool EndsPaste();
  void BindKeys();
  std::string TextOfLine(size_t& cursor) const;
  unsigned char Complete();
  void Replace(const Completion& completion, const std::string& text);
  void List(const Completion& completion);

  const EditLibrary& m_edit;
  std::FILE* m_pOut;
  Completer m_completer;
  CTerminalMode m_mode;
  EditLine* m_pLine = nullptr;
  History* m_pHistory = nullptr;
  std::string m_prompt;
  bool m_wasInterrupted = false;
  bool m_isPasting = false;      // what comes was pasted, up to the mark behind it
  bool m_hasGivenBlank = false;  // the completion has, with the key before
  std::string m_ahead;           // read from the terminal and not handed out yet
};

}  // namespace kestra::cli
