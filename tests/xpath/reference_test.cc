#include <fmt/format.h>

#include "reference.h"

#include <cstdlib>

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

// What a search gives match by match, which never goes the same ways as asking for all at once.
MatchList OneByOne(Engine& engine, host::Id from, std::int32_t sequence) {
  MatchList matches;
  Reset(engine, sequence);
  while (bw_FindNextNodeWithXpath(engine, 1, sequence, from, 0) != 0) {
    matches.push_back(LastMatch(engine, sequence));
  }
  Reset(engine, sequence);
  return matches;
}

// How many trees are made: a sample, unless the environment asks for more.
std::uint32_t Trees() {
  const char* wanted = std::getenv("QELM_REFERENCE_TREES");
  return wanted == nullptr ? 400 : static_cast<std::uint32_t>(std::stoul(wanted));
}

// Compares some expressions over one tree; each expression from the root and from another element.
void Compare(std::uint32_t seed, int expressions) {
  std::mt19937 random(seed);
  testing::TreeHost tree_host;
  testing::TreeDocument& document = tree_host.Add("random.fm");
  RandomTree(random, &document);
  tree_host.counts_edits = seed % 4 != 0;
  tree_host.reads_texts = seed % 3 != 0;
  messages::Messenger messenger(tree_host.user, tree_host.platform);
  Engine engine(tree_host.roles(), messenger);
  bw_XPathEngineInit(engine, 0, 10000, 0);
  for (int count = 0; count < expressions; ++count) {
    const ReferencePath path = RandomPath(random);
    const std::string text = Write(path, random);
    const auto context = static_cast<host::Id>(1 + random() % (document.elements.size() - 1));
    const std::int32_t sequence = bw_ParseXPath(engine, text, 0);
    ASSERT_LT(sequence, kFirstError) << text << " " << LastParseError(engine).id;
    for (const host::Id from : {host::Id{1}, context}) {
      const MatchList matches = MatchAllFromText(engine, 1, from, text, 0, 0);
      const std::vector<ReferenceNode> expected = Evaluate(document, path, from);
      ASSERT_EQ(Describe(matches), Describe(expected)) << "seed " << seed << " from " << from << ": " << text;
      ASSERT_EQ(Describe(OneByOne(engine, from, sequence)), Describe(expected))
          << "one by one, seed " << seed << " from " << from << ": " << text;
      const Match first = FindFirst(engine, 1, from, text);
      ASSERT_EQ(first.element, expected.empty() ? 0 : expected.front().id) << text;
    }
  }
  ASSERT_TRUE(tree_host.user.notes.empty()) << tree_host.user.notes.front();
}

TEST(ReferenceTest, EngineAgreesOverRandomTreesAndExpressions) {
  for (std::uint32_t seed = 1; seed <= Trees() && !::testing::Test::HasFatalFailure(); ++seed)
    Compare(seed, 12);
}

}  // namespace
}  // namespace qelm::xpath
