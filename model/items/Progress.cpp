#include "model/items/Progress.h"

#include <utility>

#include "platform/os/Clock.h"

namespace kestra {
namespace {

// Nobody reads faster than this.
constexpr uint32_t kPlaceIntervalMs = 50;

}  // namespace

std::string CProgress::Begin(std::string_view what) {
  const std::lock_guard lock(m_lock);
  m_done = 0;
  m_total = 0;
  m_place.clear();
  return std::exchange(m_what, std::string(what));
}

void CProgress::End(std::string before) {
  const std::lock_guard lock(m_lock);
  m_done = 0;
  m_total = 0;
  m_place.clear();
  m_what = std::move(before);
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
