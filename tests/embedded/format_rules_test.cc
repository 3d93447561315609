// What format rules of element definitions say of text, and giving text its defined formatting again.
#include "embedded/model/format_rules.h"

#include <gtest/gtest.h>

#include "embedded/model/files.h"
#include "embedded/model/text_access.h"
#include "support/golden_text.h"
#include "support/mif_files.h"

namespace qelm::testing {
namespace {

using namespace embedded::model;

Id Find(const Document& document, std::string_view tag) {
  for (Id id = 1; id < document.elements.size(); ++id) {
    const Id definition = document.elements[id].definition;
    if (definition != 0 && document.definitions[definition].name == tag) return id;
  }
  return 0;
}

TEST(FormatContext, HoldsWhereTheElementStands) {
  std::string error;
  const auto document = BuildMif(
      Mif(R"(<Doc Draft="Yes"><Sec Level="2"><P>x<Em>a</Em><B>b</B> y <I>c</I></P><P>d</P></Sec></Doc>)"),
      &error);
  ASSERT_NE(document, nullptr) << error;
  struct Row {
    const char* element;
    const char* context;
    bool holds;
  };
  const Row rows[] = {
      {"Em", "", true},
      {"Em", "P", true},
      {"Em", "Sec", false},
      {"Em", "P < Sec", true},
      {"Em", "P < Doc", false},
      {"Em", "* < Sec", true},
      {"Em", "* < P", true},
      {"Em", "* < Sec < Doc", true},
      {"Em", "P < * < Doc", true},
      {"Em", "* < (List | Sec)", true},
      {"Em", "(List | Note)", false},
      {"Em", "* < Doc[Draft = \"Yes\"]", true},
      {"Em", "* < Doc[Draft = \"No\"]", false},
      {"Em", "* < Doc[Draft != \"No\" & Level = \"\"]", true},
      {"Em", "* < [Level = \"2\"]", true},
      {"Em", "* < Sec[Level >= \"3\" | Level < \"3\"]", true},
      {"Em", "* < Sec[Level > \"2\"]", false},
      {"Sec", "[Level = \"2\"]", true},
      {"Sec", "{only} < Doc", true},
      {"Em", "{after <TEXT>}", true},
      {"Em", "{before B}", true},
      {"B", "{after Em}", true},
      {"B", "{before <TEXT>}", true},
      {"I", "{last}", true},
      {"Em", "{first}", false},
      {"Em", "{middle}", true},
      {"I", "{notfirst} < P", true},
      {"P", "{first} < Sec", true},
      {"P", "{notlast} < Sec < *", true},
  };
  for (const Row& row : rows) {
    const auto context = FormatContext::Parse(row.context);
    ASSERT_TRUE(context) << row.context;
    EXPECT_EQ(context->Holds(*document, Find(*document, row.element)), row.holds)
        << row.element << ": " << row.context;
  }
  for (const char* bad : {"P <", "< P", "[Draft]", "{sometimes}", "(A | B", "P Q", "[A = \"x]"}) {
    EXPECT_FALSE(FormatContext::Parse(bad)) << bad;
  }
}

// A document whose definitions have these rules, by tag.
std::unique_ptr<Document> WithRules(std::string_view notation,
                                    const std::vector<std::pair<std::string, std::string>>& rules,
                                    const std::string& lists = "") {
  std::string text = Mif(notation);
  for (const auto& [tag, rule] : rules) {
    const std::string name = "<EDTag `" + tag + "'>\n";
    text.insert(text.find(name) + name.size(), rule + "\n");
  }
  const std::string catalog = "<ElementDefCatalog";
  text.insert(text.find(catalog), lists);
  std::string error;
  auto document = BuildMif(text, &error);
  EXPECT_NE(document, nullptr) << error;
  return document;
}

std::string Reset(Document* document, Id element = 0) {
  ApplyDefinedFormats(document, FormatRules(document), element, ParagraphsOfItems(*document));
  std::string error;
  const auto saved = BuildMif(SaveMif(*document), &error);
  return saved ? Golden(*saved) : error;
}

std::string TextRule(const std::string& content) {
  return "<EDTextFormatRules <ContextFormatRule " + content + ">>";
}

TEST(FormatRules, RangesOfTextGetWhatTheirRulesSay) {
  const auto document = WithRules(
      R"(<Doc><P>{Red,Underline}one <Em>two<In>three</In></Em> <Q>four</Q> <R>five</R>{}</P></Doc>)",
      {{"Em", TextRule("<If <Context `'> <IsTextRange Yes> <FmtChangeList <FColor `Blue'>>>")},
       {"In", TextRule("<If <Context `P'> <IsTextRange Yes> <FmtChangeList <FColor `Green'>>>"
                       "<ElseIf <Context `Em'> <IsTextRange Yes> <FmtChangeListTag `Lined'>>"
                       "<Else <IsTextRange Yes> <FmtChangeList <FColor `Cyan'>>>")},
       {"Q", TextRule("<If <Context `'> <FmtChangeList <FColor `Cyan'>>>")},
       {"R", TextRule("<If <Context `'> <IsTextRange Yes> <ContextFormatRule <If <Context `{first}'> "
                      "<FmtChangeList <FColor `Cyan'>>> <Else <FmtChangeList <FStrike Yes>>>>>")}},
      "<FmtChangeListCatalog <FmtChangeList <FclTag `Lined'> <FOverline Yes>>>\n");
  EXPECT_EQ(Reset(document.get()),
            "<Doc><P>one <Em>{Blue}two{}<In>{Blue,Overline}three{}</In></Em> <Q>four</Q> "
            "<R>{Strikethrough}five{}</R></P></Doc>")
      << "a rule for whole paragraphs is in the paragraph's own format";
}

TEST(FormatRules, LevelsAreCountedUpToAStop) {
  const auto document = WithRules(
      "<Doc><L><L><Stop><L>one</L></Stop></L></L></Doc>",
      {{"L",
        "<EDTextFormatRules <LevelFormatRule <CountElements <CountElement `L'>> <StopCountingAt `Stop'> "
        "<If <Level `1'> <IsTextRange Yes> <FmtChangeList <FColor `Blue'>>>"
        "<ElseIf <Level `3'> <IsTextRange Yes> <FmtChangeList <FColor `Red'>>>>>"}});
  EXPECT_EQ(Reset(document.get()), "<Doc><L><L><Stop><L>{Blue}one{}</L></Stop></L></L></Doc>");
}

TEST(FormatRules, GeneratedTextHasRulesOfItsOwn) {
  const auto document = WithRules(
      "<Doc><P>{Red}pre<!PrefixEnd/>one<!SuffixBegin/>post{}</P></Doc>",
      {{"P",
        "<EDPrefixRules <ContextFormatRule <If <Context `'> <IsTextRange Yes> <FmtChangeList <FColor "
        "`Blue'>> <ElementPrefix `pre'>>>> <EDSuffixRules <ContextFormatRule <If <Context `'> "
        "<IsTextRange Yes> <FmtChangeList <FOverline Yes>>>>>"}});
  ApplyDefinedFormats(document.get(), FormatRules(document.get()), 0, ParagraphsOfItems(*document));
  std::vector<std::string> styles;
  for (std::uint32_t i = 0; i < document->items.size(); ++i) {
    if (document->items[i].kind == ItemKind::kString) styles.push_back(GoldenStyle(*document, i));
  }
  EXPECT_EQ(styles, (std::vector<std::string>{"{Blue}", "{}", "{Overline}"}));
}

TEST(FormatRules, OneElementAloneTakesWhatComesFromAround) {
  const auto document =
      WithRules("<Doc><Em>{Red}one <In>two</In>{}</Em></Doc>",
                {{"Em", TextRule("<If <Context `'> <IsTextRange Yes> <FmtChangeList <FColor `Blue'>>>")}});
  EXPECT_EQ(Reset(document.get(), Find(*document, "In")),
            "<Doc><Em>{Red}one {}<In>{Blue}two{}</In></Em></Doc>");
}

TEST(FormatRules, NestedAsDeepAsAFileSays) {
  std::string rule = "<EDTextFormatRules ";
  constexpr int kDepth = 20000;
  for (int i = 0; i < kDepth; ++i) rule += "<ContextFormatRule <If <Context `'> ";
  rule += "<IsTextRange Yes> <FmtChangeList <FColor `Blue'>>";
  for (int i = 0; i < kDepth; ++i) rule += ">>";
  const auto document = WithRules("<Doc><P>one</P></Doc>", {{"P", rule + ">"}});
  EXPECT_EQ(Reset(document.get()), "<Doc><P>{Blue}one{}</P></Doc>");
}

}  // namespace
}  // namespace qelm::testing
