// Sessions of the C interface over the test modules and a machine in memory.
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <string_view>

#include "front/capi/Handles.h"
#include "tests/query/support/TestModules.h"
#include "tests/support/FakeMachine.h"

namespace kestra::test {

class CInterfaceTest : public ::testing::Test {
 protected:
  CInterfaceTest()
      : session(MakeSession({ModulesWithTests(), MakeRef<CFakeMachine>(SystemFamily::Linux)})) {}
  ~CInterfaceTest() override { kestra_session_destroy(session); }

  kestra_value* Run(std::string_view query, const intptr_t* event = nullptr,
                    uint32_t timeOut = KESTRA_NO_TIMEOUT) {
    kestra_value* value = nullptr;
    EXPECT_EQ(kestra_session_run_query_sync_n(session, query.data(), query.size(), event, timeOut,
                                              &value),
              KESTRA_OK);
    return value;
  }

  // The text of a query's result.
  std::string TextOf(std::string_view query) { return TakeText(Run(query)); }

  static std::string TakeText(kestra_value* value) {
    const char* text = nullptr;
    size_t length = 0;
    EXPECT_EQ(kestra_value_as_string(value, &text, &length), KESTRA_OK);
    std::string result(text, length);
    kestra_value_release(value);
    return result;
  }

  static bool Is(kestra_status (*test)(const kestra_value*, int32_t*), const kestra_value* value) {
    int32_t result = -1;
    EXPECT_EQ(test(value, &result), KESTRA_OK);
    return result == 1;
  }

  // The element of a vector; the vector is released.
  static kestra_value* ElementOf(kestra_value* vector, int32_t number) {
    kestra_values* values = nullptr;
    kestra_value* element = nullptr;
    EXPECT_EQ(kestra_value_as_vector(vector, &values), KESTRA_OK);
    EXPECT_EQ(kestra_values_value(values, number, &element), KESTRA_OK);
    kestra_values_release(values);
    kestra_value_release(vector);
    return element;
  }

  kestra_session* session;
};

}  // namespace kestra::test
