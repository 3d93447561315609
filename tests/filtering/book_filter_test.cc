// Filtering and restoring books: what happens to their files, what the user is told, and what is left of a
// run that did not come to its end.
#include "filtering/book_filter.h"

#include "filtering/book_session.h"
#include "filtering/copy_record.h"
#include "support/failing_host.h"

namespace qelm::filtering {
namespace {

using testing::BookSession;
using testing::FailingHost;
using Files = std::map<std::string, std::string>;
using Texts = std::vector<std::string>;

const std::vector<std::pair<std::string, std::string>> kThree = {
    {"a.mif", "Doc(P x=('gone') P('a'))"}, {"b.mif", "Doc x=(P('b'))"}, {"parts/c.mif", "Doc(P('c'))"}};

schemes::Scheme NoX() { return testing::Classic({{"x", {}}}); }

FilterRun InMode(LaunchMode mode) {
  FilterRun wanted = testing::InMode(mode);
  wanted.target = TargetKind::kBook;
  return wanted;
}
FilterRun Copying() { return InMode(LaunchMode::kDuplicate); }

std::int32_t CountOf(const Texts& texts, const std::string& text) {
  return static_cast<std::int32_t>(std::count(texts.begin(), texts.end(), text));
}

// The names of the files that a book consists of.
Texts Entries(BookSession& session, host::Id book) {
  host::Books& books = session.inner().books;
  Texts names;
  for (host::Id at = books.FirstComponent(book); at != host::kNone; at = books.NextComponent(book, at)) {
    names.push_back(std::filesystem::path(books.ComponentPath(book, at)).filename());
  }
  return names;
}

TEST(BookFilter, TellsWhatIsFullyFilteredAndTheTime) {
  struct Row {
    LaunchMode mode;
    Texts last;
  };
  const Row rows[] = {
      {LaunchMode::kDuplicate, {"QELM_MSG_FILTER_26", "QELM_MSG_FILTER_28", "QELM_MSG_FILTER_14"}},
      {LaunchMode::kSourceRestoreFirst, {"QELM_MSG_FILTER_27", "QELM_MSG_FILTER_14"}}};
  for (const Row& row : rows) {
    for (const bool prompt : {true, false}) {
      BookSession session(kThree);
      FilterRun wanted = InMode(row.mode);
      wanted.book_completion_prompt = prompt;
      wanted.delete_empties = prompt;  // what is taken out of the book is told all the same
      EXPECT_EQ(session.Filter(NoX(), wanted), kDone);
      std::erase(session.user.shown, "QELM_MSG_FILTER_56");  // whether the book could be updated
      EXPECT_EQ(session.user.shown, prompt ? row.last : Texts());
    }
  }
}

TEST(BookFilter, ARestoreShowsAllAndTellsTheClient) {
  BookSession session(kThree);
  session.Filter(NoX(), InMode(LaunchMode::kSourceRestoreFirst));
  EXPECT_EQ(session.Outline("src/b.mif"), "Doc(P('b'~Hidden))");
  session.inner().documents.Activate(session.book);
  session.run.notify = true;
  session.run.notification_client = "Me";
  EXPECT_EQ(session.Restore(), kDone);
  EXPECT_EQ(session.Outline("src/b.mif"), "Doc(P('b'))");
  EXPECT_EQ(session.clients.sent,
            (Texts{"Me:QELM_Filter_RestoreBook_Start", "Me:QELM_Filter_RestoreBook_Complete"}));
  session.user.no = {"QELM_MSG_FILTER_33"};
  EXPECT_EQ(session.Restore(), 0);
}

TEST(BookFilter, ADryRunRefusesTheSourceFolderToo) {
  BookSession session(kThree);
  FilterRun wanted = Copying();
  wanted.dry_run = true;
  wanted.output_folder = session.folder.File("src/.");
  EXPECT_EQ(session.Filter(NoX(), wanted), kOutputIsSource);
}

// The nested book is not copied; the copy names it where it is.
TEST(BookFilter, WhatIsNotCopiedIsNamedFromTheNewPlace) {
  BookSession session({{"a.mif", "Doc(P('a'))"}, {"b.book", ""}, {"none.mif", ""}});
  session.folder.Write("src/b.book", "<Book 7.0>\n");
  EXPECT_EQ(session.Filter(NoX(), Copying()), kDone);
  const host::Id copy = session.run.result_book;
  EXPECT_EQ(session.inner().books.ComponentPath(copy, 2), session.folder.File("src/b.book"));
  EXPECT_NE(session.folder.Read("out/book.mif").find("<u\\><c\\>src<c\\>b.book"), std::string::npos);
  EXPECT_EQ(session.inner().books.ComponentPath(copy, 3), session.folder.File("out/none.mif"));
}

// What goes with an emptied component leaves no folder behind that the copy made.
TEST(BookFilter, AnEmptiedFolderGoes) {
  BookSession session({{"a.mif", "Doc(P('a'))"},
                       {"parts/b.mif", "<Doc>\n<P x=\"1\"><Graphic .file=\"<c>img<c>g.png\"/></P>\n</Doc>"}});
  session.folder.Write("src/parts/img/g.png", "x");
  EXPECT_EQ(session.Filter(NoX(), Copying()), kDone);
  EXPECT_EQ(session.run.removed_files.size(), 2U);
  EXPECT_FALSE(std::filesystem::exists(session.folder.File("out/parts")));
  EXPECT_EQ(CountOf(session.user.shown, "QELM_MSG_FILTER_26"), 0);
}

TEST(BookFilter, OutputFolderThatIsTheSourceIsRefusedHoweverItIsSpelled) {
  BookSession session(kThree);
  const std::string source = session.folder.File("src");
  std::filesystem::create_symlink(source, session.folder.File("link"));
  const Files before = session.Files("src");
  for (const std::string& folder : {source, source + "/", source + "/.", source + "/missing/..",
                                    session.folder.File("src/../src"), session.folder.File("link")}) {
    session.user.shown.clear();
    session.inner().documents.Activate(session.book);
    FilterRun wanted = Copying();
    wanted.output_folder = folder;
    EXPECT_EQ(session.Filter(NoX(), wanted), kOutputIsSource) << folder;
    EXPECT_EQ(session.user.shown, Texts{"QELM_MSG_FILTER_22"});
    EXPECT_EQ(session.Files("src"), before);
  }
}

TEST(BookFilter, CopyNeverReplacesWhatItIsMadeFrom) {
  // Up there the sub-folder's file would take the place of a file of the book.
  BookSession session(testing::Components{{"a.mif", "Doc(P('a'))"}, {"src/a.mif", "Doc(P('inner'))"}});
  const Files before = session.Files("src");
  FilterRun wanted = Copying();
  wanted.output_folder = session.folder.path();
  EXPECT_EQ(session.Filter(NoX(), wanted), kCopyFailed);
  EXPECT_EQ(session.user.shown, Texts{"QELM_MSG_FILTER_24"});
  EXPECT_EQ(session.Files("src"), before);
  EXPECT_EQ(session.folder.Names(), Texts{"src"});
}

TEST(BookFilter, EmptiedComponentsGoWithTheirFiles) {
  BookSession session(testing::Components{{"a.mif", "Doc(P x=('gone'))"},
                                          {"b.mif", "Doc(P('b'))"},
                                          {"c.mif", "Doc x=(P('c'))"},
                                          {"d.mif", "Doc('text' P x=('gone'))"},
                                          {"e.mif", "Doc"}});
  FilterRun wanted = Copying();
  wanted.notify = true;
  wanted.notification_client = "Me";
  EXPECT_EQ(session.Filter(NoX(), wanted), kDone);
  EXPECT_EQ(session.clients.sent, (Texts{"Me:QELM_Filter_Start", "Me:QELM_Filter_Complete"}));
  EXPECT_EQ(Entries(session, session.run.result_book), (Texts{"b.mif", "d.mif", "e.mif"}))
      << "what was empty before the filter is the user's";
  EXPECT_EQ(session.run.removed_files,
            (Texts{session.folder.File("out/a.mif"), session.folder.File("out/c.mif")}));
  EXPECT_EQ(session.Files("out").size(), 5U);
  EXPECT_TRUE(session.run.components[0].emptied && session.run.components[0].removed);
}

// Its entries have other numbers than those of its file, from which the next copy is made.
TEST(BookFilter, ResultThatIsStillOpenIsFilteredAgain) {
  BookSession session({{"gone.mif", "Doc(P x=('gone'))"},
                       {"none.mif", ""},
                       {"b.mif", "Doc(P('b') P y=('y'))"},
                       {"twice.mif", "Doc(P x=('gone'))"},
                       {"twice.mif", ""},
                       {"c.mif", "Doc y=(P('c'))"}});
  EXPECT_EQ(session.Filter(NoX(), Copying()), kDone);
  const host::Id first = session.run.result_book;
  EXPECT_EQ(Entries(session, first), (Texts{"none.mif", "b.mif", "c.mif"})) << "what went is named nowhere";
  FilterRun wanted = Copying();
  wanted.output_folder = session.folder.File("second");
  wanted.delete_empties = false;
  ASSERT_EQ(session.Filter(testing::Classic({{"y", {}}}), wanted), kDone) << session.run.why;
  const host::Id second = session.run.result_book;
  EXPECT_EQ(Entries(session, second), (Texts{"none.mif", "b.mif", "c.mif"}));
  EXPECT_EQ(session.Outline("second/b.mif"), "Doc(P('b'))");
  EXPECT_EQ(session.Outline("second/c.mif"), "");
  EXPECT_EQ(session.Outline("out/c.mif"), "Doc(P('c'))") << "it is the source now";
  ASSERT_EQ(session.run.components.size(), 3U);
  EXPECT_EQ(session.run.components[1].path, session.folder.File("second/b.mif"));
  EXPECT_EQ(session.run.components[1].deleted, 1U);
  EXPECT_TRUE(session.run.components[2].root_filtered);
  EXPECT_EQ(session.inner().books.EntryText(second, 3), "<none>");

  // The book that is open at the target has entries that are not in its file any more.
  const Files before = session.Files("out");
  session.inner().documents.Activate(session.book);
  EXPECT_EQ(session.Filter(NoX(), Copying()), kCopyFailed);
  EXPECT_NE(session.run.why.find("FILTER_54"), std::string::npos) << session.run.why;
  EXPECT_EQ(session.Files("out"), before);
  // Which of the file's entries were taken out of the book nobody can tell.
  ASSERT_TRUE(session.inner().books.RemoveComponent(first, 3));
  session.inner().documents.Activate(first);
  wanted.output_folder = session.folder.File("third");
  EXPECT_EQ(session.Filter(NoX(), wanted), kCopyFailed);
  EXPECT_NE(session.run.why.find("FILTER_77"), std::string::npos) << session.run.why;
  EXPECT_TRUE(session.Files("third").empty());
}

std::string CrossReference(const std::string& file) {
  return "<P>see <XRef .format=\"Page\" .source=\"1: P: x\" .file=\"" + file + "\">page 1</XRef></P>\n";
}
std::string Graphic(const std::string& file, const std::string& attribute = "") {
  return "<P" + attribute + "><Graphic .file=\"" + file + "\"/></P>\n";
}

TEST(BookFilter, ReferencesLeadWhereTheyDidFromTheNewPlace) {
  for (const bool redirect : {false, true}) {
    BookSession session(testing::Components{{"a.mif", "<Doc>\n<P>a</P>\n</Doc>"}, {"b.mif", "Doc(P('b'))"}});
    std::string absolute = session.folder.File("src/b.mif");
    for (std::size_t at = 0; (at = absolute.find('/', at)) != std::string::npos;)
      absolute.replace(at, 1, "<c>");
    session.folder.Write(
        "src/a.mif", testing::Mif("<Doc>\n" + CrossReference("<c>b.mif") + CrossReference("<c>other.mif") +
                                  CrossReference("<c>missing.mif") + CrossReference("<r>" + absolute) +
                                  Graphic("<c>img<c>in.png") + Graphic("<u><c>logos<c>up.png") +
                                  Graphic("<c>img<c>gone.png", " x=\"1\"") + "</Doc>"));
    session.folder.Write("src/other.mif", testing::MifOf({"Doc(P('no component'))"}));
    for (const char* name : {"src/img/in.png", "src/img/gone.png", "logos/up.png"}) {
      session.folder.Write(name, name);
    }
    const Files before = session.Files("src");
    FilterRun wanted = Copying();
    wanted.redirect_cross_references = redirect;
    EXPECT_EQ(session.Filter(NoX(), wanted), kDone);
    EXPECT_EQ(session.Files("src"), before);
    const std::string copy = session.folder.Read("out/a.mif");
    for (const char* path : {"`<c\\>b.mif'", "`<u\\><c\\>src<c\\>other.mif'", "`<c\\>missing.mif'",
                             "`<c\\>img<c\\>in.png'", "`<c\\>logos<c\\>up.png'"}) {
      EXPECT_NE(copy.find(path), std::string::npos) << path;
    }
    EXPECT_EQ(copy.find("<r\\>") == std::string::npos, redirect);
    EXPECT_EQ(session.folder.Read("out/img/in.png"), "src/img/in.png");
    EXPECT_EQ(session.folder.Read("out/logos/up.png"), "logos/up.png");
    EXPECT_EQ(session.run.removed_files, Texts{session.folder.File("out/img/gone.png")})
        << "it stood only in what was deleted";
    EXPECT_EQ(session.Files("out").count("other.mif"), 0U);
  }
}

// Somebody adds a reference before the others, at each moment of the run in turn. Where the host does not
// know the state of the file, the references themselves tell.
TEST(BookFilter, SourceThatIsSavedMeanwhileHasNoReferenceChangedInTheWrongPlace) {
  const auto document = [](const std::string& first) {
    return testing::Mif("<Doc>\n" + first + Graphic("<u><c>logos<c>up.png") + CrossReference("<c>b.mif") +
                        "</Doc>");
  };
  for (const int unknown : {0, 2}) {
    std::size_t refused = 0;
    for (int poll = 1; refused < 100; ++poll) {
      SCOPED_TRACE(std::to_string(unknown) + " " + std::to_string(poll));
      BookSession session(testing::Components{{"a.mif", "Doc()"}, {"b.mif", "Doc(P('b'))"}});
      session.folder.Write("logos/up.png", "up");
      session.folder.Write("src/a.mif", document(""));
      session.user.at_poll = [&](int number) {
        if (number == poll) session.folder.Write("src/a.mif", document(CrossReference("<c>missing.mif")));
      };
      FailingHost host(session.checked().roles());
      if (unknown > 0) host.FailAt("Documents::FileStateAsRead", unknown);
      const std::int32_t result = session.FilterThrough(host.roles(), NoX(), Copying());
      if (session.user.polls < poll) break;
      const std::string copy = session.folder.Read("out/a.mif");
      if (result != kDone) {
        EXPECT_NE(session.run.why.find("FILTER_72"), std::string::npos) << session.run.why;
        EXPECT_TRUE(session.Files("out").empty());
        ++refused;
        continue;
      }
      EXPECT_NE(copy.find("`<c\\>logos<c\\>up.png'"), std::string::npos);
      EXPECT_NE(copy.find("`<c\\>b.mif'"), std::string::npos);
    }
    EXPECT_GT(refused, 0U);
  }
}

// What is hidden is written at another place than that at which the open document has it.
TEST(BookFilter, SourceThatWasEditedAndSavedIsCopiedAsItsFileIs) {
  BookSession session(testing::Components{{"a.mif", "Doc()"}, {"b.mif", "Doc(P('b'))"}});
  session.folder.Write("logos/up.png", "up");
  session.folder.Write("logos/down.png", "down");
  session.folder.Write(
      "src/a.mif",
      testing::Mif("<Doc>\n" + CrossReference("<c>b.mif") + Graphic("<u><c>logos<c>down.png", " x=\"1\"") +
                   CrossReference("<c>other.mif") + Graphic("<u><c>logos<c>up.png") + "</Doc>"));
  session.folder.Write("src/other.mif", testing::MifOf({"Doc(P('no component'))"}));
  session.saves = false;
  EXPECT_EQ(session.Filter(NoX(), InMode(LaunchMode::kSourceRestoreFirst)), kDone);
  const host::Id open = session.inner().books.ComponentDocument(session.book, 1);
  ASSERT_TRUE(session.inner().documents.Save(open, {}));
  session.saves = true;
  EXPECT_EQ(session.Filter(testing::Classic({{"y", {}}}), Copying()), kDone) << session.run.why;
  const std::string copy = session.folder.Read("out/a.mif");
  for (const char* path : {"`<c\\>b.mif'", "`<u\\><c\\>src<c\\>other.mif'", "`<c\\>logos<c\\>down.png'",
                           "`<c\\>logos<c\\>up.png'"}) {
    EXPECT_NE(copy.find(path), std::string::npos) << path;
  }
}

// A run in another process fills the folder around this one's.
TEST(BookFilter, CopyForAClientIsMarkedUntilItsBookIsSaved) {
  for (int save = 1;; ++save) {
    SCOPED_TRACE(save);
    BookSession session(kThree);
    embedded::adapter::PosixPlatform other;
    std::filesystem::create_directory(session.folder.File("outer"));
    bool was_marked = false;
    ASSERT_TRUE(other.BeginFilling(session.folder.File("outer"), &was_marked));
    FilterRun wanted = Copying();
    wanted.output_folder = session.folder.File("outer/out");
    session.as_client = true;
    FailingHost failing(session.inner());
    failing.FailAt("Documents::Save", save);
    const std::int32_t result = session.FilterThrough(failing.roles(), NoX(), wanted);
    const bool copied = !session.run.copied.empty();
    EXPECT_EQ(session.Files("outer/out").contains(std::string(host::kUnfinishedName)),
              copied && result != kDone);
    EXPECT_EQ(CountOf(session.user.shown, "QELM_MSG_FILTER_28"), result == kDone ? 1 : 0);
    if (failing.failed().empty()) {
      EXPECT_EQ(result, kDone);
      EXPECT_EQ(session.Outline("outer/out/a.mif"), "Doc(P('a'))");
      EXPECT_GT(save, 3) << "the documents and the book";
      break;
    }
    EXPECT_NE(result, kDone);
  }
}

TEST(BookFilter, UpdateThatFailsWithoutAReasonIsTold) {
  BookSession session(kThree);
  FailingHost failing(session.inner());
  failing.FailAt("Books::Update", 1);
  session.FilterThrough(failing.roles(), NoX(), InMode(LaunchMode::kSourceRestoreFirst));
  EXPECT_FALSE(session.run.not_updated.empty());
}

TEST(BookFilter, GeneratedComponentsStayWithWhatTheyShow) {
  BookSession session(testing::Components{{"a.mif", "Doc(P x=('gone') P('a'))"}});
  session.folder.Write("src/toc.mif",
                       testing::Mif("<Doc>\n<P x=\"1\">a</P>\n" + Graphic("<c>line.png") + "</Doc>"));
  session.folder.Write("src/line.png", "line");
  session.inner().documents.Close(session.book, true);
  host::OpenStatus status = host::OpenStatus::kUnreadable;
  session.book = session.inner().documents.Open(
      session.folder.Write("src/book.mif",
                           "<Book 8.0>\n<BookComponent\n <FileName `<c\\>toc.mif'>\n <DeriveType TOC>\n>\n"
                           "<BookComponent\n <FileName `<c\\>a.mif'>\n>\n"),
      {}, &status);
  EXPECT_EQ(session.Filter(NoX(), Copying()), kDone);
  EXPECT_EQ(session.folder.Read("out/toc.mif"), session.folder.Read("src/toc.mif"));
  EXPECT_EQ(session.folder.Read("out/line.png"), "line");
  EXPECT_EQ(session.Outline("out/a.mif"), "Doc(P('a'))");
  EXPECT_EQ(session.run.deleted, 1U);
}

// Leaves an earlier copy of the book, of which only this much is there.
constexpr std::string_view kOld = "of yesterday";
const std::string kMade = "made " + ContentMark({&kOld, 1}) + " ";
const Files kYesterday = {
    {".qelm-made-book.mif.txt", "source ../src/book.mif\n" + kMade + "a.mif\n" + kMade + "book.mif\n"},
    {"a.mif", std::string(kOld)},
    {"book.mif", std::string(kOld)}};
void CopyOfYesterday(BookSession& session) {
  for (const auto& [name, content] : kYesterday) session.folder.Write("out/" + name, content);
}

TEST(BookFilter, FilesThatWereInTheOutputFolderStayOrAreReplaced) {
  BookSession session(kThree);
  CopyOfYesterday(session);
  session.folder.Write("out/notes.txt", "mine");
  FilterRun wanted = Copying();
  wanted.delete_empties = false;
  EXPECT_EQ(session.Filter(NoX(), wanted), kDone);
  EXPECT_EQ(session.Outline("out/a.mif"), "Doc(P('a'))");
  EXPECT_EQ(session.folder.Read("out/notes.txt"), "mine");
  EXPECT_EQ(session.Files("out").size(), 7U);

  // What the copy took out itself is none of its files any more.
  BookSession emptied(kThree);
  emptied.as_client = true;
  EXPECT_EQ(emptied.Filter(NoX(), Copying()), kDone);
  emptied.folder.Write("out/b.mif", "mine");
  emptied.inner().documents.Close(emptied.run.result_book, true);
  emptied.inner().documents.Activate(emptied.book);
  EXPECT_EQ(emptied.Filter(NoX(), Copying()), kCopyFailed);
  EXPECT_EQ(emptied.folder.Read("out/b.mif"), "mine");

  BookSession other(kThree);
  other.folder.Write("out/a.mif", "of another book");
  EXPECT_EQ(other.Filter(NoX(), wanted), kCopyFailed) << "no earlier copy lies there";
  EXPECT_EQ(other.Files("out"), (Files{{"a.mif", "of another book"}}));
}

// Closes what a run left open of its copy.
void CloseCopy(BookSession& session) {
  host::Documents& documents = session.inner().documents;
  for (const std::string name : {"a.mif", "b.mif", "parts/c.mif", "book.mif"}) {
    const host::Id id = documents.FindOpen(session.folder.File("out/" + name));
    if (id != host::kNone) documents.Close(id, true);
  }
  documents.Activate(session.book);
}

// As a process leaves it that ends when it has placed all files, and does not come to say that they stay.
void LeaveList(BookSession& session, const Texts& placed) {
  embedded::adapter::PosixPlatform platform;
  std::string list;
  for (std::size_t i = 0; i < placed.size(); ++i) {
    const std::string state = platform.FileState(session.folder.File("out/" + placed[i]));
    list += std::to_string(i) + "\t" + state + "\t" + placed[i] + "\n";
  }
  session.folder.Write("out/.qelm-copy-1/placed", list);
  std::filesystem::last_write_time(session.folder.File("out/.qelm-copy-1"),
                                   std::filesystem::file_time_type::clock::now() - std::chrono::hours(1));
}

// Whatever becomes of the run that made a file, what somebody made of the file since is his, and what nobody
// touched is replaced.
TEST(BookFilter, WorkOnAFileOfACopyStays) {
  enum class Way { kComplete, kNotSaved, kCutWhilePlaced };
  const Texts names = {"a.mif", "parts/c.mif", "book.mif", "none"};
  for (const Way way : {Way::kComplete, Way::kNotSaved, Way::kCutWhilePlaced}) {
    for (const std::string& name : names) {
      SCOPED_TRACE(name + " " + std::to_string(static_cast<int>(way)));
      BookSession session(kThree);
      session.as_client = true;
      FailingHost failing(session.inner());
      if (way == Way::kNotSaved) failing.FailAt("Documents::Save", 3);
      const std::int32_t first = session.FilterThrough(failing.roles(), NoX(), Copying());
      EXPECT_EQ(first == kDone, way != Way::kNotSaved);
      CloseCopy(session);
      if (way == Way::kCutWhilePlaced) {
        LeaveList(session, {".qelm-made-book.mif.txt", "a.mif", "parts/c.mif", "book.mif"});
      }
      if (name != "none")
        session.folder.Write("out/" + name, session.folder.Read("out/" + name) + "# mine\n");
      const std::string mine = name == "none" ? "" : session.folder.Read("out/" + name);
      EXPECT_EQ(session.Filter(NoX(), Copying()) == kDone, name == "none") << session.run.why;
      if (name != "none") EXPECT_EQ(session.folder.Read("out/" + name), mine);
    }
  }
}

// At each moment at which the run looks for Esc.
TEST(BookFilter, WorkOnACopyThatIsBeingMadeStays) {
  std::size_t edited = 0;
  for (int poll = 1;; ++poll) {
    SCOPED_TRACE(poll);
    BookSession session(kThree);
    CopyOfYesterday(session);
    std::string mine;
    session.user.at_poll = [&](int number) {
      if (number != poll) return;
      mine = session.folder.Read("out/a.mif") + "# mine\n";
      session.folder.Write("out/a.mif", mine);
    };
    session.as_client = true;
    for (int run = 0; run < 2; ++run) {
      const std::int32_t result = session.Filter(NoX(), Copying());
      if (session.user.polls < poll) break;
      EXPECT_TRUE(run == 0 || result != kDone);
      EXPECT_EQ(session.folder.Read("out/a.mif"), mine);
      CloseCopy(session);
    }
    if (session.user.polls < poll) break;
    ++edited;
  }
  EXPECT_GT(edited, 6U);
}

TEST(BookFilter, FolderThatAnotherRunFillsStaysAsItIs) {
  BookSession session(kThree);
  session.folder.Write("out/.qelm-copy-1/placed", "0 a.mif\n");
  session.folder.Write("out/a.mif", "of the other run");
  // As on a server of files whose clock is behind.
  std::filesystem::last_write_time(session.folder.File("out/.qelm-copy-1"),
                                   std::filesystem::file_time_type::clock::now() - std::chrono::hours(1));
  embedded::adapter::PosixPlatform other;
  bool was_marked = false;
  ASSERT_TRUE(other.BeginFilling(session.folder.File("out"), &was_marked));
  const Files before = session.Files("out");
  EXPECT_EQ(session.FilterThrough(session.inner(), NoX(), Copying()), kCopyFailed);
  EXPECT_NE(session.run.why.find("another run"), std::string::npos) << session.run.why;
  EXPECT_EQ(session.Files("out"), before);

  // Or is about to put one of the files there.
  const std::string target = session.folder.File("second/b.mif");
  ASSERT_TRUE(other.MakeFolder(session.folder.File("second")) && other.HoldFile(target));
  FilterRun wanted = Copying();
  wanted.output_folder = session.folder.File("second");
  session.inner().documents.Activate(session.book);
  EXPECT_EQ(session.FilterThrough(session.inner(), NoX(), wanted), kCopyFailed);
  EXPECT_NE(session.run.why.find("another run"), std::string::npos) << session.run.why;
  other.ReleaseFile(target);
  EXPECT_TRUE(session.Files("second").empty());
}

TEST(BookFilter, FilesFromElsewhereGiveWayToTheBooksOwn) {
  BookSession session(
      testing::Components{{"../other/m.mif", "Doc(P('outer'))"}, {"other/m.mif", "Doc(P('inner'))"}});
  EXPECT_EQ(session.Filter(NoX(), Copying()), kDone);
  EXPECT_EQ(session.Outline("out/other/m.mif"), "Doc(P('inner'))");
  EXPECT_EQ(session.Outline("out/other-2/m.mif"), "Doc(P('outer'))");
}

// Esc at each poll in turn, until a run comes to its end.
void CancelEverywhere(LaunchMode mode, const std::function<void(BookSession&)>& check) {
  for (int poll = 1;; ++poll) {
    SCOPED_TRACE(poll);
    BookSession session(kThree);
    CopyOfYesterday(session);
    const Files before = session.Files("src");
    session.user.esc_at_poll = poll;
    const std::int32_t result = session.Filter(NoX(), InMode(mode));
    if (session.user.polls < poll) {
      EXPECT_EQ(result, kDone);
      EXPECT_GT(poll, 6) << "at each component at least twice";
      return;
    }
    EXPECT_TRUE(session.run.cancelled);
    EXPECT_EQ(session.run.ending, Ending::kByUser);
    EXPECT_EQ(result, session.run.result_book == host::kNone ? 0 : kCancelled);
    EXPECT_TRUE(mode != LaunchMode::kDuplicate || session.Files("src") == before);
    check(session);
  }
}

TEST(BookFilter, CancelledCopyLeavesNothingAndACompleteOneStays) {
  CancelEverywhere(LaunchMode::kDuplicate, [](BookSession& session) {
    const Files out = session.Files("out");
    const bool copied = !session.run.copied.empty();
    // The copy is not filtered to its end, and marked so.
    EXPECT_EQ(out.contains(std::string(host::kUnfinishedName)), copied);
    EXPECT_EQ(out.size(), copied ? 7U : 3U);
    EXPECT_EQ(out.at("a.mif") == "of yesterday", !copied);
    const bool stopped = CountOf(session.user.shown, "QELM_MSG_FILTER_23") != 0;
    const bool early = CountOf(session.user.shown, "QELM_MSG_GEN_13") != 0;
    EXPECT_EQ(stopped || early, !copied);
    EXPECT_EQ(CountOf(session.user.shown, "QELM_MSG_FILTER_29"), early ? 0 : 1);
    EXPECT_EQ(CountOf(session.user.shown, "QELM_MSG_FILTER_25"), early ? 0 : 1);
  });
}

TEST(BookFilter, CancelledInPlaceLeavesWholeFilesOnly) {
  CancelEverywhere(LaunchMode::kSourceRestoreFirst, [](BookSession& session) {
    for (const FilteredComponent& entry : session.run.components) {
      const std::string name = std::filesystem::path(entry.path).filename();
      if (name != "a.mif") continue;
      const bool done = entry.ending == Ending::kCompleted;
      EXPECT_EQ(session.Outline("src/a.mif"),
                done ? "Doc(P('gone'~Hidden) P('a'))" : "Doc(P('gone') P('a'))");
    }
  });
}

TEST(BookFilter, ComponentThatFailsEndsTheRunAndIsUndone) {
  const std::vector<std::pair<std::string, std::string>> components = {
      {"a.mif", "Doc(P x=('gone') P('a'))"},
      {"b.mif", "Doc(P x=('b') Table(Title x=('t') Body(Row(Cell('1')))))"},
      {"c.mif", "Doc(P x=('c'))"}};
  BookSession session(components);
  const Files before = session.Files("src");
  session.user.no = {"QELM_MSG_FILTER_32"};
  EXPECT_EQ(session.Filter(NoX(), InMode(LaunchMode::kSourceRestoreFirst)), kCancelled);
  EXPECT_EQ(session.run.ending, Ending::kTitleStays);
  EXPECT_EQ(session.Outline("src/a.mif"), "Doc(P('gone'~Hidden) P('a'))");
  EXPECT_EQ(session.folder.Read("src/b.mif"), before.at("b.mif"));
  EXPECT_EQ(session.folder.Read("src/c.mif"), before.at("c.mif"));
  EXPECT_EQ(session.run.components[2].ending, Ending::kNone);
  EXPECT_EQ(session.user.shown.back(), "QELM_MSG_FILTER_25");
}

TEST(BookFilter, SchemeThatCannotBeUsedIsSaidOnceAndBeforeAnything) {
  BookSession session(kThree);
  const Files before = session.Files("src");
  EXPECT_EQ(session.Filter(testing::XPath({"//P[@x=="}), Copying()), 0);
  EXPECT_EQ(session.run.ending, Ending::kSchemeRefused);
  EXPECT_EQ(session.user.shown, Texts{"QELM_MSG_FILTER_38"});
  EXPECT_EQ(session.Files("src"), before);
  EXPECT_TRUE(session.Files("out").empty());
}

// A session without a callback keeps the documents open, as a person who works with them expects.
TEST(BookFilter, WithoutACallbackDocumentsStayOpenAndAreNotSaved) {
  BookSession session(kThree);
  session.saves = false;
  const Files before = session.Files("src");
  EXPECT_EQ(session.Filter(NoX(), InMode(LaunchMode::kSourceRestoreFirst)), kDone);
  EXPECT_EQ(session.Files("src"), before);
  const host::Id open = session.inner().books.ComponentDocument(session.book, 1);
  ASSERT_NE(open, host::kNone);
  EXPECT_TRUE(session.inner().documents.Switch(open, host::DocumentSwitch::kModified));
}

// Each operation of the host fails once. The source is never changed by a copying run, and what lies in the
// output folder is the copy as a whole or what was there before.
TEST(BookFilter, EveryHostOperationFailsOnce) {
  std::map<std::string, std::int64_t> calls;
  {
    BookSession session(kThree);
    CopyOfYesterday(session);
    FailingHost host(session.checked().roles());
    EXPECT_EQ(session.FilterThrough(host.roles(), NoX(), Copying()), kDone);
    calls = host.calls();
  }
  for (const auto& [operation, count] : calls) {
    // What only reads is called over and over; its first calls stand for the rest.
    const std::set<std::string> writing = {
        "Platform::CopyFile",   "Platform::MoveFile",      "Platform::MakeFolder",
        "Platform::RemoveFile", "Platform::RemoveFolder",  "Documents::Open",
        "Documents::Save",      "Books::SetComponentPath", "Documents::SetPath"};
    const std::int64_t last = writing.contains(operation) ? count : std::min<std::int64_t>(count, 5);
    for (std::int64_t n = 1; n <= last; ++n) {
      SCOPED_TRACE(operation + " " + std::to_string(n));
      BookSession session(kThree);
      CopyOfYesterday(session);
      const Files before = session.Files("src");
      FailingHost host(session.checked().roles());
      host.FailAt(operation, n);
      const std::int32_t result = session.FilterThrough(host.roles(), NoX(), Copying());
      EXPECT_EQ(session.Files("src"), before);
      const Files out = session.Files("out");
      if (session.run.copied.empty()) {
        EXPECT_EQ(out, kYesterday);
      } else {
        EXPECT_EQ(out.count("book.mif"), 1U);
        EXPECT_EQ(out.count("a.mif"), 1U);
        // A run that tells success left nothing unfiltered, whether it copied a component or passed it over.
        const bool decides = operation.starts_with("Elements::") || operation.starts_with("Definitions::");
        if (result == kDone && !decides && out.at("a.mif") != "of yesterday") {
          EXPECT_EQ(session.Outline("out/a.mif"), "Doc(P('a'))");
        }
      }
      EXPECT_EQ(result == kDone, session.run.ending == Ending::kCompleted);
      EXPECT_TRUE(result == kDone || !session.user.shown.empty());
    }
  }
}

}  // namespace
}  // namespace qelm::filtering
