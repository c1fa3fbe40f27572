// libhivex, loaded when the first hive is read, so that a query that needs none starts without it.
#pragma once

#include <hivex.h>

namespace kestra::image {

// The functions that are used, as hivex(3) describes them.
struct HivexLibrary {
  decltype(&hivex_open) open = nullptr;
  decltype(&hivex_close) close = nullptr;
  decltype(&hivex_root) root = nullptr;
  decltype(&hivex_node_children) nodeChildren = nullptr;
  decltype(&hivex_node_values) nodeValues = nullptr;
  decltype(&hivex_value_value) valueValue = nullptr;
};

// Null where the library is not installed. Any thread; what it gives is good for ever.
const HivexLibrary* LoadHivex();

}  // namespace kestra::image
