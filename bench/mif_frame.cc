#include "mif_frame.h"

namespace qelm::bench {
namespace {

struct Color {
  std::string_view tag;
  int cyan, magenta, yellow, black;
};
constexpr std::array<Color, 8> kColors = {{{"Black", 0, 0, 0, 100},
                                           {"White", 0, 0, 0, 0},
                                           {"Red", 0, 100, 100, 0},
                                           {"Green", 100, 0, 100, 0},
                                           {"Blue", 100, 100, 0, 0},
                                           {"Cyan", 100, 0, 0, 0},
                                           {"Magenta", 0, 100, 0, 0},
                                           {"Yellow", 0, 0, 100, 0}}};

constexpr std::array<std::string_view, 8> kParagraphFormats = {
    "Body", "Heading", "Note", "Bulleted", "TableTitle", "CellHeading", "CellBody", "TableAnchor"};

constexpr std::string_view kStart = R"(<MIFFile 7.00> # Benchmark document
# Options:
#    Paragraph Text
#    Paragraph Tags
#    Paragraph Formats
#    Font Information
#    Markers
#    Anchored Frames
#    Tables
#    Graphics and TextRect Layout
#    Master Page Items
#    Condition Catalog
#    Table Catalogs
#    Font Catalog
#    Paragraph Catalog
#    Document Template
#    Variables
#    Element Definitions
#    Elements
#
<Units Uin>
<CharUnits CUpt>
)";

constexpr std::string_view kConditions = R"(<ConditionCatalog 
 <Condition 
  <CTag `Internal'>
  <CState CHidden>
  <CStyle CUnderline>
  <CSeparation 2>
  <CColor `Red'>
 > # end of Condition
> # end of ConditionCatalog
)";

constexpr std::string_view kFormatBody = R"(  <PgfUseNextTag No>
  <PgfNextTag `'>
  <PgfAlignment Left>
  <PgfFIndent  0.0">
  <PgfLIndent  0.0">
  <PgfRIndent  0.0">
  <PgfPlacement Anywhere>
  <PgfSpBefore  0.0 pt>
  <PgfSpAfter  6.0 pt>
  <PgfWithPrev No>
  <PgfWithNext No>
  <PgfBlockSize 2>
  <PgfFont 
   <FTag `'>
   <FPlatformName `W.Times New Roman.R.400'>
   <FFamily `Times New Roman'>
   <FVar `Regular'>
   <FWeight `Regular'>
   <FAngle `Regular'>
   <FEncoding `FrameRoman'>
   <FSize  11.0 pt>
   <FUnderlining FNoUnderlining>
   <FOverline No>
   <FStrike No>
   <FChangeBar No>
   <FOutline No>
   <FShadow No>
   <FPairKern Yes>
   <FTsume No>
   <FCase FAsTyped>
   <FPosition FNormal>
   <FDX  0.0%>
   <FDY  0.0%>
   <FDW  0.0%>
   <FStretch  100.0%>
   <FLanguage USEnglish>
   <FLocked No>
   <FSeparation 0>
   <FColor `Black'>
  > # end of PgfFont
  <PgfLineSpacing Fixed>
  <PgfLeading  2.0 pt>
  <PgfAutoNum No>
  <PgfNumTabs 0>
  <PgfHyphenate No>
  <PgfCellAlignment Top>
  <PgfLocked No>
 > # end of Pgf
)";

constexpr std::string_view kCatalogsAfterElements = R"(<FontCatalog 
 <Font 
  <FTag `Emphasis'>
  <FAngle `Italic'>
  <FLocked No>
 > # end of Font
> # end of FontCatalog
<RulingCatalog 
 <Ruling 
  <RulingTag `Thin'>
  <RulingPenWidth  0.5 pt>
  <RulingGap  0.0 pt>
  <RulingSeparation 0>
  <RulingColor `Black'>
  <RulingPen 0>
  <RulingLines 1>
 > # end of Ruling
> # end of RulingCatalog
<TblCatalog 
 <TblFormat 
  <TblTag `Format A'>
  <TblColumn 
   <TblColumnNum 0>
   <TblColumnWidth  2.0">
   <TblColumnH 
    <PgfTag `CellHeading'>
   > # end of TblColumnH
   <TblColumnBody 
    <PgfTag `CellBody'>
   > # end of TblColumnBody
   <TblColumnF 
    <PgfTag `CellBody'>
   > # end of TblColumnF
  > # end of TblColumn
  <TblCellMargins  6.0 pt 6.0 pt 6.0 pt 4.0 pt>
  <TblAlignment Center>
  <TblPlacement Anywhere>
  <TblColumnRuling `Thin'>
  <TblBodyRowRuling `Thin'>
  <TblTitlePlacement InHeader>
  <TblTitlePgf1 
   <PgfTag `TableTitle'>
  > # end of TblTitlePgf1
 > # end of TblFormat
> # end of TblCatalog
<VariableFormats 
 <VariableFormat 
  <VariableName `Current Page #'>
  <VariableDef `<$curpagenum\>'>
 > # end of VariableFormat
> # end of VariableFormats
<XRefFormats 
 <XRefFormat 
  <XRefName `Heading'>
  <XRefDef `<$elemparatext\>'>
 > # end of XRefFormat
> # end of XRefFormats
)";

std::string ColorCatalog() {
  std::string out = "<ColorCatalog \n";
  for (const Color& color : kColors) {
    const std::string tag(color.tag);
    const auto ink = [](std::string_view name, int value) {
      return "  <Color" + std::string(name) + "  " + std::to_string(value) + ".000000>\n";
    };
    out += " <Color \n  <ColorTag `" + tag + "'>\n" + ink("Cyan", color.cyan) +
           ink("Magenta", color.magenta) + ink("Yellow", color.yellow) + ink("Black", color.black) +
           "  <ColorAttribute ColorIs" + tag + ">\n  <ColorAttribute ColorIsReserved>\n > # end of Color\n";
  }
  return out + "> # end of ColorCatalog\n";
}

std::string ParagraphCatalog() {
  std::string out = "<PgfCatalog \n";
  for (const std::string_view tag : kParagraphFormats) {
    out.append(" <Pgf \n  <PgfTag `").append(tag).append("'>\n").append(kFormatBody);
  }
  return out + "> # end of PgfCatalog\n";
}

struct AttributeType {
  char letter;
  std::string_view name, type;
};
constexpr std::array<AttributeType, 6> kAttributes = {{{'i', "id", "FAttrUniqueId"},
                                                       {'a', "audience", "FAttrStrings"},
                                                       {'p', "product", "FAttrStrings"},
                                                       {'l', "level", "FAttrString"},
                                                       {'r', "linkend", "FAttrUniqueIdRef"},
                                                       {'t', "term", "FAttrString"}}};

std::string AttributeDefinitions(std::string_view letters) {
  if (letters.empty()) return "";
  std::string out = "  <EDAttrDefinitions \n";
  for (const AttributeType& attribute : kAttributes) {
    if (letters.find(attribute.letter) == std::string_view::npos) continue;
    out.append("   <EDAttrDef \n    <EDAttrName `").append(attribute.name);
    out.append(
        "'>\n    <EDAttrRequired No>\n    <EDAttrReadOnly No>\n    <EDAttrHidden No>\n    <EDAttrType ");
    out.append(attribute.type).append(">\n   > # end of EDAttrDef\n");
  }
  return out + "  > # end of EDAttrDefinitions\n";
}

std::string Definition(const ElementDefinition& definition) {
  std::string out = " <ElementDef \n  <EDTag `" + std::string(definition.tag) + "'>\n  <EDObject " +
                    std::string(definition.object) + ">\n  <EDValidHighestLevel " +
                    (definition.tag == "manual" ? "Yes" : "No") + ">\n";
  if (!definition.rule.empty()) out += "  <EDGeneralRule `" + std::string(definition.rule) + "'>\n";
  out += AttributeDefinitions(definition.attributes);
  if (!definition.format.empty()) out += "  <EDPgfFormat `" + std::string(definition.format) + "'>\n";
  return out + " > # end of ElementDef\n";
}

std::string DefinitionCatalog() {
  std::string out = "<ElementDefCatalog \n";
  for (const ElementDefinition& definition : kDefinitions) out += Definition(definition);
  return out + "> # end of ElementDefCatalog\n<FmtChangeListCatalog \n> # end of FmtChangeListCatalog\n";
}

std::string Page(std::string_view type, std::string_view head, int text_frame, std::uint64_t unique) {
  const std::string number = std::to_string(text_frame);
  return "<Page \n <Unique " + std::to_string(unique) + ">\n <PageType " + std::string(type) + ">\n" +
         std::string(head) + " <TextRect \n  <ID " + number + ">\n  <Unique " + std::to_string(unique + 1) +
         ">\n  <Pen 15>\n  <Fill 15>\n  <PenWidth  1.0 pt>\n  <ObColor `Black'>\n"
         "  <ShapeRect  1.0\" 1.0\" 6.5\" 9.0\">\n  <BRect  1.0\" 1.0\" 6.5\" 9.0\">\n  <TRNumColumns 1>\n"
         "  <TRColumnGap  0.0\">\n  <TRNext 0>\n > # end of TextRect\n> # end of Page\n";
}

}  // namespace

std::string MifHead(std::uint64_t next_unique) {
  std::string out(kStart);
  out += ColorCatalog();
  out += kConditions;
  out += ParagraphCatalog();
  out += DefinitionCatalog();
  out += kCatalogsAfterElements;
  out += "<Document \n <DNextUnique " + std::to_string(next_unique) +
         ">\n <DPageSize  8.5\" 11.0\">\n <DStartPage 1>\n <DTwoSides No>\n <DShowAllConditions No>\n"
         " <DDisplayOverrides Yes>\n <DLanguage USEnglish>\n <DElementCatalogScope Strict>\n> # end of "
         "Document\n";
  return out;
}

std::string MifPages(bool hidden) {
  const std::string size = " <PageSize  8.5\" 11.0\">\n <PageOrientation Portrait>\n <PageAngle  0.0>\n";
  std::string out = Page("RightMasterPage", " <PageTag `Right'>\n" + size, 9, 900001);
  out += Page("BodyPage", " <PageNum `1'>\n <PageTag `'>\n" + size + " <PageBackground `Default'>\n", 10,
              900003);
  if (hidden) out += Page("HiddenPage", " <PageTag `HIDDEN'>\n" + size, 11, 900005);
  out +=
      "<TextFlow \n <TFTag `A'>\n <TFAutoConnect Yes>\n <Notes \n > # end of Notes\n <Para \n  <Unique "
      "900007>\n"
      "  <PgfTag `Body'>\n  <ParaLine \n   <TextRectID 9>\n  > # end of ParaLine\n > # end of Para\n"
      "> # end of TextFlow\n";
  return out;
}

}  // namespace qelm::bench
