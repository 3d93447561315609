// Real documents written by FrameMaker, where they are at hand: opened, saved, hidden, restored, thinned out.

#include <gtest/gtest.h>

#include "embedded/model/edit.h"
#include "embedded/model/files.h"
#include "support/normal_form.h"
#include "support/samples.h"

namespace qelm::test {
namespace {

using namespace embedded::model;

// Calls `test` with each sample document and its bytes.
template <typename Function>
void EachDocument(Function&& test) {
  if (testing::Samples().empty()) GTEST_SKIP() << "no sample documents here";
  testing::EachSample([&](const std::filesystem::path& path, const std::string& bytes) {
    SCOPED_TRACE(path.filename().string());
    std::string error;
    const auto document = BuildMif(bytes, &error);
    ASSERT_NE(document, nullptr) << error;
    test(document.get(), bytes);
  });
}

std::size_t CountLines(const std::string& bytes, std::string_view statement) {
  std::size_t count = 0;
  std::size_t at = 0;
  while ((at = bytes.find(statement, at)) != std::string::npos) {
    const char after = bytes[at + statement.size()];
    if (after == ' ' || after == '\r' || after == '\n') ++count;
    at += statement.size();
  }
  return count;
}

TEST(MifSamples, SavedUnchangedIsByteForByteTheSame) {
  EachDocument([](Document* document, const std::string& bytes) {
    EXPECT_EQ(SaveMif(*document), bytes);
    // The long way round, as after an edit that came to nothing.
    document->modified = true;
    EXPECT_TRUE(SaveMif(*document) == bytes);
  });
}

TEST(MifSamples, EveryElementStatementIsAnElement) {
  EachDocument([](Document* document, const std::string& bytes) {
    std::size_t snapshots = 0;  // in the book's hierarchy, which are no elements of the document
    const std::size_t hierarchy = bytes.find("<DBookElementHierarchy");
    if (hierarchy != std::string::npos) {
      const std::size_t end = bytes.find("# end of DBookElementHierarchy", hierarchy);
      snapshots = CountLines(bytes.substr(hierarchy, end - hierarchy), "<Element");
    }
    std::size_t elements = 0;
    for (std::size_t i = 1; i < document->elements.size(); ++i) {
      const Element& element = document->elements[i];
      if (element.kind != ElementKind::kText && !element.is_virtual) ++elements;
    }
    EXPECT_EQ(elements, CountLines(bytes, "<ElementBegin") + CountLines(bytes, "<Element") - snapshots);
  });
}

void HideEach(Document* document, std::size_t step) {
  const Id hidden = CreateCondition(document, "Hidden");
  const std::uint16_t set = document->InternConditions({hidden});
  for (std::size_t i = step; i < document->elements.size(); i += step) {
    const Element& element = document->elements[i];
    if (element.kind == ElementKind::kTableRow) {
      SetRowConditions(document, document->PartOf(element), set);
    } else if (element.kind == ElementKind::kContainer || element.kind == ElementKind::kTable) {
      SetConditions(document, element.first_item, element.end_item, set);
    }
  }
}

void ShowHidden(Document* document) {
  const Id hidden = document->condition_index.at("Hidden");
  const auto is_hidden = [&](std::uint16_t set) {
    return document->condition_sets[set] == std::vector<Id>{hidden};
  };
  for (std::uint32_t i = 0; i < document->items.size(); ++i) {
    const ItemKind kind = document->items[i].kind;
    if (kind == ItemKind::kPartBegin || kind == ItemKind::kPartEnd) continue;
    if (is_hidden(document->items[i].conditions)) SetConditions(document, i, i + 1, 0);
  }
  for (std::uint32_t part = 1; part < document->parts.size(); ++part) {
    if (is_hidden(document->parts[part].conditions)) SetRowConditions(document, part, 0);
  }
}

TEST(MifSamples, HidingAndShowingAgainLeavesTheConditionOnly) {
  EachDocument([](Document* document, const std::string& bytes) {
    const std::string text = AllText(*document);
    for (const std::size_t step : {3U, 17U}) {
      std::string error;
      auto edited = BuildMif(bytes, &error);
      // Text under conditions of its own, and what lies in the hidden flow, is given up by hiding.
      if (edited->conditions.size() > 1 && edited->blocks.size() > 1) return;
      bool conditional = false;
      for (const Item& item : edited->items) conditional = conditional || item.conditions != 0;
      HideEach(edited.get(), step);
      auto hidden = BuildMif(SaveMif(*edited), &error);
      ASSERT_NE(hidden, nullptr) << error;
      EXPECT_EQ(FirstDifference(NormalForm(*hidden), NormalForm(*edited)), "");
      EXPECT_TRUE(AllText(*hidden) == text);
      EXPECT_EQ(hidden->warnings.size(), document->warnings.size());
      if (conditional) continue;
      ShowHidden(hidden.get());
      std::string restored = SaveMif(*hidden);
      // What is left is the definition of the condition, and where the file had no catalog the catalog.
      const std::size_t definition = restored.find("<CTag `Hidden'>");
      ASSERT_NE(definition, std::string::npos);
      EXPECT_LE(restored.size() - bytes.size(), 180U);
      EXPECT_TRUE(AllText(*BuildMif(restored, &error)) == text);
      EXPECT_EQ(restored.substr(restored.size() - bytes.size() / 2),
                bytes.substr(bytes.size() - bytes.size() / 2));
    }
  });
}

TEST(MifSamples, WhatIsLeftAfterDeletingMeansTheSameWhenReopened) {
  EachDocument([](Document*, const std::string& bytes) {
    for (const std::size_t step : {2U, 5U, 11U, 37U}) {
      SCOPED_TRACE(step);
      std::string error;
      auto edited = BuildMif(bytes, &error);
      for (std::size_t i = 1 + step; i < edited->elements.size(); i += step) {
        const Element& element = edited->elements[i];
        if (element.deleted) continue;
        if (element.kind == ElementKind::kTableRow) {
          DeleteRow(edited.get(), edited->PartOf(element));
        } else {
          DeleteElement(edited.get(), static_cast<Id>(i));
        }
      }
      const auto reopened = BuildMif(SaveMif(*edited), &error);
      ASSERT_NE(reopened, nullptr) << error;
      EXPECT_TRUE(reopened->warnings.empty());
      EXPECT_EQ(FirstDifference(NormalForm(*reopened), NormalForm(*edited)), "");
    }
  });
}

TEST(MifSamples, TruncatedFilesAreRefusedOrRead) {
  EachDocument([](Document*, const std::string& bytes) {
    for (std::size_t size = bytes.size() / 7; size < bytes.size(); size += bytes.size() / 7 + 1) {
      std::string error;
      const auto document = BuildMif(bytes.substr(0, size), &error);
      if (document == nullptr) {
        EXPECT_NE(error.find("line "), std::string::npos);
      }
    }
  });
}

}  // namespace
}  // namespace qelm::test
