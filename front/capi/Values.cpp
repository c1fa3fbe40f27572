#include "front/capi/Barrier.h"
#include "front/capi/Handles.h"

using namespace kestra;

namespace {

kestra_status TellIf(const kestra_value* value, int32_t* result, bool (Value::*test)() const) {
  return Barrier(value, result)([&] {
    *result = (value->value.*test)() ? 1 : 0;
    return KESTRA_OK;
  });
}

}  // namespace

kestra_status kestra_value_release(kestra_value* value) {
  return ReleaseHandle(value);
}

kestra_status kestra_value_copy(const kestra_value* value, kestra_value** copy) {
  return Barrier(value, copy)([&] { return GiveHandle(copy, value->value); });
}

kestra_status kestra_value_is_undefined(const kestra_value* value, int32_t* result) {
  return TellIf(value, result, &Value::IsUndefined);
}

kestra_status kestra_value_is_error(const kestra_value* value, int32_t* result) {
  return TellIf(value, result, &Value::IsError);
}

kestra_status kestra_value_is_boolean(const kestra_value* value, int32_t* result) {
  return TellIf(value, result, &Value::IsBoolean);
}

kestra_status kestra_value_is_number(const kestra_value* value, int32_t* result) {
  return TellIf(value, result, &Value::IsNumber);
}

kestra_status kestra_value_is_string(const kestra_value* value, int32_t* result) {
  return TellIf(value, result, &Value::IsString);
}

kestra_status kestra_value_is_datime(const kestra_value* value, int32_t* result) {
  return TellIf(value, result, &Value::IsDatime);
}

kestra_status kestra_value_is_vdiag_item(const kestra_value* value, int32_t* result) {
  return TellIf(value, result, &Value::IsVDiagItem);
}

kestra_status kestra_value_is_vector(const kestra_value* value, int32_t* result) {
  return TellIf(value, result, &Value::IsVector);
}

kestra_status kestra_value_as_bool(const kestra_value* value, int32_t* result) {
  return TellIf(value, result, &Value::asBool);
}

kestra_status kestra_value_as_long(const kestra_value* value, int32_t* result) {
  return Barrier(value, result)([&] {
    *result = value->value.asLong();
    return KESTRA_OK;
  });
}

kestra_status kestra_value_as_datime(const kestra_value* value, uint32_t* result) {
  return Barrier(value, result)([&] {
    *result = value->value.asDatime();
    return KESTRA_OK;
  });
}

kestra_status kestra_value_as_string(kestra_value* value, const char** text, size_t* length) {
  return Barrier(value, text)([&] {
    if (value->text.empty()) value->text = value->value.asString();
    *text = value->text.c_str();
    if (length) *length = value->text.size();
    return KESTRA_OK;
  });
}

kestra_status kestra_value_as_vdiag_item(const kestra_value* value, kestra_item** item) {
  return Barrier(value, item)([&] {
    CVDiagItem* pItem = value->value.asVDIagItem();
    return pItem ? GiveHandle(item, Ref<CVDiagItem>(pItem)) : KESTRA_E_POINTER;
  });
}

kestra_status kestra_value_as_vector(const kestra_value* value, kestra_values** values) {
  return Barrier(value, values)([&] {
    if (!value->value.IsVector()) return KESTRA_E_POINTER;
    return GiveHandle(values, Ref<ValueVector>(&value->value.asVector()));
  });
}

kestra_status kestra_value_as_param(const kestra_value* value, kestra_param** param) {
  return Barrier(value, param)([&] {
    DiagParam* pParam = value->value.asParameter();
    return pParam ? GiveHandle(param, Ref<DiagParam>(pParam)) : KESTRA_E_NOTFOUND;
  });
}

kestra_status kestra_values_release(kestra_values* values) {
  return ReleaseHandle(values);
}

kestra_status kestra_values_count(const kestra_values* values, int32_t* count) {
  return Barrier(values, count)([&] {
    *count = static_cast<int32_t>(values->vector->Count());
    return KESTRA_OK;
  });
}

kestra_status kestra_values_value(const kestra_values* values, int32_t number,
                                  kestra_value** value) {
  return Barrier(values, value)([&] {
    if (!IsInside(number, values->vector->Count())) return KESTRA_E_INVALIDARG;
    return GiveHandle(value, (*values->vector)[static_cast<size_t>(number)]);
  });
}
