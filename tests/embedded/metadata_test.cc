#include "embedded/model/metadata.h"

#include <gtest/gtest.h>

#include "embedded/model/book_edit.h"
#include "embedded/model/files.h"
#include "embedded/model/xmp_packet.h"
#include "host_session.h"
#include "support/mif_files.h"
#include "support/samples.h"

namespace qelm::embedded::model {
namespace {

using testing::EachSample;

// A packet of one field with its value as it is, in the form in which the batch filter hands one over.
std::string Raw(std::string_view field, std::string_view value) {
  const std::string_view mark = "0value0";
  std::string packet = OneFieldPacket(field, mark);
  return packet.replace(packet.find(mark), mark.size(), value);
}

std::string Shown(std::string_view packet) {
  std::string text;
  for (const MetadataField& field : PacketFields(packet)) {
    text += std::string(field.name) + "=" + field.value + ";";
  }
  return text;
}

TEST(XmpPacket, PacketsMergeByFieldWhateverTheirValuesAre) {
  struct Case {
    std::string_view value;
    std::string_view shown;
    bool well_formed;
  };
  for (const Case& c : {
           Case{"Pumps", "Pumps", true},
           Case{"a &amp; b", "a & b", true},
           Case{"Tom & Jerry", "Tom & Jerry", false},
           Case{"1 < 2", "1 < 2", false},
           Case{"<rdf:Description", "<rdf:Description", false},
           Case{"'></rdf:Description>", "'></rdf:Description>", false},
           Case{"", "", true},
       }) {
    std::string packet;
    for (const std::string_view name : MetadataNames()) packet = MergePackets(packet, Raw(name, "old"));
    for (const std::string_view name : MetadataNames()) {
      const std::string changed = MergePackets(packet, Raw(name, c.value));
      std::string expected;
      for (const std::string_view other : MetadataNames()) {
        expected += std::string(other) + "=" + std::string(other == name ? c.shown : "old") + ";";
      }
      EXPECT_EQ(Shown(changed), expected);
      // Text may hold what ends an attribute, and is then in order.
      const bool tells = c.value.find('\'') == std::string_view::npos;
      EXPECT_TRUE(!tells || IsWellFormed(changed) == c.well_formed) << changed;
      // Set again, what did not belong is gone.
      EXPECT_EQ(MergePackets(changed, Raw(name, "old")), packet) << name;
    }
  }
}

TEST(XmpPacket, PropertiesOfOtherProgramsAreReadAndReplaced) {
  const std::string kept =
      "<?xpacket begin='' id='W5M0MpCehiHzreSzNTczkc9d'?>\n<x:xmpmeta xmlns:x=\"adobe:ns:meta/\">\n"
      "<rdf:RDF xmlns:rdf=\"http://www.w3.org/1999/02/22-rdf-syntax-ns#\" "
      "xmlns:d=\"http://purl.org/dc/elements/1.1/\">\n"
      "<rdf:Description rdf:about=\"\" xmlns:pdf=\"http://ns.adobe.com/pdf/1.3/\" pdf:Keywords=\"a, b\" "
      "pdf:Producer=\"X\">\n"
      " <dc:title><rdf:Alt><rdf:li xml:lang=\"de\">Pumpe</rdf:li><rdf:li xml:lang=\"x-default\">Pump</rdf:li>"
      "</rdf:Alt></dc:title>\n"
      " <dc:creator><rdf:Seq><rdf:li>A</rdf:li><rdf:li>B &amp; C</rdf:li></rdf:Seq></dc:creator>\n"
      "</rdf:Description>\n"
      "<rdf:Description rdf:about='' xmlns:xmp='http://ns.adobe.com/xap/1.0/' xmp:ModifyDate='2009-11-23'/>\n"
      "</rdf:RDF>\n</x:xmpmeta>\n" +
      std::string(300, ' ') + "\n<?xpacket end='w'?>";
  EXPECT_EQ(Shown(kept), "Title=Pump;Author=A; B & C;Keywords=a, b;");
  EXPECT_EQ(PacketProperty(kept, "ModifyDate"), "2009-11-23");
  const std::string merged = MergePackets(MergePackets(kept, Raw("Keywords", "c")), Raw("Title", "T"));
  EXPECT_EQ(Shown(merged), "Title=T;Author=A; B & C;Keywords=c;");
  EXPECT_EQ(PacketProperty(merged, "Producer"), "X");
  EXPECT_EQ(merged.size(), kept.size());
  EXPECT_TRUE(IsWellFormed(merged)) << merged;
}

// Sets two fields, writes, reads again.
std::string SavedFields(const std::string& source) {
  std::string error;
  const auto document = source.starts_with("<?xml") ? BuildXml(source, &error) : BuildMif(source, &error);
  if (!document) return error;
  EXPECT_TRUE(SetMetadata(document.get(), Raw("Title", "K\xC3\xB6ln > \\ 'x'"), &error));
  EXPECT_TRUE(SetMetadata(document.get(), Raw("Author", "A"), &error));
  EXPECT_TRUE(SetMetadata(document.get(), Raw("Author", "A. Writer"), &error));
  const std::string bytes = Save(*document).Joined();
  const auto again = source.starts_with("<?xml") ? BuildXml(bytes, &error) : BuildMif(bytes, &error);
  if (!again) return error;
  EXPECT_EQ(Save(*again).Joined(), bytes);
  EXPECT_EQ(MetadataPacket(*again), MetadataPacket(*document));
  // What stands around it is as it was.
  const std::size_t same = static_cast<std::size_t>(
      std::mismatch(source.begin(), source.end(), bytes.begin(), bytes.end()).first - source.begin());
  EXPECT_GT(bytes.size(), same);
  EXPECT_EQ(source.substr(source.size() - 30), bytes.substr(bytes.size() - 30));
  return Shown(MetadataPacket(*again));
}

TEST(Metadata, EveryKindOfDocumentKeepsIt) {
  const std::string expected = "Title=K\xC3\xB6ln > \\ 'x';Author=A. Writer;";
  EXPECT_EQ(SavedFields(testing::Mif("<Doc>one</Doc>")), expected);
  EXPECT_EQ(SavedFields("<MIFFile 7.00>\n<Para <ParaLine <String `a minimal document'>>>\n"), expected);
  EXPECT_EQ(SavedFields("<MIFFile 7.00>\n<Document <DStartPage 1>>\n<Para <ParaLine <String `one line'>>>\n"),
            expected);
  EXPECT_EQ(
      SavedFields("<?xml version=\"1.0\"?>\n<!-- x -->\n<Doc>\n <Para>an XML document</Para>\n</Doc>\n"),
      expected);
  EXPECT_EQ(SavedFields("<?xml version=\"1.0\"?><Doc><Para>a document on one line</Para></Doc>"), expected);
}

TEST(Metadata, OtherFormatsAndReadersAgree) {
  std::string error;
  const auto document = BuildMif(
      "<MIFFile 10.0>\n<Document \n <PDFDocInfo \n  <Key `Creator'>\n  <Value `x'>\n  <Key `Author'>\n"
      "  <Value `Long '>\n  <Value `name'>\n > # end of PDFDocInfo\n> # end of Document\n"
      "<Para <ParaLine <String `text'>>>\n",
      &error);
  ASSERT_TRUE(document) << error;
  EXPECT_EQ(Shown(MetadataPacket(*document)), "Author=Long name;");
  ASSERT_TRUE(SetMetadata(document.get(), Raw("Subject", std::string(300, 's')), &error));
  const std::string bytes = SaveMif(*document);
  EXPECT_NE(bytes.find("<Key `Creator'>\n  <Value `x'>\n  <Key `Author'>\n  <Value `Long name'>"),
            std::string::npos);
  EXPECT_NE(bytes.find("<Value `" + std::string(250, 's') + "'>\n  <Value `" + std::string(50, 's') + "'>"),
            std::string::npos);
  const auto again = BuildMif(bytes, &error);
  ASSERT_TRUE(again) << error;
  const std::string fields = "Author=Long name;Subject=" + std::string(300, 's') + ";";
  EXPECT_EQ(Shown(MetadataPacket(*again)), fields);
  const auto xml = BuildXml(ConvertToXml(*again), &error);
  ASSERT_TRUE(xml) << error;
  EXPECT_EQ(Shown(MetadataPacket(*xml)), fields);
  const auto back = BuildMif(ConvertToMif(*xml), &error);
  ASSERT_TRUE(back) << error;
  EXPECT_EQ(Shown(MetadataPacket(*back)), fields);
}

TEST(Metadata, RealFilesKeepEverythingElse) {
  EachSample([](const std::filesystem::path& path, const std::string& bytes) {
    if (path.parent_path().filename() != "bill") return;
    std::string error;
    const auto document = BuildMif(bytes, &error);
    ASSERT_TRUE(document) << path << error;
    const bool has_packet = bytes.find("<DocFileInfo") != std::string::npos;
    ASSERT_TRUE(SetMetadata(document.get(), Raw("Title", "T"), &error));
    const std::string saved = SaveMif(*document);
    const auto again = BuildMif(saved, &error);
    ASSERT_TRUE(again) << path << error;
    EXPECT_EQ(Shown(MetadataPacket(*again)), "Title=T;") << path;
    if (!has_packet || bytes.find("<PDFDocInfo") == std::string::npos) return;
    // The packet has room for it, so that it takes as many lines as before; the entry takes two.
    const auto lines = [](const std::string& text) { return std::count(text.begin(), text.end(), '\n'); };
    EXPECT_EQ(lines(saved), lines(bytes) + 2) << path;
  });
}

TEST(Metadata, ABookKeepsItBeforeItsCatalogs) {
  testing::HostSession session;
  session.folder.Write("book.mif", testing::MifBook({"a.mif"}));
  const host::Id book = session.OpenFile("book.mif");
  ASSERT_NE(book, 0U);
  EXPECT_TRUE(session.host.documents.SetMetadata(book, Raw("Title", "The book")));
  EXPECT_TRUE(session.host.documents.Save(book, {}));
  EXPECT_TRUE(session.host.documents.Close(book, false));
  const host::Id again = session.OpenFile("book.mif");
  EXPECT_EQ(Shown(session.host.documents.Metadata(again)), "Title=The book;");
  EXPECT_FALSE(session.host.documents.SetMetadata(again, "x"));
  EXPECT_NE(session.host.documents.LastError().find("book.mif"), std::string_view::npos);
}

}  // namespace
}  // namespace qelm::embedded::model
