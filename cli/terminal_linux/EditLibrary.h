// libedit, loaded when the shell begins, so that a query of the command line starts without it.
#pragma once

#include <histedit.h>

namespace kestra::cli {

// The functions that are used, as editline(3) describes them.
struct EditLibrary {
  decltype(&el_init) init = nullptr;
  decltype(&el_end) end = nullptr;
  decltype(&el_gets) gets = nullptr;
  decltype(&el_set) set = nullptr;
  decltype(&el_get) get = nullptr;
  decltype(&el_line) line = nullptr;
  decltype(&el_insertstr) insertText = nullptr;
  decltype(&el_deletestr) deleteBefore = nullptr;
  decltype(&el_cursor) moveCursor = nullptr;
  decltype(&el_push) push = nullptr;
  decltype(&el_resize) resize = nullptr;
  decltype(&el_source) source = nullptr;
  decltype(&history_init) historyInit = nullptr;
  decltype(&history_end) historyEnd = nullptr;
  decltype(&history) changeHistory = nullptr;
};

// Null where the library is not installed.
const EditLibrary* LoadEditLibrary();

}  // namespace kestra::cli
