// Dumps through the C interface.
#include "front/capi/Barrier.h"
#include "front/capi/Handles.h"
#include "model/dump/Dump.h"

using namespace kestra;

namespace {

kestra_status GiveText(const std::string& dump, const char** text, size_t* length) {
  *text = dump.c_str();
  if (length) *length = dump.size();
  return KESTRA_OK;
}

}  // namespace

kestra_status kestra_item_xml_dump(kestra_item* item, int32_t format, const char** text,
                                   size_t* length) {
  return Barrier(item, text)([&] {
    item->dump.clear();
    QueryMessage message;
    Dump(*item->item, item->dump, message, static_cast<DumpFormat>(format));
    return GiveText(item->dump, text, length);
  });
}

kestra_status kestra_class_dump(kestra_class* diag_class, const char** text, size_t* length) {
  return Barrier(diag_class, text)([&] {
    diag_class->dump.clear();
    DumpType(*diag_class->diagClass, diag_class->dump);
    return GiveText(diag_class->dump, text, length);
  });
}
