#include "cli/render/Render.h"

namespace kestra::cli {

void Render(kestra_value* value, const std::vector<std::string>& columns,
            const RenderOptions& options, COutput& output) {
  switch (options.format) {
    case Format::Table:
      return RenderTable(value, columns, options.width, output);
    case Format::Text:
      return RenderText(value, output);
    case Format::Csv:
      return RenderCsv(value, columns, output);
    case Format::Json:
      return RenderJson(value, columns, false, output);
    case Format::JsonLines:
      return RenderJson(value, columns, true, output);
    case Format::Xml:
      return RenderXml(value, columns, output);
  }
}

void RenderSeparator(const RenderOptions& options, COutput& output) {
  if (options.format == Format::Table) output.Write("\n");
  if (options.format == Format::Csv) output.Write("\r\n");
}

}  // namespace kestra::cli
