#include "cli/render/Items.h"

#include <algorithm>

namespace kestra::cli {
namespace {

std::unique_ptr<ItemLayout> MakeLayout(CClassHandle diagClass) {
  auto layout = std::make_unique<ItemLayout>();
  const int32_t count = Ask<int32_t>(kestra_class_property_count, diagClass.get());
  for (int32_t i = 0; i < count; ++i) {
    const char* name = nullptr;
    const char* unit = nullptr;
    Check(kestra_class_property(diagClass.get(), i, &name, nullptr, &unit, nullptr, nullptr,
                                nullptr));
    layout->properties.push_back({name, unit});
  }
  layout->diagClass = std::move(diagClass);
  return layout;
}

// The place of a name in the layout, looked for first where it stands in an item that has all of
// its properties set in order.
size_t PlaceOf(const ItemLayout& layout, std::string_view name, size_t likely) {
  const auto& properties = layout.properties;
  if (likely < properties.size() && properties[likely].name == name) return likely;
  const auto found = std::find_if(properties.begin(), properties.end(),
                                  [&](const auto& property) { return property.name == name; });
  return static_cast<size_t>(found - properties.begin());
}

}  // namespace

const ItemLayout& CItemLayouts::Of(kestra_item* item) {
  auto diagClass = Take<CClassHandle>(kestra_item_class, item);
  const auto found = std::find_if(m_layouts.begin(), m_layouts.end(), [&](const auto& layout) {
    if (!layout->diagClass || !diagClass) return layout->diagClass == diagClass;
    return Ask<int32_t>(kestra_class_is_same, layout->diagClass.get(), diagClass.get()) != 0;
  });
  if (found != m_layouts.end()) {
    std::rotate(m_layouts.begin(), found, found + 1);
  } else {
    m_layouts.insert(m_layouts.begin(),
                     diagClass ? MakeLayout(std::move(diagClass)) : std::make_unique<ItemLayout>());
  }
  return *m_layouts.front();
}

std::vector<CParamHandle> ReadProperties(kestra_item* item, const ItemLayout& layout) {
  std::vector<CParamHandle> result(layout.properties.size());
  const auto params = Take<CParamsHandle>(kestra_item_params, item);
  const int32_t count = Ask<int32_t>(kestra_params_count, params.get());
  size_t likely = 0;
  for (int32_t i = 1; i <= count; ++i) {
    auto param = Take<CParamHandle>(kestra_params_item, params.get(), i);
    const char* name = Ask<const char*>(kestra_param_name, param.get());
    const size_t place = PlaceOf(layout, name, likely);
    if (place == result.size()) continue;
    likely = place + 1;
    if (!result[place]) result[place] = std::move(param);
  }
  return result;
}

}  // namespace kestra::cli
