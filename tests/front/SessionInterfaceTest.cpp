// What the C interface does with queries: texts, permission, columns, the class tree.
#include <filesystem>
#include <stdexcept>

#include "front/capi/Barrier.h"
#include "tests/front/SessionFixture.h"
#include "tests/support/TempDirectory.h"

namespace kestra::test {
namespace {

using namespace std::string_literals;
using SessionInterface = CInterfaceTest;

TEST_F(SessionInterface, TextsMayHoldAnyByte) {
  const std::pair<std::string, std::string> cases[] = {
      {"1\0+\0 1"s, "2"},             // NUL parts words
      {"'a\0b'"s, "<Vector>"},        // and is kept inside a string
      {"\xFF\xFE 1 + 1 \x80"s, "2"},  // so are bytes that are no text
      {""s, "<ERROR: Syntax error>"},
      {"'not closed"s, "<ERROR: Syntax error>"},
      {"/* not closed"s, "<ERROR: Syntax error>"},
      {"\0"s, "<ERROR: Syntax error>"},
  };
  for (const auto& [query, expected] : cases) EXPECT_EQ(TextOf(query), expected) << query;
  EXPECT_EQ(TakeText(ElementOf(Run("'a\0b'"s), 0)), "a\0b"s);

  kestra_value* value = nullptr;
  ASSERT_EQ(
      kestra_session_run_query_sync(session, "1 + 1\0 + 1", nullptr, KESTRA_NO_TIMEOUT, &value),
      KESTRA_OK);
  EXPECT_EQ(TakeText(value), "2");  // a text without a length ends at its NUL
}

TEST_F(SessionInterface, SyntaxIsCheckedWithoutRunning) {
  const std::pair<std::string_view, int32_t> cases[] = {
      {"1 + 1", -1},
      {"1 +", 0},
      {"", 0},
      {"DELETE Test.Row", -1},
      {"SELECT * FROM Slow(Duration=10000).Entry", -1},
      {"SELECT NoSuch FROM Test.Row", 0},
  };
  for (const auto& [query, expected] : cases) {
    int32_t good = 7;
    ASSERT_EQ(kestra_session_check_query_syntax(session, query.data(), query.size(), &good),
              KESTRA_OK);
    EXPECT_EQ(good, expected) << query;
  }
}

TEST_F(SessionInterface, TimeOutZeroOnlyParses) {
  EXPECT_EQ(TakeText(Run("SELECT * FROM Slow(Duration=10000).Entry", nullptr, 0)), "<NULL>");
  EXPECT_EQ(TakeText(Run("1 +", nullptr, 0)), "<ERROR: Syntax error>");
}

TEST_F(SessionInterface, ChangesNeedPermission) {
  const char* message = nullptr;
  const char* const query = "UPDATE Test.Row SET Text = 'new' WHERE Id = 1";
  kestra_value* refused = Run(query);
  EXPECT_TRUE(Is(kestra_value_is_error, refused));
  kestra_value_release(refused);
  ASSERT_EQ(kestra_session_last_message(session, &message), KESTRA_OK);
  EXPECT_STRNE(message, "");

  ASSERT_EQ(kestra_session_allow_active(session, 5), KESTRA_OK);
  EXPECT_EQ(TakeText(ElementOf(Run(query), 0)), "1");
  ASSERT_EQ(kestra_session_last_message(session, &message), KESTRA_OK);
  EXPECT_STREQ(message, "");

  ASSERT_EQ(kestra_session_allow_active(session, 0), KESTRA_OK);
  kestra_value* again = Run(query);
  EXPECT_TRUE(Is(kestra_value_is_error, again));
  kestra_value_release(again);
}

std::vector<std::string> ColumnsOf(kestra_session* session) {
  std::vector<std::string> names;
  kestra_columns* columns = nullptr;
  int32_t count = 0;
  EXPECT_EQ(kestra_session_columns(session, &columns), KESTRA_OK);
  EXPECT_EQ(kestra_columns_count(columns, &count), KESTRA_OK);
  const char* name = nullptr;
  EXPECT_EQ(kestra_columns_name(columns, -1, &name), KESTRA_E_INVALIDARG);
  EXPECT_EQ(kestra_columns_name(columns, count, &name), KESTRA_E_INVALIDARG);
  for (int32_t i = 0; i < count; ++i) {
    EXPECT_EQ(kestra_columns_name(columns, i, &name), KESTRA_OK);
    names.push_back(name);
  }
  kestra_columns_release(columns);
  return names;
}

TEST_F(SessionInterface, ColumnsAreThoseOfTheLastResult) {
  const std::pair<const char*, std::vector<std::string>> cases[] = {
      {"SELECT Id, Text FROM Test.Row", {"Id", "Text"}},
      {"SELECT a.Id, b.Id FROM Test.Row a JOIN Test.Row b ON a.Id = b.Id", {"a.Id", "b.Id"}},
      {"SELECT Id + 1, Text FROM Test.Row", {"Id + 1", "Text"}},
      {"SELECT * FROM Test.Row", {}},
      {"1 + 1", {}},
      {"no such query", {}},
  };
  EXPECT_EQ(ColumnsOf(session), std::vector<std::string>{});
  for (const auto& [query, expected] : cases) {
    kestra_value_release(Run(query));
    EXPECT_EQ(ColumnsOf(session), expected) << query;
  }
}

// A class by its path from the root; null if there is none.
kestra_class* FindClass(kestra_session* session, std::initializer_list<const char*> path) {
  kestra_class* found = nullptr;
  EXPECT_EQ(kestra_session_root_class(session, &found), KESTRA_OK);
  for (const char* wanted : path) {
    kestra_class* parent = found;
    found = nullptr;
    int32_t count = 0;
    EXPECT_EQ(kestra_class_child_count(parent, &count), KESTRA_OK);
    for (int32_t i = 0; i < count && !found; ++i) {
      const char* name = nullptr;
      EXPECT_EQ(kestra_class_child(parent, i, &found), KESTRA_OK);
      EXPECT_EQ(kestra_class_name(found, &name), KESTRA_OK);
      if (std::string_view(name) != wanted) {
        kestra_class_release(found);
        found = nullptr;
      }
    }
    kestra_class* none = nullptr;
    EXPECT_EQ(kestra_class_child(parent, count, &none), KESTRA_E_INVALIDARG);
    kestra_class_release(parent);
    if (!found) return nullptr;
  }
  return found;
}

TEST_F(SessionInterface, ClassTreeDeclaresProperties) {
  EXPECT_EQ(FindClass(session, {"Test", "NoSuch"}), nullptr);
  kestra_class* row = FindClass(session, {"Test", "Row"});
  ASSERT_NE(row, nullptr);
  const char *name = nullptr, *unit = nullptr, *options = nullptr, *description = nullptr;
  int32_t type = 0, canBeChanged = 0, count = 0;
  ASSERT_EQ(kestra_class_property_count(row, &count), KESTRA_OK);
  EXPECT_EQ(count, 12);
  ASSERT_EQ(
      kestra_class_property(row, 4, &name, &type, &unit, &options, &canBeChanged, &description),
      KESTRA_OK);
  EXPECT_STREQ(name, "Flags");
  EXPECT_EQ(type, KESTRA_TYPE_BITMASK);
  EXPECT_STREQ(unit, "");
  EXPECT_STREQ(options, "Red|Green||Blue");
  EXPECT_EQ(canBeChanged, 1);
  ASSERT_EQ(kestra_class_property(row, 2, nullptr, nullptr, &unit, &options, nullptr, nullptr),
            KESTRA_OK);
  EXPECT_STREQ(unit, "KB");
  EXPECT_STREQ(options, "");
  EXPECT_EQ(kestra_class_property(row, 12, &name, nullptr, nullptr, nullptr, nullptr, nullptr),
            KESTRA_E_INVALIDARG);

  kestra_value* value = ElementOf(Run("SELECT * FROM Test.Row WHERE Id = 1"), 0);
  kestra_item* item = nullptr;
  kestra_class* classOfItem = nullptr;
  int32_t same = 0;
  ASSERT_EQ(kestra_value_as_vdiag_item(value, &item), KESTRA_OK);
  ASSERT_EQ(kestra_item_class(item, &classOfItem), KESTRA_OK);
  ASSERT_EQ(kestra_class_is_same(row, classOfItem, &same), KESTRA_OK);
  EXPECT_EQ(same, 1);
  kestra_class_release(classOfItem);
  kestra_item_release(item);
  kestra_value_release(value);
  kestra_class_release(row);
}

TEST_F(SessionInterface, ReInitForgetsWhatWasFilled) {
  const char* const query = "SELECT COUNT(*) FROM Test.Row WHERE Text = 'after'";
  EXPECT_EQ(TextOf(query), "0");
  // Another session changes what the module describes, for the whole process.
  kestra_session* const other =
      MakeSession({ModulesWithTests(), MakeRef<CFakeMachine>(SystemFamily::Linux)});
  kestra_session_allow_active(other, 1);
  const auto describe = [&](const std::string& text) {
    const std::string change = "UPDATE Test.Row SET Text = '" + text + "' WHERE Id = 1";
    kestra_value* value = nullptr;
    EXPECT_EQ(
        kestra_session_run_query_sync(other, change.c_str(), nullptr, KESTRA_NO_TIMEOUT, &value),
        KESTRA_OK);
    EXPECT_EQ(TakeText(value), "<Vector>");  // of one count
  };
  describe("after");
  EXPECT_EQ(TextOf(query), "0");
  ASSERT_EQ(kestra_session_reinit_diag_root(session), KESTRA_OK);
  EXPECT_EQ(TextOf(query), "1");
  describe("Alpha one");
  kestra_session_destroy(other);
}

TEST(SessionOptions, ArePartlyUnknownToOneOfTheTwo) {
  struct {
    kestra_options known;
    const char* later[1000];
  } options{};
  const struct {
    size_t size;
    const char* later;
    kestra_status expected;
  } cases[] = {
      {sizeof(size_t), nullptr, KESTRA_OK},  // an early header
      {sizeof(kestra_options), "beyond the size", KESTRA_OK},
      {sizeof(kestra_options) + sizeof(char*), nullptr, KESTRA_OK},
      {sizeof(kestra_options) + sizeof(char*), "a member of a later header", KESTRA_E_INVALIDARG},
      {sizeof(options), nullptr, KESTRA_E_INVALIDARG},  // never set, as it seems
      {0, nullptr, KESTRA_E_INVALIDARG},
  };
  for (const auto& [size, later, expected] : cases) {
    options.known.struct_size = size;
    options.later[0] = later;
    kestra_session* made = nullptr;
    EXPECT_EQ(kestra_session_create(&options.known, &made), expected) << size;
    EXPECT_EQ(made != nullptr, expected == KESTRA_OK) << size;
    EXPECT_EQ(*kestra_create_error() == '\0', expected == KESTRA_OK) << size;
    kestra_session_destroy(made);
  }
}

TEST(CapiBarrier, LetsNothingThrough) {
  const int place = 0;
  const int* const pNone = nullptr;
  EXPECT_EQ(Barrier(&place)([]() -> kestra_status { throw std::bad_alloc(); }),
            KESTRA_E_OUTOFMEMORY);
  EXPECT_EQ(Barrier(&place)([]() -> kestra_status { throw std::runtime_error("x"); }),
            KESTRA_E_FAIL);
  EXPECT_EQ(Barrier(&place)([]() -> kestra_status { throw 1; }), KESTRA_E_FAIL);
  EXPECT_EQ(Barrier(&place, pNone)([]() -> kestra_status { throw 1; }), KESTRA_E_POINTER);
  EXPECT_EQ(Barrier()([] { return KESTRA_OK; }), KESTRA_OK);
}

}  // namespace
}  // namespace kestra::test
