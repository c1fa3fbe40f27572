#include "cli/terminal_linux/EditLibrary.h"

#include <dlfcn.h>

namespace kestra::cli {
namespace {

template <class Function>
bool Find(void* library, const char* name, Function& function) {
  function = reinterpret_cast<Function>(dlsym(library, name));
  return function != nullptr;
}

bool Load(EditLibrary& edit) {
  void* library = dlopen("libedit.so.2", RTLD_NOW | RTLD_LOCAL);
  return library && Find(library, "el_init", edit.init) && Find(library, "el_end", edit.end) &&
         Find(library, "el_gets", edit.gets) && Find(library, "el_set", edit.set) &&
         Find(library, "el_get", edit.get) && Find(library, "el_line", edit.line) &&
         Find(library, "el_insertstr", edit.insertText) &&
         Find(library, "el_deletestr", edit.deleteBefore) &&
         Find(library, "el_cursor", edit.moveCursor) && Find(library, "el_push", edit.push) &&
         Find(library, "el_resize", edit.resize) && Find(library, "el_source", edit.source) &&
         Find(library, "history_init", edit.historyInit) &&
         Find(library, "history_end", edit.historyEnd) &&
         Find(library, "history", edit.changeHistory);
}

}  // namespace

const EditLibrary* LoadEditLibrary() {
  static EditLibrary edit;
  static const bool isLoaded = Load(edit);
  return isLoaded ? &edit : nullptr;
}

}  // namespace kestra::cli
