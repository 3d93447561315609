// Names that a batch gives, and the packets by which it hands metadata over.
#include "filtering/batch_names.h"

#include <gtest/gtest.h>

#include "embedded/model/xmp_packet.h"
#include "filtering/metadata_packet.h"

namespace qelm::filtering {
namespace {

NameValues Values() {
  NameValues values;
  values.scheme_name = "A/B: \"c\"?.";
  values.scheme_number = 7;
  values.folder_name = "out";
  values.source_name = "pump.book";
  values.time = {2026, 3, 4, 5, 6, 7};
  return values;
}

TEST(BatchNames, PatternsBecomePaths) {
  const std::pair<std::string_view, std::string_view> rows[] = {
      {"C:\\out\\<scheme_num>-<scheme_name>", "C:/out/7-A_B_ _c__"},
      {"<book_name>\\<src_file_name>/<folder_name>", "pump.book/pump.book/out"},
      {"<year>_<month>_<day>__<hour>_<min>_<sec>", "2026_03_04__05_06_07"},
      {"<minute>.<second>", "06.07"},
      {"<Scheme_Name>|<other>", "_Scheme_Name_|_other_"},
  };
  for (const auto& [pattern, path] : rows) EXPECT_EQ(PathByPattern(pattern, Values()), path) << pattern;
}

TEST(BatchNames, FilesGetTheirExtensionOnce) {
  const std::pair<std::string_view, std::string_view> rows[] = {
      {"<book_name>.pdf", "pump.book.pdf"},
      {"<book_name>", "pump.book.pdf"},
      {"x.PDF", "x.pdf"},
      {"a/b", "a_b.pdf"},
      {" ", "pump.book.pdf"},
      {".pdf", "_.pdf"},
  };
  for (const auto& [pattern, name] : rows) EXPECT_EQ(FileNameByPattern(pattern, Values(), ".pdf"), name);
  EXPECT_EQ(FileNameByPattern("<book_name>.pdf", Values(), ".xml"), "pump.book.pdf.xml");
}

TEST(BatchNames, ASchemeThatIsCalledLikeAPlaceholderIsOnlyAName) {
  NameValues values = Values();
  values.scheme_name = "<book_name>";
  EXPECT_EQ(PathByPattern("<scheme_name>", values), "_book_name_");
  values.scheme_name = "..";
  EXPECT_EQ(PathByPattern("out/<scheme_name>", values), "out/_");
  values.scheme_name = std::string(199, 'x') + "\u00e4";
  EXPECT_EQ(PathByPattern("<scheme_name>", values), std::string(199, 'x')) << "cut at a character";
}

TEST(MetadataPacket, SaysItsFieldToWhoReadsIt) {
  for (const std::string_view name : kMetadataFields) {
    const auto fields = embedded::model::PacketFields(MetadataPacket(name, "its value"));
    ASSERT_EQ(fields.size(), 1U) << name;
    EXPECT_EQ(fields[0].name, name);
    EXPECT_EQ(fields[0].value, "its value");
  }
}

}  // namespace
}  // namespace qelm::filtering
