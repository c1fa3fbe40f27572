// The parser against the plain one, over the queries of the scripts and over random ones; and the
// scripts against the grammar table.
#include <fmt/format.h>
#include <gtest/gtest.h>

#include "query/parse/Predicates.h"
#include "query/parse/chart/Chart.h"
#include "tests/query/support/TestModules.h"
#include "tests/query/unit/PlainParser.h"
#include "tests/query/unit/QueryGenerator.h"
#include "tests/query/unit/ScriptQueries.h"
#include "tests/support/FakeMachine.h"

namespace kestra::test {
namespace {

Ref<DiagRoot> TestRoot() {
  static const auto* pRoot = new Ref<DiagRoot>(
      MakeRef<DiagRoot>("", ModulesWithTests(), Ref<CMachine>(MakeRef<CFakeMachine>())));
  return *pRoot;
}

// Whether the text has a tree, after both parsers agreed about it.
bool ParsesAlike(const std::string& text) {
  QueryContext context(text, TestRoot(), 0, nullptr);
  if (!Tokenise(context.QueryText, context.Tokens)) return false;
  const auto plain = PlainParse(context);
  ParseTree tree;
  const bool parses = ParseTokens(context, tree);
  EXPECT_EQ(parses, plain.has_value()) << text;
  if (!parses || !plain) return false;
  const TreeForm fast = FormOf(tree, context);
  EXPECT_FALSE(fast.empty()) << "a node has another parent or context: " << text;
  EXPECT_EQ(fast, *plain) << text << "\nparser: " << TextOf(fast) << "\nplain:  " << TextOf(*plain);
  return true;
}

TEST(Parser, AgreesWithThePlainOneOnTheScripts) {
  const auto queries = ReadScriptQueries(KESTRA_QUERY_SCRIPTS);
  size_t parsed = 0;
  for (const ScriptQuery& query : queries) {
    SCOPED_TRACE(query.place);
    if (ParsesAlike(query.text)) ++parsed;
    if (HasFailure()) return;
  }
  EXPECT_GT(parsed, 400u) << "of " << queries.size();
}

class RandomQueries : public testing::TestWithParam<uint32_t> {};

TEST_P(RandomQueries, AgreeWithThePlainParser) {
  CQueryGenerator generator(GetParam());
  size_t parsed = 0, parsedDamaged = 0;
  constexpr size_t kQueries = 500;
  for (size_t i = 0; i < kQueries && !HasFailure(); ++i) {
    const auto tokens = generator.Query(5 + i % 60);
    if (ParsesAlike(CQueryGenerator::Join(tokens))) ++parsed;
    if (ParsesAlike(CQueryGenerator::Join(generator.Damage(tokens)))) ++parsedDamaged;
  }
  // Guards the generator: most of its texts are good, and most damage shows.
  EXPECT_GT(parsed, kQueries / 2);
  EXPECT_GT(parsedDamaged, kQueries / 100);
  EXPECT_LT(parsedDamaged, parsed);
}
INSTANTIATE_TEST_SUITE_P(Seeds, RandomQueries, testing::Range(1u, 9u));

// What the generator does not reach: words in places where only the search for columns meets them.
TEST(Parser, AgreesWithThePlainOneOnColumnSearches) {
  for (const char* pText : {
           "SELECT Id FROM Test(First = (1)).Row WHERE (Id) = (1)",
           "SELECT a.Id FROM Test ( First = 1 ) # 5 * . Row a",
           "SELECT Id FROM Test*.Row",
           "SELECT Id FROM Test#3.Row",
           "SELECT Id FROM Test.Row WHERE Id IN (SELECT b.Id FROM Test.Row b WHERE b.Size = Size)",
           "SELECT Id FROM Test.Row WHERE Size = (SELECT Number FROM Test.Part WHERE Number = Id)",
           "SELECT (SELECT Number FROM Test.Part WHERE Number = Id) FROM Test.Row",
           "SELECT a.Id FROM Test.Row a JOIN Test.Part a ON a.Id = a.Number",
           "SELECT Number FROM Test.Row a JOIN Test.Part b ON Id = Number WHERE Label = Text",
           "UPDATE Test.Row SET Size = Size + Id WHERE Id = 2",
           "UPDATE a SET Size = a.Id FROM Test.Row a WHERE a.Id = 1",
           "DELETE Test.Part WHERE Number = 3",
           "DELETE Test.Part WHERE Id = 3",
           "DELETE p FROM Test.Part p WHERE p.Number = 1",
           "SELECT FileName FROM FILES.FILE('/tmp/*') WHERE Size > 1",
           "SELECT f.FileName FROM FILES.FILE('/' + 'x') f WHERE f.Size > 1",
           "SELECT Name FROM REGISTRY.REGISTRYVALUE('HKLM\\a\\b') v",
           "SELECT Name FROM INIFILES.IniKey('a.ini')",
           "SELECT FROM.Id FROM Test.Row FROM",
           "SELECT JOIN.Id FROM Test.Row JOIN WHERE JOIN.Id = 1",
           "SELECT Id FROM Test.Row) WHERE (Id = 1",
           ") Id FROM Test.Row (",
           "Id",
           "a.Id",
           "SELECT",
           "EXECUTE Action(SELECT * FROM Test.Row WHERE Id = 1, 'Touch', Step = 3)",
           "INSERT Test.Part (ATTACHEDTO, Number) SELECT r.ITEMID, r.Id FROM Test.Row r",
           "INSERT Test.Row (Id) SELECT a.Id, Text FROM Test.Row a INSERT Test.Row (Id) VALUES (1)",
       }) {
    ParsesAlike(pText);
  }
}

// Long walks over sources take a short cut by their aliases.
TEST(Parser, AgreesWithThePlainOneOnManySources) {
  const auto joins = [](int count, const std::string& on) {
    std::string text = "SELECT s0.Id FROM Test.Row s0";
    for (int i = 1; i <= count; ++i) {
      text += fmt::format(" JOIN Test.{} s{} ON {}", i % 3 == 0 ? "Part" : "Row", i % 25, on);
    }
    return text;
  };
  size_t parsed = 0;
  for (const char* pOn : {
           "s0.Id = 1",
           "s3.Number = s1.Id",
           "s0.Size = (SELECT MIN(s9.Size) FROM Test.Row s9 WHERE s9.Id = s1.Id AND s0.Id = 1)",
           "(s0.Id = 1) AND s1.Id IN (SELECT s0.Number FROM Test.Part s0)",
           "s9.Id = 1",  // of some of the sources with this alias, and of none for long
           "s26.Id = 1",
           "s0.Id = 1) AND (s0.Id = 1",
           "s0.Id = (s1.Id",
       }) {
    for (const int count : {1, 15, 16, 17, 18, 40, 70}) {
      if (ParsesAlike(joins(count, pOn))) ++parsed;
    }
  }
  EXPECT_GE(parsed, 21u);
}

// A query that is a string is always found as a list of one string first, so this row leaves no
// tree.
bool IsShadowed(const Rule& rule) {
  const Symbol first = rule.Symbols[0];
  return rule.Table == NonTerminal::Query && first.Kind == SymbolKind::NonTerminal &&
         first.Number == static_cast<uint8_t>(NonTerminal::StringQuery);
}

TEST(GrammarTable, EveryRowIsUsedByAScript) {
  const auto& rules = TheGrammar().rules;
  ASSERT_EQ(rules.size(), 179u);
  std::set<size_t> used;
  for (const ScriptQuery& query : ReadScriptQueries(KESTRA_QUERY_SCRIPTS)) {
    QueryContext context(query.text, TestRoot(), 0, nullptr);
    if (!Tokenise(context.QueryText, context.Tokens)) continue;
    std::set<size_t> ofThis;
    if (PlainParse(context, &ofThis)) used.merge(ofThis);
  }
  for (size_t i = 0; i < rules.size(); ++i) {
    const Grammar::Range range = TheGrammar().alternatives[static_cast<size_t>(rules[i].Table)];
    EXPECT_EQ(used.contains(i), !IsShadowed(rules[i]))
        << "row " << i << ": alternative " << i - range.first << " of nonterminal "
        << static_cast<int>(rules[i].Table);
  }
}

}  // namespace
}  // namespace kestra::test
