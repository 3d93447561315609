#include "reference.h"

#include "fixture.h"

namespace qelm::xpath {
namespace {

std::string Describe(const MatchList& matches) {
  std::string text;
  for (const Match& match : matches) text += fmt::format("{}@{} ", match.element, match.attribute);
  return text;
}

std::string Describe(const std::vector<ReferenceNode>& nodes) {
  std::string text;
  for (const ReferenceNode& node : nodes) text += fmt::format("{}@{} ", node.id, node.attribute);
  return text;
}

// Compares some expressions over one tree; each expression from the root and from another element.
void Compare(std::uint32_t seed, int expressions) {
  std::mt19937 random(seed);
  testing::TreeHost tree_host;
  testing::TreeDocument& document = tree_host.Add("random.fm");
  RandomTree(random, &document);
  messages::Messenger messenger(tree_host.user, tree_host.platform);
  Engine engine(tree_host.roles(), messenger);
  bw_XPathEngineInit(engine, 0, 10000, 0);
  for (int count = 0; count < expressions; ++count) {
    const ReferencePath path = RandomPath(random);
    const std::string text = Write(path, random);
    const auto context = static_cast<host::Id>(1 + random() % (document.elements.size() - 1));
    ASSERT_LT(bw_ParseXPath(engine, text, 0), kFirstError) << text << " " << LastParseError(engine).id;
    for (const host::Id from : {host::Id{1}, context}) {
      const MatchList matches = MatchAllFromText(engine, 1, from, text, 0, 0);
      const std::vector<ReferenceNode> expected = Evaluate(document, path, from);
      ASSERT_EQ(Describe(matches), Describe(expected)) << "seed " << seed << " from " << from << ": " << text;
      const Match first = FindFirst(engine, 1, from, text);
      ASSERT_EQ(first.element, expected.empty() ? 0 : expected.front().id) << text;
    }
  }
  ASSERT_TRUE(tree_host.user.notes.empty()) << tree_host.user.notes.front();
}

TEST(ReferenceTest, EngineAgreesOverRandomTreesAndExpressions) {
  for (std::uint32_t seed = 1; seed <= 1000 && !::testing::Test::HasFatalFailure(); ++seed) Compare(seed, 12);
}

}  // namespace
}  // namespace qelm::xpath
