// CEditedLine: a line that is being typed, and the lines before it that can be brought back. For
// systems whose terminals leave that to the program.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace kestra::cli {

// One thread. The cursor never stands inside a character, nor before a mark that belongs to the
// character before it.
class CEditedLine {
 public:
  const std::string& Text() const { return m_text; }
  size_t Cursor() const { return m_cursor; }  // a byte of the text, or its length

  // A new line. What is in the history stays.
  void Begin();

  void Insert(std::string_view utf8);
  // Puts a text in the place of some bytes of the line, and the cursor behind it.
  void Replace(size_t offset, size_t length, std::string_view utf8);
  void DeleteBefore();
  void DeleteBehind();
  void DeleteWordBefore();
  void DeleteToStart();
  void DeleteToEnd();
  void GoLeft();
  void GoRight();
  void GoWordLeft();
  void GoWordRight();
  void GoToStart() { m_cursor = 0; }
  void GoToEnd() { m_cursor = m_text.size(); }

  // Equal entries are kept once, and the youngest thousand.
  void AddHistory(const std::string& entry);
  // The entry before or behind the one that is shown; behind the youngest stands what was typed.
  void ShowOlder();
  void ShowNewer();
  // The next older entry that begins with what stands before the cursor, which stays where it is.
  void ShowOlderAlike();

 private:
  size_t CharacterBefore() const;
  size_t CharacterBehind() const;
  size_t WordBefore() const;
  size_t WordBehind() const;
  void Show(size_t entry);

  std::string m_text;
  size_t m_cursor = 0;
  std::vector<std::string> m_history;
  size_t m_entry = 0;   // that is shown; as many as there are: none
  std::string m_typed;  // while an entry is shown: what it took the place of
};

}  // namespace kestra::cli
