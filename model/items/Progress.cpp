#include "model/items/Progress.h"

#include <utility>

#include "platform/os/Clock.h"

namespace kestra {
namespace {

// Nobody reads faster than this.
constexpr uint32_t kPlaceIntervalMs = 50;

}  // namespace

CProgress::Told CProgress::Begin(std::string_view what) {
  std::string text(what);
  const std::lock_guard lock(m_lock);
  m_place.clear();
  return {std::exchange(m_what, std::move(text)), m_done.exchange(0), m_total.exchange(0)};
}

void CProgress::End(Told before) {
  const std::lock_guard lock(m_lock);
  m_done = before.done;
  m_total = before.total;
  m_place.clear();
  m_what = std::move(before.what);
}

void CProgress::TellPlace(std::string_view place, uint64_t more) {
  m_done.fetch_add(more, std::memory_order_relaxed);
  const uint32_t now = os::TickCount();
  uint32_t last = m_lastTold.load(std::memory_order_relaxed);
  // Of several helpers one takes it over.
  if (now - last < kPlaceIntervalMs || !m_lastTold.compare_exchange_strong(last, now)) return;
  const std::lock_guard lock(m_lock);
  m_place = place;
}

void CProgress::TellAmount(uint64_t done, uint64_t total) {
  m_done.store(done, std::memory_order_relaxed);
  m_total.store(total, std::memory_order_relaxed);
}

bool CProgress::Read(std::string& text, uint64_t& done, uint64_t& total) const {
  const std::lock_guard lock(m_lock);
  if (m_what.empty()) return false;
  text = m_place.empty() ? m_what : m_what + ": " + m_place;
  done = m_done;
  total = m_total;
  return true;
}

}  // namespace kestra
