// qelm info --links, and the references that qelm filter leaves without their target.
#include <gtest/gtest.h>

#include "cli/program.h"
#include "support/mif_files.h"
#include "support/samples.h"

namespace qelm {
namespace {

using nlohmann::json;
using testing::Mif;
using testing::MifBook;
using testing::MifFile;
using testing::Program;
using testing::ProgramResult;

std::string Chapter(const std::string& body) {
  MifFile file;
  file.flows = {{.text = body}};
  file.definitions = {{"P", {{"id", "FAttrUniqueId", {}, {}}}}};
  return Mif(file);
}

constexpr char kFirst[] = R"(<Doc>
  <P id="one">see <XRef .source="two: P: x">2</XRef> and <XRef .source="two: P: x" .file="<c>b.fm">3</XRef></P>
  <P><XRef .source="three: P: x" .file="<c>b.fm">3</XRef><XRef .source="x: P" .file="<c>none.fm">4</XRef></P>
  <P><XRef .source="x: P" .file="<c>bad.mif">4</XRef><!Marker .type="Hypertext" .text="http://a.b"/></P>
  <P><Graphic .file="<c>a.png"/><!Marker .type="Hypertext" .text="openlink b.fm:firstpage"/></P>
</Doc>)";

// State and target of each link, one a line.
std::string States(const json& result) {
  std::string text;
  for (const json& link : result["links"]) {
    text += link["target"].get<std::string>() + ": " + link["state"].get<std::string>() + "\n";
  }
  return text;
}

TEST(Links, EachSaysWhetherItResolves) {
  Program program;
  const std::string first = program.folder.Write("a.mif", Chapter(kFirst));
  program.folder.Write("b.mif",
                       Chapter("<Doc>\n<P id=\"two\"><XRef .source=\"one: P\">1</XRef></P>\n</Doc>"));
  program.folder.Write("bad.mif", "<MakerFile 10.0>");
  const std::string book = program.folder.Write("book.mif", MifBook({"a.fm", "b.fm", "gone.fm"}));
  constexpr char kOfFirst[] =
      "two: target missing\ntwo: resolved\nthree: target missing\nx: file missing\nx: file cannot be opened\n"
      "http://a.b: not checked\n: file missing\nfirstpage: resolved\n";
  const json one = program.Run({"info", first, "--links", "--json"}).Json();
  EXPECT_EQ(States(one), kOfFirst);
  EXPECT_EQ(one["links"][1]["element"], "/Doc[1]/P[1]/XRef[2]");
  EXPECT_EQ(one["links"][1]["path"], program.folder.File("b.mif"));
  EXPECT_NE(one["links"][4]["reason"].get<std::string>().find("MIF"), std::string::npos);
  EXPECT_EQ(one["counts"]["target missing"], 2);
  const json all = program.Run({"info", book, "--links", "--json"}).Json();
  EXPECT_EQ(States(all), std::string(kOfFirst) + "one: target missing\n");
  EXPECT_EQ(all["unread"][0]["path"], program.folder.File("gone.fm"));
  const std::string text = program.Run({"info", first, "--links"}).out;
  EXPECT_NE(text.find("a.mif /Doc[1]/P[1]/XRef[2]: cross-reference to two in " +
                      program.folder.File("b.mif") + " - resolved\n"),
            std::string::npos)
      << text;
}

TEST(Links, BooksOfTheExampleAndOfRealLifeResolve) {
  Program program;
  const json pump =
      program.Run({"info", QELM_SOURCE_DIR "/examples/pump/pump.book.mif", "--links", "--json"}).Json();
  EXPECT_EQ(pump["counts"]["resolved"], pump["links"].size());
  for (const auto& path : testing::Samples()) {
    if (path.filename() != "DigitalEconomyBook.mif") continue;
    const json bill = program.Run({"info", path.string(), "--links", "--json"}).Json();
    EXPECT_GT(bill["links"].size(), 200U);
    EXPECT_EQ(bill["counts"]["resolved"], bill["links"].size());
  }
}

// What is filtered away is for "user"; what is left points into it, into itself, and elsewhere.
constexpr char kFiltered[] = R"(<Doc>
  <P id="kept" Audience="admin">to <XRef .source="gone: P">1</XRef>, <XRef .source="kept: P">2</XRef></P>
  <P id="gone" Audience="user">to <XRef .source="other: P">3</XRef>, <XRef .source="kept: P">4</XRef></P>
  <P id="other" Audience="user"><!Marker .type="Hypertext" .text="newlink there"/>x</P>
  <P id="twice" Audience="user">x</P>
  <P id="twice" Audience="admin">x <XRef .source="twice: P">5</XRef><XRef .source="never: P">6</XRef></P>
  <P><!Marker .type="Hypertext" .text="gotolink there"/><XRef .source="gone: P" .file="<c>z.mif">7</XRef></P>
</Doc>)";

TEST(Dangling, IsWhatPointsToSomethingFilteredAway) {
  Program program;
  const std::string path = program.folder.Write("a.mif", Chapter(kFiltered));
  const std::string out = program.folder.File("out.mif");
  const auto filter = [&](const std::string& mode, std::vector<std::string> more) {
    std::vector<std::string> arguments = {"filter", path, "--scheme", "Audience/Admin",
                                          "--mode", mode, "-o",       out};
    arguments.insert(arguments.end(), more.begin(), more.end());
    return program.Run(arguments);
  };
  for (const char* mode : {"duplicate", "source", "source-nr"}) {
    for (const bool dry_run : {true, false}) {
      std::vector<std::string> more = {"--json"};
      if (dry_run) more.push_back("--dry-run");
      const ProgramResult result = filter(mode, more);
      ASSERT_EQ(result.status, 0) << result.err;
      const json dangling = result.Json()["dangling"];
      ASSERT_EQ(dangling.size(), 2U) << mode << dry_run << dangling;
      EXPECT_EQ(dangling[0]["target"], "gone");
      EXPECT_EQ(dangling[0]["kind"], "cross-reference");
      EXPECT_EQ(dangling[0]["element"], "/Doc[1]/P[1]/XRef[1]");
      EXPECT_EQ(dangling[1]["target"], "there");
      EXPECT_EQ(dangling[1]["kind"], "hypertext link");
    }
  }
  const std::string text = filter("duplicate", {}).out;
  EXPECT_NE(
      text.find("dangling: a.mif /Doc[1]/P[1]/XRef[1]: cross-reference to gone, which was filtered away\n"),
      std::string::npos)
      << text;
}

TEST(Update, SaysWhatStaysAsItIs) {
  Program program;
  program.folder.Write("a.mif", Chapter("<Doc>\n<P>x <XRef .source=\"none: P\">y</XRef></P>\n</Doc>"));
  const std::string book = program.folder.Write("book.mif", MifBook({"a.mif"}));
  const std::string before = program.folder.Read("a.mif");
  EXPECT_EQ(program.Run({"update", book, "--numbering", "--json"}).Json()["complete"], true);
  const std::string log = program.folder.File("log.mif");
  const ProgramResult result =
      program.Run({"update", book, "--xrefs", "--ole-links", "--error-log", log, "--json"});
  EXPECT_EQ(result.status, 1);
  EXPECT_EQ(result.Json()["complete"], false);
  EXPECT_EQ(result.Json()["notices"].size(), 2U);
  EXPECT_NE(program.Dump(log).find("Book error log: " + book), std::string::npos) << program.Dump(log);
  EXPECT_EQ(program.folder.Read("a.mif"), before);
  EXPECT_EQ(program.Run({"update", program.document()}).status, 2);
}

}  // namespace
}  // namespace qelm
