// What each format makes of the values that a query can end in.
#include "cli/render/Render.h"
#include "tests/front/SessionFixture.h"

namespace kestra::cli {
namespace {

class Renderers : public test::CInterfaceTest {
 protected:
  std::string Show(const char* query, Format format, size_t width = 0,
                   const RowSelection& rows = {}, bool turnsVertical = false) {
    const CValueHandle value(Run(query));
    EXPECT_FALSE(Is(kestra_value_is_error, value.get())) << query;
    const auto columns = Take<CColumnsHandle>(kestra_session_columns, session);
    std::vector<std::string> names;
    for (int32_t i = 0; i < Ask<int32_t>(kestra_columns_count, columns.get()); ++i) {
      names.emplace_back(Ask<const char*>(kestra_columns_name, columns.get(), i));
    }
    CStringOutput output;
    Render(value.get(), names, {format, width, turnsVertical, rows}, output);
    return output.content;
  }
};

constexpr const char* kColumns =
    "SELECT Id, Size, Text, Kind, Flags, Created, Other, 0 - Id FROM Test.Row "
    "WHERE Id < 3";

TEST_F(Renderers, Text) {
  const std::pair<const char*, const char*> cases[] = {
      {"0 - 1", "4294967295\n"},
      {"1 = 2", "False\n"},
      {kColumns,
       "1\t10\tAlpha one\tAlpha\tRed|Green\t2006-01-01 00:00:00\t1.2.0\t4294967295\n"
       "2\t<NULL>\tbeta TWO\tBeta\t\t2006-01-02 00:00:00\t1.10\t4294967294\n"},
      {"SELECT * FROM Test.Row WHERE Id = 2",
       "2\tbeta TWO\t<NULL>\tBeta\t\t2006-01-02 00:00:00\t1.2.0a\t1.10\t<NULL>\t<NULL>\t<NULL>\t"
       "<NULL>\n"},
      {"SELECT Id, Size FROM Test.Row WHERE Id = 4", "4\t4294967295\n"},
      {"SELECT * FROM Test.Row WHERE Id = 99", ""},
      {"'a\tb\r\nc'", "a b  c\n"},
  };
  for (const auto& [query, expected] : cases)
    EXPECT_EQ(Show(query, Format::Text), expected) << query;
}

TEST_F(Renderers, Json) {
  const std::pair<const char*, const char*> cases[] = {
      {"0 - 1", "-1\n"},
      {"1 = 2", "false\n"},
      {kColumns,
       "[\n"
       R"({"Id":1,"Size":10,"Text":"Alpha one","Kind":"Alpha","Flags":["Red","Green"],)"
       R"("Created":"2006-01-01T00:00:00Z","Other":"1.2.0","0 - Id":-1},)"
       "\n"
       R"({"Id":2,"Size":null,"Text":"beta TWO","Kind":"Beta","Flags":[],)"
       R"("Created":"2006-01-02T00:00:00Z","Other":"1.10","0 - Id":-2})"
       "\n]\n"},
      {"SELECT Id, Size FROM Test.Row WHERE Id = 4", "[\n{\"Id\":4,\"Size\":4294967295}\n]\n"},
      {"SELECT Id, Id, Id FROM Test.Row WHERE Id = 1", "[\n{\"Id\":1,\"Id_2\":1,\"Id_3\":1}\n]\n"},
      {"SELECT * FROM Test.Part WHERE Number = 3",
       "[\n{\"Number\":3,\"Owner\":2,\"Label\":null,\"Grade\":\"High\"}\n]\n"},
      {"SELECT * FROM Test.Row WHERE Id = 99", "[]\n"},
      {"'a\xFF\"'", "[\n\"a\xEF\xBF\xBD\\\"\"\n]\n"},
  };
  for (const auto& [query, expected] : cases)
    EXPECT_EQ(Show(query, Format::Json), expected) << query;
  EXPECT_EQ(Show("SELECT Id, Kind FROM Test.Row WHERE Id < 3", Format::JsonLines),
            "{\"Id\":1,\"Kind\":\"Alpha\"}\n{\"Id\":2,\"Kind\":\"Beta\"}\n");
  EXPECT_EQ(Show("SELECT * FROM Test.Row WHERE Id = 99", Format::JsonLines), "");
}

TEST_F(Renderers, Csv) {
  const std::pair<const char*, const char*> cases[] = {
      {"0 - 1", "Value\r\n-1\r\n"},
      {"SELECT Id, Size, Text, Flags FROM Test.Row WHERE Id < 3",
       "Id,Size,Text,Flags\r\n1,10,Alpha one,Red|Green\r\n2,,beta TWO,\"\"\r\n"},
      {"SELECT Id + 1, Text + ', \"' FROM Test.Row WHERE Id = 1",
       "Id + 1,\"Text + ', \"\"'\"\r\n2,\"Alpha one, \"\"\"\r\n"},
      {"SELECT * FROM Test.Part WHERE Owner = 2", "Number,Owner,Label,Grade\r\n3,2,,High\r\n"},
      {"SELECT Id, Text FROM Test.Row WHERE Id = 99", "Id,Text\r\n"},
      // a list in a cell
      {"CREATE PROCEDURE a AS SELECT Id, Text FROM Test.Row WHERE Id < 3 CREATE PROCEDURE b AS 7",
       "Value1,Value2\r\na,\"[[1,\"\"Alpha one\"\"],[2,\"\"beta TWO\"\"]]\"\r\nb,7\r\n"},
      {"CREATE PROCEDURE a AS SELECT * FROM Test.Part WHERE Owner = 2",
       "Value1,Value2\r\na,\"[{\"\"Number\"\":3,\"\"Owner\"\":2,\"\"Label\"\":null,"
       "\"\"Grade\"\":\"\"High\"\"}]\"\r\n"},
      // a record is never an empty line
      {"SELECT Size FROM Test.Row WHERE Id < 3", "Size\r\n10\r\n\"\"\r\n"},
  };
  for (const auto& [query, expected] : cases)
    EXPECT_EQ(Show(query, Format::Csv), expected) << query;
}

TEST_F(Renderers, Xml) {
  const std::string begin = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\r\n<I n=\"Result\">\r\n";
  const std::string end = "</I>\r\n";
  const std::string unknown = "\xEF\xBF\xBD";
  const std::pair<const char*, std::string> cases[] = {
      {"SELECT Id, Size, Id FROM Test.Row WHERE Id = 2",
       "<I n=\"Row\">\r\n<P n=\"Id\">2</P>\r\n<P n=\"Id_2\">2</P>\r\n</I>\r\n"},
      {"SELECT Id +\n0 FROM Test.Row WHERE Id = 1", "<P n=\"Id +&#10;0\">1</P>\r\n"},
      {"'<a b=\"&\">\t\r\n'", "<P n=\"Value\">&lt;a b=&quot;&amp;&quot;&gt;\t&#13;\n</P>\r\n"},
      // what XML has no character for
      {"'\x1B[2J\xFF\xED\xA0\x80\xEF\xBF\xBE\xF0\x9F\x98\x80'",
       "<P n=\"Value\">" + unknown + "[2J" + unknown + unknown + unknown + unknown + unknown +
           "\xF0\x9F\x98\x80</P>\r\n"},
  };
  for (const auto& [query, expected] : cases)
    EXPECT_EQ(Show(query, Format::Xml), begin + expected + end) << query;
}

TEST_F(Renderers, Table) {
  const std::pair<const char*, const char*> cases[] = {
      {"0 - 1", "-1\n"},
      {"SELECT Text, Size, Id FROM Test.Row WHERE Id < 3",
       "Text       Size (KB)  Id\n"
       "---------  ---------  --\n"
       "Alpha one         10   1\n"
       "beta TWO               2\n"},
      // only what some row has; two classes side by side
      {"SELECT * FROM Test.Part WHERE Number = 3",
       "Number  Owner  Grade\n"
       "------  -----  -----\n"
       "     3      2  High\n"},
      {"SELECT Id, Text FROM Test.Row WHERE Id = 99", "Id  Text\n--  ----\n"},
      {"SELECT Text, Id FROM Test.Row WHERE Id = 4",
       "Text  Id\n"
       "----  --\n"
       "\xC3\xBC"
       "ber   4\n"},
  };
  for (const auto& [query, expected] : cases)
    EXPECT_EQ(Show(query, Format::Table), expected) << query;
}

TEST_F(Renderers, TableFitsTheTerminal) {
  const char* const query =
      "SELECT Id, Text + ' and much more text', Text FROM Test.Row WHERE Id = 1";
  const std::string shown = Show(query, Format::Table, 40);
  size_t longest = 0;
  for (size_t start = 0; start < shown.size();) {
    const size_t end = shown.find('\n', start);
    size_t width = 0;
    for (size_t i = start; i < end; ++i)
      width += (static_cast<unsigned char>(shown[i]) & 0xC0) != 0x80;
    longest = std::max(longest, width);
    start = end + 1;
  }
  EXPECT_LE(longest, 40u) << shown;
  EXPECT_NE(shown.find("Alpha one\n"), std::string::npos)
      << "only the widest column is cut: " << shown;
  EXPECT_NE(shown.find("\xE2\x80\xA6"), std::string::npos) << shown;
  // Where it cannot fit, nothing is cut away entirely, and numbers never are.
  EXPECT_NE(Show("SELECT 0 - Id, Id FROM Test.Row", Format::Table, 1).find("-4   4"),
            std::string::npos);
  // A heading may be cut down to the numbers below it.
  EXPECT_EQ(Show("SELECT Id + 1000000000, Id FROM Test.Row WHERE Id = 1", Format::Table, 14),
            "Id + 1000\xE2\x80\xA6  Id\n----------  --\n1000000001   1\n");
  // Where it cannot fit, the rows stand upright if they may; a heading without rows cannot.
  const char* const numbers = "SELECT Id + 1000000000, Id FROM Test.Row WHERE Id = ";
  EXPECT_EQ(Show((numbers + std::string("1")).c_str(), Format::Table, 13, {}, true),
            "-- 1 --\nId + 1000000000: 1000000001\n             Id: 1\n");
  EXPECT_NE(Show((numbers + std::string("99")).c_str(), Format::Table, 13, {}, true).find("---"),
            std::string::npos);
}

// A number, a version or a date that is cut would be another one.
TEST_F(Renderers, TableCutsNoDayAndNoVersion) {
  const std::string shown =
      Show("SELECT Text, Created, Other FROM Test.Row WHERE Id = 1", Format::Table, 10);
  EXPECT_NE(shown.find("\nAlpha o\xE2\x80\xA6  2006-01-01\xE2\x80\xA6  1.2.0\n"), std::string::npos)
      << shown;
}

TEST_F(Renderers, Vertical) {
  EXPECT_EQ(Show("SELECT Text, Size, Id FROM Test.Row WHERE Id < 3", Format::Vertical),
            "-- 1 --\n     Text: Alpha one\nSize (KB): 10\n       Id: 1\n"
            "-- 2 --\n     Text: beta TWO\n       Id: 2\n");
  EXPECT_EQ(Show("SELECT Text + '\nb' FROM Test.Row WHERE Id = 1", Format::Vertical),
            "-- 1 --\nText + ' b': Alpha one\n             b\n");
  EXPECT_EQ(Show("1 + 1", Format::Vertical), "2\n");
}

// The numbers of the rows, by each column and both ways. What is not set is last.
TEST_F(Renderers, Order) {
  const char* const query = "SELECT Id, Size, Text, Created, Other FROM Test.Row WHERE Id < 5";
  const auto order = [&](const char* sort) {
    RowSelection rows;
    rows.sort = ParseSortOrder(sort);
    std::string numbers;
    const std::string shown = Show(query, Format::Text, 0, rows);
    for (size_t start = 0; start < shown.size(); start = shown.find('\n', start) + 1)
      numbers += shown[start];
    return numbers;
  };
  const std::pair<const char*, const char*> cases[] = {
      {"Id", "1234"},   {"id:desc", "4321"},      {"Size", "1342"},  {"Size:desc", "4312"},
      {"text", "1234"}, {"Created:DESC", "4213"}, {"Other", "1243"}, {"Other:asc", "1243"},
  };
  for (const auto& [sort, expected] : cases) EXPECT_EQ(order(sort), expected) << sort;
}

// Every format shows the same rows.
TEST_F(Renderers, Limit) {
  RowSelection rows;
  rows.sort = ParseSortOrder("Id:desc");
  rows.limit = 1;
  for (const Format format : {Format::Table, Format::Vertical, Format::Text, Format::Csv,
                              Format::Json, Format::JsonLines, Format::Xml}) {
    const std::string shown =
        Show("SELECT 'row' + Text, Id FROM Test.Row WHERE Id < 3", format, 0, rows);
    EXPECT_NE(shown.find("rowbeta TWO"), std::string::npos) << shown;
    EXPECT_EQ(shown.find("rowAlpha one"), std::string::npos) << shown;
  }
  rows.limit = 0;
  EXPECT_EQ(Show("SELECT Id FROM Test.Row", Format::Text, 0, rows), "");
  EXPECT_EQ(Show("1 + 1", Format::Text, 0, rows), "2\n");
}

TEST_F(Renderers, UnknownColumnToSortBy) {
  const struct {
    const char* sort;
    const char* advice;
  } kCases[] = {
      {"Txt", "; did you mean Text?"},
      {"Text:down", "; behind Text can stand :asc or :desc"},
  };
  RowSelection rows;
  for (const auto& [sort, advice] : kCases) {
    rows.sort = ParseSortOrder(sort);
    for (const char* query :
         {"SELECT * FROM Test.Row", "SELECT Text FROM Test.Row WHERE Id = 99"}) {
      try {
        Show(query, Format::Text, 0, rows);
        ADD_FAILURE() << query;
      } catch (const CUnknownColumn& error) {
        EXPECT_EQ(error.what(),
                  "the result has no column \"" + std::string(sort) + "\" to sort by" + advice);
      }
    }
  }
  // Without rows nothing is known of the columns.
  EXPECT_EQ(Show("SELECT * FROM Test.Row WHERE Id = 99", Format::Text, 0, rows), "");
}

TEST_F(Renderers, CancelBreaksOff) {
  CCancellation cancellation;
  cancellation.Cancel();
  RowSelection rows;
  rows.pCancellation = &cancellation;
  EXPECT_THROW(Show("SELECT * FROM Test.Row", Format::Csv, 0, rows), CCancelled);
}

// Lists in lists, deeper than any that a person writes.
TEST_F(Renderers, DeepNestingEnds) {
  kestra::Value value;
  value.SetNumber(1);
  for (int depth = 0; depth < 2000; ++depth) {
    auto vector = MakeRef<ValueVector>();
    vector->Append(std::move(value));
    value.SetVector(std::move(vector));
  }
  kestra_value handle{value};
  for (const Format format : {Format::Text, Format::Table, Format::Csv, Format::Json}) {
    CStringOutput output;
    Render(&handle, {}, {format, 80}, output);
    EXPECT_NE(output.content.find("<Vector>"), std::string::npos) << output.content;
  }
}

class CFullOutput final : public COutput {
 public:
  void Write(std::string_view) override { throw COutputError("full"); }
};

TEST_F(Renderers, FailureOfTheOutputIsPassedOn) {
  const CValueHandle value(Run(kColumns));
  for (const Format format : {Format::Text, Format::Table, Format::Csv, Format::Json}) {
    CFullOutput output;
    EXPECT_THROW(Render(value.get(), {}, {format, 80}, output), COutputError);
  }
}

}  // namespace
}  // namespace kestra::cli
