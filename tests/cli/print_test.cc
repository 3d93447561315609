// qelm convert to pages: what comes out of the whole way, read with the tools that readers of PDF have.
#include <gtest/gtest.h>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "cli/program.h"
#include "embedded/render/design/page_maker.h"
#include "support/mif_files.h"

namespace qelm {
namespace {

using testing::Program;
using testing::ProgramResult;

// What a program prints; nothing where it is not installed.
std::string Output(const std::string& command) {
  std::string text;
  FILE* pipe = popen((command + " 2>&1").c_str(), "r");
  if (pipe == nullptr) return text;
  std::array<char, 4096> buffer;
  for (std::size_t size; (size = fread(buffer.data(), 1, buffer.size(), pipe)) > 0;) {
    text.append(buffer.data(), size);
  }
  pclose(pipe);
  return text;
}

bool HasTools() { return std::system("command -v pdftotext qpdf >/dev/null 2>&1") == 0; }

class Pages : public ::testing::Test {
 protected:
  void SetUp() override { setenv("SOURCE_DATE_EPOCH", "1700000000", 1); }
  void TearDown() override { unsetenv("SOURCE_DATE_EPOCH"); }

  std::string Printed(const std::string& source, const std::string& name = "out.pdf") {
    const ProgramResult result = program.Run({"convert", source, program.folder.File(name)});
    EXPECT_EQ(result.status, 0) << result.err;
    said = result.err;
    return program.folder.File(name);
  }

  Program program;
  std::string said;
};

const std::string kPump = QELM_SOURCE_DIR "/examples/pump/";

// The program in a folder where the module of pages is not the one that it was built with.
TEST_F(Pages, AWrongModuleIsNamedAndNothingElseIsTouched) {
  std::ostringstream module;
  module << std::ifstream(QELM_BINARY_DIR "/qelm-pages.so", std::ios::binary).rdbuf();
  std::string of_another_build = module.str();
  const std::string_view stamp = embedded::render::PageMakerStamp();
  const std::size_t at = of_another_build.find(stamp);
  ASSERT_NE(at, std::string::npos);
  of_another_build[at] ^= 1;
  struct Row {
    const char* module;
    std::string content;
    const char* said;
    bool anybody_writes = false;
  };
  const Row rows[] = {{"lib/qelm/qelm-pages.so", "", "is missing"},
                      {"bin/qelm-pages.so", "no module", "cannot be loaded"},
                      {"bin/qelm-pages.so", of_another_build, "of another version"},
                      {"bin/qelm-pages.so", module.str(), "others may write", true}};
  // Beside a folder that is no place for libraries anybody's may lie.
  program.folder.Write("qelm/qelm-pages.so", module.str());
  const std::string qelm = program.folder.Write("bin/qelm", "");
  std::filesystem::copy_file(QELM_BINARY_DIR "/qelm", qelm,
                             std::filesystem::copy_options::overwrite_existing);
  std::filesystem::permissions(qelm, std::filesystem::perms::owner_all);
  const std::string pages = program.folder.Write("pages.pdf", "the pages of before");
  const std::string log = program.folder.File("log");
  for (const Row& row : rows) {
    if (!row.content.empty()) program.folder.Write(row.module, row.content);
    if (row.anybody_writes) {
      std::filesystem::permissions(program.folder.File(row.module), std::filesystem::perms::others_write,
                                   std::filesystem::perm_options::add);
    }
    const std::string command = qelm + " --plugin-dir " QELM_SOURCE_DIR "/assets --profile " +
                                program.folder.File("profile") + " convert " + program.document() + " ";
    const int status = std::system((command + pages + " 2>" + log).c_str());
    EXPECT_EQ(WEXITSTATUS(status), 3);
    const std::string said = program.folder.Read("log");
    EXPECT_NE(said.find(program.folder.File(row.module)), std::string::npos) << said;
    EXPECT_NE(said.find(row.said), std::string::npos) << said;
    EXPECT_EQ(program.folder.Read("pages.pdf"), "the pages of before");
    EXPECT_EQ(std::system((command + program.folder.File("same.mif") + " >" + log).c_str()), 0);
  }
}

TEST_F(Pages, BookIsOnePdfThatToolsRead) {
  if (!HasTools()) GTEST_SKIP() << "pdftotext and qpdf are not installed";
  const std::string pdf = Printed(kPump + "pump.book.mif");
  EXPECT_NE(Output("qpdf --check " + pdf).find("No syntax or stream encoding errors"), std::string::npos);
  const std::string text = Output("pdftotext " + pdf + " -");
  std::size_t at = 0;
  for (const char* part : {"Introduction", "Installation", "Operation", "Starting pressure for common uses",
                           "The recorder keeps seven days.", "Maintenance", "Technical data"}) {
    at = text.find(part, at);
    ASSERT_NE(at, std::string::npos) << part;
  }
  EXPECT_EQ(text.find("service code 4711"), std::string::npos);
  const std::string json = Output("qpdf --json --json-key=outlines " + pdf);
  EXPECT_NE(json.find("Setting the pressure"), std::string::npos) << json.substr(0, 500);
}

// A link that leads nowhere is text; the others lead to a place that is there.
TEST_F(Pages, LinksLeadToWhatIsShown) {
  if (!HasTools()) GTEST_SKIP() << "pdftotext and qpdf are not installed";
  testing::MifFile file;
  file.flows = {{R"(<Doc>
                    <P Id="a">target</P>
                    <P>see <XRef .format="Page" .source="a: P: target" .file="">there</XRef></P>
                    <P>or <XRef .format="Page" .source="b: P: gone" .file="">nowhere</XRef></P>
                    <Table .format="Grid"><TableBody>
                      <Row Id="c" {Secret}><Cell>hidden</Cell></Row><Row><Cell>shown</Cell></Row>
                    </TableBody></Table>
                    <P>nor <XRef .format="Page" .source="c: Row: hidden" .file="">secret</XRef></P>
                    <P><Marker .type="Hypertext" .text="message URL https://example.com/a'b"/>web</P>
                    </Doc>)"}};
  file.hidden = {"Secret"};
  file.definitions = {{"P", {{"Id", "FAttrUniqueId", {}, {}}}}, {"Row", {{"Id", "FAttrUniqueId", {}, {}}}}};
  const std::string pdf = Printed(program.folder.Write("links.mif", testing::Mif(file)));
  EXPECT_NE(Output("qpdf --check " + pdf).find("No syntax or stream encoding errors"), std::string::npos);
  const std::string plain = Output("qpdf --qdf --object-streams=disable " + pdf + " -");
  std::size_t links = 0;
  for (std::size_t at = 0; (at = plain.find("/Subtype /Link", at)) != std::string::npos; ++at) ++links;
  EXPECT_EQ(links, 2U) << program.folder.Read("links.mif");
  EXPECT_NE(plain.find("https://example.com/a'b"), std::string::npos);
}

TEST_F(Pages, OnePageAsPicture) {
  const std::string png = program.folder.File("page.png");
  const std::string source = kPump + "operation.mif";
  EXPECT_EQ(program.Run({"convert", source, png, "--page", "2", "--dpi", "50"}).status, 0);
  EXPECT_EQ(program.folder.Read("page.png").substr(1, 3), "PNG");
  EXPECT_EQ(program.Run({"convert", source, png, "--dpi", "nan"}).status, 2);
  EXPECT_EQ(program.Run({"convert", source, png, "--page", "0"}).status, 2);
  const ProgramResult large = program.Run({"convert", source, png, "--dpi", "1200"});
  EXPECT_EQ(large.status, 3);
  EXPECT_NE(large.err.find("more than 100 million pixels"), std::string::npos) << large.err;
  const ProgramResult beyond = program.Run({"convert", source, png, "--page", "99"});
  EXPECT_EQ(beyond.status, 3);
  EXPECT_NE(beyond.err.find("there is no page 99; the document has 2."), std::string::npos) << beyond.err;
}

TEST_F(Pages, SourceIsNoPlaceForTheOutput) {
  const std::string source =
      program.folder.Read(std::filesystem::path(program.document()).filename().string());
  for (const char* name : {"same.pdf", "same.png"}) {
    const std::string path = program.folder.Write(name, source);
    const std::string link = program.folder.File(std::string("link-") + name);
    std::filesystem::create_symlink(path, link);
    for (const std::string& output : {path, link}) {
      const ProgramResult result = program.Run({"convert", path, output});
      EXPECT_EQ(result.status, 3) << output;
      EXPECT_NE(result.err.find("a document of that name is open."), std::string::npos) << result.err;
      EXPECT_EQ(program.folder.Read(name), source) << output;
    }
  }
}

TEST_F(Pages, ComponentThatIsMissingIsNamedAndPassedOver) {
  const std::string book =
      program.folder.Write("book.mif", testing::MifBook({"<c>doc.mif", "<c>missing.mif"}));
  program.document();
  const ProgramResult result = program.Run({"--quiet", "convert", book, program.folder.File("out.pdf")});
  EXPECT_EQ(result.status, 1) << result.err;
  EXPECT_NE(result.out.find("missing.mif: left out"), std::string::npos) << result.out;
  const std::string none = program.folder.Write("none.mif", testing::MifBook({"<c>missing.mif"}));
  EXPECT_EQ(program.Run({"convert", none, program.folder.File("none.pdf")}).status, 3);
  EXPECT_FALSE(std::filesystem::exists(program.folder.File("none.pdf")));
}

}  // namespace
}  // namespace qelm
