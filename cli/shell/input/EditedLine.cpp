#include "cli/shell/input/EditedLine.h"

#include <algorithm>
#include <cctype>

#include "cli/render/Character.h"

namespace kestra::cli {
namespace {

constexpr size_t kMostEntries = 1000;

// Letters beyond ASCII are parts of words too.
bool IsWordByte(char c) {
  const auto byte = static_cast<unsigned char>(c);
  return byte >= 0x80 || std::isalnum(byte) != 0 || c == '_';
}

// Behind the character at a place, with the marks that belong to it.
size_t BehindCharacter(const std::string& text, size_t place) {
  const std::string_view all = text;
  if (place < text.size()) place += FirstCharacter(all.substr(place)).bytes;
  while (place < text.size()) {
    const TerminalCharacter next = FirstCharacter(all.substr(place));
    if (next.width != 0) break;
    place += next.bytes;
  }
  return place;
}

}  // namespace

void CEditedLine::Begin() {
  m_text.clear();
  m_typed.clear();
  m_cursor = 0;
  m_entry = m_history.size();
}

void CEditedLine::Insert(std::string_view utf8) {
  m_text.insert(m_cursor, utf8);
  m_cursor += utf8.size();
}

void CEditedLine::Replace(size_t offset, size_t length, std::string_view utf8) {
  m_text.replace(offset, length, utf8);
  m_cursor = offset + utf8.size();
}

size_t CEditedLine::CharacterBefore() const {
  size_t before = 0;
  for (size_t place = 0; place < m_cursor; place = BehindCharacter(m_text, place)) before = place;
  return before;
}

size_t CEditedLine::CharacterBehind() const {
  return BehindCharacter(m_text, m_cursor);
}

size_t CEditedLine::WordBefore() const {
  size_t place = m_cursor;
  while (place > 0 && !IsWordByte(m_text[place - 1])) --place;
  while (place > 0 && IsWordByte(m_text[place - 1])) --place;
  return place;
}

size_t CEditedLine::WordBehind() const {
  size_t place = m_cursor;
  while (place < m_text.size() && !IsWordByte(m_text[place])) ++place;
  while (place < m_text.size() && IsWordByte(m_text[place])) ++place;
  return place;
}

void CEditedLine::DeleteBefore() {
  const size_t place = CharacterBefore();
  Replace(place, m_cursor - place, {});
}

void CEditedLine::DeleteBehind() {
  m_text.erase(m_cursor, CharacterBehind() - m_cursor);
}

void CEditedLine::DeleteWordBefore() {
  const size_t place = WordBefore();
  Replace(place, m_cursor - place, {});
}

void CEditedLine::DeleteToStart() {
  Replace(0, m_cursor, {});
}

void CEditedLine::DeleteToEnd() {
  m_text.resize(m_cursor);
}

void CEditedLine::GoLeft() {
  m_cursor = CharacterBefore();
}

void CEditedLine::GoRight() {
  m_cursor = CharacterBehind();
}

void CEditedLine::GoWordLeft() {
  m_cursor = WordBefore();
}

void CEditedLine::GoWordRight() {
  m_cursor = WordBehind();
}

void CEditedLine::AddHistory(const std::string& entry) {
  std::erase(m_history, entry);
  if (m_history.size() == kMostEntries) m_history.erase(m_history.begin());
  m_history.push_back(entry);
  m_entry = m_history.size();
}

void CEditedLine::Show(size_t entry) {
  if (m_entry == m_history.size()) m_typed = m_text;
  m_entry = entry;
  m_text = entry == m_history.size() ? m_typed : m_history[entry];
  m_cursor = m_text.size();
}

void CEditedLine::ShowOlder() {
  if (m_entry > 0) Show(m_entry - 1);
}

void CEditedLine::ShowNewer() {
  if (m_entry < m_history.size()) Show(m_entry + 1);
}

void CEditedLine::ShowOlderAlike() {
  const std::string begun = m_text.substr(0, m_cursor);
  for (size_t entry = m_entry; entry-- > 0;) {
    if (!m_history[entry].starts_with(begun) || m_history[entry] == m_text) continue;
    Show(entry);
    m_cursor = begun.size();
    return;
  }
}

}  // namespace kestra::cli
