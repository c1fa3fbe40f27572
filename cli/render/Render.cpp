#include "cli/render/Render.h"

#include <iterator>

namespace kestra::cli {
namespace {

struct NamedFormat {
  const char* name;
  Format format;
};

constexpr NamedFormat kFormats[] = {
    {"table", Format::Table}, {"vertical", Format::Vertical}, {"text", Format::Text},
    {"csv", Format::Csv},     {"json", Format::Json},         {"jsonl", Format::JsonLines},
    {"xml", Format::Xml},
};

void RenderRows(kestra_value* value, const std::vector<std::string>& columns,
                const RenderOptions& options, const CRowOrder& order, COutput& output) {
  switch (options.format) {
    case Format::Table:
      return RenderTable(value, columns, order, options, output);
    case Format::Vertical:
      return RenderVertical(value, columns, order, output);
    case Format::Text:
      return RenderText(value, order, output);
    case Format::Csv:
      return RenderCsv(value, columns, order, output);
    case Format::Json:
      return RenderJson(value, columns, order, false, output);
    case Format::JsonLines:
      return RenderJson(value, columns, order, true, output);
    case Format::Xml:
      return RenderXml(value, columns, order, output);
  }
}

}  // namespace

std::optional<Format> FormatFromName(const std::string& name) {
  for (const NamedFormat& format : kFormats) {
    if (name == format.name) return format.format;
  }
  return std::nullopt;
}

std::string FormatName(Format wanted) {
  for (const NamedFormat& format : kFormats) {
    if (format.format == wanted) return format.name;
  }
  return {};
}

std::string FormatNames() {
  std::string names;
  for (const NamedFormat& format : kFormats) {
    const bool isLast = &format == std::end(kFormats) - 1;
    if (!names.empty()) names += isLast ? " or " : ", ";
    names += format.name;
  }
  return names;
}

RowCounts Render(kestra_value* value, const std::vector<std::string>& columns,
                 const RenderOptions& options, COutput& output) {
  const bool isVector = Is(kestra_value_is_vector, value);
  const CRowOrder order = isVector ? CRowOrder(value, columns, options.rows) : CRowOrder();
  RenderRows(value, columns, options, order, output);
  return {order.Count(), order.Total()};
}

void RenderSeparator(const RenderOptions& options, COutput& output) {
  if (options.format == Format::Table || options.format == Format::Vertical) output.Write("\n");
  if (options.format == Format::Csv) output.Write("\r\n");
}

}  // namespace kestra::cli
