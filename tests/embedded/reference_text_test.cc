// Texts of cross-references: those of real documents, made anew, are the ones that FrameMaker made.
#include "embedded/model/reference_text.h"

#include <gtest/gtest.h>

#include "embedded/model/book_numbering.h"
#include "embedded/model/files.h"
#include "support/samples.h"

namespace qelm::test {
namespace {

using namespace embedded::model;

TEST(ReferenceText, RealReferencesReadAsTheyAre) {
  std::size_t texts = 0;
  testing::EachSample([&](const std::filesystem::path& path, const std::string& bytes) {
    std::string error;
    const auto document = BuildMif(bytes, &error);
    ASSERT_NE(document, nullptr) << error;
    Counters counters;
    const PlaceNumbers places = DocumentPlaces(*document);
    const auto numbers = NumberParagraphs(*document, places, &counters);
    const auto formats = ReferenceFormats(*document);
    ReferenceTargets targets(*document, numbers, places);
    for (std::uint32_t i = 0; i < document->items.size(); ++i) {
      const Item& item = document->items[i];
      if (item.kind != ItemKind::kReferenceBegin) continue;
      const ReferenceStatement reference = ReadReference(*document, item.begin);
      if (!reference.file.empty() || !formats.contains(reference.format)) continue;
      const ReferenceText text = targets.Expand(formats.at(reference.format), reference.target);
      if (!text.problem.empty()) continue;  // fragments of books do not hold every target
      ++texts;
      EXPECT_EQ(text.Plain(), ShownText(*document, i)) << path << " " << reference.format;
    }
  });
  if (testing::Samples().empty()) GTEST_SKIP() << "no samples";
  EXPECT_GT(texts, 300U);
}

}  // namespace
}  // namespace qelm::test
