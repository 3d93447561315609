// qelm filter and qelm restore on books: the example book and a real one, their sources before and after, and
// how runs end.
#include <gtest/gtest.h>

#include <filesystem>
#include <map>

#include "cli/program.h"
#include "support/mif_files.h"

namespace qelm {
namespace {

namespace fs = std::filesystem;
using nlohmann::json;
using testing::Program;
using testing::ProgramResult;
using Names = std::vector<std::string>;

const fs::path kPump = fs::path(QELM_SOURCE_DIR) / "examples/pump";
const fs::path kBill = fs::path(QELM_SOURCE_DIR) / "../shared/mif/samples/bill";

// A folder with everything below it: contents and time stamps.
using Snapshot = std::map<std::string, std::pair<std::string, fs::file_time_type>>;
Snapshot TakeSnapshot(const fs::path& folder) {
  Snapshot snapshot;
  for (const auto& entry : fs::recursive_directory_iterator(folder)) {
    std::ostringstream content;
    if (entry.is_regular_file()) content << std::ifstream(entry.path(), std::ios::binary).rdbuf();
    snapshot[entry.path().lexically_relative(folder)] = {content.str(), fs::last_write_time(entry.path())};
  }
  return snapshot;
}

class Books : public ::testing::Test {
 protected:
  // A copy of a folder as a source of the test's own. Its files are from yesterday, so that writing would
  // show.
  std::string CopyOf(const fs::path& folder) {
    const fs::path source = program.folder.File("source");
    fs::copy(folder, source, fs::copy_options::recursive);
    for (const auto& entry : fs::recursive_directory_iterator(source)) {
      fs::permissions(entry.path(), fs::perms::owner_write, fs::perm_options::add);
      fs::last_write_time(entry.path(), fs::file_time_type::clock::now() - std::chrono::hours(24));
    }
    return source;
  }
  // A book of three documents with a section for admins and one for users.
  std::string SmallBook() {
    Names names;
    for (const char* name : {"a.mif", "b.mif", "c.mif"}) {
      program.folder.Write("source/" + std::string(name), program.folder.Read("doc.mif"));
      names.push_back("<c>" + std::string(name));
    }
    return program.folder.Write("source/book.mif", testing::MifBook(names));
  }
  // The same with the shipped schemes.
  ProgramResult Shipped(Names arguments) {
    arguments.insert(arguments.end(), {"--profile", program.folder.File("profile")});
    return program.RunPlain(std::move(arguments));
  }

  Program program;
};

TEST_F(Books, ExampleIsCopiedFilteredAndItsSourceStays) {
  const std::string source = CopyOf(kPump);
  const Snapshot before = TakeSnapshot(source);
  const std::string out = program.folder.File("out");
  const ProgramResult result = Shipped({"filter", source + "/pump.book.mif", "--scheme", "Audience/Beginner",
                                        "--mode", "duplicate", "--output-folder", out, "--json"});
  ASSERT_EQ(result.status, 0) << result.err;
  EXPECT_EQ(TakeSnapshot(source), before);
  const json object = result.Json();
  EXPECT_EQ(object["output"], out + "/pump.book.mif");
  EXPECT_EQ(object["components"].size(), 5U);
  std::uint64_t deleted = 0;
  for (const json& component : object["components"]) {
    const fs::path path = component["path"].get<std::string>();
    EXPECT_EQ(path.parent_path(), out);
    const ProgramResult single = Shipped({"filter", source + "/" + path.filename().string(), "--scheme",
                                          "Audience/Beginner", "--mode", "duplicate", "--dry-run", "--json"});
    EXPECT_EQ(component["deleted"], single.Json()["deleted"]) << path;
    deleted += component["deleted"].get<std::uint64_t>();
  }
  EXPECT_EQ(object["deleted"], deleted);
  EXPECT_GT(deleted, 0U);
  EXPECT_TRUE(fs::exists(out + "/graphics/pump.png"));
  EXPECT_TRUE(fs::exists(out + "/contact.mif")) << "what the text inset shows";
  EXPECT_FALSE(fs::exists(out + "/operation.xml")) << "nothing in the book refers to it";
}

TEST_F(Books, CopyHasTheSameLinksAsItsSource) {
  const std::string source = CopyOf(kPump);
  const std::string out = program.folder.File("out");
  // Nothing carries the attribute, so that nothing is deleted.
  ASSERT_EQ(
      program
          .Run({"filter", source + "/pump.book.mif", "--scheme", "By/path/No users", "--mode", "duplicate",
                "--output-folder", out, "--set", "FILT_REDIRECT_ALL_XREFS_DURING_BOOK_FILTER=1"})
          .status,
      0);
  const auto links = [&](const std::string& folder) {
    std::string text = program.Run({"info", folder + "/pump.book.mif", "--links"}).out;
    for (std::size_t at = 0; (at = text.find(folder, at)) != std::string::npos;) {
      text.replace(at, folder.size(), "FOLDER");
    }
    return text;
  };
  EXPECT_NE(links(source).find("FOLDER"), std::string::npos);
  EXPECT_EQ(links(out), links(source));
}

TEST_F(Books, OnlyWhatAnEarlierCopyPutThereIsReplaced) {
  const auto copy = [&](const std::string& book, const std::string& option = "--quiet") {
    return program.Run({"filter", book, "--scheme", "By/path/No users", "--mode", "duplicate",
                        "--output-folder", program.folder.File("out"), option});
  };
  const auto expect_refused = [&](const std::string& book, const std::string& said) {
    const Snapshot before = TakeSnapshot(program.folder.File("out"));
    const ProgramResult result = copy(book);
    EXPECT_NE(result.status, 0);
    EXPECT_NE(result.err.find(said), std::string::npos) << result.err;
    EXPECT_EQ(TakeSnapshot(program.folder.File("out")), before);
  };
  const std::string book = SmallBook();
  for (int run = 1; run < 3; ++run) EXPECT_EQ(copy(book).status, 0) << run;

  const std::string notes = program.folder.Write("out/d.mif", "somebody's");
  program.folder.Write("source/d.mif", program.folder.Read("doc.mif"));
  program.folder.Write("source/book.mif", testing::MifBook({"<c>a.mif", "<c>b.mif", "<c>c.mif", "<c>d.mif"}));
  expect_refused(book, notes);
  fs::remove(notes);
  EXPECT_EQ(copy(book).status, 0) << "a component more";
  const std::string left = notes + ": left over from an earlier copy";
  EXPECT_EQ(copy(book).out.find(left), std::string::npos);
  const std::string with_it = program.folder.Read("source/book.mif");
  SmallBook();
  for (int run = 1; run < 3; ++run) EXPECT_NE(copy(book).out.find(left), std::string::npos) << run;
  program.folder.Write("out/d.mif", program.folder.Read("out/d.mif") + "# mine\n");
  EXPECT_EQ(copy(book).out.find(left), std::string::npos);
  program.folder.Write("source/book.mif", with_it);
  fs::remove(notes);

  fs::rename(program.folder.File("source"), program.folder.File("moved"));
  const std::string moved = program.folder.File("moved/book.mif");
  expect_refused(moved, book);
  EXPECT_EQ(copy(moved, "--overwrite").status, 0) << "the same from another place";
  EXPECT_EQ(copy(moved).status, 0);
  SmallBook();
  expect_refused(book, moved);
  EXPECT_EQ(copy(book, "--overwrite").status, 0);
  EXPECT_EQ(copy(book).status, 0) << "it is of this book now";
  // A file that somebody worked on is his; with its content it is the copy's again.
  const std::string edited = program.folder.File("out/a.mif");
  const std::string as_made = program.folder.Read("out/a.mif");
  program.folder.Write("out/a.mif", as_made + "# my work\n");
  expect_refused(book, edited + ": this file is of an earlier copy, but was changed");
  program.folder.Write("out/a.mif", as_made);
  EXPECT_EQ(copy(book).status, 0);

  // Editions that take turns behind one name.
  const fs::path current = program.folder.File("current");
  fs::create_directory_symlink(program.folder.File("source"), current);
  EXPECT_EQ(copy(current / "book.mif").status, 0);
  fs::remove(current);
  fs::remove_all(program.folder.File("moved"));
  fs::copy(program.folder.File("source"), program.folder.File("moved"));
  fs::create_directory_symlink(program.folder.File("moved"), current);
  EXPECT_EQ(copy(current / "book.mif").status, 0);

  // A name alone is nobody's, and neither is what lies elsewhere.
  const std::string record = program.folder.File("out/.qelm-made-book.mif.txt");
  const std::string known = program.folder.Read("out/.qelm-made-book.mif.txt");
  program.folder.Write("out/.qelm-made-book.mif.txt",
                       known.substr(0, known.find("made ")) + "file a.mif\nfile ../source/a.mif\n");
  expect_refused(current / "book.mif", "no earlier copy");
  program.folder.Write("out/.qelm-made-book.mif.txt", known.substr(known.find("made ")));
  expect_refused(book, "no earlier copy");
  fs::remove(record);
  expect_refused(book, "no earlier copy");
  fs::create_directory(record);
  expect_refused(book, "cannot be read");
}

TEST_F(Books, ExampleIsFilteredInPlaceInBothModesAndRestored) {
  const std::string source = CopyOf(kPump);
  const std::string book = source + "/pump.book.mif";
  const Snapshot before = TakeSnapshot(source);
  for (const char* mode : {"source", "source-nr"}) {
    const ProgramResult result =
        Shipped({"filter", book, "--scheme", "Audience/Beginner", "--mode", mode, "--json"});
    ASSERT_EQ(result.status, 0) << result.err;
    EXPECT_GT(result.Json()["hidden"], 0U);
    EXPECT_TRUE(result.Json()["output"].is_null());
  }
  const Snapshot filtered = TakeSnapshot(source);
  EXPECT_EQ(filtered.size(), before.size()) << "no file came or went";
  for (const char* untouched : {"pump.book.mif", "contact.mif", "graphics/pump.png", "operation.xml"}) {
    EXPECT_EQ(filtered.at(untouched), before.at(untouched));
  }
  EXPECT_NE(filtered.at("operation.mif"), before.at("operation.mif"));

  const ProgramResult dry = Shipped({"restore", book, "--dry-run", "--json"});
  EXPECT_EQ(dry.Json()["changed"], true);
  EXPECT_EQ(TakeSnapshot(source), filtered);
  const ProgramResult restored = Shipped({"restore", book, "--json"});
  ASSERT_EQ(restored.status, 0) << restored.err;
  EXPECT_EQ(restored.Json()["components"].size(), 5U);
  EXPECT_EQ(program.Dump(source + "/operation.mif").find("Hidden}"), std::string::npos);
}

TEST_F(Books, RealOneIsFilteredFromPlacesThatNobodyHasAnyMore) {
  if (!fs::exists(kBill)) GTEST_SKIP() << "no sample book here";
  const std::string source = CopyOf(kBill);
  const std::string book = source + "/DigitalEconomyBook.mif";
  const Snapshot before = TakeSnapshot(source);
  const std::string out = program.folder.File("out");
  // Keeps everything: only what a copy must change may differ.
  const ProgramResult copied = program.Run({"filter", book, "--scheme", "By/path/No users", "--mode",
                                            "duplicate", "--output-folder", out, "--json"});
  ASSERT_EQ(copied.status, 0) << copied.err;
  EXPECT_EQ(TakeSnapshot(source), before);
  EXPECT_EQ(copied.Json()["deleted"], 0);
  EXPECT_GE(copied.Json()["notices"].size(), 5U) << "each component is somewhere else";
  for (const char* name : {"Cover.mif", "Clauses.mif", "Schedules.mif"}) {
    EXPECT_TRUE(fs::exists(out + "/" + name)) << name;
  }
  const json info = program.Run({"info", out + "/DigitalEconomyBook.mif", "--json"}).Json();
  for (const json& component : info["components"]) EXPECT_EQ(component["found"], true);
  EXPECT_TRUE(info["notices"].empty()) << "the copy names its files where they are";

  for (const char* mode : {"source", "source-nr"}) {
    const ProgramResult result =
        program.Run({"filter", book, "--scheme", "Audience/Admin", "--mode", mode, "--json"});
    EXPECT_EQ(result.status, 0) << result.err;
  }
  ASSERT_EQ(program.Run({"restore", book}).status, 0);
}

TEST_F(Books, DryRunCountsAndWritesNothing) {
  const std::string source = CopyOf(kPump);
  const Snapshot before = TakeSnapshot(source);
  for (const char* mode : {"source", "duplicate"}) {
    const ProgramResult result = Shipped({"filter", source + "/pump.book.mif", "--scheme",
                                          "Audience/Beginner", "--mode", mode, "--dry-run", "--json"});
    ASSERT_EQ(result.status, 0) << result.err;
    const json object = result.Json();
    EXPECT_GT(object["hidden"].get<int>() + object["deleted"].get<int>(), 0);
    EXPECT_EQ(object["components"][0]["changed"], false);
  }
  EXPECT_EQ(TakeSnapshot(source), before);
}

// It may be there, so that a copy without it would be less than the source shows.
TEST_F(Books, ShownFileThatCannotBeLookedAtEndsTheCopy) {
  const std::string source = CopyOf(kPump);
  const std::string graphic = source + "/graphics/pump.png";
  fs::remove(graphic);
  fs::create_symlink(graphic, graphic);
  const ProgramResult result =
      Shipped({"filter", source + "/pump.book.mif", "--scheme", "Audience/Beginner", "--mode", "duplicate",
               "--output-folder", program.folder.File("out")});
  EXPECT_EQ(result.status, 3) << result.err;
  EXPECT_NE(result.err.find("graphics/pump.png"), std::string::npos) << result.err;
  EXPECT_FALSE(fs::exists(program.folder.File("out/pump.book.mif")));
}

TEST_F(Books, ComponentsThatCannotBeOpenedAreNamedAndTheRestIsDone) {
  SmallBook();
  fs::remove(program.folder.File("source/a.mif"));
  program.folder.Write("source/b.mif", "<MakerFile 10.0K> not MIF");
  for (const char* mode : {"source", "duplicate"}) {
    Names arguments = {
        "filter", program.folder.File("source/book.mif"), "--scheme", "Audience/Admin", "--mode", mode,
        "--json"};
    if (std::string(mode) == "duplicate") {
      arguments.insert(arguments.end(), {"--output-folder", program.folder.File("out")});
    }
    const ProgramResult result = program.Run(arguments);
    EXPECT_EQ(result.status, 1) << result.err;
    const json components = result.Json()["components"];
    EXPECT_NE(components[0]["error"].get<std::string>().find("source/a.mif"), std::string::npos);
    EXPECT_NE(components[1]["error"].get<std::string>().find("binary"), std::string::npos);
    EXPECT_EQ(components[2]["done"], true);
    EXPECT_NE(result.err.find("source/a.mif"), std::string::npos);
  }
  EXPECT_FALSE(fs::exists(program.folder.File("out/b.mif"))) << "it would not be filtered";
  EXPECT_EQ(program.Run({"restore", program.folder.File("source/book.mif")}).status, 1);
}

TEST_F(Books, CancelledRunTellsWhatIsLeft) {
  const std::string book = SmallBook();
  const Snapshot before = TakeSnapshot(program.folder.File("source"));
  bool whole = false;
  bool none = false;
  for (int poll = 1; !(whole && none) || poll < 20; ++poll) {
    ASSERT_LT(poll, 100);
    fs::remove_all(program.folder.File("out"));
    int polls = 0;
    program.esc = [&] { return ++polls == poll; };
    const ProgramResult result =
        program.Run({"filter", book, "--scheme", "Audience/Admin", "--mode", "duplicate", "--output-folder",
                     program.folder.File("out"), "--json"});
    program.esc = {};
    EXPECT_EQ(TakeSnapshot(program.folder.File("source")), before);
    if (result.status == 0) break;
    EXPECT_EQ(result.status, 130) << result.err;
    const bool copied = fs::exists(program.folder.File("out"));
    (copied ? whole : none) = true;
    EXPECT_NE(result.err.find(copied ? "is not complete" : "nothing was written"), std::string::npos)
        << result.err;
    if (copied) {
      EXPECT_TRUE(fs::exists(program.folder.File("out/c.mif")) &&
                  fs::exists(program.folder.File("out/book.mif")));
    }
  }
  EXPECT_TRUE(whole && none);
}

TEST_F(Books, EmptiedComponentsAreListedAndGone) {
  SmallBook();
  program.folder.Write("source/b.mif", testing::Mif("<Doc>\n<P Audience=\"user\">b</P>\n</Doc>"));
  const std::string out = program.folder.File("out");
  const ProgramResult result = program.Run({"filter", program.folder.File("source/book.mif"), "--scheme",
                                            "Audience/Admin", "--mode", "duplicate", "--output-folder", out});
  ASSERT_EQ(result.status, 0) << result.err;
  EXPECT_NE(result.out.find("b.mif: 2 elements, 1 kept, 1 deleted; emptied, and taken out of the book"),
            std::string::npos)
      << result.out;
  EXPECT_NE(result.out.find("b.mif: removed"), std::string::npos);
  EXPECT_FALSE(fs::exists(out + "/b.mif"));
  EXPECT_EQ(program.Run({"info", out + "/book.mif", "--json"}).Json()["components"].size(), 2U);
}

TEST_F(Books, OptionsThatDoNotFitAreRefused) {
  const std::string book = SmallBook();
  const Names rows[] = {
      {"filter", book, "--scheme", "Audience/Admin", "--mode", "duplicate"},
      {"filter", book, "--scheme", "Audience/Admin", "--mode", "source", "-o", "x.mif"},
      {"filter", book, "--scheme", "Audience/Admin", "--mode", "source", "--output-folder", "x"},
      {"filter", program.document(), "--scheme", "Audience/Admin", "--mode", "duplicate", "--output-folder",
       "x"},
      {"restore", book, "-o", "x.mif"}};
  for (const Names& arguments : rows) EXPECT_EQ(program.Run(arguments).status, 2) << arguments.back();
}

}  // namespace
}  // namespace qelm
