#include "cli/shell/input/LineEditor.h"

#include <cstdio>
#include <exception>

#include "cli/Terminal.h"
#include "cli/terminal_linux/EditLineEditor.h"
#include "cli/terminal_linux/PlainLineEditor.h"

namespace kestra::cli {

std::unique_ptr<CLineEditor> MakeLineEditor(Completer completer) {
  std::FILE* const out = IsTerminal(Stream::Out) ? stdout : stderr;
  const std::string kind = EnvironmentText("TERM").value_or("dumb");
  const EditLibrary* pEdit = kind.empty() || kind == "dumb" ? nullptr : LoadEditLibrary();
  if (pEdit && IsTerminal(out == stdout ? Stream::Out : Stream::Error)) {
    try {
      return std::make_unique<CEditLineEditor>(*pEdit, out, std::move(completer));
    } catch (const std::exception&) {
      // Lines can be read without it.
    }
  }
  return std::make_unique<CPlainLineEditor>(out);
}

}  // namespace kestra::cli
