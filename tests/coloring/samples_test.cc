// Real documents, colored and uncolored: what is outside the colored text keeps the properties that it had,
// and the saved file says the same as the document that was edited.
#include <gtest/gtest.h>

#include "coloring/coloring_session.h"
#include "schemes/attribute_values.h"
#include "support/samples.h"

namespace qelm::coloring {
namespace {

using host::ElementKind;
using host::Id;
using testing::ColoringSession;

// One text node of a document: what it says, how it looks, and whether it lies in what was to be colored.
struct TextRun {
  std::string text;
  std::string properties;
  bool inside = false;
};

std::string Describe(host::Host& host, Id document, const host::TextProperties& properties) {
  std::string text(host.catalogs.ColorName(document, properties.color));
  text += " " + std::to_string(static_cast<int>(properties.underlining));
  text += properties.overline ? " over" : "";
  text += properties.strikethrough ? " strike" : "";
  text += properties.change_bar ? " bar" : "";
  text += " " + std::string(host.catalogs.ColorName(document, properties.background));
  for (const Id condition : properties.conditions) {
    text += " " + std::string(host.catalogs.ConditionName(document, condition));
  }
  return text;
}

// The text nodes of all flows in order. `is_inside` says which elements are colored; what is in a cell or
// title is not reached by what is around the table.
template <typename IsInside>
std::vector<TextRun> Runs(host::Host& host, Id document, const IsInside& is_inside) {
  std::vector<TextRun> runs;
  std::string buffer;
  for (Id flow = host.elements.FirstFlow(document); flow != 0;
       flow = host.elements.NextFlow(document, flow)) {
    std::vector<bool> inside = {false};
    const Id root = host.elements.Root(document, flow);
    for (Id at = root; at != 0;) {
      const ElementKind kind = host.elements.Kind(document, at);
      const bool reached =
          inside.back() &&
          host.elements.Kind(document, host.elements.Parent(document, at)) != ElementKind::kTable;
      const bool here = reached || is_inside(at);
      if (kind == ElementKind::kText) {
        const host::TextRange range = host.text.ElementRange(document, at);
        runs.push_back(
            {std::string(host.text.ElementText(document, at, 1000000, &buffer)),
             Describe(host, document, host.text.ReadProperties(document, range, host::kAllTextProperties)),
             here});
      }
      if (const Id child = host.elements.FirstChild(document, at); child != 0) {
        inside.push_back(here);
        at = child;
        continue;
      }
      Id next = 0;
      for (; at != root && (next = host.elements.NextSibling(document, at)) == 0; inside.pop_back()) {
        at = host.elements.Parent(document, at);
      }
      at = next;
    }
  }
  return runs;
}

std::vector<TextRun> Runs(host::Host& host, Id document) {
  return Runs(host, document, [](Id) { return false; });
}

// Reads the bytes that a document is saved as in again.
Id Reopen(ColoringSession& session, Id document, const std::string& name) {
  return session.Open(name, session.Saved(document));
}

void ExpectSame(const std::vector<TextRun>& left, const std::vector<TextRun>& right,
                const std::string& what) {
  ASSERT_EQ(left.size(), right.size()) << what;
  for (std::size_t i = 0; i < left.size(); ++i) {
    ASSERT_EQ(left[i].text, right[i].text) << what;
    ASSERT_EQ(left[i].properties, right[i].properties) << what << ": " << left[i].text;
  }
}

// Classic, with the attribute that most elements carry, and XPath, with the tag that most have.
struct Choice {
  std::string attribute;
  std::string tag;
};
Choice Choose(host::Host& host, Id document) {
  std::map<std::string, int> attributes;
  std::map<std::string, int> tags;
  host::AttributeBuffer buffer;
  for (Id element = 1; element < host.elements.IdLimit(document); ++element) {
    host.definitions.ReadAttributes(document, element, &buffer);
    for (const auto& attribute : buffer.attributes) {
      if (!schemes::HasNoValue(buffer, attribute)) ++attributes[std::string(attribute.name)];
    }
    const Id definition = host.elements.Definition(document, element);
    const ElementKind kind = host.elements.Kind(document, element);
    if (kind == ElementKind::kContainer && host.elements.Parent(document, element) != 0) {
      ++tags[std::string(host.definitions.DefinitionName(document, definition))];
    }
  }
  const auto most = [](const std::map<std::string, int>& counts) {
    std::string best;
    int count = 0;
    for (const auto& [name, number] : counts) {
      if (number > count) best = name, count = number;
    }
    return best;
  };
  return {most(attributes), most(tags)};
}

class RealDocuments : public ::testing::Test {
 protected:
  bool HasValue(Id document, Id element, const std::string& name) {
    session.inner().definitions.ReadAttributes(document, element, &buffer_);
    for (const auto& attribute : buffer_.attributes) {
      if (attribute.name == name && !schemes::HasNoValue(buffer_, attribute)) return true;
    }
    return false;
  }

  // Colors by the scheme and checks everything that a coloring promises. `is_inside` is an independent word
  // on what it colors.
  template <typename IsInside>
  void CheckColoring(const schemes::Scheme& scheme, const IsInside& is_inside) {
    host::Host& host = session.inner();
    const Id document = session.Open("doc.mif", session.folder.Read("source.mif"));
    session.Uncolor();
    const std::vector<TextRun> plain = Runs(host, document);
    ExpectSame(Runs(host, Reopen(session, document, "plain.mif")), plain, "uncolored and read again");
    host.documents.Activate(document);
    ASSERT_EQ(session.Color(scheme), common::kDone);
    const std::vector<TextRun> colored =
        Runs(host, document, [&](Id element) { return is_inside(document, element); });
    ASSERT_EQ(colored.size(), plain.size());
    for (std::size_t i = 0; i < plain.size(); ++i) {
      if (!colored[i].inside) {
        ASSERT_EQ(colored[i].properties, plain[i].properties) << plain[i].text;
      } else {
        ASSERT_TRUE(colored[i].properties.starts_with("Red 2")) << colored[i].properties << colored[i].text;
      }
    }
    const std::string once = session.Saved(document);
    const Id reopened = session.Open("colored.mif", once);
    ExpectSame(Runs(host, reopened), colored, "colored and read again");
    session.Color(scheme);
    ASSERT_TRUE(session.Saved(reopened) == once) << "colored twice is not colored once";
    session.Uncolor();
    ExpectSame(Runs(host, reopened), plain, "uncolored");
    ExpectSame(Runs(host, Reopen(session, reopened, "uncolored.mif")), plain, "uncolored and read again");
    host.documents.Activate(reopened);
    session.wanted.import_definitions_to_uncolor = false;
    session.Uncolor();
    const std::vector<TextRun> black = Runs(host, reopened);
    session.wanted.import_definitions_to_uncolor = true;
    session.Color(scheme);
    session.wanted.import_definitions_to_uncolor = false;
    session.Uncolor();
    ExpectSame(Runs(host, reopened), black, "uncolored by properties");
    session.wanted.import_definitions_to_uncolor = true;
    for (Id id = host.documents.FirstOpenDocument(); id != 0; id = host.documents.FirstOpenDocument()) {
      host.documents.Close(id, true);
    }
  }

  void Check(const Choice& choice) {
    if (!choice.attribute.empty()) {
      CheckColoring(testing::Classic({testing::RuleOf(choice.attribute, {"<any value>"}, "Red", 4)}),
                    [&](Id document, Id element) { return HasValue(document, element, choice.attribute); });
    }
    if (HasFatalFailure() || choice.tag.empty()) return;
    CheckColoring(testing::XPath({testing::Selecting({"//" + choice.tag}, "Red", 4)}),
                  [&](Id document, Id element) {
                    host::Host& host = session.inner();
                    const Id definition = host.elements.Definition(document, element);
                    return host.definitions.DefinitionName(document, definition) == choice.tag;
                  });
  }

  ColoringSession session;

 private:
  host::AttributeBuffer buffer_;
};

TEST_F(RealDocuments, KeepWhatWasNotColored) {
  if (testing::Samples().empty()) GTEST_SKIP() << "no sample documents here";
  std::size_t checked = 0;
  testing::EachSample([&](const std::filesystem::path& path, const std::string& bytes) {
    if (HasFatalFailure()) return;
    SCOPED_TRACE(path.filename().string());
    const Id document = session.Open("source.mif", bytes);
    host::Host& host = session.inner();
    const bool suits = host.elements.Root(document, host.elements.MainFlow(document)) != 0 &&
                       host.catalogs.FindColor(document, "Red") != 0;
    const Choice choice = Choose(host, document);
    host.documents.Close(document, true);
    if (!suits) return;
    Check(choice);
    ++checked;
  });
  EXPECT_GT(checked, 5U);
}

}  // namespace
}  // namespace qelm::coloring
