// What documents point to and what is in them to point to, through the embedded host, down to the bytes that
// pointing a link elsewhere changes.
#include "embedded/model/hypertext.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <functional>

#include "embedded/host_session.h"
#include "support/mif_files.h"
#include "support/samples.h"

namespace qelm::embedded::adapter {
namespace {

using host::Id;
using host::kNone;
using host::LinkKind;
using host::LinkTarget;
using testing::Mif;
using testing::MifFile;

constexpr std::string_view kKinds[] = {"xref", "hypertext", "inset", "graphic"};

std::string Replaced(std::string text, const std::string& from, const std::string& to) {
  const std::size_t at = text.find(from);
  EXPECT_NE(at, std::string::npos) << from;
  return at == std::string::npos ? text : text.replace(at, from.size(), to);
}

class LinksTest : public ::testing::Test, protected testing::HostSession {
 protected:
  Id Open(const std::string& name, const std::string& content) {
    folder.Write(name, content);
    const Id id = OpenFile(name);
    EXPECT_NE(id, kNone) << host.documents.LastError();
    return id;
  }
  Id OpenBody(const std::string& body) {
    MifFile file;
    file.flows = {{.text = body}};
    file.definitions = {{"P", {{"id", "FAttrUniqueId", {}, {}}}}, {"Row", {{"id", "FAttrUniqueId", {}, {}}}}};
    return Open("main.mif", Mif(file));
  }
  std::vector<host::Link> Links(Id document) {
    std::vector<host::Link> links;
    EXPECT_TRUE(host.links.Read(document, &links)) << host.documents.LastError();
    return links;
  }
  std::string Tag(Id document, Id element) {
    return std::string(
        host.definitions.DefinitionName(document, host.elements.Definition(document, element)));
  }
  // One line a link: kind, element, command, path below the folder, target.
  std::string Listed(Id document) { return Text(document, Links(document)); }
  std::string Text(Id document, const std::vector<host::Link>& links) {
    std::string text;
    for (const host::Link& link : links) {
      text += std::string(kKinds[static_cast<int>(link.kind)]) + " " + Tag(document, link.element);
      if (!link.command.empty()) text += " " + link.command;
      const bool below = link.path.starts_with(folder.path());
      text += " [" + (below ? link.path.substr(folder.path().size() + 1) : link.path) + "] " + link.target +
              (link.hidden ? " (hidden)" : "") + "\n";
    }
    return text;
  }
  std::string Targets(Id document) {
    std::vector<LinkTarget> targets;
    EXPECT_TRUE(host.links.ReadTargets(document, &targets));
    return Text(targets);
  }
  static std::string Text(const std::vector<LinkTarget>& targets) {
    std::string text;
    for (const LinkTarget& target : targets) {
      if (target.kind == LinkKind::kTextInset) continue;
      constexpr std::string_view kStates[] = {"", " hidden", " deleted"};
      text += std::string(kKinds[static_cast<int>(target.kind)]) + " " + target.name +
              std::string(kStates[static_cast<int>(target.state)]) + "\n";
    }
    return text;
  }
  // The same through the one call that reads both.
  std::string ReadAtOnce(Id document) {
    std::vector<host::Link> links;
    std::vector<LinkTarget> targets;
    EXPECT_TRUE(host.links.ReadAll(document, &links, &targets));
    return Text(document, links) + Text(targets);
  }
  std::string Saved(Id document) {
    EXPECT_TRUE(host.documents.Save(document, {})) << host.documents.LastError();
    return folder.Read(std::filesystem::path(host.documents.Path(document)).filename().string());
  }
};

constexpr const char* kLinked = R"(<Doc>
  <P>see <XRef .source="i-one: P: one" .file="<c>part<c>b.fm">page 3</XRef></P>
  <P id="p1">{Secret}<!XRef .source="p1: P: x">here</!XRef>{}</P>
  <P><Marker .type="Hypertext" .text="gotolink c.mif:place"/><Marker .type="Index" .text="gotolink x"/></P>
  <P><!Marker .type="Hypertext" .text="newlink place"/><!Marker .type="Cross-Ref" .text="1: P: y"/></P>
  <!Inset .file="<c>inset.mif">
  <P>in it</P>
  </!Inset>
  <P><Graphic .file="<u><c>img<c>a.png"/></P>
  <Table><TableBody><Row {Secret}><Cell><P id="p2">z</P></Cell></Row></TableBody></Table>
</Doc>)";

TEST_F(LinksTest, AllKindsAreReadInOrder) {
  folder.Write("part/b.mif", "x");
  MifFile file;
  file.flows = {{.text = kLinked}};
  file.hidden = {"Secret"};
  file.definitions = {{"P", {{"id", "FAttrUniqueId", {}, {}}}}};
  const Id document = Open("main.mif", Mif(file));
  const std::string outer = std::filesystem::path(folder.path()).parent_path().string();
  EXPECT_EQ(Listed(document),
            "xref XRef [part/b.mif] i-one\n"
            "xref P [] p1 (hidden)\n"
            "hypertext Marker gotolink [c.mif] place\n"
            "inset Doc [inset.mif] \n"
            "graphic Graphic [" +
                outer + "/img/a.png] \n");
  EXPECT_EQ(Targets(document), "xref p1\nhypertext place\nxref 1: P: y\nxref p2 hidden\n");
  EXPECT_TRUE(host.links.HasTarget(document, LinkKind::kCrossReference, "p2"));
  EXPECT_TRUE(host.links.HasTarget(document, LinkKind::kHypertext, "firstpage"));
  EXPECT_FALSE(host.links.HasTarget(document, LinkKind::kHypertext, "p2"));
}

TEST_F(LinksTest, WhatIsDeletedIsNoLinkAndADeletedTarget) {
  const Id document = OpenBody(
      "<Doc>\n<P id=\"p1\"><XRef .source=\"p2: P\">2</XRef></P>\n<Q><XRef .source=\"p1: P\">1</XRef></Q>\n"
      "<P id=\"p2\">x</P>\n</Doc>");
  EXPECT_TRUE(host.links.HasTarget(document, LinkKind::kCrossReference, "p1"));
  ASSERT_TRUE(host.editing.DeleteElement(document, Find(document, "P")));
  EXPECT_EQ(Listed(document), "xref XRef [] p1\n");
  EXPECT_EQ(Targets(document), "xref p1 deleted\nxref p2\n");
  EXPECT_FALSE(host.links.HasTarget(document, LinkKind::kCrossReference, "p1"));
}

// A copy of a document has what is left of its links, however it came to differ from the other one.
TEST_F(LinksTest, LinksOfACopyAreThoseThatItHas) {
  MifFile file;
  file.flows = {{.text = kLinked}};
  file.hidden = {"Secret"};
  file.definitions = {{"P", {{"id", "FAttrUniqueId", {}, {}}}}};
  const std::string bytes = Mif(file);
  const Id document = Open("main.mif", bytes);
  const std::string all = ReadAtOnce(document);
  const std::pair<const char*, std::function<bool(Id)>> kEdits[] = {
      {"none", [](Id) { return true; }},
      {"a link", [&](Id copy) { return host.editing.DeleteElement(copy, Find(copy, "XRef")); }},
      {"a target", [&](Id copy) { return host.editing.DeleteElement(copy, Find(copy, "P", 1)); }},
      {"a table", [&](Id copy) { return host.editing.DeleteElement(copy, Find(copy, "Table")); }},
      {"what is shown",
       [&](Id copy) {
         return host.catalogs.SetConditionShown(copy, host.catalogs.FindCondition(copy, "Secret"), true);
       }},
      {"a path", [&](Id copy) { return host.links.SetPath(copy, Links(copy)[0], folder.File("n.mif")); }},
      {"an attribute",
       [&](Id copy) {
         return host.editing.SetAttributes(copy, Find(copy, "P", 1), {{.name = "id", .values = {"new"}}});
       }},
      {"the only attribute",
       [&](Id copy) { return host.editing.SetAttributes(copy, Find(copy, "P", 1), {}); }},
      {"all conditions",
       [&](Id copy) {
         return host.documents.SetSwitch(copy, host::DocumentSwitch::kShowAllConditions, true);
       }},
  };
  int number = 0;
  for (const auto& [what, edit] : kEdits) {
    const Id copy = Open("copy" + std::to_string(++number) + ".mif", bytes);
    ASSERT_TRUE(edit(copy)) << what << host.documents.LastError();
    EXPECT_EQ(ReadAtOnce(copy), Listed(copy) + Targets(copy)) << what;
    EXPECT_EQ(ReadAtOnce(copy) == all, number == 1) << what;
  }
  EXPECT_EQ(ReadAtOnce(document), all);
}

TEST_F(LinksTest, WhatIsInAFrameGoesWithIt) {
  const std::string bytes =
      "<MIFFile 2015>\n<AFrames <Frame <ID 1> <TextRect <ID 9>>>>\n<TextFlow <TFTag `A'><Para <ParaLine "
      "<ElementBegin <ETag `D'>><ElementBegin <ETag `P'>><AFrame 1><ElementEnd `P'><ElementEnd `D'>>>>\n"
      "<TextFlow <Para <ParaLine <TextRectID 9> <Marker <MTypeName `Cross-Ref'><MText `in it'>>>>>\n";
  const Id copied = Open("main.mif", bytes);
  for (const Id document : {copied, Open("copy.mif", bytes)}) {
    EXPECT_EQ(ReadAtOnce(document), "xref in it\n");
    ASSERT_TRUE(host.editing.DeleteElement(document, Find(document, "P")));
    EXPECT_EQ(ReadAtOnce(document), "xref in it deleted\n");
    EXPECT_EQ(Targets(document), "xref in it deleted\n");
  }
}

TEST_F(LinksTest, OnlyThePathOfALinkChanges) {
  std::string bytes = Mif(kLinked);
  const Id document = Open("main.mif", bytes);
  const std::string outside = std::filesystem::path(folder.path()).parent_path().string() + "/out'side";
  const std::string paths[] = {outside + "/b.mif", folder.File("c.mif"), folder.File("d.mif"),
                               folder.File("in<>set.mif"), folder.File("img/ä.png")};
  std::size_t index = 0;
  for (const host::Link& link : Links(document)) {
    ASSERT_TRUE(host.links.SetPath(document, link, paths[index++])) << host.documents.LastError();
  }
  EXPECT_EQ(Links(document)[3].path, paths[3]) << "before it is saved";
  bytes =
      Replaced(bytes, "<XRefSrcFile `<c\\>part<c\\>b.fm'>", "<XRefSrcFile `<u\\><c\\>out\\qside<c\\>b.mif'>");
  bytes = Replaced(bytes, "<XRefSrcFile `'>", "<XRefSrcFile `<c\\>c.mif'>");
  bytes = Replaced(bytes, "gotolink c.mif:place", "gotolink d.mif:place");
  bytes = Replaced(bytes, "<c\\>inset.mif", "<c\\>in<\\>set.mif");
  bytes = Replaced(bytes, "<u\\><c\\>img<c\\>a.png", "<c\\>img<c\\>ä.png");
  EXPECT_EQ(Saved(document), bytes);
}

TEST_F(LinksTest, PathsChangeInTextThatMovesAndGoWithWhatIsDeleted) {
  MifFile file;
  file.flows = {
      {.text =
           "<Doc>\n<P>a</P>\n<Q>b {Secret}c <!XRef .source=\"1: x\" .file=\"<c>old.mif\">d</!XRef>{}</Q>\n"
           "<R><!XRef .source=\"2: x\" .file=\"<c>old.mif\">e</!XRef></R>\n<P>f</P>\n</Doc>"}};
  file.hidden = {"Secret"};
  file.hidden_flow = true;
  const Id document = Open("main.mif", Mif(file));
  for (const host::Link& link : Links(document)) {
    ASSERT_TRUE(host.links.SetPath(document, link, folder.File("new.mif")));
  }
  ASSERT_TRUE(
      host.catalogs.SetConditionShown(document, host.catalogs.FindCondition(document, "Secret"), true));
  ASSERT_TRUE(host.editing.DeleteElement(document, Find(document, "R")));
  const std::string saved = Saved(document);
  EXPECT_EQ(saved.find("old.mif"), std::string::npos);
  EXPECT_EQ(saved.find("new.mif"), saved.rfind("new.mif"));
  EXPECT_NE(saved.find("<XRefSrcFile `<c\\>new.mif'>"), std::string::npos);
  ASSERT_TRUE(host.documents.Close(document, true));
  EXPECT_EQ(Listed(Open("again.mif", saved)), "xref Q [new.mif] 1\n");
}

TEST_F(LinksTest, ALinkIntoTheDocumentItselfNamesNoFile) {
  const std::string bytes = Mif(kLinked);
  const Id document = Open("main.mif", bytes);
  ASSERT_TRUE(host.links.SetPath(document, Links(document)[0], folder.File("main.mif")));
  EXPECT_EQ(Saved(document), Replaced(bytes, "<c\\>part<c\\>b.fm", ""));
  EXPECT_FALSE(host.links.SetPath(document, {}, folder.File("main.mif")));
}

TEST_F(LinksTest, APathThatChangedGoesIntoXmlToo) {
  const Id document = Open("main.mif", Mif(kLinked));
  ASSERT_TRUE(host.links.SetPath(document, Links(document)[0], folder.File("elsewhere.mif")));
  ASSERT_TRUE(host.documents.Save(
      document, {.path = folder.File("out.xml"), .pdf_job_options = {}, .structure_application = {}}));
  EXPECT_NE(folder.Read("out.xml").find("elsewhere.mif"), std::string::npos);
}

TEST_F(LinksTest, ReferencesOfXmlAreItsAttributes) {
  const Id document =
      Open("main.xml",
           "<!DOCTYPE D [<!ELEMENT D ANY><!ELEMENT P ANY>\n"
           "<!ATTLIST P key ID #IMPLIED to IDREF #IMPLIED all IDREFS #IMPLIED>]>\n"
           "<D><P key=\"a\" to=\"b\"/><?Fm Condstart Hidden?><P key=\"b\" all=\"a c\"/><?Fm Condend Hidden?>"
           "<P><?qelm object <Marker <MTypeName `Hypertext'><MText `openlink x.mif:y'>>?></P></D>");
  EXPECT_EQ(Listed(document), "xref P [] b\nxref P [] a\nxref P [] c\nhypertext P openlink [x.mif] y\n");
  EXPECT_EQ(Targets(document), "xref a\nxref b\n");
  EXPECT_FALSE(host.links.SetPath(document, Links(document)[0], folder.File("z.mif")));
  EXPECT_NE(std::string(host.documents.LastError()).find("main.xml"), std::string::npos);
}

// The object says where the reference leads, and the attribute no more than that there is one.
TEST_F(LinksTest, AReferenceOfXmlIsOneLinkWhateverStandsInIt) {
  const std::string bytes =
      "<!DOCTYPE D [<!ELEMENT D ANY><!ELEMENT P ANY><!ATTLIST P to IDREF #IMPLIED>]>\n<D><P to=\"a\">"
      "<P to=\"b\"/><?qelm object <XRef <XRefSrcText `a: x'><XRefSrcFile `x.mif'>>?></P></D>";
  const Id copied = Open("main.xml", bytes);
  for (const Id document : {copied, Open("copy.xml", bytes)}) {
    EXPECT_EQ(ReadAtOnce(document), "xref P [x.mif] a: x\nxref P [] b\n");
    ASSERT_TRUE(host.editing.DeleteElement(document, Find(document, "P", 1)));
    EXPECT_EQ(ReadAtOnce(document), "xref P [x.mif] a: x\n");
    EXPECT_EQ(Listed(document), "xref P [x.mif] a: x\n");
  }
}

// The instructions that hold links of MIF are written anew, in the file's encoding, and nothing else.
TEST_F(LinksTest, PathsInTheInstructionsOfXmlChange) {
  const std::string bytes =
      "<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?>\n<D><?qelm graphic img/a.png?><P>x</P>\n"
      "<P><?qelm object <XRef <XRefSrcText `1: P'><XRefSrcFile `<c\\>b.mif'>>?>2<?qelm object-end?>\n"
      "<?qelm object <Marker <MTypeName `Hypertext'><MText `openlink x.mif:y: z'>>?></P></D>\n";
  const Id document = Open("main.xml", bytes);
  for (const host::Link& link : Links(document)) {
    ASSERT_TRUE(host.links.SetPath(document, link, folder.File("\xC3\xBC.mif"))) << link.path;
  }
  EXPECT_EQ(Links(document)[1].path, folder.File("\xC3\xBC.mif")) << "before it is saved";
  ASSERT_TRUE(host.editing.DeleteElement(document, Find(document, "P")));
  std::string expected = Replaced(bytes, "<P>x</P>", "");
  for (const char* const old : {"img/a.png", "b.mif", "x.mif"}) {
    expected = Replaced(expected, old, "\xFC.mif");
  }
  EXPECT_EQ(Saved(document), expected);
}

TEST_F(LinksTest, FilesThatADocumentTypeNamesAreLinks) {
  const std::string bytes =
      "<?xml version='1.0'?><!-- <!ENTITY no SYSTEM 'no.xml'> -->\n<!DOCTYPE D SYSTEM \"d/t.dtd\" [\n"
      "<!ENTITY SYSTEM 'no.xml'> <!ENTITY % more PUBLIC '-//M//M' 'more.ent'> %more;\n"
      "<!ENTITY part SYSTEM 'a%20b.xml'><!ENTITY web SYSTEM 'http://x/y.xml'>\n"
      "<!NOTATION png SYSTEM 'viewer'><!ENTITY pic SYSTEM 'c.png' NDATA png>\n"
      "<!ATTLIST SYSTEM SYSTEM CDATA 'no.xml'>]>\n<D><P>x</P>&part;</D>";
  const Id document = Open("main.xml", bytes);
  EXPECT_EQ(Listed(document),
            "inset  [d/t.dtd] \ninset  [more.ent] \ninset  [a b.xml] \ngraphic  [c.png] \n");
  for (const host::Link& link : Links(document)) {
    ASSERT_TRUE(host.links.SetPath(document, link, folder.File("e f.xml"))) << link.path;
  }
  EXPECT_EQ(Links(document)[2].path, folder.File("e f.xml")) << "before it is saved";
  std::string expected = bytes;
  for (const char* const old : {"\"d/t.dtd\"", "'more.ent'", "'a%20b.xml'", "'c.png'"}) {
    expected = Replaced(expected, old, "\"e%20f.xml\"");
  }
  EXPECT_EQ(Saved(document), expected);
}

TEST_F(LinksTest, BothSpellingsOfAGraphicChange) {
  const std::string graphic = "<ImportObFile `img/a.png'>\n   <ImportObFileDI `<c\\>img<c\\>a.png'>";
  const std::string bytes = Replaced(Mif("<Doc>\n<P><Graphic .file=\"<c>img<c>a.png\"/></P>\n</Doc>"),
                                     "<ImportObFileDI `<c\\>img<c\\>a.png'>", graphic);
  const Id document = Open("main.mif", bytes);
  ASSERT_TRUE(host.links.SetPath(document, Links(document)[0], folder.File("b.png")));
  EXPECT_EQ(Saved(document),
            Replaced(bytes, graphic, "<ImportObFile `b.png'>\n   <ImportObFileDI `<c\\>b.png'>"));
}

// "docs" leads to "deep/real", from where "../x.mif" is "deep/x.mif" and not the file beside "docs".
TEST_F(LinksTest, PathsThatGoUpFromALinkedFolder) {
  folder.Write("deep/real/a.mif",
               Mif("<Doc>\n<P><XRef .source=\"1: x\" .file=\"<u><c>x.mif\">1</XRef></P>\n</Doc>"));
  folder.Write("deep/x.mif", "x");
  folder.Write("x.mif", "x");
  std::filesystem::create_directory_symlink(folder.File("deep/real"), folder.File("docs"));
  const Id document = OpenFile("docs/a.mif");
  EXPECT_EQ(Links(document)[0].path, folder.File("deep/x.mif"));
  ASSERT_TRUE(host.links.SetPath(document, Links(document)[0], folder.File("x.mif")));
  ASSERT_TRUE(host.documents.Save(document, {}));
  EXPECT_NE(folder.Read("docs/a.mif").find("`<u\\><u\\><c\\>x.mif'"), std::string::npos);
}

TEST(HypertextTest, CommandsNameFilesAndPlaces) {
  struct Case {
    const char* text;
    const char* read;  // command|file|target
    const char* moved;
  };
  constexpr Case kCases[] = {
      {"gotolink b.fm:name", "gotolink|b.fm|name", "gotolink n/c.fm:name"},
      {"openlink  name ", "openlink||name", "openlink  n/c.fm:name "},
      {"openlink <u><c>b.fm:firstpage", "openlink|<u><c>b.fm|firstpage", "openlink <c>n<c>c.fm:firstpage"},
      {"gotolink C:\\docs\\b.fm:name", "gotolink|C:\\docs\\b.fm|name", "gotolink n/c.fm:name"},
      {"gotopage b.fm:3", "gotopage|b.fm|", "gotopage n/c.fm:3"},
      {"openObjectId b.fm:5 12", "openObjectId|b.fm|5 12", "openObjectId n/c.fm:5 12"},
      {"openlink b.fm:name: with", "openlink|b.fm|name: with", "openlink n/c.fm:name: with"},
      {"gotolink <v>C:<c>b.fm:a:b", "gotolink|<v>C:<c>b.fm|a:b", "gotolink <c>n<c>c.fm:a:b"},
      {"gotolink chapter:one", "gotolink|chapter|one", "gotolink n/c.fm:one"},
      {"message openfile d/b.pdf", "openfile|d/b.pdf|", "message openfile n/c.fm"},
      {"message URL http://a.b:80/c", "URL||http://a.b:80/c", ""},
      {"https://a.b/c", "URL||https://a.b/c", ""},
      {"newlink a:b", "newlink||a:b", ""},
      {"newlink ", "||", ""},
      {"previouspage", "||", ""},
      {"alert gotolink x", "||", ""},
      {"alert See https://a.b", "||", ""},
  };
  for (const Case& test : kCases) {
    const model::Hypertext read = model::ReadHypertext(test.text);
    EXPECT_EQ(std::string(read.command) + "|" + std::string(read.file) + "|" + std::string(read.target),
              test.read);
    EXPECT_EQ(model::WithFile(test.text, "n/c.fm"), test.moved) << test.text;
  }
}

// Every link of real documents can be pointed elsewhere and back, and the bytes are what they were.
TEST_F(LinksTest, RealDocumentsComeBack) {
  std::size_t links = 0;
  testing::EachSample([&](const std::filesystem::path& path, const std::string& bytes) {
    const Id document = Open(path.stem().string() + ".mif", bytes);
    const std::vector<host::Link> before = Links(document);
    links += before.size();
    for (const host::Link& link : before) {
      if (link.command == "URL") continue;
      EXPECT_TRUE(host.links.SetPath(document, link, folder.File("elsewhere.mif")));
    }
    const std::string moved = Saved(document);
    const std::vector<host::Link> after = Links(document);
    ASSERT_EQ(after.size(), before.size());
    for (std::size_t i = 0; i < after.size(); ++i) EXPECT_EQ(after[i].target, before[i].target);
    host.documents.Close(document, true);
    const Id again = Open("again.mif", moved);
    for (const host::Link& link : Links(again)) {
      if (link.command == "URL") continue;
      EXPECT_EQ(link.path, folder.File("elsewhere.mif")) << path;
    }
    host.documents.Close(again, true);
  });
  if (testing::Samples().empty()) GTEST_SKIP() << "no samples";
  EXPECT_GT(links, 100U);
}

}  // namespace
}  // namespace qelm::embedded::adapter
