// The embedded host through its interface, over documents made for the purpose.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <random>

#include "embedded/host_session.h"
#include "embedded/model/files.h"
#include "support/golden_text.h"
#include "support/mif_files.h"

namespace qelm::embedded::adapter {
namespace {

using host::ElementKind;
using host::ElementProperty;
using host::Id;
using host::kNone;
using host::OpenStatus;
using testing::Golden;
using testing::Mif;
using testing::MifFile;

class HostTest : public ::testing::Test, public testing::HostSession {
 protected:
  std::string Write(const std::string& name, const std::string& content) {
    return folder.Write(name, content);
  }
  Id Open(const std::string& path, const host::OpenOptions& options = {}) {
    const Id id = host.documents.Open(path, options, &status);
    EXPECT_NE(id, kNone) << host.documents.LastError();
    return id;
  }
  Id OpenText(const std::string& content) {
    return Open(Write("document" + std::to_string(++written_) + ".mif", content));
  }
  bool SaveAs(Id id, const std::string& path, host::SaveFormat format = host::SaveFormat::kDocument) {
    return host.documents.Save(
        id, {.path = path, .format = format, .pdf_job_options = {}, .structure_application = {}});
  }
  std::string Content(const std::string& path) {
    return platform.ReadFile(path).value_or("(cannot be read)");
  }
  std::string Text(Id document) { return Golden(*embedded.Find(document)); }
  // What the document reads like after it was saved and opened again.
  std::string Reread(Id document) {
    const std::string path = folder.path() + "/reread" + std::to_string(++written_) + ".mif";
    std::ofstream(path) << "";
    EXPECT_TRUE(SaveAs(document, path)) << host.documents.LastError();
    EXPECT_TRUE(host.documents.Close(document, true));
    return Text(Open(path));
  }

  std::string Property(Id document, Id element, ElementProperty property) {
    std::string value;
    return host.text.ReadElementProperty(document, element, property, &value) ? value : "(none)";
  }
  bool Write(Id document, Id element, const host::TextProperties& properties) {
    return host.text.WriteProperties(document, host.text.ElementRange(document, element), properties);
  }
  host::TextProperties Under(Id document, const char* condition) {
    host::TextProperties properties;
    properties.mask = host::kConditionsProperty;
    properties.conditions = {host.catalogs.CreateCondition(document, condition)};
    return properties;
  }
  OpenStatus status = OpenStatus::kOpened;

 private:
  int written_ = 0;
};

constexpr const char* kManual = R"(<Doc Audience="admin|user" Empty="" Unset>
  [Heading]<Title>Pump</Title>
  <P>one {Hidden}two{} three</P>
  <P>{Red,Underline}four{} <Em>five</Em></P>
  <P>see <XRef .format="Page" .source="12: P: four" .file="<c>b.fm">page 3</XRef></P>
  <P>a note<Footnote>its text</Footnote><Marker .type="Index" .text="pump"/></P>
  <!Page/><P><Variable .name="Product"/> <Graphic .file="<c>img<c>a.png"/></P>
  <Table .format="Grid">
    <TableTitle>Parts</TableTitle>
    <TableHeading><Row><Cell>No</Cell></Row></TableHeading>
    <TableBody>
      <Row {Hidden}><Cell>1</Cell></Row>
      <Row><Cell>2
          {ChangeBar}3{}</Cell></Row>
    </TableBody>
  </Table>
</Doc>)";

constexpr const char* kManualRead =
    "<Doc Audience=\"admin|user\" Empty=\"\" Unset><Title>Pump</Title>\n"
    "<P>one {Hidden}two{} three</P>\n"
    "<P>{Red,Underline}four{} <Em>five</Em></P>\n"
    "<P>see <XRef>page 3</XRef></P>\n"
    "<P>a note<Footnote>its text</Footnote><Marker/></P>\n"
    "<P><Variable/> <Graphic/></P>\n"
    "<Table><TableTitle>Parts</TableTitle><TableHeading><Row><Cell>No</Cell></Row></TableHeading>"
    "<TableBody><Row "
    "{Hidden}><Cell>1</Cell></Row><Row><Cell>2\n{ChangeBar}3{}</Cell></Row></TableBody></Table></Doc>";

TEST_F(HostTest, DocumentsReadAsTheyWereMade) {
  EXPECT_EQ(Text(OpenText(Mif(kManual))), kManualRead);
  MifFile apart;
  apart.flows = {{.text = kManual}};
  apart.hidden = {"Hidden"};
  apart.hidden_flow = true;
  const std::string with_hidden_flow = Mif(apart);
  EXPECT_NE(with_hidden_flow.find("`HIDDEN'"), std::string::npos);
  EXPECT_EQ(Text(OpenText(with_hidden_flow)), kManualRead);
  EXPECT_EQ(embedded.notices(), std::vector<std::string>());
}

TEST_F(HostTest, HiddenParagraphsComeBackWithTheirMarks) {
  MifFile apart;
  apart.flows = {{.text = "<Doc>a {Hidden}b\nc\n{}d</Doc>"}};
  apart.hidden = {"Hidden"};
  apart.hidden_flow = true;
  EXPECT_EQ(Text(OpenText(Mif(apart))), "<Doc>a {Hidden}b{}\n{Hidden}c{}\nd</Doc>");
}

TEST_F(HostTest, SavedWithoutChangeIsTheSameToTheByte) {
  std::string with_crlf;
  for (const char c : Mif(kManual)) with_crlf += c == '\n' ? "\r\n" : std::string(1, c);
  for (const std::string& source : {Mif(kManual), with_crlf, testing::MifBook({"<c>a.fm"})}) {
    const Id id = OpenText(source);
    EXPECT_TRUE(SaveAs(id, folder.path() + "/out.mif")) << host.documents.LastError();
    EXPECT_EQ(Content(folder.path() + "/out.mif"), source);
    EXPECT_TRUE(host.documents.Close(id, false));
  }
}

TEST_F(HostTest, SavedASecondTimeElsewhereTheEditsAreStillThere) {
  for (const std::string& name : {std::string("one.mif"), std::string("one.xml")}) {
    const bool xml = name.ends_with(".xml");
    const Id id = OpenText(xml ? "<Doc><p a='1'/></Doc>" : Mif("<Doc>text</Doc>"));
    ASSERT_TRUE(host.editing.SetAttributes(id, Find(id, "Doc"), {{"b", {"2"}}}));
    ASSERT_TRUE(SaveAs(id, folder.path() + "/first-" + name)) << host.documents.LastError();
    ASSERT_TRUE(SaveAs(id, folder.path() + "/second-" + name)) << host.documents.LastError();
    EXPECT_EQ(Content(folder.path() + "/second-" + name), Content(folder.path() + "/first-" + name));
    EXPECT_NE(Content(folder.path() + "/second-" + name).find(xml ? "b=\"2\"" : "<AttrName `b'>"),
              std::string::npos);
  }
}

TEST_F(HostTest, WhatWasEditedBeforeASaveStaysWhenMoreIsAdded) {
  for (const bool xml : {false, true}) {
    const Id id = OpenText(xml ? "<Doc><P>a</P><P>b</P><P>c</P></Doc>"
                               : Mif("<Doc><P>a</P>\n<P>b</P>\n<P>c</P></Doc>"));
    ASSERT_TRUE(host.editing.DeleteElement(id, Find(id, "P")));
    ASSERT_TRUE(SaveAs(id, folder.path() + (xml ? "/first.xml" : "/first.mif")))
        << host.documents.LastError();
    const Id definition = host.definitions.FindDefinition(id, "P");
    const Id added = host.editing.InsertElement(id, Find(id, "Doc"), kNone, definition);
    ASSERT_NE(added, kNone) << host.documents.LastError();
    ASSERT_TRUE(host.editing.SetText(id, added, "d"));
    EXPECT_TRUE(host.text.HasOwnText(id, added)) << "also while it is only waiting to be brought in";
    host::TextColumn texts;
    const Id elements[] = {added};
    if (host.elements.ReadTexts(id, elements, &texts)) {
      EXPECT_EQ(texts.text.substr(texts.begins[0], texts.ends[0] - texts.begins[0]), "d");
    }
    const std::string path = folder.path() + (xml ? "/second.xml" : "/second.mif");
    ASSERT_TRUE(SaveAs(id, path)) << host.documents.LastError();
    std::string buffer;
    const Id again = Open(path);
    EXPECT_EQ(again, id);
    ASSERT_TRUE(host.documents.Close(id, true));
    const Id reopened = Open(path);
    EXPECT_EQ(host.text.ElementText(reopened, Find(reopened, "Doc"), 100, &buffer), "bcd");
  }
}

TEST_F(HostTest, IdsAreGivenOnceAndAreDeadAfterClosing) {
  const Id first = OpenText(Mif("<Doc>a</Doc>"));
  const Id second = OpenText(Mif("<Doc>b</Doc>"));
  EXPECT_EQ(host.documents.ActiveDocument(), second);
  EXPECT_EQ(host.documents.NextOpenDocument(host.documents.FirstOpenDocument()), second);
  EXPECT_TRUE(host.documents.Close(second, false));
  EXPECT_EQ(host.documents.ActiveDocument(), first);
  EXPECT_EQ(OpenText(Mif("<Doc>c</Doc>")), 3U);
  EXPECT_EQ(embedded.Find(second), nullptr);
  EXPECT_EQ(host.elements.IdLimit(second), 0U);
  EXPECT_EQ(host.elements.MainFlow(second), kNone);
  EXPECT_FALSE(host.elements.IsElement(second, 1));
  EXPECT_EQ(host.elements.Parent(second, 1), kNone);
  EXPECT_EQ(host.catalogs.FindColor(second, "Red"), kNone);
  EXPECT_TRUE(host.text.ElementRange(second, 1).Empty());
  EXPECT_FALSE(host.editing.DeleteElement(second, 1));
  EXPECT_FALSE(host.documents.SetSwitch(second, host::DocumentSwitch::kShowAllConditions, true));
  EXPECT_FALSE(host.documents.Activate(second));
  EXPECT_EQ(host.documents.Path(second), "");
}

TEST_F(HostTest, OneFileIsOneDocument) {
  const std::string path = Write("a.mif", Mif("<Doc>a</Doc>"));
  std::filesystem::create_symlink(path, folder.path() + "/link.mif");
  const Id id = Open(path, {.visible = false});
  EXPECT_EQ(host.documents.ActiveDocument(), kNone);
  EXPECT_EQ(Open(folder.path() + "/./link.mif"), id);
  EXPECT_EQ(status, OpenStatus::kAlreadyOpen);
  EXPECT_EQ(host.documents.ActiveDocument(), id);
  const Id copy = Open(path, {.as_new = true});
  EXPECT_NE(copy, id);
  EXPECT_EQ(host.documents.Path(copy), "");
  EXPECT_FALSE(host.documents.Save(copy, {}));
  EXPECT_FALSE(SaveAs(copy, path)) << "another document lies there";
  EXPECT_TRUE(SaveAs(copy, folder.path() + "/copy.mif"));
  EXPECT_EQ(host.documents.Path(copy), folder.path() + "/copy.mif");
}

// Copies share what they do not change with what they are copies of.
TEST_F(HostTest, EditsOfACopyAndOfItsSourceAreTheirOwn) {
  for (const char* name : {"a.mif", "a.xml"}) {
    const std::string xml = "<Doc><P>one <Em>two</Em></P><Q>three</Q></Doc>";
    const std::string path = Write(name, std::string(name) == "a.xml" ? xml : Mif(xml));
    const Id source = Open(path);
    const Id edited = Open(path, {.as_new = true});
    const Id other = Open(path, {.as_new = true});
    EXPECT_TRUE(host.editing.DeleteElement(edited, Find(edited, "Em")));
    EXPECT_TRUE(host.editing.SetAttributes(edited, Find(edited, "Q"), {{"a", {"1"}}}));
    EXPECT_EQ(Text(edited), "<Doc><P>one </P><Q a=\"1\">three</Q></Doc>");
    EXPECT_EQ(Text(source), xml);
    EXPECT_TRUE(host.editing.DeleteElement(source, Find(source, "P")));
    EXPECT_EQ(Text(source), "<Doc><Q>three</Q></Doc>");
    EXPECT_TRUE(host.documents.Close(source, true));
    EXPECT_EQ(Text(other), xml);
    EXPECT_TRUE(host.editing.DeleteElement(other, Find(other, "Q")));
    EXPECT_EQ(Text(other), "<Doc><P>one <Em>two</Em></P></Doc>");
    EXPECT_EQ(Text(edited), "<Doc><P>one </P><Q a=\"1\">three</Q></Doc>");
  }
}

TEST_F(HostTest, AFailedSaveLeavesDocumentAndFile) {
  const Id id = OpenText(Mif("<Doc>a</Doc>"));
  ASSERT_TRUE(host.editing.SetAttributes(id, Find(id, "Doc"), {{"a", {"1"}}}));
  const std::string before(host.documents.Path(id));
  EXPECT_FALSE(SaveAs(id, folder.path() + "/missing/out.mif"));
  EXPECT_NE(host.documents.LastError().find("missing/out.mif: the file cannot be written: No such file"),
            std::string::npos)
      << host.documents.LastError();
  EXPECT_FALSE(SaveAs(id, folder.path() + "/missing/out.pdf", host::SaveFormat::kPdf));
  EXPECT_TRUE(SaveAs(id, folder.path() + "/out.pdf", host::SaveFormat::kPdf));
  EXPECT_EQ(Content(folder.path() + "/out.pdf").substr(0, 5), "%PDF-");
  EXPECT_EQ(host.documents.Path(id), before) << "a PDF is not the document";
  EXPECT_TRUE(host.documents.Switch(id, host::DocumentSwitch::kModified));
  EXPECT_FALSE(host.documents.Close(id, false));
  EXPECT_TRUE(host.documents.Save(id, {}));
  EXPECT_TRUE(host.documents.Close(id, false));
}

TEST_F(HostTest, TheNameOfTheTargetSaysTheFormat) {
  const std::string xml = "<?xml version=\"1.0\"?>\n<!-- kept -->\n<Doc a='1'><P>one<Em/> two</P></Doc>\n";
  const Id id = Open(Write("a.fm", xml));
  EXPECT_EQ(Text(id), "<Doc a=\"1\"><P>one<Em></Em> two</P></Doc>");
  EXPECT_TRUE(host.documents.Save(id, {}));
  EXPECT_EQ(Content(folder.path() + "/a.fm"), xml) << "saved in its place, a document keeps its format";
  EXPECT_TRUE(SaveAs(id, folder.path() + "/b.mif"));
  EXPECT_EQ(host.documents.Path(id), folder.path() + "/a.fm")
      << "a copy in another format is not the document";
  const Id mif = Open(folder.path() + "/b.mif");
  EXPECT_EQ(embedded.Find(mif)->format, model::Format::kMif);
  EXPECT_EQ(Text(mif), "<Doc a=\"1\"><P>one<Em></Em> two</P></Doc>");
  EXPECT_TRUE(SaveAs(mif, folder.path() + "/c.xml"));
  EXPECT_TRUE(SaveAs(mif, folder.path() + "/report", host::SaveFormat::kXml));
  EXPECT_EQ(Content(folder.path() + "/report"), Content(folder.path() + "/c.xml"));
  const Id back = Open(folder.path() + "/c.xml");
  EXPECT_EQ(embedded.Find(back)->format, model::Format::kXml);
  EXPECT_EQ(Text(back), "<Doc a=\"1\"><P>one<Em></Em> two</P></Doc>");
  EXPECT_TRUE(host.editing.DeleteElement(back, Find(back, "Doc")));
  EXPECT_FALSE(SaveAs(back, folder.path() + "/d.xml")) << "XML without an element is none";
  const Id book = Open(Write("d.book", testing::MifBook({"<c>b.fm"})));
  EXPECT_FALSE(SaveAs(book, folder.path() + "/d.xml"));
  EXPECT_FALSE(std::filesystem::exists(folder.path() + "/d.xml"));
}

// That columns say what the elements of a document say one by one.
void ExpectColumns(host::Host& host, Id document) {
  const Id root = host.elements.Root(document, host.elements.MainFlow(document));
  host::ElementColumns columns;
  host::ElementColumns walked;
  ASSERT_TRUE(host.elements.ReadTree(document, root, &columns));
  ASSERT_TRUE(host.elements.host::Elements::ReadTree(document, root, &walked));
  EXPECT_EQ(columns.elements, walked.elements);
  EXPECT_EQ(columns.definitions, walked.definitions);
  EXPECT_EQ(columns.parents, walked.parents);
  EXPECT_EQ(columns.ends, walked.ends);

  // In steps of three, and as the host does that has no faster way.
  host::WalkedNode last[2];
  for (std::size_t place = 0, count = 3; count == 3; place += count) {
    host::WalkedNode nodes[3];
    host::WalkedNode slow[3];
    count = host.elements.ReadNodes(document, root, last[0], nodes);
    ASSERT_EQ(host.elements.host::Elements::ReadNodes(document, root, last[1], slow), count);
    ASSERT_LE(place + count, columns.elements.size());
    EXPECT_TRUE(count == 3 || place + count == columns.elements.size());
    for (std::size_t i = 0; i < count; ++i) {
      EXPECT_EQ(nodes[i].element, columns.elements[place + i]);
      EXPECT_EQ(nodes[i].element, slow[i].element);
      EXPECT_EQ(nodes[i].definition, slow[i].definition);
      EXPECT_EQ(nodes[i].depth, slow[i].depth);
      EXPECT_EQ(nodes[i].kind, slow[i].kind);
      EXPECT_TRUE(slow[i].may_have_attributes || !nodes[i].may_have_attributes);
    }
    if (count > 0) last[0] = nodes[count - 1], last[1] = slow[count - 1];
  }

  const auto say = [](const host::AttributeColumn& column) {
    std::string text;
    for (const host::AttributeColumn::Entry& entry : column.entries) {
      text += std::to_string(entry.place) + "@" + std::to_string(entry.index);
      for (std::uint32_t i = 0; i < entry.value_count; ++i) {
        text += " " + std::string(column.values[entry.first_value + i]);
      }
      text += "; ";
    }
    return text;
  };
  for (const char* name : {"Audience", "Empty", "Unset", "Absent"}) {
    host::AttributeColumn column;
    host::AttributeColumn read;
    host.definitions.ReadAttributeColumn(document, columns.elements, name, &column);
    host.definitions.host::Definitions::ReadAttributeColumn(document, columns.elements, name, &read);
    EXPECT_EQ(say(column), say(read)) << name;
  }

  host::TextColumn texts;
  ASSERT_TRUE(host.elements.ReadTexts(document, columns.elements, &texts));
  for (std::size_t place = 0; place < columns.elements.size(); ++place) {
    std::string buffer;
    EXPECT_EQ(texts.text.substr(texts.begins[place], texts.ends[place] - texts.begins[place]),
              host.text.ElementText(document, columns.elements[place], 100000, &buffer));
  }
}

TEST_F(HostTest, ColumnsSayWhatElementsSay) {
  const std::string xml =
      "<Doc Audience='a b' Empty=''><P Audience='c'>one <Em/> two<Em>three</Em></P><P/>\n<P>four</P></Doc>";
  for (const Id document :
       {OpenText(Mif(kManual)), host.documents.Open(Write("doc.xml", xml), {}, &status)}) {
    ExpectColumns(host, document);
    const std::uint64_t revision = host.elements.Revision(document);
    EXPECT_NE(revision, 0U);
    host.text.WriteProperties(document, host.text.ElementRange(document, Find(document, "P")),
                              Under(document, "Later"));
    EXPECT_EQ(host.elements.Revision(document), revision);
    ASSERT_TRUE(host.editing.SetAttributes(document, Find(document, "Doc"), {{"Audience", {"other"}}}));
    ASSERT_TRUE(host.editing.DeleteElement(document, Find(document, "P", 1)));
    EXPECT_NE(host.elements.Revision(document), revision);
    ExpectColumns(host, document);
  }
}

TEST_F(HostTest, UniqueIdsAreThoseOfTheFile) {
  std::string source = Mif("<Doc><P>a</P><Table><TableBody><Row><Cell/></Row></TableBody></Table></Doc>");
  const std::size_t at = source.find("<Unique ", source.find("<ETag `Row'>") - 40);
  source.replace(at, source.find('>', at) - at, "<Unique -15689589");
  const Id id = OpenText(source);
  const Id row = Find(id, "Row");
  EXPECT_EQ(host.elements.UniqueId(id, row), -15689589);
  EXPECT_EQ(host.elements.FindUniqueId(id, -15689589), row);
  const Id paragraph = Find(id, "P");
  EXPECT_EQ(host.elements.FindUniqueId(id, host.elements.UniqueId(id, paragraph)), paragraph);
  EXPECT_EQ(host.elements.UniqueId(id, host.elements.FirstChild(id, paragraph)), 0) << "a text node has none";
  EXPECT_EQ(host.elements.FindUniqueId(id, 7), kNone);
  const std::int64_t gone = host.elements.UniqueId(id, paragraph);
  ASSERT_TRUE(host.editing.DeleteElement(id, paragraph));
  EXPECT_EQ(host.elements.FindUniqueId(id, gone), kNone);
}

TEST_F(HostTest, PropertiesOfElements) {
  const Id id = OpenText(Mif(kManual));
  const struct {
    const char* tag;
    int skip;
    ElementProperty property;
    const char* value;
  } rows[] = {
      {"Graphic", 0, ElementProperty::kImportedFile, "img/a.png"},
      {"P", 0, ElementProperty::kImportedFile, "(none)"},
      {"Title", 0, ElementProperty::kParagraphTag, "Heading"},
      {"Doc", 0, ElementProperty::kParagraphTag, "Heading"},
      {"Em", 0, ElementProperty::kParagraphTag, "Body"},
      {"Cell", 0, ElementProperty::kParagraphTag, "Body"},
      {"Row", 0, ElementProperty::kTableTag, "Grid"},
      {"Table", 0, ElementProperty::kTableTag, "Grid"},
      {"P", 0, ElementProperty::kTableTag, ""},
      {"P", 0, ElementProperty::kChangeBar, "false"},
      {"Cell", 2, ElementProperty::kChangeBar, "false"},
      {"XRef", 0, ElementProperty::kCrossReferenceFormat, "Page"},
      {"XRef", 0, ElementProperty::kCrossReferenceSource, "12: P: four"},
      {"XRef", 0, ElementProperty::kCrossReferenceFile, "b.fm"},
      {"Marker", 0, ElementProperty::kMarkerType, "Index"},
      {"Marker", 0, ElementProperty::kMarkerText, "pump"},
      {"P", 0, ElementProperty::kMarkerText, "(none)"},
      {"P", 0, ElementProperty::kPageNumber, "1"},
      {"P", 4, ElementProperty::kPageNumberText, "2"},
      {"Row", 0, ElementProperty::kPageNumber, "2"},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(Property(id, Find(id, row.tag, row.skip), row.property), row.value)
        << row.tag << " " << static_cast<int>(row.property);
  }
  // What the file says of its pages holds until something moves; then layout tells.
  EXPECT_TRUE(host.editing.DeleteElement(id, Find(id, "P")));
  EXPECT_EQ(Property(id, Find(id, "Row"), ElementProperty::kPageNumber), "1");
  // XML has the pages of the MIF that it would be.
  std::string lines;
  for (int i = 0; i < 100; ++i) lines += "<P>line</P>\n";
  const Id xml = OpenText("<?xml version='1.0'?>\n<Doc>" + lines + "<Last>x</Last></Doc>");
  EXPECT_EQ(Property(xml, Find(xml, "P", 3), ElementProperty::kPageNumber), "1");
  EXPECT_EQ(Property(xml, Find(xml, "Last"), ElementProperty::kPageNumberText), "3");
  const Id barred = OpenText(Mif("<Doc><P>{ChangeBar}a{}</P></Doc>"));
  EXPECT_EQ(Property(barred, Find(barred, "Doc"), ElementProperty::kChangeBar), "true");
}

TEST_F(HostTest, TextIsCutAtCharacters) {
  const Id id = OpenText(Mif("<Doc><P>\u00E4b<Em>c</Em></P>\n<P>d {Hidden}e{}</P></Doc>"));
  std::string buffer;
  EXPECT_EQ(host.text.ElementText(id, Find(id, "Doc"), 100, &buffer), "\u00E4bcd e");
  EXPECT_EQ(host.text.ElementText(id, Find(id, "P"), 1, &buffer), "\u00E4");
  EXPECT_EQ(host.text.ElementText(id, Find(id, "P"), 0, &buffer), "");
}

TEST_F(HostTest, ColorsThatAreOnlyUsedAreNotDefined) {
  std::string source = Mif("<Doc>{Red}a{}</Doc>");
  const std::size_t used = source.rfind("`Red'");
  source.replace(used, 5, "`Rot'");
  const Id id = OpenText(source);
  EXPECT_EQ(host.catalogs.FindColor(id, "Rot"), kNone);
  const Id made = host.catalogs.CreateColor(id, "Rot", 0, 100, 100, 0);
  EXPECT_NE(made, kNone);
  EXPECT_EQ(host.catalogs.FindColor(id, "Rot"), made);
}

// A search goes on from where the last run begins, as its conditions are taken away before.
TEST_F(HostTest, EachRunOfAConditionIsFoundOnce) {
  const Id id = OpenText(
      Mif("<Doc><P>a{Hidden}b<Em>c</Em>{}d</P>\n<P>{New}e{}{Hidden,New}f{}</P>\n"
          "{Hidden}<P>g</P>\n<P>h<Footnote {Hidden}>{Hidden}i{}</Footnote></P>{}\n"
          "<Table {Hidden}><TableBody><Row><Cell>{Hidden}j{}</Cell></Row></TableBody></Table></Doc>"));
  const Id hidden = host.catalogs.FindCondition(id, "Hidden");
  host::TextProperties none;
  none.mask = host::kConditionsProperty;
  for (const bool from_end : {false, true}) {
    const Id document = from_end ? id : OpenText(Content(std::string(host.documents.Path(id))));
    host::TextLocation from = host.text.FlowStart(document, host.elements.MainFlow(document));
    host::TextRange found;
    int runs = 0;
    while (host.text.FindCondition(document, from, hidden, &found) == host::Text::FindResult::kFound) {
      ASSERT_LT(++runs, 20);
      EXPECT_TRUE(host.text.WriteProperties(document, found, none));
      from = from_end ? found.end : found.begin;
    }
    EXPECT_EQ(Text(document),
              "<Doc><P>ab<Em>c</Em>d</P>\n<P>{New}e{}f</P>\n<P>g</P>\n<P>h<Footnote>i</Footnote></P>\n"
              "<Table><TableBody><Row><Cell>j</Cell></Row></TableBody></Table></Doc>");
  }
  host::TextRange found;
  EXPECT_EQ(host.text.FindCondition(id, {99, 0}, hidden, &found), host::Text::FindResult::kFailed);
  EXPECT_EQ(host.text.FindCondition(id, host.text.FlowStart(id, 1), 99, &found),
            host::Text::FindResult::kFailed);
}

constexpr const char* kTwoTables =
    "<Doc><P>a</P>\n<Table><TableTitle>t</TableTitle><TableHeading><Row><Cell>h</Cell></Row></TableHeading>"
    "<TableBody><Row><Cell>1</Cell></Row><Row><Cell>2</Cell></Row></TableBody>"
    "<TableFooting><Row><Cell>f</Cell></Row></TableFooting></Table>\n<P>z</P></Doc>";

TEST_F(HostTest, PartsOfTablesAreDeletedInTheirOwnWays) {
  const Id id = OpenText(Mif(kTwoTables));
  for (const char* part : {"TableTitle", "TableHeading", "TableBody", "TableFooting", "Row", "Cell"}) {
    EXPECT_FALSE(host.editing.DeleteElement(id, Find(id, part))) << part;
  }
  const Id table = Find(id, "Table");
  const Id heading = Find(id, "TableHeading");
  EXPECT_FALSE(host.editing.DeleteRows(id, table, Find(id, "Row"), 3)) << "that would be the whole body";
  EXPECT_FALSE(host.editing.DeleteRows(id, table, Find(id, "Row", 3), 2)) << "there is one row left only";
  EXPECT_FALSE(host.editing.DeleteRows(id, Find(id, "Doc"), Find(id, "Row"), 1));
  EXPECT_FALSE(host.editing.RemoveTitle(id, Find(id, "P")));
  EXPECT_EQ(Text(id), kTwoTables) << "what was refused changed nothing";
  EXPECT_TRUE(host.editing.DeleteRows(id, table, Find(id, "Row"), 2))
      << "the heading and one row of the body";
  EXPECT_FALSE(host.elements.IsElement(id, heading));
  EXPECT_TRUE(host.editing.RemoveTitle(id, table));
  EXPECT_FALSE(host.editing.RemoveTitle(id, table));
  EXPECT_TRUE(host.editing.DeleteRows(id, table, Find(id, "Row", 1), 1)) << "the footing";
  const Id left = host.tables.FirstRow(id, host.tables.FirstTable(id));
  EXPECT_EQ(host.tables.RowOfElement(id, Find(id, "Row")), left);
  EXPECT_EQ(host.tables.NextRow(id, left), kNone);
  EXPECT_EQ(Reread(id),
            "<Doc><P>a</P>\n<Table><TableBody><Row><Cell>2</Cell></Row></TableBody></Table>\n<P>z</P></Doc>");
  const Id again = host.documents.FirstOpenDocument();
  EXPECT_TRUE(host.editing.DeleteElement(again, Find(again, "Table")));
  EXPECT_EQ(host.tables.FirstTable(again), kNone);
  EXPECT_EQ(host.elements.NextSibling(again, Find(again, "P")), Find(again, "P", 1));
}

// Whatever is done to a document, the file that comes of it reads as the document did.
TEST_F(HostTest, EditsReadBackAsTheyWereMade) {
  constexpr const char* kNested = R"(<Doc><P>a {Hidden}b{} c {Hidden}d
    e
    {}f<!Footnote>u</!Footnote></P>
    {New}<P>h<Em>{Hidden}i{}</Em>{New}{Hidden}<Graphic .file="x"/> j{}</P>
    <Sec><P>k</P>
    [+]<P>l</P>{}
    </Sec>
    <Table><TableTitle>t</TableTitle><TableHeading><Row><Cell>h</Cell></Row></TableHeading><TableBody>
      <Row {Hidden}><Cell>m</Cell></Row>
      <Row><Cell>n<Table><TableBody><Row><Cell>o{New}p{}</Cell></Row></TableBody></Table> q</Cell></Row>
      <Row><Cell>{Red}r{}</Cell></Row>
    </TableBody></Table>
    <P>v<!Marker .type="Index" .text="z"/><!Table><!TableBody><!Row><!Cell>w</!Cell></!Row></!TableBody></!Table></P>
    </Doc>)";
  std::vector<std::string> sources;
  for (const char* text : {kNested, kManual}) {
    for (const char* level : {"7.00", "10.0"}) {
      for (const bool apart : {false, true}) {
        MifFile file;
        file.flows = {{.text = text}};
        file.level = level;
        file.hidden = {"Hidden"};
        file.hidden_flow = apart;
        sources.push_back(Mif(file));
      }
    }
  }
  std::mt19937 random(20240607);
  const auto below = [&](std::uint32_t limit) { return static_cast<std::uint32_t>(random() % limit); };
  for (int round = 0; round < 100; ++round) {
    const Id id = OpenText(sources[below(static_cast<std::uint32_t>(sources.size()))]);
    const host::TextProperties hidden = Under(id, "Hidden");
    host::TextProperties red;
    red.mask = host::kColorProperty | host::kStrikethroughProperty;
    red.color = host.catalogs.FindColor(id, "Red");
    red.strikethrough = true;
    std::string done;
    for (std::uint32_t edits = 1 + below(6); edits > 0; --edits) {
      const Id element = 1 + below(host.elements.IdLimit(id) - 1);
      if (!host.elements.IsElement(id, element)) continue;
      const std::uint32_t what = below(4);
      done += " " + std::to_string(what) + ":" + std::to_string(element);
      if (what == 0) Write(id, element, hidden);
      if (what == 1) Write(id, element, red);
      if (what == 2) host.editing.DeleteElement(id, element);
      if (what != 3) continue;
      const Id part = host.elements.Parent(id, element);
      switch (host.elements.Kind(id, element)) {
        case ElementKind::kText:
          host.editing.ClearText(id, host.text.ElementRange(id, element));
          break;
        case ElementKind::kTableRow:
          host.editing.DeleteRows(id, host.elements.Parent(id, part), element, 1);
          break;
        case ElementKind::kTableTitle:
          host.editing.RemoveTitle(id, part);
          break;
        default:
          break;
      }
    }
    const std::string before = Text(id);
    ASSERT_EQ(Reread(id), before) << "round " << round << done;
    ASSERT_TRUE(host.documents.Close(host.documents.FirstOpenDocument(), true));
  }
}

}  // namespace
}  // namespace qelm::embedded::adapter
