// Items by their declared properties.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "cli/render/Cell.h"

namespace kestra::cli {

// The declared properties of a class, in order.
struct ItemLayout {
  struct Property {
    std::string name;
    std::string unit;
  };
  CClassHandle diagClass;
  std::vector<Property> properties;
};

// Remembers the layouts of the classes that were met.
class CItemLayouts {
 public:
  // Lives as long as this object.
  const ItemLayout& Of(kestra_item* item);

 private:
  std::vector<std::unique_ptr<ItemLayout>> m_layouts;  // the last one met stands first
};

// What an item has for each property of its layout; null where it is not set.
std::vector<CParamHandle> ReadProperties(kestra_item* item, const ItemLayout& layout);

}  // namespace kestra::cli
