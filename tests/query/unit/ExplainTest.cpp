// Plans, as they are told.
#include <gtest/gtest.h>

#include <string>

#include "query/explain/Explain.h"
#include "tests/query/support/TestModules.h"
#include "tests/support/FakeMachine.h"

namespace kestra::test {
namespace {

Ref<DiagRoot> NewRoot() {
  return MakeRef<DiagRoot>("", ModulesWithTests(),
                           Ref<CMachine>(MakeRef<CFakeMachine>(SystemFamily::Linux)));
}

struct Case {
  const char* query;
  const char* plan;  // empty for a text that does not parse
};

TEST(Explain, TellsSourcesJoinsAndWhereConditionsAreTested) {
  const Case cases[] = {
      {"SELECT Nonsense FROM Test.Row", ""},
      {"1 + 1", "value: 1 + 1\n"},
      {"SELECT Id,\n  Text FROM Test( First = 2 )#60*.Row WHERE Id > 1 AND (Text = 'a  b' OR Id = "
       "2)",
       "SELECT Id, Text: for each row\n"
       "  read Test( First = 2 )#60*.Row\n"
       "    content: what is in memory, else from the cache if it is at most 60 seconds old, else "
       "filled; shared by all users\n"
       "    where, on each row while it is read: Id > 1 AND (Text = 'a  b' OR Id = 2)\n"},
      // A condition of both sources waits for the join; parentheses keep what they hold together.
      {"SELECT a.Id FROM Test.Row a JOIN Many.Entry b ON (a.Id = b.Id) WHERE (a.Id > 1) AND b.Id < "
       "3 AND (a.Id = 4 OR b.Id = 5) AND a.Size = b.Group",
       "SELECT a.Id: for each row\n"
       "  read Test.Row a\n"
       "    content: what is in memory, else filled\n"
       "    where, on each row while it is read: (a.Id > 1)\n"
       "  join Many.Entry b: rows found by index if there are many\n"
       "    content: what is in memory, else filled\n"
       "    on: (a.Id = b.Id)\n"
       "    where, on each row while it is read: b.Id < 3\n"
       "  where, on each joined row: (a.Id > 1) AND b.Id < 3 AND (a.Id = 4 OR b.Id = 5) AND a.Size "
       "= b.Group\n"},
      {"SELECT COUNT(*) FROM Test.Row r JOIN Test.Part p ON p.ATTACHEDTO = r.ITEMID WHERE p.Number "
       "= 1 AND r.Id = 2",
       "SELECT COUNT(*): one value of all rows\n"
       "  read Test.Row r\n"
       "    content: what is in memory, else filled\n"
       "    where, on each row while it is read: r.Id = 2\n"
       "  join Test.Part p: the children of the row on its left\n"
       "  where, on each joined row: p.Number = 1 AND r.Id = 2\n"},
      {"SELECT * FROM Test.Row a WHERE a.Id = (SELECT MAX(b.Id) FROM Many.Entry b WHERE b.Id < "
       "a.Id)",
       "SELECT *: the rows\n"
       "  read Test.Row a\n"
       "    content: what is in memory, else filled\n"
       "    where, on each row while it is read: a.Id = (SELECT MAX(b.Id) FROM Many.Entry b WHERE "
       "b.Id < a.Id)\n"
       "    sub-select, run for each row that is tested; it names a:\n"
       "      SELECT MAX(b.Id): one value of all rows\n"
       "        read Many.Entry b\n"
       "          content: what is in memory, else filled\n"
       "          where, on each row while it is read: b.Id < a.Id\n"},
      // What is found by index, and what is not: nothing of the right alone, or something that may
      // fail before it.
      {"SELECT a.Id FROM Test.Row a JOIN Many.Entry b ON a.Id + 1 = b.Id + 1",
       "SELECT a.Id: for each row\n"
       "  read Test.Row a\n"
       "    content: what is in memory, else filled\n"
       "  join Many.Entry b: each pair of rows is tested\n"
       "    content: what is in memory, else filled\n"
       "    on: a.Id + 1 = b.Id + 1\n"},
      {"SELECT a.Id FROM Test.Row a JOIN Many.Entry b ON 1 / b.Group = 1 AND a.Id = b.Id",
       "SELECT a.Id: for each row\n"
       "  read Test.Row a\n"
       "    content: what is in memory, else filled\n"
       "  join Many.Entry b: each pair of rows is tested\n"
       "    content: what is in memory, else filled\n"
       "    on: 1 / b.Group = 1 AND a.Id = b.Id\n"},
      {"SELECT Id FROM Test.Row a WHERE Size > (SELECT MAX(Id) FROM Many.Entry) AND a.Size = "
       "(SELECT b.Group FROM Many.Entry b WHERE b.Group > 3 AND b.Id = a.Id)",
       "SELECT Id: for each row\n"
       "  read Test.Row a\n"
       "    content: what is in memory, else filled\n"
       "    where, on each row while it is read: Size > (SELECT MAX(Id) FROM Many.Entry) AND "
       "a.Size = "
       "(SELECT b.Group FROM Many.Entry b WHERE b.Group > 3 AND b.Id = a.Id)\n"
       "    sub-select, run once:\n"
       "      SELECT MAX(Id): one value of all rows\n"
       "        read Many.Entry\n"
       "          content: what is in memory, else filled\n"
       "    sub-select, run for each row that is tested; it names a:\n"
       "      SELECT b.Group: of the only row; an Error unless there is exactly one\n"
       "        read Many.Entry b\n"
       "          content: what is in memory, else filled\n"
       "          from the second run on: rows found by index if there are many\n"
       "          where, on each row while it is read: b.Group > 3 AND b.Id = a.Id\n"},
      {"2 * (SELECT COUNT(*) FROM FILES.FILE('/etc/*'))",
       "value: 2 * (SELECT COUNT(*) FROM FILES.FILE('/etc/*'))\n"
       "  sub-select, run once:\n"
       "    SELECT COUNT(*): one value of all rows\n"
       "      read FILES.FILE('/etc/*')\n"
       "        content: read anew each time\n"},
      {"SELECT * FROM DMI.BIOS",
       "SELECT *: the rows\n"
       "  read DMI.BIOS\n"
       "    declared and not built yet: it shows nothing\n"
       "    content: what is in memory, else filled\n"},
      {"SELECT * FROM Registry(KeyPath='HKLM').RegistryKey",
       "SELECT *: the rows\n"
       "  read Registry(KeyPath='HKLM').RegistryKey\n"
       "    nothing of it is on this machine\n"
       "    content: what is in memory, else filled\n"},
      {"UPDATE Test.Row SET Size = (SELECT COUNT(*) FROM Test.Part p WHERE (p.Owner = 2))",
       "UPDATE Test.Row SET Size = (SELECT COUNT(*) FROM Test.Part p WHERE (p.Owner = 2)): changes "
       "the machine, which needs permission\n"
       "  read Test.Row\n"
       "    content: what is in memory, else filled\n"
       "  sub-select, run for each row:\n"
       "    SELECT COUNT(*): one value of all rows\n"
       "      read Test.Part p\n"
       "        content: what is in memory, else filled\n"
       "        where, on each row while it is read: (p.Owner = 2)\n"},
      {"UPDATE Test#60.Row SET Text = 'x' WHERE Id = 1 DROP MODULE *",
       "UPDATE Test#60.Row SET Text = 'x': changes the machine, which needs permission\n"
       "  read Test#60.Row\n"
       "    content: what is in memory, else filled; kept in the cache\n"
       "    where, on each row while it is read: Id = 1\n"
       "DROP MODULE *: forgets what modules were filled with; needs no permission\n"},
      {"CREATE PROCEDURE one AS DELETE r FROM Test.Row r WHERE r.Id = 9",
       "procedure one: runs its statements and gives their answer that name\n"
       "  DELETE r: changes the machine, which needs permission\n"
       "    read Test.Row r\n"
       "      content: what is in memory, else filled\n"
       "      where, on each row while it is read: r.Id = 9\n"},
  };
  const Ref<DiagRoot> root = NewRoot();
  for (const Case& c : cases) {
    std::string plan;
    EXPECT_EQ(ExplainQuery(c.query, root, plan), *c.plan != '\0') << c.query;
    EXPECT_EQ(plan, c.plan) << c.query;
  }
  EXPECT_EQ(root->Children.Count(), 0u) << "a plan makes no module";
}

// What nobody would read is cut, in reasonable time and on any stack.
TEST(Explain, CutsWhatIsLongAndWhatIsDeep) {
  const Ref<DiagRoot> root = NewRoot();
  std::string deep = "1", wide = "SELECT Id FROM Test.Row WHERE Id = 0",
              joins =
                  "SELECT a0.Id FROM "
                  "Test.Row a0";
  for (int i = 0; i < 300; ++i) deep = "(SELECT COUNT(*) FROM Test.Row WHERE Id = " + deep + ")";
  for (int i = 1; i < 9000; ++i) wide += " AND Id <> " + std::to_string(i);
  for (int i = 1; i < 2000; ++i) {
    const std::string alias = "a" + std::to_string(i);
    joins += " JOIN Test.Row " + alias + " ON " + alias + ".Id = a0.Id";
  }
  for (const std::string& text : {deep, wide, joins + " WHERE a7.Id = 1"}) {
    std::string plan;
    ASSERT_TRUE(ExplainQuery(text, root, plan)) << text.substr(0, 60);
    EXPECT_LT(plan.size(), 1000000u) << text.substr(0, 60);
  }
}

}  // namespace
}  // namespace kestra::test
