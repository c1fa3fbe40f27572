// What the C interface says of values, and of what is wrong with a call.
#include "tests/front/SessionFixture.h"

namespace kestra::test {
namespace {

using ValueInterface = CInterfaceTest;

struct KindCase {
  const char* query;
  const char* kinds;  // Undefined, Error, Boolean, Number, String, Datime, Item, Vector
  int32_t number;
  const char* text;
};

std::string KindsOf(const kestra_value* value) {
  constexpr struct {
    char letter;
    kestra_status (*test)(const kestra_value*, int32_t*);
  } kTests[] = {{'U', kestra_value_is_undefined},  {'E', kestra_value_is_error},
                {'B', kestra_value_is_boolean},    {'N', kestra_value_is_number},
                {'S', kestra_value_is_string},     {'D', kestra_value_is_datime},
                {'I', kestra_value_is_vdiag_item}, {'V', kestra_value_is_vector}};
  std::string kinds;
  for (const auto& entry : kTests) {
    int32_t result = -1;
    EXPECT_EQ(entry.test(value, &result), KESTRA_OK);
    EXPECT_TRUE(result == 0 || result == 1);
    if (result == 1) kinds += entry.letter;
  }
  return kinds;
}

TEST_F(ValueInterface, TellsKindNumberAndText) {
  const KindCase cases[] = {
      {"1 + 1", "N", 2, "2"},
      {"0 - 1", "N", -1, "4294967295"},
      {"1 = 1", "B", 0, "True"},
      {"no such query", "E", 0, "<ERROR: Syntax error>"},
      {"2147483646 + 1", "E", 0, "<ERROR>"},
      {"SELECT * FROM Test.Row", "V", 0, "<Vector>"},
      {"SELECT FIRST Text FROM Test.Row", "E", 0, "<ERROR: Syntax error>"},
  };
  for (const KindCase& expected : cases) {
    SCOPED_TRACE(expected.query);
    kestra_value* value = Run(expected.query);
    ASSERT_NE(value, nullptr);
    EXPECT_EQ(KindsOf(value), expected.kinds);
    int32_t number = -1;
    EXPECT_EQ(kestra_value_as_long(value, &number), KESTRA_OK);
    EXPECT_EQ(number, expected.number);
    EXPECT_EQ(TakeText(value), expected.text);
  }
}

struct ColumnCase {
  const char* name;
  const char* kinds;
  int32_t type;
  const char* unit;
  uint32_t number;
  const char* text;  // of the parameter: a number's is empty
};

TEST_F(ValueInterface, TellsParametersByDeclaredType) {
  const ColumnCase cases[] = {
      {"Text", "S", KESTRA_TYPE_STRING, "", 0, "Alpha one"},
      {"Size", "N", KESTRA_TYPE_DWORD, "KB", 10, ""},
      {"Kind", "NS", KESTRA_TYPE_ENUM, "", 0, "Alpha"},
      {"Flags", "NS", KESTRA_TYPE_BITMASK, "", 3, "Red|Green"},
      {"Created", "D", KESTRA_TYPE_DATIME, "", 1136073600, "2006-01-01 00:00:00"},
      {"Release", "S", KESTRA_TYPE_VERSION, "", 0, "1.2"},
  };
  for (const ColumnCase& expected : cases) {
    SCOPED_TRACE(expected.name);
    const std::string query =
        std::string("SELECT ") + expected.name + ", Id FROM Test.Row WHERE Id = 1";
    kestra_value* value = ElementOf(ElementOf(Run(query), 0), 0);
    EXPECT_EQ(KindsOf(value), expected.kinds);
    kestra_param* param = nullptr;
    ASSERT_EQ(kestra_value_as_param(value, &param), KESTRA_OK);
    kestra_value_release(value);  // the parameter lives on
    const char *name = nullptr, *unit = nullptr, *text = nullptr;
    int32_t type = 0;
    uint32_t number = 0;
    EXPECT_EQ(kestra_param_name(param, &name), KESTRA_OK);
    EXPECT_EQ(kestra_param_type(param, &type), KESTRA_OK);
    EXPECT_EQ(kestra_param_unit(param, &unit), KESTRA_OK);
    EXPECT_EQ(kestra_param_dword_value(param, &number), KESTRA_OK);
    EXPECT_EQ(kestra_param_string_value(param, &text, nullptr), KESTRA_OK);
    EXPECT_STREQ(name, expected.name);
    EXPECT_EQ(type, expected.type);
    EXPECT_STREQ(unit, expected.unit);
    EXPECT_EQ(number, expected.number);
    EXPECT_STREQ(text, expected.text);
    kestra_param_release(param);
  }
}

TEST_F(ValueInterface, WhatAValueIsNot) {
  kestra_value* number = Run("1 + 1");
  kestra_item* item = nullptr;
  kestra_values* values = nullptr;
  kestra_param* param = nullptr;
  EXPECT_EQ(kestra_value_as_vdiag_item(number, &item), KESTRA_E_POINTER);
  EXPECT_EQ(kestra_value_as_vector(number, &values), KESTRA_E_POINTER);
  EXPECT_EQ(kestra_value_as_param(number, &param), KESTRA_E_NOTFOUND);
  EXPECT_EQ(item, nullptr);
  EXPECT_EQ(values, nullptr);
  EXPECT_EQ(param, nullptr);
  int32_t boolean = -1;
  uint32_t datime = 1;
  EXPECT_EQ(kestra_value_as_bool(number, &boolean), KESTRA_OK);
  EXPECT_EQ(boolean, 0);
  EXPECT_EQ(kestra_value_as_datime(number, &datime), KESTRA_OK);
  EXPECT_EQ(datime, 0u);
  kestra_value_release(number);
}

TEST_F(ValueInterface, ValuesCountFromZeroItemsFromOne) {
  kestra_value* rows = Run("SELECT * FROM Test.Row");
  kestra_values* values = nullptr;
  ASSERT_EQ(kestra_value_as_vector(rows, &values), KESTRA_OK);
  int32_t count = 0;
  ASSERT_EQ(kestra_values_count(values, &count), KESTRA_OK);
  EXPECT_EQ(count, 5);  // four rows, and one nested below the last
  kestra_value* value = nullptr;
  for (const int32_t outside : {-1, count, INT32_MIN, INT32_MAX}) {
    EXPECT_EQ(kestra_values_value(values, outside, &value), KESTRA_E_INVALIDARG) << outside;
    EXPECT_EQ(value, nullptr);
  }
  ASSERT_EQ(kestra_values_value(values, 0, &value), KESTRA_OK);
  kestra_values_release(values);
  kestra_value_release(rows);

  kestra_item* row = nullptr;
  kestra_items* parts = nullptr;
  ASSERT_EQ(kestra_value_as_vdiag_item(value, &row), KESTRA_OK);
  kestra_value_release(value);
  ASSERT_EQ(kestra_item_diag_items(row, &parts), KESTRA_OK);
  kestra_item_release(row);
  ASSERT_EQ(kestra_items_count(parts, &count), KESTRA_OK);
  EXPECT_EQ(count, 2);
  kestra_item* part = nullptr;
  for (const int32_t outside : {0, -1, 3, INT32_MIN}) {
    EXPECT_EQ(kestra_items_item(parts, outside, &part), KESTRA_E_INVALIDARG) << outside;
  }
  ASSERT_EQ(kestra_items_item(parts, 2, &part), KESTRA_OK);
  kestra_items_release(parts);

  kestra_params* params = nullptr;
  kestra_param* param = nullptr;
  ASSERT_EQ(kestra_item_params(part, &params), KESTRA_OK);
  kestra_item_release(part);
  for (const int32_t outside : {0, -1, 99}) {
    EXPECT_EQ(kestra_params_item(params, outside, &param), KESTRA_E_INVALIDARG) << outside;
  }
  EXPECT_EQ(kestra_params_find(params, "NoSuch", &param), KESTRA_E_NOTFOUND);
  ASSERT_EQ(kestra_params_find(params, "LABEL", &param), KESTRA_OK);
  kestra_params_release(params);
  const char* text = nullptr;
  ASSERT_EQ(kestra_param_string_value(param, &text, nullptr), KESTRA_OK);
  EXPECT_STREQ(text, "nut");
  kestra_param_release(param);
}

TEST_F(ValueInterface, ResultsOutliveTheirSession) {
  kestra_value* row = ElementOf(Run("SELECT * FROM Test.Row WHERE Id = 2"), 0);
  kestra_class* root = nullptr;
  kestra_columns* columns = nullptr;
  ASSERT_EQ(kestra_session_root_class(session, &root), KESTRA_OK);
  ASSERT_EQ(kestra_session_columns(session, &columns), KESTRA_OK);
  ASSERT_EQ(kestra_session_reinit_diag_root(session), KESTRA_OK);
  ASSERT_EQ(kestra_session_destroy(session), KESTRA_OK);
  session = nullptr;

  kestra_item* item = nullptr;
  const char* name = nullptr;
  ASSERT_EQ(kestra_value_as_vdiag_item(row, &item), KESTRA_OK);
  kestra_value_release(row);
  int32_t filled = 0;
  EXPECT_EQ(kestra_item_init(item, 1, &filled), KESTRA_OK);
  ASSERT_EQ(kestra_item_name(item, &name), KESTRA_OK);
  EXPECT_STREQ(name, "Row");
  kestra_item_release(item);
  ASSERT_EQ(kestra_class_name(root, &name), KESTRA_OK);
  EXPECT_STREQ(name, "Root");
  kestra_class_release(root);
  int32_t count = -1;
  EXPECT_EQ(kestra_columns_count(columns, &count), KESTRA_OK);
  kestra_columns_release(columns);
}

TEST_F(ValueInterface, NullsAreAnsweredNotFollowed) {
  kestra_value* number = Run("1 + 1");
  int32_t result = 7;
  const char* text = nullptr;
  kestra_value* value = number;
  EXPECT_EQ(kestra_value_is_number(nullptr, &result), KESTRA_E_POINTER);
  EXPECT_EQ(kestra_value_is_number(number, nullptr), KESTRA_E_POINTER);
  EXPECT_EQ(kestra_value_as_string(nullptr, &text, nullptr), KESTRA_E_POINTER);
  EXPECT_EQ(kestra_value_as_string(number, nullptr, nullptr), KESTRA_E_POINTER);
  EXPECT_EQ(kestra_values_value(nullptr, 0, &value), KESTRA_E_POINTER);
  EXPECT_EQ(kestra_session_run_query_sync(session, nullptr, nullptr, 0, &value), KESTRA_E_POINTER);
  EXPECT_EQ(kestra_session_run_query_sync(nullptr, "1", nullptr, 0, &value), KESTRA_E_POINTER);
  EXPECT_EQ(kestra_session_run_query_sync(session, "1", nullptr, 0, nullptr), KESTRA_E_POINTER);
  EXPECT_EQ(kestra_session_create(nullptr, nullptr), KESTRA_E_POINTER);
  EXPECT_EQ(kestra_session_cancel_query(nullptr), KESTRA_E_POINTER);
  EXPECT_EQ(kestra_class_property(nullptr, 0, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr),
            KESTRA_E_POINTER);
  EXPECT_EQ(result, 7);
  EXPECT_EQ(value, number);
  EXPECT_EQ(kestra_session_destroy(nullptr), KESTRA_OK);
  EXPECT_EQ(kestra_value_release(nullptr), KESTRA_OK);
  kestra_value_release(number);
}

}  // namespace
}  // namespace kestra::test
