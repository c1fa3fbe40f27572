#include "cli/render/Cell.h"

#include <array>
#include <chrono>
#include <cstdio>

namespace kestra::cli {
namespace {

Cell NumberCell(int64_t number) {
  return {CellKind::Number, number, std::to_string(number)};
}

std::string ParamText(kestra_param* param) {
  const char* text = nullptr;
  size_t length = 0;
  Check(kestra_param_string_value(param, &text, &length));
  return {text, length};
}

}  // namespace

Cell ReadCell(kestra_param* param) {
  switch (Ask<int32_t>(kestra_param_type, param)) {
    case KESTRA_TYPE_DWORD:
      return NumberCell(Ask<uint32_t>(kestra_param_dword_value, param));
    case KESTRA_TYPE_BITMASK:
      return {CellKind::Flags, 0, ParamText(param)};
    case KESTRA_TYPE_DATIME:
      return {CellKind::Datime, Ask<uint32_t>(kestra_param_dword_value, param), ParamText(param)};
    case KESTRA_TYPE_VERSION:
      return {CellKind::Version, 0, ParamText(param)};
    default:
      return {CellKind::Text, 0, ParamText(param)};
  }
}

Cell ReadCell(kestra_value* value) {
  if (const auto param = Take<CParamHandle>(kestra_value_as_param, value)) {
    return ReadCell(param.get());
  }
  if (Is(kestra_value_is_undefined, value)) return {};
  if (Is(kestra_value_is_number, value))
    return NumberCell(Ask<int32_t>(kestra_value_as_long, value));
  std::string text(TextOf(value));
  if (Is(kestra_value_is_string, value)) return {CellKind::Text, 0, std::move(text)};
  if (Is(kestra_value_is_boolean, value)) {
    return {CellKind::Boolean, Ask<int32_t>(kestra_value_as_bool, value), std::move(text)};
  }
  if (Is(kestra_value_is_datime, value)) {
    return {CellKind::Datime, Ask<uint32_t>(kestra_value_as_datime, value), std::move(text)};
  }
  return {CellKind::Nothing, 0, std::move(text)};
}

std::string TextOf(kestra_param* param) {
  if (Ask<int32_t>(kestra_param_type, param) != KESTRA_TYPE_DWORD) return ParamText(param);
  return std::to_string(Ask<uint32_t>(kestra_param_dword_value, param));
}

std::string UtcText(int64_t seconds) {
  using namespace std::chrono;
  const sys_seconds moment{std::chrono::seconds(seconds)};
  const sys_days day = floor<days>(moment);
  const year_month_day date(day);
  const hh_mm_ss<std::chrono::seconds> time(moment - day);
  std::array<char, 40> buffer{};
  const int length = std::snprintf(
      buffer.data(), buffer.size(), "%04d-%02u-%02uT%02d:%02d:%02dZ", static_cast<int>(date.year()),
      static_cast<unsigned>(date.month()), static_cast<unsigned>(date.day()),
      static_cast<int>(time.hours().count()), static_cast<int>(time.minutes().count()),
      static_cast<int>(time.seconds().count()));
  return {buffer.data(), static_cast<size_t>(length)};
}

}  // namespace kestra::cli
