// qelm batch: the example book by its editions, several at once, cut short and taken up again, and what ends
// up in the report.
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <chrono>
#include <filesystem>
#include <map>
#include <regex>

#include "cli/program.h"
#include "support/mif_files.h"

namespace qelm {
namespace {

namespace fs = std::filesystem;
using nlohmann::json;
using testing::Program;
using testing::ProgramResult;
using Names = std::vector<std::string>;
using Tree = std::map<std::string, std::string>;

const fs::path kPump = fs::path(QELM_SOURCE_DIR) / "examples/pump";
const Names kEditions = {"Operator P100", "Operator P300", "Service", "Service External", "Deutsch"};

class Batch : public ::testing::Test {
 protected:
  ProgramResult Shipped(Names arguments) {
    arguments.insert(arguments.end(), {"--profile", program.folder.File("profile")});
    return program.RunPlain(std::move(arguments));
  }
  ProgramResult Run(const std::string& out, Names more = {}, const std::string& source = "pump.book.mif") {
    Names arguments = {"batch",       kPump / source,
                       "--category",  "Editions",
                       "--output",    program.folder.File(out) + "/<scheme_name>",
                       "--report",    program.folder.File(out) + "/report.fm",
                       "--variables", kPump / "variables"};
    if (!with_pdf) arguments.emplace_back("--no-pdf");
    arguments.insert(arguments.end(), more.begin(), more.end());
    return Shipped(std::move(arguments));
  }
  Tree Output(const std::string& out) { return testing::BatchOutput(program.folder, out); }

  Program program;
  bool with_pdf = false;
};

// The messages of a scheme's steps, in their order.
Names MessagesOf(const json& scheme) {
  Names messages;
  for (const json& step : scheme["steps"]) {
    if (!step["message"].is_null()) messages.push_back(step["message"].get<std::string>().substr(16));
  }
  return messages;
}

TEST_F(Batch, EveryEditionOfTheExampleIsThereAndOpens) {
  const ProgramResult run = Run("out", {"--json"});
  const json result = run.Json();
  ASSERT_EQ(result["schemes"].size(), kEditions.size()) << run.err;
  EXPECT_EQ(result["result"], 1);
  for (std::size_t i = 0; i < kEditions.size(); ++i) {
    const json& scheme = result["schemes"][i];
    EXPECT_EQ(scheme["number"], i + 1);
    EXPECT_EQ(scheme["name"], kEditions[i]);
    EXPECT_EQ(scheme["result"], 1);
    EXPECT_EQ(scheme["output"], program.folder.File("out/" + kEditions[i] + "/pump.book.mif"));
    for (const json& file : scheme["files"]) EXPECT_TRUE(fs::exists(file.get<std::string>())) << file;
    EXPECT_EQ(Shipped({"info", scheme["output"]}).status, 0);
    const json again = Shipped({"filter", scheme["output"], "--scheme", "Editions/" + kEditions[i], "--mode",
                                "duplicate", "--dry-run", "--json"})
                           .Json();
    EXPECT_EQ(again["deleted"], 0) << "all that fails the scheme is gone";
    EXPECT_GT(again["kept"], 100);
  }
  // The editions of operators have variables, the others have not.
  const Names operators = MessagesOf(result["schemes"][0]);
  EXPECT_EQ(std::count(operators.begin(), operators.end(), "REP_31"), 1);
  const Names service = MessagesOf(result["schemes"][2]);
  EXPECT_EQ(std::count(service.begin(), service.end(), "REP_32"), 1);
  EXPECT_EQ(std::count(service.begin(), service.end(), "REP_65"), 1);
  EXPECT_NE(program.folder.Read("out/Operator P100/introduction.mif").find("<VariableDef `Pump P100'>"),
            std::string::npos);
  const std::string other = program.folder.Read("out/Service/introduction.mif");
  EXPECT_EQ(other.find("<VariableDef `Pump P100'>"), std::string::npos);
  EXPECT_NE(other.find("<DElementBordersOn No>"), std::string::npos);
}

TEST_F(Batch, LinksOfTheReportLeadToFiles) {
  Run("out");
  const std::string report = program.folder.Read("out/report.fm");
  const std::regex link(R"(<MText `openlink ([^']*):firstpage'>)");
  std::size_t links = 0;
  for (std::sregex_iterator at(report.begin(), report.end(), link); at != std::sregex_iterator();
       ++at, ++links) {
    EXPECT_TRUE(fs::exists((*at)[1].str())) << (*at)[1];
  }
  // The source, and for each edition its book and its XML; two have a variables file.
  EXPECT_GE(links, 1 + kEditions.size() + 2);
  EXPECT_EQ(Shipped({"info", program.folder.File("out/report.fm")}).status, 0);
}

TEST_F(Batch, SeveralAtOnceIsTheSameAsOneAfterTheOther) {
  setenv("SOURCE_DATE_EPOCH", "1700000000", 1);
  Names pages = {"--json"};
  with_pdf = true;
  const ProgramResult one = Run("one", pages);
  pages.insert(pages.end(), {"--jobs", "2"});
  const ProgramResult two = Run("two", pages);
  unsetenv("SOURCE_DATE_EPOCH");
  EXPECT_EQ(one.status, two.status);
  EXPECT_EQ(one.Json()["notices"].size(), two.Json()["notices"].size());
  const std::string pdf = program.folder.Read("one/Operator P100/pdf/pump.book.pdf");
  EXPECT_NE(pdf.find("<rdf:li>P100-OP</rdf:li>"), std::string::npos) << "what the variables file says of it";
  const Tree expected = Output("one");
  const Tree found = Output("two");
  ASSERT_GT(expected.size(), kEditions.size() * 8);
  for (const auto& [name, content] : expected) {
    const auto same = found.find(name);
    EXPECT_TRUE(same != found.end() && same->second == content) << name;
  }
  EXPECT_EQ(found.size(), expected.size());
}

TEST_F(Batch, PdfOfADocumentShowsItsOutput) {
  setenv("SOURCE_DATE_EPOCH", "1700000000", 1);
  with_pdf = true;
  Run("out", {}, "operation.mif");
  for (const std::string& edition : kEditions) {
    const std::string output = program.folder.File("out/" + edition + "/operation.mif");
    const std::string again = program.folder.File(edition + "/operation.pdf");
    fs::create_directories(program.folder.File(edition));
    EXPECT_EQ(Shipped({"convert", output, again}).status, 0);
    EXPECT_TRUE(program.folder.Read("out/" + edition + "/pdf/operation.pdf") ==
                program.folder.Read(edition + "/operation.pdf"))
        << edition;
  }
  unsetenv("SOURCE_DATE_EPOCH");
}

TEST_F(Batch, PartsMakeTheWhole) {
  Run("one");
  for (const char* part : {"1/2", "2/2"}) Run("parts", {"--shard", part});
  Tree expected = Output("one");
  Tree found = Output("parts");
  expected.erase("report.fm");
  EXPECT_EQ(found.erase("report_part_1_of_2.fm") + found.erase("report_part_2_of_2.fm"), 2U);
  EXPECT_TRUE(found == expected);
  EXPECT_EQ(Run("parts", {"--shard", "3/2"}).status, 2);
}

// The names of the schemes that a run did not do again.
Names Resumed(const ProgramResult& run) {
  Names names;
  const json result = run.Json();
  for (const json& scheme : result["schemes"]) {
    if (scheme["resumed"]) names.push_back(scheme["name"]);
  }
  return names;
}

TEST_F(Batch, RunThatWasCutShortIsTakenUpAgain) {
  const auto run = [this](const std::string& out, Names more) {
    more.insert(more.end(), {"--json", "--set", "BF_POST_PROCESS_DEFAULT_ENABLE_IMPORT_METADATA=0"});
    return Run(out, more, "operation.mif");
  };
  run("whole", {});
  // The second scheme is cancelled: Esc comes when the first one is done.
  int asked = 0;
  program.esc = [&] { return fs::exists(program.folder.File("cut/.qelm-batch")) && asked++ == 0; };
  const ProgramResult cut = run("cut", {});
  EXPECT_EQ(cut.status, 130);
  program.esc = {};
  const json told = cut.Json();
  EXPECT_EQ(told["report"], program.folder.File("cut/report.fm"));
  ASSERT_EQ(told["schemes"].size(), kEditions.size());
  EXPECT_EQ(told["schemes"][0]["result"], 1);
  for (std::size_t i = 2; i < kEditions.size(); ++i) {
    EXPECT_EQ(told["schemes"][i]["result"], 108);
    EXPECT_EQ(MessagesOf(told["schemes"][i]), Names{"REP_29"}) << "it was not begun";
  }
  EXPECT_FALSE(fs::exists(program.folder.File("cut/Service/operation.mif")));
  // A killed run has begun a scheme and has no record of it.
  for (const char* name : {"operation.mif", ".qelm-made-operation.mif.txt"}) {
    program.folder.Write("cut/Service/" + std::string(name),
                         program.folder.Read("whole/Deutsch/" + std::string(name)));
  }
  EXPECT_EQ(Resumed(run("cut", {"--resume"})), Names{"Operator P100"});
  EXPECT_TRUE(Output("cut") == Output("whole"));

  EXPECT_EQ(Resumed(run("cut", {"--resume"})), kEditions);
  // A record of which only a piece was written.
  for (const fs::directory_entry& entry : fs::directory_iterator(program.folder.File("cut/.qelm-batch"))) {
    if (entry.path().filename().string().starts_with("2-")) fs::resize_file(entry, fs::file_size(entry) / 2);
  }
  EXPECT_EQ(Resumed(run("cut", {"--resume"})).size(), kEditions.size() - 1);
  EXPECT_EQ(Resumed(run("cut", {"--resume"})), kEditions);
  const std::string earlier = program.folder.Read("cut/Deutsch/operation.mif");
  program.folder.Write("cut/Deutsch/operation.mif", earlier + "# changed by somebody\n");
  EXPECT_EQ(Resumed(run("cut", {"--resume"})).size(), kEditions.size() - 1);
  EXPECT_TRUE(
      Resumed(run("cut", {"--resume", "--set", "BF_POST_PROCESS_DEFAULT_XML_STRUCT_APP=other"})).empty());
}

TEST_F(Batch, FilesThatAreNotItsOwnStay) {
  const std::string notes = program.folder.Write("out/Service/operation.mif", "notes");
  // But what a killed run has left goes.
  const fs::path left = fs::path(program.folder.Write("out/Deutsch/.qelm-copy-7/0", "half")).parent_path();
  fs::last_write_time(left, fs::file_time_type::clock::now() - std::chrono::hours(1));
  const json schemes = Run("out", {"--json"}, "operation.mif").Json()["schemes"];
  EXPECT_EQ(schemes[2]["result"], 106);
  EXPECT_NE(schemes[2]["steps"].back()["text"].get<std::string>().find(notes), std::string::npos);
  EXPECT_EQ(program.folder.Read("out/Service/operation.mif"), "notes");
  EXPECT_EQ(Run("out", {"--json", "--overwrite"}, "operation.mif").Json()["schemes"][2]["result"], 1);
  EXPECT_EQ(Run("out", {"--json"}, "operation.mif").Json()["schemes"][2]["result"], 1);
  EXPECT_EQ(schemes[3]["result"], 1);
  EXPECT_FALSE(fs::exists(left));

  // What is saved from the output is as careful as the output itself.
  const std::string xml = "out/Service/xml/operation.pdf.xml";
  const std::string saved = program.folder.Read(xml);
  for (const std::string& theirs : {saved + "<!-- mine -->", std::string("theirs")}) {
    program.folder.Write(xml, theirs);
    const ProgramResult kept = Run("out", {}, "operation.mif");
    EXPECT_EQ(kept.status, 1);
    EXPECT_NE(kept.out.find(program.folder.File(xml)), std::string::npos) << kept.out;
    EXPECT_EQ(program.folder.Read(xml), theirs);
  }
  EXPECT_EQ(Run("out", {"--overwrite"}, "operation.mif").status, 0);
  EXPECT_EQ(program.folder.Read(xml), saved);
  // A run that could not save it, as somebody had it open, does not make it its own.
  for (const std::string file : {"out/Service/operation.mif", "out/Service/xml/operation.pdf.xml"}) {
    const std::string made = program.folder.Read(file);
    program.folder.Write(file + ".lck", "");
    EXPECT_EQ(Run("out", {}, "operation.mif").status, 1) << file;
    fs::remove(program.folder.File(file + ".lck"));
    EXPECT_EQ(Run("out", {}, "operation.mif").status, 0) << file << " was left as it was";
    program.folder.Write(file + ".lck", "");
    EXPECT_EQ(Run("out", {}, "operation.mif").status, 1) << file;
    program.folder.Write(file, made + " ");
    fs::remove(program.folder.File(file + ".lck"));
    EXPECT_EQ(Run("out", {}, "operation.mif").status, 1) << file;
    EXPECT_EQ(program.folder.Read(file), made + " ");
    program.folder.Write(file, made);
  }
  // A document there could not be opened.
  program.folder.Write("out/Service/QELM-unfinished.txt", "");
  EXPECT_EQ(Run("out", {"--json"}, "operation.mif").Json()["schemes"][2]["result"], 106);
  fs::remove(program.folder.File("out/Service/QELM-unfinished.txt"));
  // Nobody writes into the pipe, and nobody reads it.
  const std::string record = program.folder.File("out/Service/.qelm-made-operation.mif.txt");
  fs::remove(record);
  ASSERT_EQ(::mkfifo(record.c_str(), 0600), 0);
  EXPECT_EQ(Run("out", {"--json"}, "operation.mif").Json()["schemes"][2]["result"], 106);
  EXPECT_EQ(Run("out", {"--overwrite"}, "operation.mif").status, 0);
  EXPECT_TRUE(fs::is_regular_file(record));

  // What the source shows is not even overwritten when that is allowed.
  fs::create_directory(program.folder.File("source"));
  fs::copy_file(kPump / "introduction.mif", program.folder.File("source/introduction.mif"));
  std::string shows = program.folder.Read("source/introduction.mif");
  shows.replace(shows.find("pump.png"), 8, "pump.xml");
  const std::string source = program.folder.Write("source/introduction.mif", shows);
  program.folder.Write("source/graphics/pump.xml", "shown");
  const std::string around = program.folder.Write(
      "source/around.mif",
      testing::Mif("<Doc>\n<P>a<!Inset .file=\"<c>introduction.mif\">b</!Inset></P>\n</Doc>"));
  for (const std::string& shown : {source, around}) {
    const ProgramResult run =
        Run("out",
            {"--overwrite", "--json", "--set",
             "BF_POST_PROCESS_DEFAULT_XML_DESTINATION_FOLDER=" + program.folder.File("source/graphics"),
             "--set", "BF_POST_PROCESS_XML_FILENAME_PATTERN=pump", "--shard", "1/5"},
            shown);
    const Names said = MessagesOf(run.Json()["schemes"][0]);
    EXPECT_EQ(std::count(said.begin(), said.end(), "REP_84"), 1) << shown;
    EXPECT_EQ(program.folder.Read("source/graphics/pump.xml"), "shown") << shown;
  }

  program.folder.Write("out/report.fm", "notes");
  const ProgramResult refused = Run("out", {}, "operation.mif");
  EXPECT_EQ(refused.status, 5);
  EXPECT_NE(refused.err.find(program.folder.File("out/report.fm")), std::string::npos) << refused.err;
  EXPECT_EQ(program.folder.Read("out/report.fm"), "notes");
}

TEST_F(Batch, FileOfTwoSchemesIsThatOfTheFirst) {
  for (const char* jobs : {"1", "2"}) {
    const std::string xml = program.folder.File(std::string("xml") + jobs);
    // It is known for what it is also when the output folders are others.
    for (const std::string out : {"out", "next"}) {
      const ProgramResult run =
          Run(out + jobs,
              {"--json", "--jobs", jobs, "--set", "BF_POST_PROCESS_DEFAULT_XML_DESTINATION_FOLDER=" + xml},
              "operation.mif");
      EXPECT_EQ(run.status, 1);
      const json schemes = run.Json()["schemes"];
      for (std::size_t i = 0; i < schemes.size(); ++i) {
        const Names messages = MessagesOf(schemes[i]);
        EXPECT_EQ(std::count(messages.begin(), messages.end(), i == 0 ? "REP_51" : "REP_83"), 1) << i;
      }
    }
    const std::string file = std::string("xml") + jobs + "/operation.pdf.xml";
    program.folder.Write(file, program.folder.Read(file) + "<!-- mine -->");
    const std::string mine = program.folder.Read(file);
    Run(std::string("more") + jobs, {"--set", "BF_POST_PROCESS_DEFAULT_XML_DESTINATION_FOLDER=" + xml},
        "operation.mif");
    EXPECT_EQ(program.folder.Read(file), mine);
  }
}

TEST_F(Batch, DialogSetsUpTheSameRun) {
  const std::string out = program.folder.File("out");
  program.folder.Write(
      "answers", "dialog tsp_Dialog_BatchFilter1: category = Editions, output = \"" + out +
                     "/<scheme_num>\", report = \"" + out +
                     "/report.fm\", press Next\n"
                     "once dialog tsp_Dialog_BatchFilter2: press Back\n"
                     "dialog tsp_Dialog_BatchFilter2: import_variables = off, save_pdf = off, xml_folder = "
                     "\"(same)\", xml_name = x, press Filter\n");
  const ProgramResult run = Shipped({"command", "QELM_Cmd_BatchFilter", kPump / "operation.mif", "--set",
                                     "QELM_LICENSE_TYPE=BATCH", "--answers", program.folder.File("answers")});
  EXPECT_EQ(run.status, 0) << run.err;
  for (const char* number : {"1", "2", "3", "4", "5"}) {
    EXPECT_TRUE(fs::exists(out + "/" + number + "/operation.mif")) << number;
    EXPECT_TRUE(fs::exists(out + "/" + number + "/x.xml")) << number;
  }
  EXPECT_TRUE(fs::exists(out + "/report.fm"));

  program.folder.Write("answers",
                       "dialog tsp_Dialog_BatchFilter1: category = Editions, output = x, press Next\n");
  const ProgramResult refused =
      Shipped({"command", "QELM_Cmd_BatchFilter", kPump / "operation.mif", "--set", "QELM_LICENSE_TYPE=BATCH",
               "--answers", program.folder.File("answers"), "--json"});
  EXPECT_NE(refused.err.find("Two schemes would write into the same output folder"), std::string::npos);
}

TEST_F(Batch, OneSchemesFailureDoesNotReachTheNext) {
  const std::string settings =
      program.folder.Write("settings.xml", R"(<QELM_MainSettings><SchemeCategories_XPath>
<SchemeCategory><CategorySettings><Name>C</Name></CategorySettings><FilterSchemes>
<Scheme><SchemeSettings><Name>broken</Name></SchemeSettings>
<XPathExpressions><XPathExpression>//Section[</XPathExpression></XPathExpressions></Scheme>
<Scheme><SchemeSettings><Name>all</Name></SchemeSettings>
<XPathExpressions><XPathExpression>//*</XPathExpression></XPathExpressions></Scheme>
<Scheme><SchemeSettings><Name>a|l</Name></SchemeSettings>
<XPathExpressions><XPathExpression>//*</XPathExpression></XPathExpressions></Scheme>
<Scheme><SchemeSettings><Name>a?l</Name></SchemeSettings>
<XPathExpressions><XPathExpression>//*</XPathExpression></XPathExpressions></Scheme>
</FilterSchemes><ColoringSchemes/><ValidationSchemes/></SchemeCategory></SchemeCategories_XPath></QELM_MainSettings>)");
  program.folder.Write("source/doc.mif", program.folder.Read("doc.mif"));
  const Names arguments = {
      "batch", program.folder.File("source/doc.mif"), "--config", settings, "--no-pdf", "--json",
      "--set", "BF_REPORT_FILENAME_PATTERN=report.fm"};
  const ProgramResult run = Shipped(arguments);
  EXPECT_EQ(run.status, 1) << run.err;
  const json schemes = run.Json()["schemes"];
  ASSERT_EQ(schemes.size(), 4U);
  EXPECT_EQ(schemes[0]["result"], 0);
  EXPECT_EQ(schemes[1]["result"], 1);
  EXPECT_EQ(schemes[2]["result"], 1);
  EXPECT_EQ(schemes[3]["result"], 0) << "its folder is that of the one before";
  EXPECT_EQ(MessagesOf(schemes[0]), (Names{"REP_5", "REP_11"}));
  EXPECT_EQ(MessagesOf(schemes[3]), (Names{"REP_5", "REP_20"}));
  EXPECT_EQ(program.Dump(program.folder.File("source/all/doc.mif")), program.Dump(program.document()));

  Names into_source = arguments;
  into_source.insert(into_source.end(), {"--output", program.folder.File("source")});
  const json refused = Shipped(into_source).Json()["schemes"][0];
  EXPECT_EQ(refused["result"], 107);
  const std::string why = refused["steps"].back()["text"];
  EXPECT_TRUE(why.starts_with("The filter did not come to its end: The output folder is the folder")) << why;

  Names nothing = {"batch", program.document(), "--category", "No such category"};
  EXPECT_EQ(Shipped(nothing).status, 5);
  nothing[1] = program.folder.File("missing.mif");
  EXPECT_EQ(Shipped(nothing).status, 3);
}

}  // namespace
}  // namespace qelm
