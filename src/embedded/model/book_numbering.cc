#include "embedded/model/book_numbering.h"

#include <charconv>
#include <string_view>

#include "embedded/mif/reader.h"

namespace qelm::embedded::model {
namespace {

// What a statement says of one level.
struct LevelNames {
  std::string_view method;
  std::string_view start;
  std::string_view style;
  std::string_view text;
};
constexpr std::array<LevelNames, kNumberedLevels> kLevels = {
    LevelNames{"VolNumComputeMethod", "VolumeNumStart", "VolumeNumStyle", "VolumeNumText"},
    LevelNames{"ChapterNumComputeMethod", "ChapterNumStart", "ChapterNumStyle", "ChapterNumText"},
    LevelNames{"SectionNumComputeMethod", "SectionNumStart", "SectionNumStyle", "SectionNumText"},
    LevelNames{"SubSectionNumComputeMethod", "SubSectionNumStart", "SubSectionNumStyle", "SubSectionNumText"},
};

struct LevelSettings {
  std::string_view method;
  std::int64_t start = 1;
  std::string_view style = "Arabic";
  std::string text;
};

struct Settings {
  std::array<LevelSettings, kNumberedLevels> levels;
  std::string_view paragraphs;  // PgfNumbering
};

Settings ReadSettings(std::string_view statement, mif::Encoding encoding) {
  Settings settings;
  mif::Reader reader(statement);
  while (reader.Next()) {
    if (reader.kind() != mif::Piece::kLeaf || reader.depth() != 1) continue;
    const std::string_view data = reader.data();
    if (reader.name() == "PgfNumbering") settings.paragraphs = data;
    for (std::size_t i = 0; i < kNumberedLevels; ++i) {
      LevelSettings& level = settings.levels[i];
      if (reader.name() == kLevels[i].method) level.method = data;
      if (reader.name() == kLevels[i].start)
        std::from_chars(data.data(), data.data() + data.size(), level.start);
      if (reader.name() == kLevels[i].style) level.style = data;
      if (reader.name() == kLevels[i].text) level.text = mif::DecodeString(data, encoding);
    }
  }
  return settings;
}

std::string Shown(const LevelSettings& level, std::int64_t value) {
  return level.style == "Custom" ? level.text : NumberIn(level.style, value);
}

PlaceNumbers Places(const std::array<std::string, kNumberedLevels>& shown) {
  return {shown[0], shown[1], shown[2], shown[3]};
}

}  // namespace

PlaceNumbers DocumentPlaces(const Document& document) {
  const Settings settings = ReadSettings(document.At(document.document_statement), document.encoding);
  std::array<std::string, kNumberedLevels> shown;
  for (std::size_t i = 0; i < kNumberedLevels; ++i) {
    shown[i] = Shown(settings.levels[i], settings.levels[i].start);
  }
  return Places(shown);
}

PlaceNumbers NextComponent(const Document& book, Span component, const Document& document,
                           BookCounters* counters) {
  const Settings of_book = ReadSettings(book.At(component), book.encoding);
  const Settings of_file = ReadSettings(document.At(document.document_statement), document.encoding);
  std::array<std::string, kNumberedLevels> shown;
  for (std::size_t i = 0; i < kNumberedLevels; ++i) {
    const bool from_file = of_book.levels[i].method == "ReadFromFile" || of_book.levels[i].method.empty();
    const LevelSettings& level = from_file ? of_file.levels[i] : of_book.levels[i];
    std::int64_t& value = counters->levels[i];
    if (level.method == "ContinueNumbering" && counters->any) {
      ++value;
    } else if (level.method != "UseSameNumbering" || !counters->any) {
      value = level.start;
    }
    shown[i] = Shown(level, value);
  }
  const bool from_file = of_book.paragraphs == "ReadFromFile" || of_book.paragraphs.empty();
  const std::string_view paragraphs = from_file ? of_file.paragraphs : of_book.paragraphs;
  if (paragraphs != "Continue") counters->paragraphs = {};
  counters->any = true;
  return Places(shown);
}

}  // namespace qelm::embedded::model
