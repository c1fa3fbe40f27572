// Dumps: an item tree, or a class tree, as text.
#pragma once

#include <cstdint>
#include <string>

#include "model/classes/Class.h"
#include "model/items/Item.h"

namespace kestra {

enum class DumpFormat : int32_t {
  XmlForReading = 0,   // units and option texts resolved
  XmlRaw = 1,          // numbers as they are
  TreeLines = 2,       // one line per item, values tagged ", @D$"
  TreeLinesArrow = 3,  // the same, tagged ", D$" with "=>"
  Sections = 4,        // what the data-file codec reads back
};

// Appends the dump of an item and everything below it to out. depth is 0 at the top. A format
// outside the five writes nothing. When the message's termination event is signalled the forms that
// would be half a document (XML and sections) leave out empty; tree lines written so far stay.
// The item must have been filled, and must not be refilled meanwhile.
void Dump(CVDiagItem& item, std::string& out, QueryMessage& message, DumpFormat format,
          uint32_t depth = 0);

// Appends one value.
void DumpParam(const DiagParam& param, std::string& out, DumpFormat format);

// Appends a class and everything below it as XML, for tools: properties, options, arguments with
// their defaults, actions. Names and default texts are not escaped.
void DumpType(const DiagClass& diagClass, std::string& out);

// What XML needs escaped, and characters that it does not allow as references. A single quote stays
// as it is: readers of the dumps rely on that.
std::string EscapeXml(const std::string& text);

}  // namespace kestra
