// Adding elements, text, paragraphs and markers through the host's interface, and what the saved files are.
#include <gtest/gtest.h>

#include <filesystem>
#include <map>
#include <random>
#include <set>
#include <sstream>

#include "embedded/host_session.h"
#include "embedded/model/files.h"
#include "support/golden_text.h"
#include "support/mif_files.h"

namespace qelm::embedded::adapter {
namespace {

using host::Id;
using host::kNone;
using testing::Golden;
using testing::Mif;

class InsertTest : public ::testing::Test, public testing::HostSession {
 protected:
  Id Open(const std::string& path, bool as_new = false) {
    host::OpenStatus status = host::OpenStatus::kOpened;
    const Id id = host.documents.Open(path, {.as_new = as_new}, &status);
    EXPECT_NE(id, kNone) << host.documents.LastError();
    return id;
  }
  Id OpenText(const std::string& content, const std::string& extension = ".mif") {
    return Open(folder.Write("document" + std::to_string(++written_) + extension, content));
  }
  std::string Saved(Id document, const std::string& extension = ".mif") {
    const std::string name = "saved" + std::to_string(++written_) + extension;
    host::SaveOptions options;
    options.path = folder.File(name);
    EXPECT_TRUE(host.documents.Save(document, options)) << host.documents.LastError();
    return folder.Read(name);
  }
  // The document in the notation of mif_files.h, read from what is saved.
  std::string Reread(Id document) {
    std::string error;
    const auto read = model::BuildMif(Saved(document), &error);
    EXPECT_NE(read, nullptr) << error;
    for (const model::Warning& warning : read->warnings) ADD_FAILURE() << warning.text;
    return Golden(*read);
  }
  Id Define(Id document, const std::string& tag, const std::string& format = {}) {
    const Id id = host.editing.DefineElement(document, tag, "<TEXT>", format);
    EXPECT_NE(id, kNone) << host.documents.LastError();
    return id;
  }
  Id Insert(Id document, Id parent, Id before, const std::string& tag, const std::string& text = {}) {
    const Id known = host.definitions.FindDefinition(document, tag);
    const Id id =
        host.editing.InsertElement(document, parent, before, known != kNone ? known : Define(document, tag));
    EXPECT_NE(id, kNone) << host.documents.LastError();
    if (!text.empty()) {
      EXPECT_TRUE(host.editing.SetText(document, id, text)) << host.documents.LastError();
    }
    return id;
  }
  std::string TextOf(Id document, Id element) {
    std::string buffer;
    return std::string(host.text.ElementText(document, element, 100000, &buffer));
  }
  // Every element with its attributes, its text and, where `with_ids`, its id.
  std::string Tree(Id document, bool with_ids = false) {
    std::string lines;
    TextOf(document, host.elements.Root(document, host.elements.MainFlow(document)));
    host::AttributeBuffer buffer;
    int depth = 0;
    Id at = host.elements.Root(document, host.elements.MainFlow(document));
    while (at != kNone) {
      const std::size_t line = lines.size();
      lines += std::string(static_cast<std::size_t>(depth), ' ');
      if (with_ids) lines += std::to_string(at) + " ";
      const Id definition = host.elements.Definition(document, at);
      if (definition == kNone) {
        // Where an element between two texts went, they are one when the file is read again.
        const Id previous = host.elements.PreviousSibling(document, at);
        const bool goes_on =
            !with_ids && previous != kNone && host.elements.Definition(document, previous) == kNone;
        if (goes_on) lines.resize(line - 2);
        lines += (goes_on ? "" : "\"") + TextOf(document, at) + "\"";
      } else {
        lines += host.definitions.DefinitionName(document, definition);
        host.definitions.ReadAttributes(document, at, &buffer);
        for (const host::AttributeView& attribute : buffer.attributes) {
          lines += " " + std::string(attribute.name) + "=";
          for (std::uint32_t i = 0; i < attribute.value_count; ++i) {
            lines += std::string(buffer.values[attribute.first_value + i]) + "|";
          }
        }
      }
      lines += "\n";
      if (const Id child = host.elements.FirstChild(document, at); child != kNone) {
        at = child;
        ++depth;
        continue;
      }
      while (at != kNone && host.elements.NextSibling(document, at) == kNone) {
        at = host.elements.Parent(document, at);
        --depth;
      }
      if (at != kNone) at = host.elements.NextSibling(document, at);
    }
    return lines;
  }

  // Text and its properties at its beginning, by text node.
  std::map<Id, std::string> Texts(Id document) {
    std::map<Id, std::string> texts;
    for (Id id = 1; id < host.elements.IdLimit(document); ++id) {
      if (!host.elements.IsElement(document, id) || host.elements.Definition(document, id) != kNone) continue;
      const host::TextProperties properties = host.text.ReadProperties(
          document, host.text.ElementRange(document, id), host::kColorProperty | host::kConditionsProperty);
      std::string text = std::to_string(properties.color);
      for (const Id condition : properties.conditions) text += "," + std::to_string(condition);
      texts[id] = text + ": " + TextOf(document, id);
    }
    return texts;
  }

 private:
  int written_ = 0;
};

TEST_F(InsertTest, ElementsStandWhereTheirNeighborsStand) {
  struct Case {
    const char* before;
    const char* parent;
    const char* next;  // the child before which it goes; "" at the end
    const char* after;
  };
  const Case cases[] = {
      {"<Doc><P>a</P>\n<P>b</P></Doc>", "Doc", "", "<Doc><P>a</P>\n<P>b</P>\n<N>new</N></Doc>"},
      {"<Doc><P>a</P></Doc>", "Doc", "P", "<Doc><N>new</N>\n<P>a</P></Doc>"},
      {"<Doc><S><P>a</P></S>\n<P>b</P></Doc>", "Doc", "P2",
       "<Doc><S><P>a</P></S>\n<N>new</N>\n<P>b</P></Doc>"},
      {"<Doc><P>a</P>\n<S></S></Doc>", "S", "", "<Doc><P>a</P>\n<S><N>new</N></S></Doc>"},
      {"<Doc><P>one <E>two</E> three</P></Doc>", "P", "E",
       "<Doc><P>one <N>new</N><E>two</E> three</P></Doc>"},
      {"<Doc><P>one <E>two</E></P></Doc>", "P", "", "<Doc><P>one <E>two</E><N>new</N></P></Doc>"},
      {"<Doc><P>{Red}one{}<E>two</E> {Bold}x{}</P></Doc>", "P", "E",
       "<Doc><P>{Red}one{}<N>{Red}new{}</N><E>two</E> {Bold}x{}</P></Doc>"},
      {"<Doc><P>{Hidden}one{}</P>\n<P>b</P></Doc>", "Doc", "P2",
       "<Doc><P>{Hidden}one{}</P>\n<N>new</N>\n<P>b</P></Doc>"},
      {"<Doc><P>a</P>\n<Table><TableBody><Row><Cell>1</Cell></Row></TableBody></Table>\n<P>z</P></Doc>",
       "Cell", "",
       "<Doc><P>a</P>\n<Table><TableBody><Row><Cell>1<N>new</N></Cell></Row></TableBody></Table>\n<P>z</P></"
       "Doc>"},
      {"<Doc><P>a<Footnote>f</Footnote></P></Doc>", "Footnote", "",
       "<Doc><P>a<Footnote>f<N>new</N></Footnote></P></Doc>"},
  };
  for (const Case& one : cases) {
    const Id id = OpenText(Mif(one.before));
    const std::string next = one.next;
    const Id before = next.empty() ? kNone : next == "P2" ? Find(id, "P", 1) : Find(id, next);
    Insert(id, Find(id, one.parent), before, "N", "new");
    EXPECT_EQ(Reread(id), one.after) << one.before;
    EXPECT_EQ(Golden(*embedded.Find(id)), one.after) << "the open document, " << one.before;
  }
}

TEST_F(InsertTest, InsertingChangesNothingElseInTheFile) {
  const std::string source = Mif("<Doc>\n[Heading]<T>t</T>\n[+]<P>a</P>\n[+]<P>b</P>\n[+]<P>c</P></Doc>");
  const Id id = OpenText(source);
  Define(id, "N", "Body");
  Insert(id, Find(id, "Doc"), Find(id, "P", 1), "N", "x > y's");
  // What stands is all of the source, in order, but for the number to count from.
  const auto without_number = [](std::string text) {
    const std::size_t at = text.find("<DNextUnique ");
    return at == std::string::npos ? text : text.erase(at, text.find('>', at) - at);
  };
  std::istringstream lines(without_number(source)), out(without_number(Saved(id)));
  std::string line, written;
  std::vector<std::string> added;
  while (std::getline(lines, line)) {
    while (std::getline(out, written) && written != line) added.push_back(written);
    if (written != line) FAIL() << "lost: " << line;
  }
  std::string text;
  for (const std::string& one : added) text += one + "\n";
  EXPECT_NE(text.find("<ElementDef "), std::string::npos);
  EXPECT_NE(text.find("   <ElementBegin \n"), std::string::npos);
  EXPECT_NE(text.find("<String `x \\> y\\qs'>"), std::string::npos);
  EXPECT_NE(text.find("  <PgfTag `Heading'>\n"), std::string::npos) << "what the next paragraph relied on\n"
                                                                    << text;
  EXPECT_LT(added.size(), 60U) << text;
}

TEST_F(InsertTest, UniqueNumbersNeverClash) {
  std::string source = Mif("<Doc><P>a</P></Doc>");
  const std::size_t end = source.find("<ETag `P'>");
  source.insert(end, "<Unique 900>\n    ");
  const Id id = OpenText(source);
  const Id first = Insert(id, Find(id, "Doc"), kNone, "N", "1");
  const std::int64_t number = host.elements.UniqueId(id, first);
  EXPECT_GT(number, 900);
  EXPECT_EQ(host.elements.FindUniqueId(id, number), first);
  EXPECT_EQ(host.elements.UniqueId(id, first), number) << "also when it has been written";
  EXPECT_TRUE(host.editing.AppendParagraph(id, Find(id, "Doc"), {.text = "p"}));
  Insert(id, Find(id, "Doc"), kNone, "N", "2");
  std::set<std::string> numbers;
  const std::string saved = Saved(id);
  for (std::size_t at = saved.find("<Unique "); at != std::string::npos;
       at = saved.find("<Unique ", at + 1)) {
    EXPECT_TRUE(numbers.insert(saved.substr(at, saved.find('>', at) - at)).second) << saved.substr(at, 20);
  }
}

TEST_F(InsertTest, TextIsReplacedAsAWhole) {
  const Id id =
      OpenText(Mif("<Doc><P>one {Hidden}two{}</P>\n<Q>{Red}a{}\nb\nc</Q>\n<R>x<E>y</E></R>\n<S></S></Doc>"));
  EXPECT_TRUE(host.editing.SetText(id, Find(id, "P"), "tab\there\xC2\xA0`q'"));
  EXPECT_TRUE(host.editing.SetText(id, Find(id, "Q"), "one paragraph"));
  EXPECT_FALSE(host.editing.SetText(id, Find(id, "R"), "refused")) << "it has an element";
  EXPECT_TRUE(host.editing.SetText(id, Find(id, "S"), "filled"));
  EXPECT_TRUE(host.editing.SetText(id, Find(id, "S"), "filled again"));
  EXPECT_EQ(TextOf(id, Find(id, "P")), "tab\there\xC2\xA0`q'");
  EXPECT_EQ(Reread(id),
            "<Doc><P>tab\there\xC2\xA0`q'</P>\n<Q>one paragraph</Q>\n<R>x<E>y</E></R>\n"
            "<S>filled again</S></Doc>");
  EXPECT_TRUE(host.editing.SetText(id, Find(id, "S"), ""));
  EXPECT_EQ(TextOf(id, Find(id, "S")), "");
}

TEST_F(InsertTest, AttributesAndDefinitionsAreWrittenWhereThereWereNone) {
  std::string source = Mif("<Doc><P>a</P>\n<P>b</P></Doc>");
  // As other programs write it: no group Attributes.
  for (std::size_t at = source.find("<Attributes"); at != std::string::npos;
       at = source.find("<Attributes")) {
    const std::size_t end = source.find("# end of Attributes", at);
    source.erase(at, (end == std::string::npos ? source.find('>', at) + 1 : end + 19) - at);
  }
  const Id id = OpenText(source);
  EXPECT_TRUE(host.editing.SetAttributes(id, Find(id, "P"), {{"Audience", {"admin", "user"}}}));
  EXPECT_TRUE(host.editing.SetDefinition(id, Find(id, "P", 1), Define(id, "Note")));
  EXPECT_EQ(Reread(id), "<Doc><P Audience=\"admin|user\">a</P>\n<Note>b</Note></Doc>");
}

TEST_F(InsertTest, AttributesMoveWithTheirElement) {
  // The first paragraph goes; the beginning of Sec, which stands in it, moves to the next.
  const Id id = OpenText(Mif("<Doc><Sec><P>a</P>\n<P>b</P></Sec></Doc>"));
  EXPECT_TRUE(host.editing.SetAttributes(id, Find(id, "Sec"), {{"Level", {"2"}}}));
  EXPECT_TRUE(host.editing.SetAttributes(id, Find(id, "Doc"), {{"Level", {"1"}}}));
  EXPECT_TRUE(host.editing.DeleteElement(id, Find(id, "P")));
  EXPECT_EQ(Reread(id), "<Doc Level=\"1\"><Sec Level=\"2\"><P>b</P></Sec></Doc>");
}

TEST_F(InsertTest, XmlIsChangedWhereItMustBe) {
  struct Case {
    const char* before;
    const char* parent;
    const char* next;
    const char* after;
  };
  const Case cases[] = {
      {"<d>\n  <p>a</p>\n</d>\n", "d", "", "<d>\n  <p>a</p>\n  <n>new &amp; x</n>\n</d>\n"},
      {"<d>\n  <p>a</p>\n</d>\n", "d", "p", "<d>\n  <n>new &amp; x</n>\n  <p>a</p>\n</d>\n"},
      {"<d><p>a<b/>c</p></d>", "p", "b", "<d><p>a<n>new &amp; x</n><b/>c</p></d>"},
      {"<d>\n <s a='1' />\n</d>", "s", "", "<d>\n <s a='1'>\n  <n>new &amp; x</n>\n </s>\n</d>"},
      {"<d>\n <s><!-- c --></s>\n</d>", "s", "", "<d>\n <s>\n  <n>new &amp; x</n><!-- c --></s>\n</d>"},
      {"<?xml version='1.0' encoding='iso-8859-1'?><d><p>\xE9</p></d>", "d", "",
       "<?xml version='1.0' encoding='iso-8859-1'?><d><p>\xE9</p><n>new &amp; x</n></d>"},
  };
  for (const Case& one : cases) {
    const Id id = OpenText(one.before, ".xml");
    const std::string next = one.next;
    Insert(id, Find(id, one.parent), next.empty() ? kNone : Find(id, next), "n", "new & x");
    EXPECT_EQ(Saved(id, ".xml"), one.after);
  }
  const Id id = OpenText("<d><p k='v'>a<!-- c -->b</p><q/></d>", ".xml");
  EXPECT_TRUE(host.editing.SetText(id, Find(id, "p"), "x<y"));
  EXPECT_TRUE(host.editing.SetAttributes(id, Find(id, "p"), {{"k", {"w"}}}));
  EXPECT_TRUE(host.editing.SetDefinition(id, Find(id, "p"), Define(id, "r")));
  EXPECT_TRUE(host.editing.AppendParagraph(id, Find(id, "q"), {.text = "t"}));
  EXPECT_EQ(Saved(id, ".xml"), "<d><r k='w'>x&lt;y</r><q><?qelm paragraph?>t</q></d>");
  const Id entity = OpenText("<!DOCTYPE d [<!ENTITY e '<p/>'>]><d>&e;</d>", ".xml");
  EXPECT_EQ(host.editing.InsertElement(entity, Find(entity, "p"), kNone, Define(entity, "n")), kNone);
  EXPECT_EQ(Saved(entity, ".xml"), "<!DOCTYPE d [<!ENTITY e '<p/>'>]><d>&e;</d>");
}

TEST_F(InsertTest, WhatIsRefusedChangesNothing) {
  const std::string source =
      Mif("<Doc><P>a</P>\n<Table><TableBody><Row><Cell>1</Cell></Row></TableBody></Table></Doc>");
  const Id id = OpenText(source);
  const Id cell = host.definitions.FindDefinition(id, "Cell");
  EXPECT_EQ(host.editing.InsertElement(id, Find(id, "Row"), kNone, Find(id, "P")), kNone);
  EXPECT_EQ(host.editing.InsertElement(id, Find(id, "Doc"), kNone, cell), kNone);
  EXPECT_EQ(host.editing.InsertElement(id, Find(id, "Doc"), Find(id, "Cell"), 1), kNone);
  EXPECT_EQ(host.editing.InsertElement(id, 999, kNone, 1), kNone);
  EXPECT_FALSE(host.editing.SetDefinition(id, Find(id, "P"), cell));
  EXPECT_FALSE(host.editing.SetText(id, Find(id, "Table"), "x"));
  EXPECT_FALSE(host.documents.LastError().empty());
  EXPECT_FALSE(host.documents.Switch(id, host::DocumentSwitch::kModified));
  EXPECT_EQ(Saved(id), source);
}

TEST_F(InsertTest, ANewDocumentHasNoNameUntilItGetsOne) {
  const std::string source = Mif("<Doc>a</Doc>");
  const std::string path = folder.Write("template.fm", source);
  const Id first = Open(path, true);
  const Id second = Open(path, true);
  EXPECT_NE(first, second);
  EXPECT_EQ(host.documents.Path(first), "");
  EXPECT_FALSE(host.documents.Save(first, {}));
  EXPECT_TRUE(host.documents.SetPath(first, folder.File("report.fm")));
  EXPECT_FALSE(host.documents.SetPath(second, folder.File("report.fm"))) << "one of that name is open";
  EXPECT_EQ(folder.Names(), std::vector<std::string>{"template.fm"}) << "a name is no file";
  EXPECT_TRUE(host.documents.Save(first, {}));
  EXPECT_EQ(folder.Read("report.fm"), source);
}

TEST_F(InsertTest, AttributesOfNewElementsStandInThem) {
  const Id id = OpenText(Mif("<Doc><P>a</P></Doc>"));
  EXPECT_TRUE(host.editing.SetAttributes(id, Insert(id, Find(id, "Doc"), kNone, "N", "new"), {{"K", {"v"}}}));
  const std::string saved = Saved(id);
  EXPECT_EQ(saved.substr(0, saved.find('\n')).find("Attributes"), std::string::npos) << saved.substr(0, 200);
  EXPECT_EQ(Reread(id), "<Doc><P>a</P>\n<N K=\"v\">new</N></Doc>");
}

TEST_F(InsertTest, AParagraphWithoutALineGetsOne) {
  std::string source = Mif("<Doc><Table><TableBody><Row><Cell>1</Cell></Row></TableBody></Table></Doc>");
  const std::size_t line = source.find("<ParaLine", source.find("<CellContent"));
  const std::string_view end = "> # end of ParaLine";
  source.erase(line, source.find(end, line) + end.size() - line);
  const std::string around = "<Doc><Table><TableBody><Row><Cell>";
  const std::string behind = "</Cell></Row></TableBody></Table></Doc>";
  const Id text = OpenText(source);
  EXPECT_TRUE(host.editing.SetText(text, Find(text, "Cell"), "new"));
  EXPECT_EQ(Reread(text), around + "new" + behind);
  const Id elements = OpenText(source);
  Insert(elements, Find(elements, "Cell"), kNone, "N", "one");
  Insert(elements, Find(elements, "Cell"), kNone, "N", "two");
  EXPECT_EQ(Reread(elements), around + "<N>one</N>\n<N>two</N>" + behind);
  const Id place = OpenText(source);
  const host::TextRange cell = host.text.ElementRange(place, Find(place, "Cell"));
  EXPECT_TRUE(host.editing.InsertText(place, {cell.begin.object, cell.begin.offset + 1}, "put"));
  EXPECT_EQ(Reread(place), around + "put" + behind);
}

TEST_F(InsertTest, ACellWithoutAParagraphHoldsNothing) {
  std::string source = Mif("<Doc><Table><TableBody><Row><Cell>1</Cell></Row></TableBody></Table></Doc>");
  const std::size_t content = source.find("<CellContent");
  const std::size_t end = source.find("# end of CellContent", content);
  source.replace(content, end - content, "<CellContent > ");
  const Id id = OpenText(source);
  EXPECT_EQ(host.editing.InsertElement(id, Find(id, "Cell"), kNone, Define(id, "N")), kNone);
  EXPECT_FALSE(host.editing.SetText(id, Find(id, "Cell"), "x"));
  EXPECT_FALSE(Saved(id).empty());
}

// The end of a text inset or a cross-reference moved to before the text `before`.
std::string EndingLater(std::string source, const std::string& end, const std::string& before) {
  const std::size_t at = source.rfind('\n', source.find(end)) + 1;
  const std::string statement = source.substr(at, source.find('\n', at) + 1 - at);
  source.erase(at, statement.size());
  return source.insert(source.rfind('\n', source.find("<String `" + before + "'>")) + 1, statement);
}

TEST_F(InsertTest, TextKeepsWhatEndsElsewhere) {
  struct Case {
    const char* text;
    const char* end;
    const char* tag;
  };
  const Case cases[] = {
      {"<Doc><P>a<!Inset .file=\"b.fm\">in</!Inset></P>\n<Q>z</Q></Doc>", "<TextInsetEnd", "P"},
      {"<Doc><P>a<!Inset .file=\"b.fm\">in</!Inset></P>\n<Q>z</Q></Doc>", "<TextInsetEnd", "Q"},
      {"<Doc><P><E>a<!XRef .format=\"Page\" .source=\"1\" .file=\"b.fm\">3</!XRef></E>z</P></Doc>",
       "<XRefEnd", "E"},
  };
  for (const Case& one : cases) {
    const std::string whole = Mif(one.text);
    for (const bool apart : {false, true}) {
      const std::string source = apart ? EndingLater(whole, one.end, "z") : whole;
      const Id id = OpenText(source);
      for (Id inset = host.tables.FirstInset(id); inset != kNone; inset = host.tables.NextInset(id, inset)) {
        host.tables.SetInsetLocked(id, inset, false);
      }
      EXPECT_EQ(host.editing.SetText(id, Find(id, one.tag), "new"), !apart) << one.text << one.tag;
      EXPECT_EQ(Saved(id) == source, apart) << one.text;
    }
  }
}

TEST_F(InsertTest, NamesThatTheEncodingLacksAreRefused) {
  const std::string source = "<?xml version='1.0' encoding='ISO-8859-1'?><d><p>one</p></d>";
  const Id id = OpenText(source, ".xml");
  EXPECT_EQ(host.editing.DefineElement(id, "\xD0\x96", "", ""), kNone);
  EXPECT_NE(host.documents.LastError().find("encoding"), std::string::npos) << host.documents.LastError();
  EXPECT_FALSE(host.editing.SetAttributes(id, Find(id, "p"), {{"\xD0\x96", {"v"}}}));
  EXPECT_FALSE(host.editing.SetAttributes(id, Find(id, "p"), {{"a b", {"v"}}}));
  EXPECT_EQ(Saved(id, ".xml"), source);
  Insert(id, Find(id, "d"), kNone, "\xC3\xA9");
  EXPECT_TRUE(host.editing.SetAttributes(id, Find(id, "p"), {{"\xC3\xA9", {"\xD0\x96"}}}));
  EXPECT_EQ(Saved(id, ".xml"),
            "<?xml version='1.0' encoding='ISO-8859-1'?><d><p \xE9=\"&#1046;\">one</p><\xE9/></d>");
}

TEST_F(InsertTest, XmlTextGoesWhereItWasAskedFor) {
  struct Case {
    const char* before;
    const char* tag;
    bool at_end;        // before its end; else behind its beginning
    const char* after;  // null: refused
  };
  const Case cases[] = {
      {"<d><p a='1' /><q>x</q></d>", "p", true, "<d><p a='1'>new</p><q>x</q></d>"},
      {"<d><p></p></d>", "p", true, "<d><p>new</p></d>"},
      {"<d><p>&amp;b</p></d>", "p", false, "<d><p>new&amp;b</p></d>"},
      {"<d><p>&amp;b</p></d>", "p", true, "<d><p>&amp;bnew</p></d>"},
      {"<!DOCTYPE d [<!ENTITY f '<b>q</b><c>r</c>'>]><d>one&f;</d>", "c", false, nullptr},
      {"<!DOCTYPE d [<!ENTITY f '<b>q</b><c>r</c>'>]><d>one&f;</d>", "b", true, nullptr},
      {"<!DOCTYPE d [<!ENTITY f '<b/>'>]><d>one&f;</d>", "b", true, nullptr},
      {"<!DOCTYPE d [<!ENTITY f '<b>q</b>'>]><d>one&f;</d>", "d", true,
       "<!DOCTYPE d [<!ENTITY f '<b>q</b>'>]><d>one&f;new</d>"},
  };
  for (const Case& one : cases) {
    const Id id = OpenText(one.before, ".xml");
    const host::TextRange range = host.text.ElementRange(id, Find(id, one.tag));
    const host::TextLocation at{range.begin.object,
                                one.at_end ? range.end.offset - 1 : range.begin.offset + 1};
    EXPECT_EQ(host.editing.InsertText(id, at, "new"), one.after != nullptr) << one.before;
    EXPECT_EQ(Saved(id, ".xml"), one.after != nullptr ? one.after : one.before);
  }
}

TEST_F(InsertTest, MarkersKeepWhatTheEncodingLacks) {
  const Id id = OpenText("<?xml version='1.0' encoding='ISO-8859-1'?><d><p>one</p></d>", ".xml");
  const host::TextRange range = host.text.ElementRange(id, Find(id, "p"));
  EXPECT_TRUE(host.editing.InsertMarker(id, range, "Index", "5 \xE2\x82\xAC"));
  EXPECT_TRUE(host.editing.AppendParagraph(
      id, Find(id, "p"), {.text = "\xE2\x82\xAC", .marker_type = "Index", .marker_text = "6 \xE2\x82\xAC"}));
  const std::string saved = Saved(id, ".xml");
  EXPECT_NE(saved.find("5 _x20AC_'"), std::string::npos) << saved;
  EXPECT_NE(saved.find("6 _x20AC_'"), std::string::npos) << saved;
  EXPECT_NE(saved.find("&#8364;</p>"), std::string::npos) << saved;
}

TEST_F(InsertTest, WhatIsBehindKeepsItsConditions) {
  const Id id = OpenText(Mif("<Doc><P>{Hidden}a</P>{}</Doc>"));
  const auto end_conditions = [&] {
    const model::Document& document = *embedded.Find(id);
    const model::Element& element = document.elements[Find(id, "P")];
    const std::uint16_t set = document.items[element.end_item - 1].conditions;
    return document.condition_sets[set].size();
  };
  EXPECT_EQ(end_conditions(), 1U);
  Insert(id, Find(id, "P"), kNone, "N");
  Saved(id);
  TextOf(id, Find(id, "P"));
  EXPECT_EQ(end_conditions(), 1U);
}

// Deleting one of two outermost elements makes the other the root, which keeps its id.
TEST_F(InsertTest, TheLastOutermostElementKeepsItsId) {
  const Id id = OpenText(Mif("<A><P>one</P></A>\n<B><Q>x</Q></B>"));
  const Id outer = Find(id, "B");
  const Id inner = Find(id, "Q");
  EXPECT_TRUE(host.editing.DeleteElement(id, Find(id, "A")));
  Insert(id, outer, kNone, "N", "new");
  EXPECT_EQ(TextOf(id, outer), "xnew");
  EXPECT_EQ(TextOf(id, inner), "x");
  EXPECT_EQ(host.elements.Root(id, host.elements.MainFlow(id)), outer);
  EXPECT_EQ(host.elements.Parent(id, inner), outer);
  EXPECT_EQ(Reread(id), "<B><Q>x</Q>\n<N>new</N></B>");
}

// Whatever is added, changed and deleted, ids stay, and the saved file reads as the document did.
TEST_F(InsertTest, EditsAtRandomReadBackAsTheyWereMade) {
  std::mt19937 random(20);
  const char* const texts[] = {
      "<Doc><S><P>a {Hidden}b{}</P>\n<P>c<E>d</E>e</P></S>\n<T>{Red}f{}</T>\n<P>z</P></Doc>",
      ("<Doc><Table><TableBody><Row><Cell>1</Cell><Cell><P>x</P>\n<P>y</P></Cell></Row></TableBody></Table></"
       "Doc>"),
      "<Doc>text <E>of</E> its own<Footnote>n</Footnote></Doc>",
      "<Doc></Doc>",
      "<Doc><P>a{Hidden}b{}<E>c</E>{Hidden}d\ne\n{}f</P>\n<S><P>{Hidden}g{}</P>\n<P>h</P></S></Doc>",
      "<Doc><P>x{Red}a<E>b</E>c{}</P>\n{New}<P>d</P>\n<P>e<E>f</E>g</P>{}\n<P>y{New}z<E>u</E>v{}</P></Doc>",
      "[Heading]<Doc><P>a</P>\n[+]<P>b</P>\n[+]<S><P>{Red}c{}</P>\n[+]<P>d</P></S></Doc>",
  };
  std::vector<std::string> sources;
  for (const char* text : texts) {
    for (const bool apart : {false, true}) {
      testing::MifFile file;
      file.flows = {{.text = text}};
      file.hidden = {"Hidden"};
      file.hidden_flow = apart;
      sources.push_back(Mif(file));
    }
  }
  for (int round = 0; round < 200; ++round) {
    const bool xml = round % 4 == 3;
    const Id id =
        xml ? OpenText("<Doc a='1'>\n <S>\n  <P>a<E>b</E></P>\n  <P/>\n </S>\n <T>t</T>\n</Doc>\n", ".xml")
            : OpenText(sources[random() % sources.size()]);
    SCOPED_TRACE("round " + std::to_string(round));
    const std::map<Id, std::string> before_all = Texts(id);
    const char* const tags[] = {"P", "E", "S", "N"};
    for (int step = 0; step < 12; ++step) {
      Id element = kNone;
      while (!host.elements.IsElement(id, element))
        element = static_cast<Id>(random()) % host.elements.IdLimit(id);
      switch (random() % 8) {
        case 0:
        case 1:
        case 2: {
          Id before = host.elements.FirstChild(id, element);
          for (auto skip = random() % 4; skip > 0 && before != kNone; --skip) {
            before = host.elements.NextSibling(id, before);
          }
          const Id definition = Define(id, tags[random() % 4], random() % 2 == 0 ? "Body" : "");
          const Id added = host.editing.InsertElement(id, element, before, definition);
          if (added != kNone && random() % 2 == 0) {
            EXPECT_TRUE(host.editing.SetText(id, added, "n" + std::to_string(step)));
          }
          break;
        }
        case 3:
          host.editing.SetText(id, element, random() % 3 == 0 ? "" : "t" + std::to_string(step));
          break;
        case 4:
          host.editing.SetAttributes(id, element, {{"K", {std::to_string(step)}}});
          break;
        case 5:
          if (element != host.elements.Root(id, host.elements.MainFlow(id)))
            host.editing.DeleteElement(id, element);
          break;
        case 6: {
          const std::string before = Tree(id, true);
          EXPECT_EQ(Tree(id, true), before);
          break;
        }
        default: {
          // Its own definition again would give its text the defined formats, and color is looked at here.
          const Id definition = Define(id, tags[random() % 4]);
          if (definition != host.elements.Definition(id, element)) {
            host.editing.SetDefinition(id, element, definition);
          }
        }
      }
    }
    const std::string expected = Tree(id);
    for (const auto& [text, now] : Texts(id)) {
      const auto then = before_all.find(text);
      const bool same = then == before_all.end() || then->second.ends_with(now.substr(now.find(": ")));
      if (then != before_all.end() && same) {
        EXPECT_EQ(now, then->second) << "what was not touched looks as it did";
      }
    }
    const std::string saved = Saved(id, xml ? ".xml" : ".mif");
    const Id again = OpenText(saved, xml ? ".xml" : ".mif");
    ASSERT_EQ(Tree(again), expected) << saved;
    ASSERT_TRUE(embedded.notices().empty()) << embedded.notices().front() << "\n" << saved;
    EXPECT_EQ(Saved(again, xml ? ".xml" : ".mif"), saved) << "unchanged, it is written as it was";
    host.documents.Close(id, true);
    host.documents.Close(again, true);
  }
}

// Real files. They are not part of the project; without them there is nothing to do here.
TEST_F(InsertTest, RealFilesTakeAnElementWhereverTheyHaveOne) {
  const std::filesystem::path samples = QELM_SOURCE_DIR "/../shared/mif/samples/bill";
  if (!std::filesystem::exists(samples)) GTEST_SKIP() << "no sample files";
  int structured = 0;
  for (const auto& entry : std::filesystem::directory_iterator(samples)) {
    if (entry.path().extension() != ".mif" || entry.path().string().find("Book") != std::string::npos)
      continue;
    const Id id = Open(entry.path().string());
    const Id root = host.elements.Root(id, host.elements.MainFlow(id));
    if (root == kNone || host.elements.Kind(id, root) != host::ElementKind::kContainer) continue;
    SCOPED_TRACE(entry.path().string());
    ++structured;
    const Id definition = Define(id, "Added");
    const Id limit = host.elements.IdLimit(id);
    int added = 0;
    for (Id element = 1; element < limit; element += 1 + limit / 400) {
      const Id before = element % 2 == 0 ? host.elements.FirstChild(id, element) : kNone;
      const Id node = host.editing.InsertElement(id, element, before, definition);
      if (node == kNone) continue;
      ++added;
      EXPECT_TRUE(host.editing.SetText(id, node, "added"));
    }
    EXPECT_GT(added, 0);
    const std::string expected = Tree(id);
    const std::size_t notices = embedded.notices().size();
    const Id again = OpenText(Saved(id));
    EXPECT_EQ(embedded.notices().size(), notices);
    EXPECT_TRUE(Tree(again) == expected) << "the saved file reads differently";
    EXPECT_EQ(Golden(*embedded.Find(again)), Golden(*embedded.Find(id)));
  }
  EXPECT_GT(structured, 0);
}

// Settling costs a pass over the document; as many of them as there are elements would be told by this at
// once: each would read again all that was added before.
TEST_F(InsertTest, TenThousandElementsAreOneCost) {
  const Id id = OpenText(Mif("<Doc><P>a</P></Doc>"));
  const Id root = Find(id, "Doc");
  const Id definition = Define(id, "N");
  const model::Document* document = embedded.Find(id);
  const std::size_t items = document->items.size();
  for (int i = 0; i < 10000; ++i) {
    const Id added = host.editing.InsertElement(
        id, root, i % 2 == 0 ? kNone : host.elements.FirstChild(id, root), definition);
    ASSERT_TRUE(host.editing.SetText(id, added, "text"));
    ASSERT_TRUE(host.editing.SetAttributes(id, added, {{"K", {"v"}}}));
    ASSERT_TRUE(host.editing.AppendParagraph(id, root, {.format = "Body", .text = "line"}));
  }
  EXPECT_EQ(document->items.size(), items) << "nothing was read again meanwhile";
  EXPECT_EQ(TextOf(id, root).size(), 10000 * 8 + 1U);
}

}  // namespace
}  // namespace qelm::embedded::adapter
