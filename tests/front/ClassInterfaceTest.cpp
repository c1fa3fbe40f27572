// What the C interface tells of what can be done with a class.
#include "tests/front/SessionFixture.h"

namespace kestra {
namespace {

class ClassInterface : public test::CInterfaceTest {
 protected:
  ClassInterface() {
    kestra_class* root = nullptr;
    EXPECT_EQ(kestra_session_root_class(session, &root), KESTRA_OK);
    module = Child(root, "Test");
    row = Child(module, "Row");
    fixed = Child(module, "Fixed");
    kestra_class_release(root);
  }
  ~ClassInterface() override {
    for (kestra_class* each : {module, row, fixed}) kestra_class_release(each);
  }

  static kestra_class* Child(kestra_class* parent, std::string_view wanted) {
    kestra_class* child = nullptr;
    for (int32_t i = 0; kestra_class_child(parent, i, &child) == KESTRA_OK; ++i) {
      const char* name = nullptr;
      EXPECT_EQ(kestra_class_name(child, &name), KESTRA_OK);
      if (name == wanted) return child;
      kestra_class_release(child);
    }
    ADD_FAILURE() << wanted;
    return nullptr;
  }

  kestra_class* module;
  kestra_class* row;
  kestra_class* fixed;
};

TEST_F(ClassInterface, Arguments) {
  struct Expected {
    const char* name;
    int32_t type;
    const char* options;
    const char* defaultText;
  };
  const Expected expected[] = {
      {"First", KESTRA_TYPE_DWORD, "", "1"},
      {"Prefix", KESTRA_TYPE_STRING, "", "''"},
      {"Mode", KESTRA_TYPE_ENUM, "Plain|Upper", "'Plain'"},
      {"Mask", KESTRA_TYPE_BITMASK, "One|Two|Three", "'One|Two|Three'"},
      {"Least", KESTRA_TYPE_VERSION, "", "'0'"},
  };
  int32_t count = 0;
  ASSERT_EQ(kestra_class_argument_count(module, &count), KESTRA_OK);
  ASSERT_EQ(count, std::ssize(expected));
  for (int32_t i = 0; i < count; ++i) {
    const char *name = "", *unit = "", *options = "", *defaultText = "", *description = nullptr;
    int32_t type = 0;
    ASSERT_EQ(
        kestra_class_argument(module, i, &name, &type, &unit, &options, &defaultText, &description),
        KESTRA_OK);
    EXPECT_STREQ(name, expected[i].name);
    EXPECT_EQ(type, expected[i].type) << name;
    EXPECT_STREQ(options, expected[i].options) << name;
    EXPECT_STREQ(defaultText, expected[i].defaultText) << name;
    EXPECT_NE(description, nullptr);
    // The default is written as a query writes it.
    const std::string query =
        std::string("SELECT COUNT(*) FROM Test(") + name + "=" + defaultText + ").Row";
    EXPECT_EQ(TextOf(query), TextOf("SELECT COUNT(*) FROM Test.Row")) << query;
  }
}

TEST_F(ClassInterface, ActionsAndWhatIsAllowed) {
  int32_t count = 0, arguments = 0, can = -1;
  const char *name = "", *unit = "", *defaultText = "", *description = nullptr;
  ASSERT_EQ(kestra_class_action_count(row, &count), KESTRA_OK);
  EXPECT_EQ(count, 2);
  ASSERT_EQ(kestra_class_action(row, 0, &name, &description, &arguments), KESTRA_OK);
  EXPECT_STREQ(name, "Touch");
  EXPECT_EQ(arguments, 2);
  ASSERT_EQ(kestra_class_action_argument(row, 0, 1, &name, nullptr, &unit, nullptr, &defaultText,
                                         nullptr),
            KESTRA_OK);
  EXPECT_STREQ(name, "Note");
  EXPECT_STREQ(defaultText, "'touched'");
  ASSERT_EQ(kestra_class_action(row, 1, &name, nullptr, &arguments), KESTRA_OK);
  EXPECT_EQ(arguments, 0);
  EXPECT_EQ(kestra_class_can_be_added(row, &can), KESTRA_OK);
  EXPECT_EQ(can, 1);
  EXPECT_EQ(kestra_class_can_be_deleted(fixed, &can), KESTRA_OK);
  EXPECT_EQ(can, 0);
}

TEST_F(ClassInterface, NumbersOutsideAndNulls) {
  int32_t count = -1;
  const char* text = nullptr;
  for (const int32_t number : {-1, 2, INT32_MAX, INT32_MIN}) {
    EXPECT_EQ(kestra_class_action(row, number, nullptr, nullptr, nullptr), KESTRA_E_INVALIDARG);
    EXPECT_EQ(kestra_class_action_argument(row, number, 0, nullptr, nullptr, nullptr, nullptr,
                                           nullptr, nullptr),
              KESTRA_E_INVALIDARG);
    EXPECT_EQ(kestra_class_action_argument(row, 0, number, &text, nullptr, nullptr, nullptr,
                                           nullptr, nullptr),
              KESTRA_E_INVALIDARG);
    EXPECT_EQ(
        kestra_class_argument(fixed, number, &text, nullptr, nullptr, nullptr, nullptr, nullptr),
        KESTRA_E_INVALIDARG);
    EXPECT_EQ(kestra_class_example(row, number, &text), KESTRA_E_INVALIDARG);
  }
  EXPECT_EQ(text, nullptr);
  EXPECT_EQ(kestra_class_action_count(fixed, &count), KESTRA_OK);
  EXPECT_EQ(count, 0);
  EXPECT_EQ(kestra_class_example_count(row, &count), KESTRA_OK);
  EXPECT_EQ(count, 0);
  EXPECT_EQ(kestra_class_argument_count(nullptr, &count), KESTRA_E_POINTER);
  EXPECT_EQ(kestra_class_argument_count(row, nullptr), KESTRA_E_POINTER);
}

}  // namespace
}  // namespace kestra
