#include "platform/image/registry/tree/ListingCache.h"

namespace kestra::image {
namespace {

constexpr size_t kMostNames = size_t{1} << 16;
constexpr size_t kAlwaysKept = 8;

}  // namespace

CListingCache::Listing CListingCache::Find(TreeId key) {
  std::lock_guard guard(m_lock);
  const auto found = m_places.find(key);
  if (found == m_places.end()) return nullptr;
  m_entries.splice(m_entries.begin(), m_entries, found->second);
  return found->second->listing;
}

void CListingCache::Keep(TreeId key, const Listing& listing) {
  std::lock_guard guard(m_lock);
  if (m_places.contains(key)) return;  // another thread was faster
  m_entries.push_front({key, listing});
  m_places.emplace(key, m_entries.begin());
  m_weight += Weight(listing);
  while (m_weight > kMostNames && m_entries.size() > kAlwaysKept) {
    m_weight -= Weight(m_entries.back().listing);
    m_places.erase(m_entries.back().key);
    m_entries.pop_back();
  }
}

}  // namespace kestra::image
