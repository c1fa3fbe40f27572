#include "cli/messages/ProgressLine.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdio>
#include <system_error>

#include "cli/Terminal.h"
#include "cli/messages/Counts.h"
#include "cli/render/Width.h"

namespace kestra::cli {
namespace {

constexpr uint32_t kBeforeFirstMs = 500;
constexpr uint32_t kBetweenMs = 100;

}  // namespace

CProgressLine::CProgressLine(kestra_session* session, const CCancellation& cancellation)
    : m_session(session), m_cancellation(cancellation) {
  if (!IsTerminal(Stream::Error)) return;
  const CSignalShield shield;
  try {
    m_thread = std::thread([this] { Run(); });
  } catch (const std::system_error&) {
    // No thread, no line: the query matters more.
  }
}

CProgressLine::~CProgressLine() {
  if (!m_thread.joinable()) return;
  {
    const std::lock_guard lock(m_lock);
    m_isOver = true;
  }
  m_wakeUp.notify_all();
  m_thread.join();
}

bool CProgressLine::Pause(uint32_t milliseconds) {
  std::unique_lock lock(m_lock);
  return !m_wakeUp.wait_for(lock, std::chrono::milliseconds(milliseconds),
                            [this] { return m_isOver; });
}

void CProgressLine::Run() {
  bool goesOn = Pause(kBeforeFirstMs);
  for (; goesOn && !m_cancellation.WasCancelled(); goesOn = Pause(kBetweenMs)) {
    try {
      Show(Line(TerminalWidth(Stream::Error)));
    } catch (const std::bad_alloc&) {
      break;
    }
  }
  // Who has given the query up has gone on to something else on this terminal.
  if (!m_cancellation.IsGivenUp()) Show({});
}

// Empty while there is nothing to tell. Where it is too long, the amount stays and the path is cut.
std::string CProgressLine::Line(size_t columns) const {
  std::array<char, 1024> what{};
  uint64_t done = 0, total = 0;
  if (kestra_session_progress(m_session, what.data(), what.size(), &done, &total) != KESTRA_OK)
    return {};
  std::string amount;
  if (done > 0) amount += ' ' + Grouped(done);
  if (total > 0) amount += " of " + Grouped(total);
  amount += " ...";
  const std::string text = Printable(what.data());
  if (done == 0) return text + amount;
  const size_t room = columns > amount.size() + 1 ? columns - amount.size() - 1 : 0;
  return (room > 1 ? CutToWidth(text, room) : text) + amount;
}

// Blanks behind a shorter line than the one before: not every console knows how to erase.
void CProgressLine::Show(const std::string& line) {
  const size_t columns = TerminalWidth(Stream::Error);
  // The last column would have some terminals go to the next line.
  std::string text = columns > 1 ? CutToWidth(line, columns - 1) : std::string();
  const size_t width = WidthOf(text);
  if (width == 0 && m_shownWidth == 0) return;
  // A window that was made narrower has cut, or wrapped, what stood beyond its edge.
  const size_t shown = std::min(m_shownWidth, columns > 1 ? columns - 1 : 0);
  if (shown > width) {
    const size_t rest = shown - width;
    text.append(rest, ' ').append(rest, '\b');
  }
  std::fprintf(stderr, "\r%s%s", text.c_str(), width == 0 ? "\r" : "");
  std::fflush(stderr);
  m_shownWidth = width;
}

}  // namespace kestra::cli
