// Taking formats, definitions, colors and conditions over from another document.
#include <gtest/gtest.h>

#include "embedded/adapter/clients.h"
#include "embedded/adapter/dialogs.h"
#include "embedded/adapter/embedded_host.h"
#include "support/memory_platform.h"
#include "support/mif_files.h"

namespace qelm::embedded::adapter {
namespace {

using host::Id;
using host::kNone;

constexpr std::uint32_t kEverything = host::kImportParagraphFormats | host::kImportCharacterFormats |
                                      host::kImportVariableFormats | host::kImportElementDefinitions |
                                      host::kImportColors | host::kImportConditions;

std::string Replaced(std::string text, const std::string& from, const std::string& to) {
  const std::size_t at = text.find(from);
  EXPECT_NE(at, std::string::npos) << from;
  return at == std::string::npos ? text : text.replace(at, from.size(), to);
}

class ImportTest : public ::testing::Test {
 protected:
  Id Open(const std::string& path, const std::string& content) {
    platform.files[path] = content;
    host::OpenStatus status = host::OpenStatus::kOpened;
    const Id id = host.documents.Open(path, {}, &status);
    EXPECT_NE(id, kNone) << host.documents.LastError();
    return id;
  }
  // What `target` becomes by an import.
  std::string Imported(const std::string& target, const std::string& source,
                       std::uint32_t flags = kEverything) {
    const std::string name = std::to_string(++opened_);
    const Id to = Open("/" + name + ".mif", target);
    const Id from = Open("/source" + name + ".mif", source);
    EXPECT_TRUE(host.documents.ImportFormats(to, from, flags)) << host.documents.LastError();
    EXPECT_TRUE(host.documents.Save(to, {}));
    EXPECT_EQ(platform.files["/source" + name + ".mif"], source);
    return platform.files["/" + name + ".mif"];
  }

  testing::MemoryPlatform platform;
  testing::RecordingUser user;
  EventLog events;
  NoDialogs dialogs{events};
  RecordedClients clients{events};
  EmbeddedHost embedded{{}, user, dialogs, clients, platform};
  host::Host& host = embedded.roles();
  int opened_ = 0;
};

constexpr char kTarget[] = R"(<MIFFile 10.0> # a target
<Units Uin>
<ColorCatalog 
 <Color 
  <ColorTag `Black'>
  <ColorBlack 100.000000>
  <ColorAttribute ColorIsReserved>
 > # end of Color
 <Color 
  <ColorTag `Sky'>
  <ColorCyan 40.000000>
 > # end of Color
> # end of ColorCatalog
<ConditionCatalog 
 <Condition 
  <CTag `Old'>
  <CState CHidden>
  <CStyle CAsIs>
 > # end of Condition
> # end of ConditionCatalog
<ElementDefCatalog 
 <ElementDef 
  <EDTag `Own'>
  <EDObject EDContainer>
 > # end of ElementDef
 <ElementDef 
  <EDTag `P'>
  <EDObject EDContainer>
  <EDGeneralRule `<TEXT\>'>
 > # end of ElementDef
> # end of ElementDefCatalog
<VariableFormats >
<Document 
 <DNextUnique 10>
> # end of Document
<TextFlow 
 <TFTag `A'>
 <Para 
  <ParaLine 
   <ElementBegin 
    <Unique 1>
    <ETag `P'>
   > # end of ElementBegin
   <String `text'>
   <ElementEnd `P'>
  > # end of ParaLine
 > # end of Para
> # end of TextFlow
# End of MIFFile
)";

constexpr char kSource[] = R"(<MIFFile 7.00> # a source
<ColorCatalog 
    <Color <ColorTag `Black'> <ColorBlack 99.000000>>
    <Color 
     <ColorTag `Sky'>
     <ColorCyan 50.000000>
    > # end of Color
    <Color <ColorTag `Gr\x9f n'> <ColorCyan 100.000000>>
>
<ConditionCatalog 
 <Condition 
  <CTag `Old'>
  <CState CShown>
  <CStyle CUnderline>
 > # end of Condition
> # end of ConditionCatalog
<PgfCatalog 
 <Pgf 
  <PgfTag `Deep'>
  <PgfLIndent  0.5">
 > # end of Pgf
> # end of PgfCatalog
<ElementDefCatalog 
 <ElementDef 
  <EDTag `P'>
  <EDObject EDContainer>
  <EDGeneralRule `(<TEXT\> | Q)*'>
 > # end of ElementDef
 <ElementDef 
  <EDTag `Q'>
  <EDObject EDContainer>
  <EDPgfFormat `Deep'>
 > # end of ElementDef
> # end of ElementDefCatalog
<VariableFormats 
 <VariableFormat 
  <VariableName `Product'>
  <VariableDef `Pump'>
 > # end of VariableFormat
> # end of VariableFormats
<Para <ParaLine <String `source'>>>
)";

TEST_F(ImportTest, EntriesAreReplacedOrAddedAndAllElseStays) {
  std::string expected = Replaced(kTarget, "<ColorCyan 40.000000>\n > # end of Color\n",
                                  "<ColorCyan 50.000000>\n > # end of Color\n"
                                  " <Color <ColorTag `Gr\u00FCn'> <ColorCyan 100.000000>>\n");
  expected = Replaced(expected, "<CStyle CAsIs>", "<CStyle CUnderline>");
  expected = Replaced(expected, "<ElementDefCatalog \n",
                      "<PgfCatalog \n <Pgf \n  <PgfTag `Deep'>\n  <PgfLIndent  0.5\">\n > # end of Pgf\n"
                      "> # end of PgfCatalog\n<ElementDefCatalog \n");
  expected = Replaced(expected, "<EDGeneralRule `<TEXT\\>'>\n > # end of ElementDef\n",
                      "<EDGeneralRule `(<TEXT\\> | Q)*'>\n > # end of ElementDef\n"
                      " <ElementDef \n  <EDTag `Q'>\n  <EDObject EDContainer>\n  <EDPgfFormat `Deep'>\n"
                      " > # end of ElementDef\n");
  expected = Replaced(expected, "<VariableFormats >",
                      "<VariableFormats \n <VariableFormat \n  <VariableName `Product'>\n"
                      "  <VariableDef `Pump'>\n > # end of VariableFormat\n> # end of VariableFormats");
  const std::string imported = Imported(kTarget, kSource);
  EXPECT_EQ(imported, expected);
  EXPECT_EQ(Imported(imported, kSource), imported) << "the second time nothing is new";
  EXPECT_EQ(Imported(kTarget, kSource, host::kImportCharacterFormats), kTarget);
}

TEST_F(ImportTest, ParagraphsThatWaitToBeWrittenNameImportedFormats) {
  const Id to = Open("/to.mif", kTarget);
  const Id from = Open("/from.mif", kSource);
  const Id top = host.elements.Root(to, host.elements.MainFlow(to));
  const Id definition = host.editing.DefineElement(to, "Q", "<TEXT>", "Deep");
  const Id added = host.editing.InsertElement(to, top, kNone, definition);
  EXPECT_TRUE(host.editing.SetText(to, added, "new"));
  EXPECT_TRUE(host.documents.ImportFormats(to, from, kEverything));
  EXPECT_EQ(host.elements.LastChild(to, top), added) << "ids stay";
  EXPECT_EQ(host.definitions.FindDefinition(to, "Q"), definition);
  EXPECT_TRUE(host.documents.Switch(to, host::DocumentSwitch::kModified));
  EXPECT_TRUE(host.documents.Save(to, {}));
  const std::string& saved = platform.files["/to.mif"];
  EXPECT_EQ(saved.find("<EDTag `Q'>"), saved.rfind("<EDTag `Q'>"));
  EXPECT_NE(saved.find("<EDPgfFormat `Deep'>"), std::string::npos);
  EXPECT_EQ(saved.substr(saved.find("<TextFlow")).find("<Pgf "), std::string::npos) << saved;
}

TEST_F(ImportTest, XmlKnowsDefinitionsForTheSessionAndSaysWhatHasNoPlace) {
  const Id to = Open("/to.xml", "<Doc><P>text</P></Doc>");
  const Id from = Open("/from.mif", kSource);
  EXPECT_TRUE(host.documents.ImportFormats(to, from, kEverything));
  EXPECT_NE(host.definitions.FindDefinition(to, "Q"), kNone);
  EXPECT_NE(host.catalogs.FindColor(to, "Gr\u00FCn"), kNone);
  EXPECT_NE(host.catalogs.FindCondition(to, "Old"), kNone);
  ASSERT_EQ(embedded.notices().size(), 3U);
  EXPECT_NE(embedded.notices()[0].find("/to.xml: XML has no place for paragraph formats"), std::string::npos);
  EXPECT_TRUE(host.documents.Save(to, {}));
  EXPECT_EQ(platform.files["/to.xml"],
            "<?qelm color 50 0 0 0 Sky?><?qelm color 100 0 0 0 Gr\u00FCn?><Doc><P>text</P></Doc>");

  const Id mif = Open("/mif.mif", kTarget);
  EXPECT_FALSE(host.documents.ImportFormats(mif, to, kEverything));
  EXPECT_EQ(host.documents.LastError().find("/mif.mif: an XML document has no formats"), 0U);
  EXPECT_FALSE(host.documents.Switch(mif, host::DocumentSwitch::kModified));
  EXPECT_FALSE(host.documents.ImportFormats(mif, 99, kEverything));
}

}  // namespace
}  // namespace qelm::embedded::adapter
