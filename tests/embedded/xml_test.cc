// XML documents: what the model makes of them, and that saving touches only what was changed.

#include <algorithm>
#include <random>

#include "embedded/model/character_edit.h"
#include "embedded/model/text_access.h"
#include "embedded/xml/encoding.h"
#include "embedded/xml/reader.h"
#include "support/normal_form.h"
#include "support/xml_editing.h"

namespace qelm::test {
namespace {

using namespace embedded::model;
namespace xml = embedded::xml;

// The tree as one line: (name attribute=value|value ... children), text in quotes.
std::string Tree(const Document& document, Id id) {
  const Element& element = document.elements[id];
  std::string buffer;
  if (element.kind == ElementKind::kText) {
    return "'" + std::string(ElementText(document, id, 1000, &buffer)) + "'";
  }
  std::string line = "(" + std::string(document.definitions[element.definition].name);
  for (std::uint32_t i = 0; i < element.attribute_count; ++i) {
    const Attribute& attribute = document.attributes[element.first_attribute + i];
    line += " " + std::string(document.names[attribute.name]) + "=";
    for (std::uint32_t v = 0; v < attribute.value_count; ++v) {
      line += (v > 0 ? "|" : "") + std::string(document.values[attribute.first_value + v]);
    }
  }
  for (Id child = element.first_child; child != 0; child = document.elements[child].next) {
    line += " " + Tree(document, child);
  }
  return line + ")";
}

std::string Tree(std::string_view bytes) {
  const auto document = OpenXml(bytes);
  return document == nullptr ? "" : Tree(*document, document->flows[1].root);
}

// Text that conditions apply to, each run as "NAME,NAME:text", with spaces between.
std::string Conditional(const Document& document) {
  std::string runs;
  for (const Item& item : document.items) {
    if (item.kind != ItemKind::kString || item.conditions == 0) continue;
    if (!runs.empty()) runs += " ";
    for (const Id id : document.condition_sets[item.conditions])
      runs += std::string(document.conditions[id].name) + ",";
    runs.back() = ':';
    AppendItemText(document, item, &runs);
  }
  return runs;
}

std::string Utf16(std::string_view text, xml::Encoding encoding) {
  std::string bytes;
  xml::AppendEncoded("\xEF\xBB\xBF", encoding, xml::Missing::kReference, &bytes);
  xml::AppendEncoded(text, encoding, xml::Missing::kReference, &bytes);
  return bytes;
}

// What is read in the plain way up to its end leaves nothing behind when the whole needs another way: an
// element with many attributes does.
TEST(XmlDocument, ItDoesNotMatterWhereAFileStopsBeingPlain) {
  const auto read = [](std::string_view more) {
    std::string text =
        "<?xml version=\"1.0\"?>\n<?qelm condition Old hidden?>\n<?qelm color 0 100 0 0 Pink?>\n"
        "<?qelm kind n footnote?>\n<!DOCTYPE d [<!ATTLIST p refs IDREFS #IMPLIED>]>\n"
        "<d> <p refs=\"a b\">one<n>two</n></p> <?Fm Condstart New?>three<?Fm Condend New?>";
    text.append("<many").append(more).append("/></d>\n");
    return OpenXml(text);
  };
  std::string attributes;
  for (int i = 0; i < 32; ++i) attributes += " a" + std::to_string(i) + "=\"v\"";
  const auto plain = read(attributes);
  const auto other = read(attributes + " b=\"v\"");
  ASSERT_TRUE(plain && other);
  std::string expected = Tree(*plain, 1);
  EXPECT_TRUE(expected.starts_with("(d ' ' (p refs=a|b 'one' (n 'two')) ' three' (many a0=v ")) << expected;
  expected.insert(expected.size() - 2, " b=v");
  EXPECT_EQ(Tree(*other, 1), expected);
  EXPECT_EQ(Conditional(*other), Conditional(*plain));
  EXPECT_EQ(other->items.size(), plain->items.size());
  EXPECT_EQ(other->names.size(), plain->names.size() + 1);
  EXPECT_EQ(other->definitions.size(), plain->definitions.size());
  EXPECT_EQ(other->conditions.size(), plain->conditions.size());
  EXPECT_EQ(other->colors.size(), plain->colors.size());
}

TEST(XmlDocument, IsReadAsATree) {
  struct Row {
    std::string_view bytes;
    std::string_view tree;
  };
  const Row rows[] = {
      {"<a x='1' y=\"&lt;&#65;\"><b/>text</a>", "(a x=1 y=<A (b) 'text')"},
      {"<!-- c --><p:a xmlns:p='u' p:x='1'/><!-- d -->", "(p:a xmlns:p=u p:x=1)"},
      // White space is text only beside other text.
      {"<a>\n  <b>x</b>\n  <c/>\n</a>", "(a (b 'x') (c))"},
      {"<a><b>x</b> <c>y</c> z</a>", "(a (b 'x') ' ' (c 'y') ' z')"},
      {"<a> <b> <c> </c> x</b> <!-- d --> <e/> y</a>", "(a ' ' (b ' ' (c) ' x') '  ' (e) ' y')"},
      {"<a xml:space='preserve'><b> </b></a>", "(a xml:space=preserve (b ' '))"},
      {"<a><b> </b><c>&#32;</c><d><![CDATA[ ]]></d></a>", "(a (b) (c ' ') (d ' '))"},
      {"<!DOCTYPE a [<!ELEMENT b (#PCDATA)>]><a> <b> </b></a>", "(a (b ' '))"},
      // Comments, sections and references do not part a text.
      {"<a>x<!-- c -->&amp;<![CDATA[<]]>\r\ny</a>", "(a 'x&<\ny')"},
      {"<a>x<?pi?>y<b/>z</a>", "(a 'xy' (b) 'z')"},
      // Defaults belong to the definition; lists have several values.
      {"<!DOCTYPE a [<!ATTLIST a d CDATA 'v' l NMTOKENS #IMPLIED>]><a l=' one  two '/>", "(a l=one|two)"},
      {"<!DOCTYPE a [<!ENTITY e 'x<b>y</b>'><!ENTITY f 'z'>]><a>w&e;&f;</a>", "(a 'wx' (b 'y') 'z')"},
      {"<!DOCTYPE a [<!ENTITY % p '<!ATTLIST a l NMTOKENS #IMPLIED>'> %p;]><a l='1 2'/>", "(a l=1|2)"},
      {"<?xml version='1.0' encoding='ISO-8859-1'?><a>\xE4</a>", "(a '\xC3\xA4')"},
  };
  for (const Row& row : rows) EXPECT_EQ(Tree(row.bytes), row.tree) << row.bytes;
  for (const auto encoding : {xml::Encoding::kUtf16Little, xml::Encoding::kUtf16Big}) {
    EXPECT_EQ(Tree(Utf16("<a>\n<b x='&lt;'/>\xF0\x9F\x98\x80</a>", encoding)),
              "(a '\n' (b x=<) '\xF0\x9F\x98\x80')");
  }
}

TEST(XmlDocument, CallsDamageByPlaceAndExpectation) {
  struct Row {
    std::string bytes;
    std::string_view part;
  };
  const Row rows[] = {
      {"<a>\n<b>\n</a>", "line 3, column 3, offset 10: mismatched tag; expected </b>, which began in line 2"},
      {"<a><b>", "expected </b>"},
      {"", "expected an element"},
      {"<a x='1' x='2'/>", "duplicate attribute"},
      {"<?xml version='1.0' encoding='windows-1252'?><a/>",
       "\"windows-1252\" is not supported; save the file as UTF-8"},
      {"<a>&nowhere;</a>", "undefined entity"},
      {"<a>\xFF</a>", "not well-formed"},
  };
  for (const Row& row : rows) {
    std::string error;
    EXPECT_EQ(BuildXml(row.bytes, &error), nullptr);
    EXPECT_NE(error.find(row.part), std::string::npos) << error << "\n" << row.bytes.substr(0, 80);
  }
}

TEST(XmlDocument, ExternalEntitiesStayReferences) {
  const std::string bytes =
      "<!DOCTYPE a SYSTEM 'no-such.dtd' [<!ENTITY e SYSTEM 'no-such.xml'>]><a>&e;<b>&nbsp;x</b></a>";
  const auto document = OpenXml(bytes);
  EXPECT_EQ(Tree(*document, 1), "(a (b 'x'))");
  ASSERT_EQ(document->warnings.size(), 3U);
  EXPECT_NE(document->warnings[1].text.find("no-such.xml"), std::string::npos);
  Hide(document.get(), Find(*document, "b"));
  EXPECT_EQ(SaveXml(*document),
            "<!DOCTYPE a SYSTEM 'no-such.dtd' [<!ENTITY e SYSTEM 'no-such.xml'>]><a>&e;"
            "<?Fm Condstart Hidden?><b>&nbsp;x</b><?Fm Condend Hidden?></a>");
}

TEST(XmlDocument, AHundredThousandLevelsAreOpenedAndSaved) {
  std::string bytes;
  for (int i = 0; i < 100000; ++i) bytes += "<a>";
  for (int i = 0; i < 100000; ++i) bytes += "</a>";
  const auto document = OpenXml(bytes);
  ASSERT_NE(document, nullptr);
  Hide(document.get(), 50000);
  const std::string hidden = SaveXml(*document);
  const auto again = OpenXml(hidden);
  ShowAll(again.get());
  EXPECT_EQ(SaveXml(*again), bytes);
}

TEST(XmlTables, AreKnownByTheirNames) {
  const auto document = OpenXml(
      "<doc><table><title>T</title><tgroup cols='1'><colspec/><thead><row><entry>h</entry></row></thead>"
      "<tbody><row><entry>c</entry></row></tbody></tgroup></table>"
      "<TABLE><TBODY><TR><TD>d</TD><th/></TR></TBODY></TABLE><table><tr><td/></tr></table><row/></doc>");
  const auto kind = [&](std::string_view name, int n) {
    return document->elements[Find(*document, name, n)].kind;
  };
  EXPECT_EQ(kind("table", 0), ElementKind::kContainer);
  EXPECT_EQ(kind("title", 0), ElementKind::kContainer);
  EXPECT_EQ(kind("tgroup", 0), ElementKind::kTable);
  EXPECT_EQ(kind("thead", 0), ElementKind::kTableHeading);
  EXPECT_EQ(kind("row", 0), ElementKind::kTableRow);
  EXPECT_EQ(kind("entry", 1), ElementKind::kTableCell);
  EXPECT_EQ(kind("TABLE", 0), ElementKind::kTable);
  EXPECT_EQ(kind("th", 0), ElementKind::kTableCell);
  EXPECT_EQ(kind("table", 1), ElementKind::kContainer);
  EXPECT_EQ(kind("tr", 0), ElementKind::kContainer);
  EXPECT_EQ(kind("row", 2), ElementKind::kContainer);
  const Part& row = document->parts[document->PartOf(document->elements[Find(*document, "row", 1)])];
  EXPECT_EQ(document->parts[row.parent].kind, ElementKind::kTableBody);
  EXPECT_EQ(document->At(row.span), "<row><entry>c</entry></row>");
  EXPECT_TRUE(DeleteRow(document.get(), document->PartOf(document->elements[Find(*document, "row", 0)])));
  EXPECT_EQ(SaveXml(*document).find("thead"), std::string::npos);
}

struct HidingRow {
  std::string_view before;
  std::string_view name;
  std::string_view after;
};
const HidingRow kHiding[] = {
    {"<a>x<b>y</b>z</a>", "b", "<a>x<?Fm Condstart Hidden?><b>y</b><?Fm Condend Hidden?>z</a>"},
    {"<a>\n <b/>\n <c/>\n</a>", "b", "<a>\n <?Fm Condstart Hidden?><b/><?Fm Condend Hidden?>\n <c/>\n</a>"},
    {"<!-- c -->\n<a><b/></a>\n", "a",
     "<!-- c -->\n<?Fm Condstart Hidden?><a><b/></a><?Fm Condend Hidden?>\n"},
    {"<a><table><tbody><tr><td>1</td></tr>\n<tr><td>2</td></tr></tbody></table></a>", "tr",
     "<a><table><tbody><tr><?Fm Condstart Hidden?><td>1</td><?Fm Condend Hidden?></tr>\n"
     "<tr><td>2</td></tr></tbody></table></a>"},
    {"<a><table><tbody><tr><td>1</td></tr></tbody></table>x</a>", "table",
     "<a><?Fm Condstart Hidden?><table><tbody><tr><td>1</td></tr></tbody></table><?Fm Condend Hidden?>x</a>"},
    {"<a><table><tbody><tr><td>1<b/></td></tr></tbody></table></a>", "td",
     "<a><table><tbody><tr><td><?Fm Condstart Hidden?>1<b/><?Fm Condend "
     "Hidden?></td></tr></tbody></table></a>"},
    // Inside an entity that holds more than the element, the entity is written out.
    {"<!DOCTYPE a [<!ENTITY e 'x<b>&lt;</b><!--c-->y'>]><a>&e;&e;</a>", "b",
     "<!DOCTYPE a [<!ENTITY e 'x<b>&lt;</b><!--c-->y'>]><a>x<?Fm Condstart Hidden?><b>&lt;</b>"
     "<?Fm Condend Hidden?><!--c-->y&e;</a>"},
};

TEST(XmlSaving, HidesWithMarksDirectlyAroundTheElement) {
  for (const HidingRow& row : kHiding) {
    const auto document = OpenXml(row.before);
    Hide(document.get(), Find(*document, row.name));
    EXPECT_EQ(SaveXml(*document), row.after);
  }
}

TEST(XmlSaving, EveryElementHiddenAndRestoredInEveryEncoding) {
  const std::string text =
      "\n<!-- p -->\n<a>one <b>two</b>\r\n<c x='1'/><![CDATA[<]]><d><e/><e>&#228;</e></d>"
      "<table><tbody><tr><td>1</td><td/></tr></tbody></table></a>\n<!-- e -->";
  const std::string files[] = {
      text.substr(1),
      "<?xml version='1.0' encoding='ISO-8859-1'?>" + text,
      Utf16(text, xml::Encoding::kUtf16Little),
      Utf16(text, xml::Encoding::kUtf16Big),
  };
  for (const std::string& bytes : files) {
    const auto count = OpenXml(bytes)->elements.size();
    for (Id id = 1; id < count; ++id) {
      const auto document = OpenXml(bytes);
      Hide(document.get(), id);
      SetConditionShown(document.get(), document->condition_index.at("Hidden"), false);
      const auto hidden = OpenXml(SaveXml(*document));
      ASSERT_NE(hidden, nullptr);
      EXPECT_EQ(Tree(*hidden, 1), Tree(*document, 1));
      EXPECT_EQ(Conditional(*hidden), Conditional(*document));
      ShowAll(hidden.get());
      EXPECT_TRUE(SaveXml(*hidden) == bytes) << id;
    }
  }
}

TEST(XmlSaving, MarksThatStillHoldStay) {
  struct Row {
    std::string_view before;
    std::string_view after;  // with <b> hidden
  };
  const Row rows[] = {
      // A condition of text that is hidden gives way to the one that hides it.
      {"<a>1<?Fm Condstart A?> 2<b>3</b>4 <?Fm Condend A?>5</a>",
       "<a>1<?Fm Condstart A?> 2<?Fm Condend A?><?Fm Condstart Hidden?><b>3</b><?Fm Condend Hidden?>"
       "<?Fm Condstart A?>4 <?Fm Condend A?>5</a>"},
      {"<a>1<?Fm Condstart A?><!--x--><b>3</b>4<?Fm Condend A?></a>",
       "<a>1<!--x--><?Fm Condstart Hidden?><b>3</b><?Fm Condend Hidden?><?Fm Condstart A?>4<?Fm Condend "
       "A?></a>"},
      {"<a><b>3</b><!--x--><?Fm Condstart A?>4<?Fm Condend A?></a>",
       "<a><?Fm Condstart Hidden?><b>3</b><?Fm Condend Hidden?><!--x--><?Fm Condstart A?>4<?Fm Condend "
       "A?></a>"},
      {"<a><?Fm Condstart Hidden?>1<?Fm Condend Hidden?><b>2</b></a>",
       "<a><?Fm Condstart Hidden?>1<b>2</b><?Fm Condend Hidden?></a>"},
  };
  for (const Row& row : rows) {
    const auto document = OpenXml(row.before);
    Hide(document.get(), Find(*document, "b"));
    const std::string saved = SaveXml(*document);
    EXPECT_EQ(saved, row.after);
    EXPECT_EQ(Conditional(*OpenXml(saved)), Conditional(*document)) << saved;
  }
}

TEST(XmlSaving, RowsWithMarksAroundThemTakeTheirOwn) {
  const std::string bytes =
      "<a><table><tbody><?Fm Condstart A?><tr><td>1</td></tr><tr><td>2</td></tr><?Fm Condend "
      "A?></tbody></table></a>";
  const auto document = OpenXml(bytes);
  const Part& row = document->parts[document->PartOf(document->elements[Find(*document, "tr", 1)])];
  EXPECT_NE(row.conditions, 0);
  Hide(document.get(), Find(*document, "tr", 0));
  EXPECT_EQ(SaveXml(*document),
            "<a><table><tbody><tr><?Fm Condstart Hidden?><td>1</td><?Fm Condend Hidden?></tr>"
            "<tr><?Fm Condstart A?><td>2</td><?Fm Condend A?></tr></tbody></table></a>");
}

TEST(XmlSaving, DeletesWholeElementsAndNothingElse) {
  struct Row {
    std::string_view before;
    std::string_view after;  // without the first <b>
  };
  const Row rows[] = {
      {"<a>\n  <b x='1'>t<c/></b>\n  <b/>\n</a>", "<a>\n  \n  <b/>\n</a>"},
      {"<a>1<?Fm Condstart A?>2<b>3<?Fm Condend A?>4</b>5</a>",
       "<a>1<?Fm Condstart A?>2<?Fm Condend A?>5</a>"},
      {"<a>1<b>3<?Fm Condstart A?>4</b>5<?Fm Condend A?></a>", "<a>1<?Fm Condstart A?>5<?Fm Condend A?></a>"},
      {"<a><?qelm text color=\"Red\"?>1<b>2<?qelm end?></b>3</a>",
       "<a><?qelm text color=\"Red\"?>1<?qelm end?>3</a>"},
      {"<!DOCTYPE a [<!ENTITY e '<b>x</b>y'>]><a>&e;z</a>",
       "<!DOCTYPE a [<!ENTITY e '<b>x</b>y'>]><a>yz</a>"},
      {"<!DOCTYPE a [<!ENTITY e '<b>x</b>'>]><a>&e;z</a>", "<!DOCTYPE a [<!ENTITY e '<b>x</b>'>]><a>z</a>"},
  };
  for (const Row& row : rows) {
    const auto document = OpenXml(row.before);
    EXPECT_TRUE(DeleteElement(document.get(), Find(*document, "b")));
    EXPECT_EQ(SaveXml(*document), row.after);
  }
}

TEST(XmlSaving, WritesTextPropertiesAroundTheText) {
  const std::string bytes = "<a>1<b>2<c>3</c></b><!--x-->4</a>";
  const auto document = OpenXml(bytes);
  const Element& b = document->elements[Find(*document, "b")];
  CharacterProperties red;
  red.known = kColorBit | kUnderliningBit;
  red.color = document->color_index.at("Red");
  red.underlining = Underlining::kDouble;
  SetCharacterProperties(document.get(), b.first_item, b.end_item, red, {});
  const std::string saved = SaveXml(*document);
  const std::string mark = "<?qelm text underline=\"double\" color=\"Red\"?>";
  EXPECT_EQ(saved, "<a>1<b>" + mark + "2<?qelm end?><c>" + mark + "3<?qelm end?></c></b><!--x-->4</a>");
  const auto again = OpenXml(saved);
  EXPECT_EQ(NormalForm(*again), NormalForm(*document));
  EXPECT_EQ(
      again->fonts[again->items[again->elements[Find(*again, "c")].first_item + 2].font].properties.color,
      again->color_index.at("Red"));
}

TEST(XmlSaving, KeepsStateOfTheDocumentInTheProlog) {
  const auto document = OpenXml("<?xml version='1.0'?>\r\n<a>x</a>");
  EXPECT_TRUE(document->show_all);
  const std::uint16_t set = ConditionSet(document.get(), "Two words?");
  SetConditionShown(document.get(), document->condition_index.at("Two words?"), false);
  EXPECT_EQ(SaveXml(*document), document->source);  // nothing has it
  SetConditions(document.get(), 1, 2, set);
  const std::string saved = SaveXml(*document);
  EXPECT_EQ(
      saved,
      "<?xml version='1.0'?>\r\n<?qelm condition Two words_x003F_ hidden while-used?>\r\n"
      "<?qelm show-all yes?>\r\n<a><?Fm Condstart Two words_x003F_?>x<?Fm Condend Two words_x003F_?></a>");
  const auto again = OpenXml(saved);
  EXPECT_TRUE(again->show_all);
  again->show_all = false;
  again->modified = true;
  const auto hidden = OpenXml(SaveXml(*again));
  EXPECT_FALSE(hidden->show_all);
  // Taken away and shown again as a whole: nothing is left to be said.
  ShowAll(hidden.get());
  hidden->show_all = true;
  EXPECT_EQ(SaveXml(*hidden), document->source);
}

TEST(XmlSaving, ChangesOnlyTheWordOfAStateThatTheAuthorWrote) {
  const auto document = OpenXml("<?qelm condition A hidden?><?qelm condition B shown?>\n<a/>");
  SetConditionShown(document.get(), document->condition_index.at("A"), true);
  SetConditionShown(document.get(), document->condition_index.at("B"), false);
  EXPECT_EQ(SaveXml(*document), "<?qelm condition A shown?><?qelm condition B hidden?>\n<a/>");
}

// A document of everything: text, marks, comments, entities, tables, in no order that anyone would choose.
class Scribe {
 public:
  explicit Scribe(unsigned seed) : random_(seed) {}

  std::string Document() {
    std::string text =
        "<!DOCTYPE a [<!ENTITY e 'x<b>y<!--c--></b>z'><!ENTITY f 'w'>]>\n<?qelm kind n footnote?><a>";
    for (int i = Below(12); i >= 0; --i) Node(&text, 3);
    return text + "</a>\n";
  }
  int Below(int limit) { return static_cast<int>(random_() % static_cast<unsigned>(limit)); }

 private:
  void Node(std::string* text, int depth) {
    static const char* const kPieces[] = {
        "t", " ", "\n", "&amp;", "<!-- c -->", "<![CDATA[<]]>", "&e;", "&f;", "<?pi d?>", "<c/>",
    };
    const int kind = Below(depth > 0 ? 16 : 11);
    if (kind < 10) {
      *text += kPieces[kind];
    } else if (kind == 10) {
      Mark(text);
    } else if (kind < 14) {
      Element(text, kind == 13 ? "n" : "b", depth);
    } else {
      Table(text, depth);
    }
  }

  void Mark(std::string* text) {
    const std::string name(1, static_cast<char>('A' + Below(3)));
    switch (Below(4)) {
      case 0:
        *text += "<?Fm Condstart " + name + "?>";
        break;
      case 1:
        *text += "<?Fm Condend " + name + "?>";
        break;
      case 2:
        *text += "<?qelm text color=\"Red\"?>";
        break;
      default:
        *text += "<?qelm end?>";
        break;
    }
  }

  void Element(std::string* text, const std::string& name, int depth) {
    *text += "<" + name + " x='1'>";
    for (int i = Below(4); i > 0; --i) Node(text, depth - 1);
    *text += "</" + name + ">";
  }

  void Table(std::string* text, int depth) {
    *text += "<table><tbody>";
    for (int row = Below(3); row >= 0; --row) {
      const bool is_marked = Below(4) == 0;
      *text += std::string("<tr>") + (is_marked ? "<?Fm Condstart R?>" : "");
      Element(text, "td", depth);
      Element(text, "td", depth);
      *text += std::string(is_marked ? "<?Fm Condend R?>" : "") + "</tr>\n";
    }
    *text += "</tbody></table>";
  }

  std::minstd_rand random_;
};

// What the saved file has to say again: the tree, each row's conditions, and each text with its own. Texts
// that came together are one when the file is opened again, and white space beside no text any more is
// layout.
std::string Meaning(const Document& document) {
  std::string meaning = Tree(document, document.flows[1].root);
  std::erase_if(meaning, [](char c) { return c == ' ' || c == '\n'; });
  for (std::size_t at = 0; (at = meaning.find("''")) != std::string::npos;) meaning.erase(at, 2);
  for (const Part& part : document.parts) {
    if (part.kind != ElementKind::kTableRow || part.deleted || document.elements[part.element].deleted)
      continue;
    meaning += "\nrow";
    for (const Id id : document.condition_sets[part.conditions])
      meaning += " " + std::string(document.conditions[id].name);
  }
  std::string last;
  for (const Item& item : document.items) {
    if (item.kind != ItemKind::kString || item.Is(kDeleted)) continue;
    std::vector<std::string> names;
    for (const Id id : document.condition_sets[item.conditions])
      names.emplace_back(document.conditions[id].name);
    std::sort(names.begin(), names.end());
    std::string state = "\n";
    for (const std::string& name : names) state += name + " ";
    const CharacterProperties& set = document.fonts[item.font].properties;
    if ((set.known & kColorBit) != 0) state += document.colors[set.color].name;
    if ((set.known & kStrikethroughBit) != 0) state += "strike";
    std::string text;
    AppendItemText(document, item, &text);
    std::erase_if(text, [](char c) { return c == ' ' || c == '\n'; });
    if (text.empty()) continue;
    if (state != last) meaning += state + ":";
    last = state;
    meaning += text;
  }
  return meaning;
}

void EditAtRandom(Document* document, Scribe* scribe) {
  const Id id = 2 + static_cast<Id>(scribe->Below(static_cast<int>(document->elements.size())));
  if (id >= document->elements.size() || document->elements[id].deleted) return;
  const Element& element = document->elements[id];
  switch (scribe->Below(5)) {
    case 0:
    case 1:
      Hide(document, id);
      break;
    case 2:
      if (element.kind == ElementKind::kTableRow) {
        DeleteRow(document, document->PartOf(element));
      } else {
        DeleteElement(document, id);
      }
      break;
    case 3:
      SetConditions(document, element.first_item, element.end_item, 0);
      break;
    default: {
      CharacterProperties strike;
      strike.known = kStrikethroughBit;
      strike.strikethrough = true;
      SetCharacterProperties(document, element.first_item, element.end_item, strike, {});
    }
  }
}

TEST(XmlSaving, WhatWasEditedAtRandomReadsTheSameAgain) {
  for (unsigned seed = 1; seed <= 800; ++seed) {
    Scribe scribe(seed);
    const std::string bytes = scribe.Document();
    const auto document = OpenXml(bytes);
    ASSERT_NE(document, nullptr);
    document->modified = true;
    ASSERT_EQ(SaveXml(*document), bytes) << seed;
    for (int i = scribe.Below(4); i >= 0; --i) EditAtRandom(document.get(), &scribe);
    const std::string saved = SaveXml(*document);
    const auto again = OpenXml(saved);
    ASSERT_NE(again, nullptr) << saved;
    ASSERT_EQ(Meaning(*again), Meaning(*document)) << "seed " << seed << "\n" << bytes << "\n" << saved;
  }
}

TEST(XmlSaving, RewritesOnlyTheAttributesThatChanged) {
  struct Row {
    std::string_view before;
    std::vector<NewAttribute> attributes;
    std::string_view after;
  };
  const Row rows[] = {
      {"<a  x = '1'\n y=\"2\" />", {{"x", {"1"}}, {"y", {"<\"3"}}}, "<a  x = '1'\n y=\"&lt;&quot;3\" />"},
      {"<a x='1' y='2' z='3'/>", {{"x", {"1"}}, {"z", {"3"}}}, "<a x='1' z='3'/>"},
      {"<a x='1'></a>", {{"x", {"1"}}, {"n", {"p", "q"}}}, "<a x='1' n=\"p q\"></a>"},
      {"<a x='&#65;' />", {{"x", {"A"}}}, "<a x='&#65;' />"},
      {"<a x='1'/>", {}, "<a/>"},
  };
  for (const Row& row : rows) {
    const auto document = OpenXml(row.before);
    SetAttributes(document.get(), 1, row.attributes);
    EXPECT_EQ(SaveXml(*document), row.after);
  }
}

}  // namespace
}  // namespace qelm::test
