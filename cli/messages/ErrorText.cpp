#include "cli/messages/ErrorText.h"

#include <algorithm>
#include <cstdio>
#include <string>

#include "cli/Terminal.h"
#include "cli/messages/CaretText.h"
#include "cli/messages/MessageHints.h"
#include "cli/render/Width.h"

namespace kestra::cli {
namespace {

// An Error is told on one line, whatever is in its text, and sends nothing to a terminal that it
// would obey.
std::string OneLine(std::string_view text) {
  if (IsTerminal(Stream::Error)) return Printable(text);
  std::string line(text);
  std::replace_if(
      line.begin(), line.end(), [](char c) { return c == '\r' || c == '\n'; }, ' ');
  return line;
}

// Where there is no terminal, nobody wants a line of a megabyte either.
constexpr size_t kUsualWidth = 160;

void TellHint(const std::string& hint) {
  if (!hint.empty()) std::fprintf(stderr, "kestra: %s\n", Printable(hint).c_str());
}

// Null if there is nothing to say.
CDiagnosisHandle DiagnosisOf(kestra_session* session, std::string_view query) {
  return Take<CDiagnosisHandle>(kestra_session_diagnose, session, query.data(), query.size());
}

// What stands before a query in its text.
struct LinesBefore {
  int32_t lines = 0;       // that end before it
  int32_t characters = 0;  // before it on its line
};

LinesBefore CountBefore(const QueryPiece& query, size_t offset) {
  const std::string_view before = query.whole.substr(0, offset);
  LinesBefore count;
  count.lines =
      query.firstLine - 1 + static_cast<int32_t>(std::count(before.begin(), before.end(), '\n'));
  std::string_view line = before.substr(before.rfind('\n') + 1);
  const std::string_view byteOrderMark = "\xEF\xBB\xBF";
  if (line.data() == before.data() && line.starts_with(byteOrderMark))
    line.remove_prefix(byteOrderMark.size());
  for (const char c : line) {
    const bool isContinuation = (static_cast<unsigned char>(c) & 0xC0) == 0x80;
    count.characters += isContinuation ? 0 : 1;
  }
  return count;
}

// The line with a caret, and the sentence. What does not explain an Error is only a note.
void TellDiagnosis(const QueryPiece& query, const kestra_diagnosis* diagnosis) {
  size_t offset = 0, length = 0;
  int32_t line = 0, column = 0;
  Check(kestra_diagnosis_place(diagnosis, &offset, &length, &line, &column));
  const LinesBefore before = CountBefore(query, query.Offset());
  if (line == 1) column += before.characters;
  line += before.lines;
  const size_t width = IsTerminal(Stream::Error) ? TerminalWidth(Stream::Error) : 0;
  const std::string caret =
      CaretText(query.whole, query.Offset() + offset, length, width == 0 ? kUsualWidth : width);
  const bool isError = Is(kestra_diagnosis_is_error, diagnosis);
  const std::string message = Printable(Ask<const char*>(kestra_diagnosis_message, diagnosis));
  std::fprintf(stderr, "%skestra: %sline %d, column %d: %s\n", caret.c_str(),
               isError ? "" : "note: ", static_cast<int>(line), static_cast<int>(column),
               message.c_str());
}

size_t BlanksBefore(std::string_view text) {
  return std::min(text.find_first_not_of(" \t\r\n"), text.size());
}

// For an Error of which nothing in the text is the cause: which query of a file it was.
void TellLine(const QueryPiece& query) {
  const LinesBefore before = CountBefore(query, query.Offset() + BlanksBefore(query.text));
  if (before.lines == 0) return;
  std::fprintf(stderr, "kestra: the query begins on line %d\n", static_cast<int>(before.lines + 1));
}

// The piece of a query that a diagnosis is about.
std::string_view BlamedPiece(const QueryPiece& query, const kestra_diagnosis* diagnosis) {
  size_t offset = 0, length = 0;
  Check(kestra_diagnosis_place(diagnosis, &offset, &length, nullptr, nullptr));
  return query.text.substr(offset, length);
}

// A result that may be so because of what was not meant: nothing, or a count of nothing.
bool IsNothing(kestra_value* value) {
  if (Is(kestra_value_is_number, value)) return Ask<int32_t>(kestra_value_as_long, value) == 0;
  if (!Is(kestra_value_is_vector, value)) return false;
  const auto values = Take<CValuesHandle>(kestra_value_as_vector, value);
  const auto count = Ask<int32_t>(kestra_values_count, values.get());
  if (count != 1) return count == 0;
  const auto only = Take<CValueHandle>(kestra_values_value, values.get(), 0);
  return Is(kestra_value_is_number, only.get()) &&
         Ask<int32_t>(kestra_value_as_long, only.get()) == 0;
}

// Why the query has none of a source's rows; empty if it was filled, as were all, and where no more
// is known than the message says.
std::string UnfilledSource(kestra_session* session, const std::string& message) {
  const int32_t count = Ask<int32_t>(kestra_session_source_count, session);
  for (int32_t i = 0; i < count; ++i) {
    kestra_source_info info{};
    info.struct_size = sizeof info;
    Check(kestra_session_source(session, i, &info));
    if (info.is_filled || info.is_cut_short) continue;
    std::string sentence = info.name;
    if (*info.arguments != '\0') sentence += '(' + std::string(info.arguments) + ')';
    sentence += " could not be read with these arguments";
    const char* subject = nullptr;
    const char* reason = nullptr;
    // Where nothing is known of the cause, the reason says what was said here.
    const bool isKnown =
        kestra_session_source_problem(session, i, 0, &subject, &reason) == KESTRA_OK &&
        std::string_view(reason) != "it could not be filled" && message != OneLine(reason);
    if (isKnown) sentence += std::string(": ") + reason;
    return isKnown || message.empty() ? sentence : std::string();
  }
  return {};
}

// An Error without a text says nothing of its cause; a time that is over can be told, and otherwise
// what there can be.
std::string HintForNoText(kestra_session* session, const Settings& settings) {
  uint64_t total = 0;
  Check(kestra_session_query_times(session, nullptr, &total));
  constexpr uint64_t kClockStepMs = 20;  // the query's own clock is coarser than the report's
  const bool hasLimit = settings.timeOut != KESTRA_NO_TIMEOUT;
  if (hasLimit && total / 1000 + kClockStepMs >= settings.timeOut) {
    return "the query's time, " + std::to_string(settings.timeOut) + " ms, was over";
  }
  if (std::string source = UnfilledSource(session, {}); !source.empty()) return source;
  return "a value could not be computed: a number outside of 32 bits, a division by zero, a text "
         "that is no number or date, a sub-select that gives not exactly one row, a library of "
         "CALLDLL that is not there, or nesting that goes too deep";
}

}  // namespace

void TellError(kestra_session* session, const QueryPiece& query, kestra_value* error,
               const Settings& settings) {
  const Place place = settings.place;
  const std::string text = OneLine(TextOf(error));
  std::fprintf(stderr, "%s\n", text.c_str());
  const std::string message = OneLine(Ask<const char*>(kestra_session_last_message, session));
  if (!message.empty() && text.find(message) == std::string::npos) {
    std::fprintf(stderr, "kestra: %s\n", message.c_str());
  }
  const auto diagnosis = DiagnosisOf(session, query.text);
  // Where the place in the query is known, it is told there what the message means.
  const bool isExplained = diagnosis && Is(kestra_diagnosis_is_error, diagnosis.get());
  std::string hint;
  if (!isExplained) {
    hint = MessageHint(text, place);
    if (hint.empty()) hint = MessageHint(message, place);
    if (text == "<ERROR>" && hint.empty()) {
      hint = message.empty() ? HintForNoText(session, settings) : UnfilledSource(session, message);
    }
    TellHint(hint);
    TellLine(query);
  }
  if (!diagnosis) return;
  TellDiagnosis(query, diagnosis.get());
  const std::string_view piece = BlamedPiece(query, diagnosis.get());
  // A dot stands before a command at the beginning alone.
  const bool isFirst = piece.data() == query.text.data() + BlanksBefore(query.text);
  if (isExplained && (isFirst || !piece.starts_with('.'))) TellHint(WordHint(piece, place));
}

void TellDoubts(kestra_session* session, const QueryPiece& query, kestra_value* value) {
  if (!IsNothing(value)) return;
  const auto diagnosis = DiagnosisOf(session, query.text);
  if (diagnosis) TellDiagnosis(query, diagnosis.get());
}

void TellNotices(kestra_session* session) {
  const char* text = nullptr;
  while (kestra_session_next_notice(session, &text) == KESTRA_OK)
    std::fprintf(stderr, "kestra: %s\n", OneLine(text).c_str());
}

}  // namespace kestra::cli
