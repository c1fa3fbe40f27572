#include "cli/shell/SessionThread.h"

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <exception>
#include <mutex>
#include <optional>
#include <utility>

#include "cli/Session.h"

namespace kestra::cli {
namespace {

using Clock = std::chrono::steady_clock;
constexpr auto kLook = std::chrono::milliseconds(20);       // after the interrupt key
constexpr auto kPatience = std::chrono::milliseconds(900);  // with a job that was cancelled
constexpr auto kPatienceAtEnd = std::chrono::seconds(2);    // with the end of a session

std::atomic<bool> g_isAnyLeftBehind{false};

}  // namespace

struct CSessionThread::State {
  explicit State(const Options& theOptions) : options(theOptions) {}
  const Options options;
  std::mutex lock;
  std::condition_variable changed;
  ShellJob job;  // null: none
  std::shared_ptr<CCancellation> cancellation;
  std::exception_ptr failure;
  bool isDone = false;
  bool isEnding = false;
  bool hasEnded = false;
};

CSessionThread::CSessionThread(const Options& options) : m_state(std::make_shared<State>(options)) {
  const CSignalShield shield;
  m_thread = std::thread([state = m_state] { Work(state); });
}

CSessionThread::~CSessionThread() {
  if (!m_thread.joinable()) return;
  std::unique_lock lock(m_state->lock);
  m_state->isEnding = true;
  m_state->changed.notify_all();
  const bool hasEnded =
      m_state->changed.wait_for(lock, kPatienceAtEnd, [&] { return m_state->hasEnded; });
  lock.unlock();
  hasEnded ? m_thread.join() : LeaveBehind();
}

void CSessionThread::LeaveBehind() {
  g_isAnyLeftBehind = true;
  m_thread.detach();
}

bool CSessionThread::IsAnyLeftBehind() {
  return g_isAnyLeftBehind;
}

void CSessionThread::Work(const std::shared_ptr<State>& state) {
  ShellSession session;
  std::unique_lock lock(state->lock);
  for (;;) {
    state->changed.wait(lock, [&] { return state->job || state->isEnding; });
    if (state->isEnding) break;
    const ShellJob job = std::exchange(state->job, nullptr);
    const auto cancellation = state->cancellation;
    lock.unlock();
    std::exception_ptr failure;
    try {
      if (!session.handle) session.handle = MakeSession(state->options);
      job(session, *cancellation);
    } catch (...) {
      failure = std::current_exception();
    }
    lock.lock();
    state->failure = failure;
    state->isDone = true;
    state->changed.notify_all();
  }
  lock.unlock();
  session = {};
  lock.lock();
  state->hasEnded = true;
  state->changed.notify_all();
}

bool CSessionThread::Run(ShellJob job) {
  const auto cancellation = std::make_shared<CCancellation>();
  const CInterruptScope interrupt(*cancellation, CInterruptScope::Second::CancelsAgain);
  std::unique_lock lock(m_state->lock);
  m_state->job = std::move(job);
  m_state->cancellation = cancellation;
  m_state->isDone = false;
  m_state->changed.notify_all();
  std::optional<Clock::time_point> cancelled;
  while (!m_state->changed.wait_for(lock, kLook, [&] { return m_state->isDone; })) {
    if (!cancelled && cancellation->WasCancelled()) cancelled = Clock::now();
    if (!cancelled || Clock::now() - *cancelled < kPatience) continue;
    cancellation->GiveUp();
    m_state->isEnding = true;  // should it come back
    LeaveBehind();
    return false;
  }
  if (m_state->failure) std::rethrow_exception(std::exchange(m_state->failure, nullptr));
  return true;
}

}  // namespace kestra::cli
