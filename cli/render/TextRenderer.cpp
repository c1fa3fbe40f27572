#include <algorithm>

#include "cli/render/Items.h"
#include "cli/render/Render.h"

namespace kestra::cli {
namespace {

constexpr const char* kNull = "<NULL>";

void AppendCell(std::string& line, std::string_view text) {
  std::transform(text.begin(), text.end(), std::back_inserter(line),
                 [](char c) { return c == '\t' || c == '\r' || c == '\n' ? ' ' : c; });
}

void AppendItem(std::string& line, kestra_item* item, CItemLayouts& layouts) {
  const auto params = ReadProperties(item, layouts.Of(item));
  for (size_t i = 0; i < params.size(); ++i) {
    if (i != 0) line += '\t';
    AppendCell(line, params[i] ? TextOf(params[i].get()) : kNull);
  }
}

void AppendVector(std::string& line, kestra_values* values) {
  const int32_t count = Ask<int32_t>(kestra_values_count, values);
  for (int32_t i = 0; i < count; ++i) {
    if (i != 0) line += '\t';
    const auto element = Take<CValueHandle>(kestra_values_value, values, i);
    AppendCell(line, TextOf(element.get()));
  }
}

std::string LineOf(kestra_value* element, CItemLayouts& layouts) {
  std::string line;
  if (const auto item = Take<CItemHandle>(kestra_value_as_vdiag_item, element)) {
    AppendItem(line, item.get(), layouts);
  } else if (const auto values = Take<CValuesHandle>(kestra_value_as_vector, element)) {
    AppendVector(line, values.get());
  } else {
    AppendCell(line, TextOf(element));
  }
  return line += '\n';
}

}  // namespace

void RenderText(kestra_value* value, const CRowOrder& order, COutput& output) {
  const auto values = Take<CValuesHandle>(kestra_value_as_vector, value);
  if (!values) {
    output.Write(std::string(TextOf(value)) + '\n');
    return;
  }
  CItemLayouts layouts;
  for (int32_t i = 0; i < order.Count(); ++i) {
    const auto element = Take<CValueHandle>(kestra_values_value, values.get(), order.At(i));
    output.Write(LineOf(element.get(), layouts));
  }
}

}  // namespace kestra::cli
