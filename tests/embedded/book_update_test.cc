// Updating books: numbers that run through the components, and the texts of cross-references.
#include <gtest/gtest.h>

#include <filesystem>

#include "embedded/host_session.h"
#include "support/golden_text.h"
#include "support/mif_files.h"
#include "support/samples.h"

namespace qelm::embedded::adapter {
namespace {

using host::Id;
using testing::Mif;
using testing::MifBook;
using testing::MifFile;

// What the documents of these tests number, and how their references read.
constexpr std::string_view kCatalogs = R"(<PgfCatalog 
 <Pgf 
  <PgfTag `Heading'>
  <PgfAutoNum Yes>
  <PgfNumFormat `H:<n+\>.\\t'>
 > # end of Pgf
 <Pgf 
  <PgfTag `Body'>
 > # end of Pgf
> # end of PgfCatalog
<XRefFormats 
 <XRefFormat 
  <XRefName `Head'>
  <XRefDef `<$elemparanumonly\> <Emphasis\><$elemparatext\><Default \xa6  Font\> (<$elemtag\>)'>
 > # end of XRefFormat
 <XRefFormat 
  <XRefName `Under'>
  <XRefDef `in <$paratext[Heading]\>, No <$attribute[no:Sec]\>'>
 > # end of XRefFormat
 <XRefFormat 
  <XRefName `Page'>
  <XRefDef `p. <$elempagenum\>'>
 > # end of XRefFormat
 <XRefFormat 
  <XRefName `Odd'>
  <XRefDef `<$moon\>'>
 > # end of XRefFormat
> # end of XRefFormats
)";

std::string Chapter(const std::string& body) {
  MifFile file;
  file.flows = {{.text = body}};
  file.level = "7.00";
  const std::vector<testing::MifAttribute> id = {{"id", "FAttrUniqueId", {}, {}}};
  file.definitions = {{"Title", id}, {"P", id}};
  std::string text = Mif(file);
  const std::size_t old = text.find("<PgfCatalog");
  const std::size_t end = text.find("> # end of PgfCatalog\n", old) + 22;
  return text.replace(old, end - old, kCatalogs);
}

class BookUpdateTest : public ::testing::Test, protected testing::HostSession {
 protected:
  // Opens a book of chapters a.mif, b.mif, ... whose paragraph numbers go on from one to the next.
  Id OpenBook(const std::vector<std::string>& bodies) {
    std::vector<std::string> names;
    for (const std::string& body : bodies) {
      names.push_back(std::string(1, static_cast<char>('a' + names.size())) + ".mif");
      folder.Write(names.back(), Chapter(body));
    }
    std::string book = MifBook(names);
    for (std::size_t at = 0; (at = book.find("<BookComponent", at)) != std::string::npos; ++at) {
      book.insert(book.find('\n', at) + 1, " <PgfNumbering Continue>\n");
    }
    folder.Write("book.mif", book);
    return OpenFile("book.mif");
  }
  // The text of a file, references as they read, paragraph numbers in front.
  std::string Golden(const std::string& name) {
    const Id id = OpenFile(name);
    std::string text = testing::Golden(*embedded.Find(id));
    host.documents.Close(id, true);
    return text;
  }
  std::string Numbers(const std::string& name) {
    std::string numbers;
    const std::string text = folder.Read(name);
    for (std::size_t at = 0; (at = text.find("<PgfNumString `", at)) != std::string::npos; ++at) {
      numbers += text.substr(at + 15, text.find('\'', at + 15) - at - 15) + "|";
    }
    return numbers;
  }

  // Puts a component before all others of the book's file.
  void AddComponent(const std::string& name, const std::string& more) {
    std::string book = folder.Read("book.mif");
    book.insert(book.find("<BookComponent"),
                "<BookComponent \n <FileName `<c\\>" + name + "'>\n" + more + ">\n");
    folder.Write("book.mif", book);
  }
  Id Reopened(Id book) {
    if (host.books.IsBook(book)) host.documents.Close(book, true);
    return OpenFile("book.mif");
  }
};

constexpr std::uint32_t kBoth = host::kUpdateNumbering | host::kUpdateCrossReferences;

TEST_F(BookUpdateTest, NumbersAndReferencesRunThroughTheBook) {
  const Id book = OpenBook({
      "<Doc>\n[Heading]<Title id=\"t1\">Pump</Title>\n[Heading]<Title id=\"t2\">Old</Title>\n"
      "<P>see <XRef .format=\"Head\" .source=\"t3: Title: x\" .file=\"<c>b.mif\">9 x</XRef>, "
      "<XRef .format=\"Head\" .source=\"t2: Title\">?</XRef>.</P>\n</Doc>",
      "<Doc>\n[Heading]<Title id=\"t3\">Valve</Title>\n<Sec no=\"7\">\n<P id=\"p\">text</P>\n</Sec>\n"
      "<P>back <XRef .format=\"Under\" .source=\"p: P\">?</XRef></P>\n</Doc>",
  });
  EXPECT_TRUE(host.books.Update(book, kBoth)) << host.documents.LastError();
  EXPECT_EQ(Numbers("a.mif") + Numbers("b.mif"), "1.\\t|2.\\t|3.\\t|");
  EXPECT_NE(Golden("a.mif").find("<XRef>3 Valve (Title)</XRef>"), std::string::npos) << Golden("a.mif");
  EXPECT_NE(Golden("a.mif").find("<XRef>2 Old (Title)</XRef>."), std::string::npos) << Golden("a.mif");
  EXPECT_NE(folder.Read("a.mif").find("<FTag `Emphasis'>"), std::string::npos);
  EXPECT_NE(Golden("b.mif").find("<XRef>in Valve, No 7</XRef>"), std::string::npos) << Golden("b.mif");
  const std::string once = folder.Read("a.mif");
  EXPECT_TRUE(host.books.Update(book, kBoth));
  EXPECT_EQ(folder.Read("a.mif"), once) << "what is up to date stays byte for byte";
}

// The first chapter has two pages.
TEST_F(BookUpdateTest, PageNumbersGoOnOrBeginAnew) {
  OpenBook({"<Doc>\n<P>a<!Page/>b</P>\n</Doc>",
            "<Doc>\n<P id=\"t\">c <XRef .format=\"Page\" .source=\"t: P\">?</XRef></P>\n</Doc>",
            "<Doc>\n</Doc>"});
  std::string book = folder.Read("book.mif");
  std::size_t at = 0;
  for (const char* const pages :
       {"Restart>\n <PageNumStart 3>\n <PageNumStyle LCRoman", "Continue", "ReadFromFile"}) {
    at = book.find("<BookComponent", at) + 15;
    book.insert(at, std::string("\n <PageNumbering ") + pages + ">");
  }
  folder.Write("book.mif", book);
  EXPECT_TRUE(host.books.Update(Reopened(OpenFile("book.mif")), kBoth)) << host.documents.LastError();
  std::string numbers;
  for (const char* const name : {"a.mif", "b.mif", "c.mif"}) {
    const std::string text = folder.Read(name);
    for (std::size_t page = 0; (page = text.find("<PageNum `", page)) != std::string::npos; ++page) {
      numbers += text.substr(page + 10, text.find('\'', page) - page - 10) + " ";
    }
  }
  EXPECT_EQ(numbers, "iii iv 5 1 ");
  EXPECT_NE(Golden("b.mif").find("<XRef>p. 5</XRef>"), std::string::npos) << Golden("b.mif");
}

// What the first chapter has on record are two pages. What is left of it takes one.
TEST_F(BookUpdateTest, PagesOfTextThatMovedAreLaidOut) {
  const Id before =
      OpenBook({"<Doc>\n<P>a</P>\n<P>x</P>\n<P id=\"t\">a<!Page/>b</P>\n<P id=\"u\">c</P>\n</Doc>",
                "<Doc>\n<P><XRef .format=\"Page\" .source=\"u: P\" .file=\"<c>a.mif\">?</XRef></P>\n"
                "<P id=\"v\"><XRef .format=\"Page\" .source=\"v: P\">?</XRef></P>\n</Doc>"});
  std::string text = folder.Read("book.mif");
  text.insert(text.rfind("<BookComponent") + 15, "\n <PageNumbering Continue>");
  folder.Write("book.mif", text);
  const Id book = Reopened(before);
  EXPECT_TRUE(host.books.Update(book, kBoth)) << host.documents.LastError();
  EXPECT_NE(Golden("b.mif").find("<XRef>p. 2</XRef>"), std::string::npos) << Golden("b.mif");
  EXPECT_NE(Golden("b.mif").find("<XRef>p. 3</XRef>"), std::string::npos) << Golden("b.mif");

  const Id chapter = OpenFile("a.mif");
  const Id first =
      host.elements.FirstChild(chapter, host.elements.Root(chapter, host.elements.MainFlow(chapter)));
  ASSERT_TRUE(host.editing.DeleteElement(chapter, first));
  ASSERT_TRUE(host.documents.Save(chapter, {}));
  host.documents.Close(chapter, true);
  EXPECT_TRUE(host.books.Update(book, kBoth)) << host.documents.LastError();
  EXPECT_NE(Golden("b.mif").find("<XRef>p. 1</XRef>"), std::string::npos) << Golden("b.mif");
  EXPECT_NE(Golden("b.mif").find("<XRef>p. 2</XRef>"), std::string::npos) << Golden("b.mif");
}

// The book leaves it to the second chapter whether its pages go on, which decides whether those of the first
// are laid out.
TEST_F(BookUpdateTest, PagesThatMovedAreCountedForAFileThatGoesOn) {
  const Id book = OpenBook({"<Doc>\n<P>a</P>\n<P>a<!Page/>b</P>\n</Doc>",
                            "<Doc>\n<P>a</P>\n<P id=\"v\"><XRef .format=\"Page\" .source=\"v: "
                            "P\">?</XRef></P>\n</Doc>"});
  std::string text = folder.Read("b.mif");
  text.insert(text.find("<Document") + 9, "\n <PageNumbering Continue>");
  folder.Write("b.mif", text);
  for (const char* const name : {"a.mif", "b.mif"}) {
    const Id chapter = OpenFile(name);
    const Id root = host.elements.Root(chapter, host.elements.MainFlow(chapter));
    ASSERT_TRUE(host.editing.DeleteElement(chapter, host.elements.FirstChild(chapter, root)));
    ASSERT_TRUE(host.documents.Save(chapter, {}));
    host.documents.Close(chapter, true);
  }
  EXPECT_TRUE(host.books.Update(book, kBoth)) << host.documents.LastError();
  EXPECT_NE(Golden("b.mif").find("<XRef>p. 2</XRef>"), std::string::npos) << Golden("b.mif");
}

TEST_F(BookUpdateTest, WhatCannotBeUpdatedStaysAndIsReported) {
  const Id book = OpenBook({
      "<Doc>\n<P>1 <XRef .format=\"Head\" .source=\"none: Title\">gone</XRef></P>\n"
      "<P>2 <XRef .format=\"Nameless\" .source=\"none: Title\">no format</XRef></P>\n"
      "<P id=\"p\">3 <XRef .format=\"Odd\" .source=\"p: P\">odd</XRef></P>\n"
      "<P>4 <XRef .format=\"Head\" .source=\"x: P\" .file=\"<c>away.mif\">away</XRef></P>\n</Doc>",
  });
  const std::string before = folder.Read("a.mif");
  EXPECT_FALSE(host.books.Update(book, kBoth | host::kUpdateOleLinks));
  EXPECT_EQ(folder.Read("a.mif"), before);
  std::string said;
  for (const std::string& notice : embedded.notices()) said += notice + "\n";
  for (const char* what : {"\"gone\" to \"none\"", "\"Nameless\"", "<$moon>", "away.mif", "OLE"}) {
    EXPECT_NE(said.find(what), std::string::npos) << what << "\n" << said;
  }
  host.books.ShowErrorLog(book);
  const std::string log = testing::Golden(*embedded.Find(host.documents.ActiveDocument()));
  EXPECT_NE(log.find("Book error log: " + folder.File("book.mif")), std::string::npos) << log;
  EXPECT_NE(log.find("the target is not there"), std::string::npos) << log;
}

TEST_F(BookUpdateTest, OnlyWhatIsAskedForIsUpdated) {
  const Id book =
      OpenBook({"<Doc>\n[Heading]<Title id=\"t1\">Pump</Title>\n<P>see <XRef .format=\"Head\" .source=\"t1: "
                "x\">?</XRef></P>\n</Doc>"});
  EXPECT_TRUE(host.books.Update(book, host::kUpdateNumbering));
  EXPECT_EQ(Numbers("a.mif"), "1.\\t|");
  EXPECT_NE(Golden("a.mif").find("<XRef>?</XRef>"), std::string::npos);
}

TEST_F(BookUpdateTest, AListIsMadeAsItsReferencePageSays) {
  MifFile list;
  list.flows = {{.text = "[Head]Contents\n[HeadingTOC]Old 9\n[Body]by hand\n"},
                {.text = "[HeadingTOC]\\<$paranumonly>: \\<$paratext> \\<$paratag>\n[OtherTOC]x",
                 .place = testing::MifFlow::Place::kReference,
                 .tag = "TOC"}};
  folder.Write("toc.mif", Mif(list));
  const Id book = OpenBook({
      "<Doc>\n[Heading]<Title id=\"t1\">Pump</Title>\n<P>x</P>\n[Heading]<Title>Valve</Title>\n</Doc>",
      "<Doc>\n[Heading]<Title id=\"t3\">Seal</Title>\n</Doc>",
  });
  AddComponent("toc.mif",
               " <FileNameSuffix `TOC'>\n <DeriveType TOC>\n <DeriveTag `Heading'>\n <DeriveLinks Yes>\n");
  EXPECT_TRUE(host.books.Update(Reopened(book), kBoth | host::kUpdateGeneratedFiles))
      << host.documents.LastError();
  const std::string toc = Golden("toc.mif");
  EXPECT_EQ(toc,
            "Contents\n<!Marker/>1: Pump Heading\n<!Marker/>2: Valve Heading\n<!Marker/>3: Seal Heading\nby "
            "hand");
  EXPECT_NE(folder.Read("toc.mif").find("<MText `openObjectId b.mif:5 "), std::string::npos);
  const std::string once = folder.Read("toc.mif");
  EXPECT_TRUE(host.books.Update(Reopened(book), host::kUpdateGeneratedFiles | host::kUpdateNumbering));
  EXPECT_EQ(folder.Read("toc.mif"), once);
}

// Pages are 1 and 2 in the first chapter, and 3 in the second.
TEST_F(BookUpdateTest, AnIndexIsSortedMergedAndGrouped) {
  MifFile list;
  list.flows = {
      {.text = "[IndexTitle]Index\n[Level1IX]old 9\n"},
      {.text =
           "[SeparatorsIX] - 1, 2..3\n[SortOrderIX]\\<$symbols>\\<$numerics>\\<$alphabetics>\n"
           "[GroupTitlesIX]Symbols\\[\\\\ \\];Numerics\\[0\\];A;E;P;Z\n[IndexIX]\\<$autorange>\\<$pagenum>\n",
       .place = testing::MifFlow::Place::kReference,
       .tag = "IX"}};
  folder.Write("ix.mif", Mif(list));
  const auto marker = [](const std::string& text) {
    return "<!Marker .type=\"Index\" .text=\"" + text + "\"/>";
  };
  const Id book = OpenBook({
      "<Doc>\n<P>a" + marker("pump:seal; \xC3\x89lan; 10 bar") + marker("<$startrange>valve[apex]") +
          marker("Elan; pump: <Emphasis>gasket<Bold>") + "</P>\n<P>b<!Page/>c" + marker("pump:seal;%") +
          marker("zinc;<$nopage>pump:see seal") + "</P>\n</Doc>",
      "<Doc>\n<P>a" + marker("<$endrange>valve[apex];<$singlepage>pump room; pump:seal") +
          marker("<$endrange>lost") + "{Secret}" + marker("hidden") + "{}</P>\n</Doc>",
  });
  std::string second = folder.Read("b.mif");
  folder.Write("b.mif", second.replace(second.find("<PageNum `1'>"), 13, "<PageNum `3'>"));
  AddComponent("ix.mif", " <FileNameSuffix `IX'>\n <DeriveType IDX>\n <DeriveTag `Index'>\n");
  EXPECT_FALSE(host.books.Update(Reopened(book), host::kUpdateGeneratedFiles));
  EXPECT_EQ(
      Golden("ix.mif"),
      "Index\nSymbols\n% - 2\nNumerics\n10 bar - 1\nA\nvalve - 1..3\nE\nElan - 1\n\xC3\x89lan - 1\n"
      "hidden - 3\nlost - ??..3\nP\npump\ngasket - 1\nseal - 1..3\nsee seal\npump room - 3\nZ\nzinc - 2");
  EXPECT_NE(folder.Read("ix.mif").find("<PgfTag `Level2IX'>"), std::string::npos);
  const std::string once = folder.Read("ix.mif");
  EXPECT_FALSE(host.books.Update(Reopened(book), host::kUpdateGeneratedFiles)) << "the lost range";
  EXPECT_EQ(folder.Read("ix.mif"), once);
}

// The source lies in another folder, and has what stands elsewhere in its file.
TEST_F(BookUpdateTest, InsetsAreReadFromTheirSources) {
  folder.Write(
      "in/s.mif",
      Chapter("<Doc>\n[Heading]<Title>new {Red}one{}</Title>\n<P>{Draft}two{}<Footnote>note</Footnote> "
              "<XRef .format=\"Head\" .source=\"x: P\" .file=\"<c>t.mif\">x</XRef></P>\n"
              "<Table><TableBody><Row><Cell>c<Graphic .file=\"<c>g.png\"/></Cell></Row></TableBody></Table>\n"
              "</Doc>"));
  folder.Write("s.txt", "one\r\ntwo\t2\r\n");
  const Id book =
      OpenBook({"<Doc>\n<!Inset .file=\"<c>in<c>s.mif\">\n<Old>old</Old>\n</!Inset>\n<P>behind</P>\n"
                "<!Inset .file=\"<c>s.txt\">\n<P>old text</P>\n</!Inset>\n"
                "<!Inset .file=\"<c>gone.mif\">\n<P>kept</P>\n</!Inset>\n</Doc>"});
  std::string file = folder.Read("a.mif");
  const std::size_t text_inset = file.find("<TextInsetLocked No>", file.find("s.txt"));
  file.insert(text_inset, "<TiText \n <TiEOLisEOP Yes>\n>\n");
  folder.Write("a.mif", file);
  EXPECT_FALSE(host.books.Update(book, host::kUpdateTextInsets));
  const std::string golden = Golden("a.mif");
  EXPECT_EQ(
      golden,
      "<Doc><!Inset><Doc><Title>new {Red}one{}</Title>\n<P>{Draft}two{}<Footnote>note</Footnote> "
      "<XRef>x</XRef></P>\n<Table><TableBody><Row><Cell>c<Graphic/></Cell></Row></TableBody></Table></Doc>"
      "</!Inset>\n<P>behind</P>\n<!Inset>one\ntwo\t2</!Inset>\n<!Inset><P>kept</P></!Inset></Doc>");
  EXPECT_EQ(folder.Read("a.mif").find("`old"), std::string::npos);
  EXPECT_NE(folder.Read("a.mif").find("<c\\>in<c\\>t.mif"), std::string::npos);
  EXPECT_NE(folder.Read("a.mif").find("<c\\>in<c\\>g.png"), std::string::npos);
  std::string said;
  for (const std::string& notice : embedded.notices()) said += notice + "\n";
  EXPECT_NE(said.find("gone.mif stays as it is"), std::string::npos) << said;
  const std::string once = folder.Read("a.mif");
  EXPECT_FALSE(host.books.Update(Reopened(book), host::kUpdateTextInsets));
  EXPECT_EQ(folder.Read("a.mif"), once) << "what is up to date stays byte for byte";
}

// What comes out of real documents, with hidden text, images, text in frames, can be read, and is the same
// the next time.
TEST_F(BookUpdateTest, RealDocumentsAsInsets) {
  std::size_t tried = 0;
  testing::EachSample([&](const std::filesystem::path& path, const std::string& bytes) {
    constexpr std::size_t kLargest = 1'000'000;
    if (bytes.size() > kLargest || !bytes.starts_with("<MIFFile")) return;
    SCOPED_TRACE(path.string());
    folder.Write("s.mif", bytes);
    const Id book = OpenBook({"<Doc>\n<P>a</P>\n<!Inset .file=\"<c>s.mif\">\n<P>b</P>\n</!Inset>\n</Doc>"});
    EXPECT_TRUE(host.books.Update(book, host::kUpdateTextInsets)) << host.documents.LastError();
    const std::string once = folder.Read("a.mif");
    EXPECT_TRUE(host.books.Update(book, host::kUpdateTextInsets));
    EXPECT_EQ(folder.Read("a.mif") == once, true);
    host.documents.Close(book, true);
    ++tried;
  });
  if (tried == 0) GTEST_SKIP() << "no samples";
}

TEST_F(BookUpdateTest, MasterPagesFollowTheTable) {
  MifFile file;
  const auto page = [](const std::string& tag) {
    return testing::MifFlow{.text = "m", .place = testing::MifFlow::Place::kMaster, .tag = tag};
  };
  file.flows = {
      {.text =
           "<Doc>\n[Title]<P>1</P>\n<P>a<!Page/>b<!Page/>c</P>\n<Sec kind=\"x\">\n<P>d<!Page/>e</P>\n</Sec>"
           "\n<P><!Page/>f</P>\n[Last]<P><!Page/>g<!Page/>h</P>\n</Doc>"},
      page("First"),
      page("Wide"),
      {.text = "<!Table .format=\"StructMasterPageMaps\"><!TableBody>"
               "<!Row><!Cell>Title</!Cell><!Cell>First</!Cell></!Row>"
               "<!Row><!Cell>Sec</!Cell><!Cell>Wide</!Cell><!Cell></!Cell><!Cell>kind</!Cell><!Cell>x</!Cell>"
               "<!Cell>Doc</!Cell><!Cell>Span pages</!Cell></!Row>"
               "<!Row><!Cell>Last</!Cell><!Cell>Missing</!Cell></!Row>"
               "</!TableBody></!Table>",
       .place = testing::MifFlow::Place::kReference,
       .tag = "MasterPageMaps"}};
  std::string bytes = Mif(file);
  for (const char* const name : {"First", "Wide"}) {
    bytes.replace(bytes.find("<PageTag `Page'>"), 16, "<PageTag `" + std::string(name) + "'>");
  }
  folder.Write("a.mif", bytes);
  folder.Write("book.mif", MifBook({"a.mif"}));
  EXPECT_FALSE(host.books.Update(OpenFile("book.mif"), host::kUpdateMasterPages));
  std::string pages;
  const std::string text = folder.Read("a.mif");
  for (std::size_t at = 0; (at = text.find("<PageBackground `", at)) != std::string::npos; ++at) {
    pages += text.substr(at + 17, text.find('\'', at + 17) - at - 17) + " ";
  }
  EXPECT_EQ(pages, "First Wide Wide ");
  EXPECT_EQ(
      std::count_if(embedded.notices().begin(), embedded.notices().end(),
                    [](const std::string& notice) { return notice.find("\"Missing\"") != notice.npos; }),
      1);
}

}  // namespace
}  // namespace qelm::embedded::adapter
