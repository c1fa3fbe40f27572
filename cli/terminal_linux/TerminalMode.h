// CTerminalMode: the mode of the terminal that standard input is, while a shell has it.
#pragma once

namespace kestra::cli {

// One object in the process. The terminal is as it was found when the object goes, when a signal
// ends the process, and while it is stopped. The interrupt key does nothing of itself meanwhile.
class CTerminalMode {
 public:
  CTerminalMode();
  ~CTerminalMode();
  CTerminalMode(const CTerminalMode&) = delete;
  CTerminalMode& operator=(const CTerminalMode&) = delete;

  // What is typed waits in the terminal, unseen and as it is, and the interrupt key loses nothing
  // of it.
  void KeepInput();
  // As it was found, for reading whole lines.
  void ReadLines();

  // Has the terminal put a mark before and behind what is pasted (kPasteBegin, kPasteEnd), by
  // writing to a descriptor that goes to it; not while the process is stopped or ended.
  static constexpr const char* kPasteBegin = "\033[200~";
  static constexpr const char* kPasteEnd = "\033[201~";
  void MarkPastes(int fd);
  void LeavePastesAlone();

  // Whether there is something to read now.
  static bool HasInput();
  // Waits until there is something to read (true; the end of input is something too) or a signal
  // came that one of the questions below tells of. To be asked before each read: one alone would
  // not hear of a signal that came just before it, nor wait where another process has set the
  // terminal to O_NONBLOCK.
  static bool AwaitInput();
  // The key that ends the input, where it is read as any other: it was typed while input was kept.
  static char EndKey();

  // What has happened since it was asked last.
  bool TakeInterrupt();
  // The terminal has another size, or somebody else has written on it.
  bool TakeOldDisplay();
};

}  // namespace kestra::cli
