// Listings that were made of a registry file's keys.
#pragma once

#include <list>
#include <memory>
#include <mutex>
#include <unordered_map>

#include "platform/image/registry/tree/KeyListing.h"

namespace kestra::image {

// Those used last are kept, up to a number of names. A few are kept however large they are: the
// keys on the way to one that is opened are asked for again with the next one beside it. All
// methods may be called from any thread.
class CListingCache {
 public:
  using Listing = std::shared_ptr<const CKeyListing>;

  // Null if it is not there.
  Listing Find(TreeId key);
  void Keep(TreeId key, const Listing& listing);

 private:
  struct Entry {
    TreeId key;
    Listing listing;
  };
  static size_t Weight(const Listing& listing) { return listing->Entries().size() + 1; }

  std::mutex m_lock;           // guards the rest
  std::list<Entry> m_entries;  // the one used last is the first
  std::unordered_map<TreeId, std::list<Entry>::iterator> m_places;
  size_t m_weight = 0;
};

}  // namespace kestra::image
