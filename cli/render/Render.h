// Renderers: what a result looks like on standard output. Over the C interface alone.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "cli/Handles.h"
#include "cli/render/Output.h"
#include "cli/render/RowOrder.h"

namespace kestra::cli {

enum class Format { Table, Vertical, Text, Csv, Json, JsonLines, Xml };

class CRows;

// By its name, as in "jsonl".
std::optional<Format> FormatFromName(const std::string& name);
std::string FormatName(Format format);
// All of them, as the end of a sentence: "table, vertical, ... or xml".
std::string FormatNames();

struct RenderOptions {
  Format format = Format::Text;
  size_t width = 0;  // Table: columns of the terminal; 0 cuts nothing
  // Table: where not even a table with cut cells fits, the rows are shown as Vertical shows them.
  bool turnsVertical = false;
  RowSelection rows = {};
};

// The rows of a result; both 0 for one that is no vector.
struct RowCounts {
  int32_t shown = 0;
  int32_t total = 0;
};

// A value that is no Error, and the names of the values of its SELECT list. Throws CInterfaceError,
// CUnknownColumn before anything is written, and COutputError as the output does.
RowCounts Render(kestra_value* value, const std::vector<std::string>& columns,
                 const RenderOptions& options, COutput& output);

// What stands between the results of two queries.
void RenderSeparator(const RenderOptions& options, COutput& output);

// Each renderer shows the rows of a result by their order; that of a value that is no vector is
// empty.

// For scripts, and never changed: the text of the value and LF; for a vector a line per element,
// where the elements of a vector, and the declared properties of an item in order, are joined by a
// tab. What is not set is "<NULL>". A tab, CR or LF in a cell of a line becomes a blank.
void RenderText(kestra_value* value, const CRowOrder& order, COutput& output);
// Aligned columns under a heading; a value that is no vector prints as itself. Of the options it
// looks at the width, and what is done about it.
void RenderTable(kestra_value* value, const std::vector<std::string>& columns,
                 const CRowOrder& order, const RenderOptions& options, COutput& output);
// For rows that are wider than any terminal: a line per column that is set, under a line with the
// number of the row.
void RenderVertical(kestra_value* value, const std::vector<std::string>& columns,
                    const CRowOrder& order, COutput& output);
void WriteVertical(CRows& rows, COutput& output);
// RFC 4180 with a heading. What is not set is empty, and an empty text is ""; so is what is not set
// in the only column, since readers pass over empty lines. Dates as in JSON.
void RenderCsv(kestra_value* value, const std::vector<std::string>& columns, const CRowOrder& order,
               COutput& output);
// A JSON document; with lines, one document per row.
void RenderJson(kestra_value* value, const std::vector<std::string>& columns,
                const CRowOrder& order, bool lines, COutput& output);
// A value with all that is in it, as JSON on one line: what a cell shows that holds a list.
std::string JsonText(kestra_value* value);
// An XML document; items with all that is below them. What XML has no character for is U+FFFD.
void RenderXml(kestra_value* value, const std::vector<std::string>& columns, const CRowOrder& order,
               COutput& output);

}  // namespace kestra::cli
