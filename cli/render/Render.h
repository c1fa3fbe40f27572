// Renderers: what a result looks like on standard output. Over the C interface alone.
#pragma once

#include <string>
#include <vector>

#include "cli/Handles.h"
#include "cli/render/Output.h"

namespace kestra::cli {

enum class Format { Table, Text, Csv, Json, JsonLines, Xml };

struct RenderOptions {
  Format format = Format::Text;
  size_t width = 0;  // Table: columns of the terminal; 0 cuts nothing
};

// A value that is no Error, and the names of the values of its SELECT list. Throws CInterfaceError,
// and COutputError as the output does.
void Render(kestra_value* value, const std::vector<std::string>& columns,
            const RenderOptions& options, COutput& output);

// What stands between the results of two queries.
void RenderSeparator(const RenderOptions& options, COutput& output);

// For scripts, and never changed: the text of the value and LF; for a vector a line per element,
// where the elements of a vector, and the declared properties of an item in order, are joined by a
// tab. What is not set is "<NULL>". A tab, CR or LF in a cell of a line becomes a blank.
void RenderText(kestra_value* value, COutput& output);
// Aligned columns under a heading; a value that is no vector prints as itself.
void RenderTable(kestra_value* value, const std::vector<std::string>& columns, size_t width,
                 COutput& output);
// RFC 4180 with a heading. What is not set is empty, and an empty text is "".
void RenderCsv(kestra_value* value, const std::vector<std::string>& columns, COutput& output);
// A JSON document; with lines, one document per row.
void RenderJson(kestra_value* value, const std::vector<std::string>& columns, bool lines,
                COutput& output);
// An XML document; items with all that is below them.
void RenderXml(kestra_value* value, const std::vector<std::string>& columns, COutput& output);

}  // namespace kestra::cli
