#include <gtest/gtest.h>

#include "filtering/filter_session.h"

namespace qelm::filtering {
namespace {

using testing::Classic;
using testing::FilterSession;
using testing::InMode;
using testing::XPath;

constexpr LaunchMode kSource = LaunchMode::kSourceRestoreFirst;
constexpr LaunchMode kSourceNr = LaunchMode::kSourceNoRestore;
constexpr LaunchMode kCopy = LaunchMode::kDuplicate;

schemes::Scheme Beginners() { return Classic({{"Audience", {"beginner", "all"}}}); }

const char kManual[] = "Doc(P Audience='beginner'('one') P Audience='expert'('two' B('three')) P('four'))";

TEST(DocumentFilter, DryRunCountsAsTheRunDoesAndChangesNothing) {
  const char outline[] =
      "Doc(P Audience='expert'('a' B Audience='expert'('b')) Table(Title('t') Heading(Row(Cell('h')))"
      " Body(Row Audience='expert'(Cell('1')) Row Audience='expert'(Cell('2'))) Footing(Row(Cell('f'))))"
      " Table(Body(Row(Cell('1')) Row Audience='expert'(Cell('2'))) Footing(Row(Cell('f'))))"
      " P Audience='expert'('c'))";
  for (const LaunchMode mode : {kSource, kSourceNr, kCopy}) {
    FilterSession session({outline});
    const std::string before = session.Source();
    FilterRun dry = InMode(mode);
    dry.dry_run = true;
    EXPECT_EQ(session.Filter(Beginners(), dry), kDone);
    const FilterRun counted = session.run;
    EXPECT_EQ(session.Source(), before);
    EXPECT_FALSE(session.inner().documents.Switch(session.document, host::DocumentSwitch::kModified));
    EXPECT_TRUE(session.folder.Read("copy.mif").empty());
    EXPECT_EQ(session.Filter(Beginners(), InMode(mode)), kDone);
    EXPECT_EQ(session.run.elements, counted.elements);
    EXPECT_EQ(session.run.kept, counted.kept);
    EXPECT_EQ(session.run.hidden, counted.hidden);
    EXPECT_EQ(session.run.deleted, counted.deleted);
    EXPECT_GE(session.run.hidden + session.run.deleted, 5U);
  }
}

TEST(DocumentFilter, ReadsAttributesAsTheSchemeSays) {
  const std::vector<testing::MifDefinition> definitions = {
      {"P", {{.name = "Audience", .choices = {}, .defaults = {"expert"}}}}};
  const char outline[] = "Doc(P('default') P Audience='all'('all') P Audience='expert beginner'('both'))";
  schemes::Scheme scheme = Beginners();
  {
    FilterSession session({outline}, definitions);
    session.Filter(scheme, InMode(kCopy));
    EXPECT_EQ(session.Result(), "Doc(P('default') P('all'))");
  }
  scheme.include_edd_defaults = true;
  scheme.space_delimited = true;
  FilterSession session({outline}, definitions);
  session.Filter(scheme, InMode(kCopy));
  EXPECT_EQ(session.Result(), "Doc(P('all') P('both'))");
}

TEST(DocumentFilter, XPathKeepsOrRemovesTheUnionOfItsExpressions) {
  const char outline[] = "Doc(S(P k='1'('a') P('b')) S k='1'(Q('c') P('d')))";
  {
    FilterSession session({outline});
    EXPECT_EQ(session.Filter(XPath({"//*[@k='1']", "//S", "/Doc", "//Q"}), InMode(kCopy)), kDone);
    EXPECT_EQ(session.Result(), "Doc(S(P('a')) S(Q('c')))");
  }
  FilterSession session({outline});
  EXPECT_EQ(session.Filter(XPath({"//P[@k='1']", "//Q"}, true), InMode(kSource)), kDone);
  EXPECT_EQ(session.Source(), "Doc(S(P('a'~Hidden) P('b')) S(Q('c'~Hidden) P('d')))");
}

TEST(DocumentFilter, ASelectedAttributeDoesNotKeepItsElement) {
  FilterSession session({"Doc(P k='1'('a') P('b'))"});
  session.Filter(XPath({"/Doc", "//P/@k"}), InMode(kCopy));
  EXPECT_EQ(session.Result(), "Doc");
}

TEST(DocumentFilter, FiltersEveryFlowOrTheMainOne) {
  const std::vector<std::string> flows = {"Doc(P k='1'('a') P('b'))", "Box(P k='1'('c') P('d'))"};
  schemes::Scheme scheme = XPath({"//P[@k='1']"}, true);
  {
    FilterSession session(flows);
    session.Filter(scheme, InMode(kCopy));
    EXPECT_EQ(session.Result(), "Doc(P('b')) / Box(P('c') P('d'))");
  }
  scheme.process_all_flows = true;
  FilterSession session(flows);
  session.Filter(scheme, InMode(kCopy));
  EXPECT_EQ(session.Result(), "Doc(P('b')) / Box(P('d'))");
  EXPECT_EQ(session.run.elements, 6U);
}

TEST(DocumentFilter, TextNodesAreFilteredOnlyWhenConsidered) {
  const char outline[] = "Doc('a' P('b' Q('c') 'd') 'e')";
  const schemes::Scheme scheme = XPath({"/Doc", "//P", "//Q", "//Q/text()"});
  FilterRun run = InMode(kCopy);
  {
    FilterSession session({outline});
    session.Filter(scheme, run);
    EXPECT_EQ(session.Result(), "Doc('a' P('b' Q('c') 'd') 'e')");
  }
  run.consider_text_nodes = true;
  FilterSession session({outline});
  EXPECT_EQ(session.Filter(scheme, run), kDone);
  EXPECT_EQ(session.Result(), "Doc(P(Q('c')))");
  // Text nodes are no elements and are not counted.
  EXPECT_EQ(session.run.elements, 3U);
  EXPECT_EQ(session.run.deleted, 0U);

  FilterSession hiding({outline});
  run.mode = kSource;
  EXPECT_EQ(hiding.Filter(scheme, run), kDone);
  EXPECT_EQ(hiding.Source(), "Doc('a'~Hidden P('b'~Hidden Q('c') 'd'~Hidden) 'e'~Hidden)");
}

TEST(DocumentFilter, GoesOnBehindWhatItDeletes) {
  struct {
    const char* situation;
    const char* before;
    const char* after;
  } const kRows[] = {
      {"last children, one in the other", "Doc(S(S(P('a') P x=('b')) P x=('c')) P x=('d') P('e'))",
       "Doc(S(S(P('a'))) P('e'))"},
      {"first children", "Doc(P x=('a') S(P x=('b') P('c')) P('d'))", "Doc(S(P('c')) P('d'))"},
      {"all children", "Doc(S(P x=('a') P x=('b')) P('c'))", "Doc(S P('c'))"},
      {"some rows",
       "Doc(Table(Heading(Row(Cell('h'))) Body(Row x=(Cell('1')) Row(Cell('2')) Row x=(Cell('3'))))"
       " P('z'))",
       "Doc(Table(Heading(Row(Cell('h'))) Body(Row(Cell('2')))) P('z'))"},
      {"the only row takes the table", "Doc(Table(Title('t') Body(Row x=(Cell('1')))) P x=('y') P('z'))",
       "Doc(P('z'))"},
      {"the rows of a body one after the other",
       "Doc(P('a') Table(Body(Row x=(Cell('1')) Row x=(Cell('2')))"
       " Footing(Row x=(Cell('f')))))",
       "Doc(P('a'))"},
      {"a table that is not the last child",
       "Doc(Table(Body(Row x=(Cell('1')))) Table(Body(Row(Cell('2')))))", "Doc(Table(Body(Row(Cell('2')))))"},
      {"the body", "Doc(Table(Heading(Row(Cell('h'))) Body x=(Row(Cell('1')) Row(Cell('2')))) P('z'))",
       "Doc(P('z'))"},
      {"all rows of a heading one after the other",
       "Doc(Table(Heading(Row x=(Cell('h'))) Body(Row x=(Cell('1')) Row(Cell('2')))) P('z'))",
       "Doc(Table(Body(Row(Cell('2')))) P('z'))"},
      {"all rows of a footing one after the other",
       "Doc(Table(Body(Row(Cell('1'))) Footing(Row x=(Cell('f')))) P x=('y') P('z'))",
       "Doc(Table(Body(Row(Cell('1')))) P('z'))"},
      {"heading and footing",
       "Doc(Table(Heading x=(Row(Cell('h')) Row(Cell('i'))) Body(Row(Cell('1')))"
       " Footing x=(Row(Cell('f')))))",
       "Doc(Table(Body(Row(Cell('1')))))"},
      {"the title", "Doc(Table(Title x=('t') Body(Row(Cell('1')))) P('z'))",
       "Doc(Table(Body(Row(Cell('1')))) P('z'))"},
      {"a table in a cell", "Doc(Table(Body(Row(Cell(Table(Body(Row x=(Cell('in'))))) Cell('2')))))",
       "Doc(Table(Body(Row(Cell Cell('2')))))"},
      {"the whole table", "Doc(P('a') Table x=(Body(Row(Cell('1')))) P('z'))", "Doc(P('a') P('z'))"},
  };
  for (const auto& row : kRows) {
    FilterSession session({row.before});
    EXPECT_EQ(session.Filter(Classic({{"x", {}}}), InMode(kCopy)), kDone) << row.situation;
    EXPECT_EQ(session.Result(), row.after) << row.situation;
    // The same marks, selected, with text nodes considered: another way through the tree, the same result.
    FilterSession selected({row.before});
    FilterRun run = InMode(kCopy);
    run.consider_text_nodes = true;
    EXPECT_EQ(selected.Filter(XPath({"//*[@x]"}, true), run), kDone) << row.situation;
    EXPECT_EQ(selected.Result(), row.after) << row.situation;
    EXPECT_EQ(selected.run.elements, session.run.elements) << row.situation;
  }
}

// A run that tells its steps visits each element. One that does not passes over what it knows to be kept.
TEST(DocumentFilter, WhatIsPassedOverIsKeptAndCountsAsVisited) {
  std::string outline = "Doc(";
  for (int i = 0; i < 24; ++i) {
    outline += "S('s' P('a' B('b') 'c') P P x=('d') S(S(P('e' B)) P x=('f'))) P('g') ";
    outline += "Table(Heading(Row(Cell('h'))) Body(Row x=(Cell('1')) Row(Cell(P('2')) Cell))) ";
    if (i % 7 == 0) outline += "Table(Body(Row x=(Cell('3'))) Footing(Row(Cell('i') Cell))) ";
    if (i % 9 == 0) outline += "S x=(P('j') S(P('k'))) ";
  }
  outline += ")";
  const std::vector<std::string> flows = {outline, "Box(P('l') P x=('m') P('n'))"};
  FilterRun dry = InMode(kCopy);
  dry.dry_run = true;
  FilterRun dry_hiding = InMode(kSource);
  dry_hiding.dry_run = true;
  for (const FilterRun& wanted : {InMode(kCopy), InMode(kSource), dry, dry_hiding}) {
    for (schemes::Scheme scheme : {Classic({{"x", {}}}), XPath({"//*[@x]"}, true)}) {
      scheme.process_all_flows = true;
      FilterSession passing(flows);
      FilterSession visiting(flows);
      visiting.logged = true;
      EXPECT_EQ(passing.Filter(scheme, wanted), kDone);
      EXPECT_EQ(visiting.Filter(scheme, wanted), kDone);
      EXPECT_EQ(passing.Result(), visiting.Result());
      EXPECT_EQ(passing.run.elements, visiting.run.elements);
      EXPECT_EQ(passing.run.kept, visiting.run.kept);
      EXPECT_EQ(passing.run.deleted + passing.run.hidden, visiting.run.deleted + visiting.run.hidden);
      EXPECT_EQ(passing.run.would_go, visiting.run.would_go);
      EXPECT_EQ(passing.user.polls, visiting.user.polls);
    }
  }
}

TEST(DocumentFilter, ACellCannotBeDeleted) {
  FilterSession session({"Doc(P x=('a') Table(Body(Row(Cell x=('1')))) P x=('b'))"});
  EXPECT_EQ(session.Filter(Classic({{"x", {}}}), InMode(kCopy)), 0);
  EXPECT_TRUE(session.Shown("QELM_MSG_FILTER_31"));
  EXPECT_EQ(session.run.ending, Ending::kNotDeleted);
  EXPECT_EQ(session.run.cancel_flag, 1U);
  // The copy keeps what was deleted so far.
  EXPECT_EQ(session.Result(), "Doc(Table(Body(Row(Cell('1')))) P('b'))");
}

TEST(DocumentFilter, HidesTheTextOfACellAndARowByItself) {
  FilterSession session({"Doc(Table(Heading x=(Row(Cell('h'))) Body(Row x=(Cell('1')) Row(Cell x=('2')))))"});
  EXPECT_EQ(session.Filter(Classic({{"x", {}}}), InMode(kSource)), kDone);
  EXPECT_EQ(session.Source(),
            "Doc(Table(Heading(Row~Hidden(Cell('h'))) Body(Row~Hidden(Cell('1')) Row(Cell('2'~Hidden)))))");
  session.Restore();
  EXPECT_EQ(session.Source(), "Doc(Table(Heading(Row(Cell('h'))) Body(Row(Cell('1')) Row(Cell('2')))))");
}

const char kTitled[] = "Doc(P x=('a') Table(Title x=('t') Body(Row(Cell('1')))) P x=('b'))";

TEST(TableTitleCannotBeHidden, YesGoesOnWithoutIt) {
  FilterSession session({kTitled});
  EXPECT_EQ(session.Filter(Classic({{"x", {}}}), InMode(kSource)), kDone);
  EXPECT_TRUE(session.Shown("QELM_MSG_FILTER_32"));
  EXPECT_EQ(session.Source(), "Doc(P('a'~Hidden) Table(Title('t') Body(Row(Cell('1')))) P('b'~Hidden))");
  EXPECT_EQ(session.run.left, 1U);
}

TEST(TableTitleCannotBeHidden, NoUndoesTheRunAndShowsTheTable) {
  FilterSession session({kTitled});
  session.user.no = {"QELM_MSG_FILTER_32"};
  EXPECT_EQ(session.Filter(Classic({{"x", {}}}), InMode(kSource)), kCancelled);
  EXPECT_EQ(session.run.ending, Ending::kTitleStays);
  EXPECT_EQ(session.run.cancel_flag, 0U);
  EXPECT_EQ(session.Source(), "Doc(P('a') Table(Title('t') Body(Row(Cell('1')))) P('b'))");
  const host::Id selected = session.inner().text.SelectedElement(session.document);
  EXPECT_EQ(session.inner().elements.Kind(session.document, selected), host::ElementKind::kTable);
}

TEST(TableTitleCannotBeHidden, WithoutPromptsItIsLeft) {
  FilterSession session({kTitled});
  FilterRun run = InMode(kSource);
  run.prompts = false;
  EXPECT_EQ(session.Filter(Classic({{"x", {}}}), run), kDone);
  EXPECT_TRUE(session.user.shown.empty());
  EXPECT_EQ(session.run.left, 1U);
}

std::string ManyParagraphs(int count) {
  std::string outline = "Doc(";
  for (int i = 0; i < count; ++i) outline += "P x=('t') ";
  return outline + ")";
}

TEST(Cancel, IsPolledAtTheElement102AndUndone) {
  FilterSession session({ManyParagraphs(250)});
  const std::string before = session.Source();
  session.user.esc_at_poll = 1;
  EXPECT_EQ(session.Filter(Classic({{"x", {}}}), InMode(kSource)), kCancelled);
  EXPECT_TRUE(session.Shown("QELM_MSG_FILTER_20"));
  EXPECT_TRUE(session.run.cancelled);
  EXPECT_EQ(session.run.elements, 101U);
  EXPECT_EQ(session.run.hidden, 100U);
  EXPECT_EQ(session.Source(), before);
  EXPECT_EQ(session.Shown("QELM_MSG_FILTER_13"), false);
}

// Each paragraph that is kept is met twice, when it is reached and on the way back from its text: 502 visits.
TEST(Cancel, NoGoesOnAndPollsAtEvery102ndVisit) {
  FilterSession session({ManyParagraphs(250)});
  session.user.esc_at_poll = 1;
  session.user.no = {"QELM_MSG_FILTER_20"};
  EXPECT_EQ(session.Filter(Beginners(), InMode(kCopy)), kDone);
  EXPECT_EQ(session.run.kept, 251U);
  EXPECT_EQ(session.user.polls, 4);
}

// On an element and on the way back from one, amid what is only passed over.
TEST(Cancel, StopsAtTheSamePlaceWhateverIsPassedOver) {
  std::string outline = "Doc(";
  for (int i = 0; i < 150; ++i) outline += i % 50 == 7 ? "P x=('t') " : "S(S(P('t') P)) ";
  for (const char* const more : {"", "P ", "P('t') "}) {
    FilterSession passing({outline.substr(0, 4) + more + outline.substr(4) + ")"});
    FilterSession visiting({outline.substr(0, 4) + more + outline.substr(4) + ")"});
    visiting.logged = true;
    for (FilterSession* const session : {&passing, &visiting}) {
      session->user.esc_at_poll = 3;
      EXPECT_EQ(session->Filter(Classic({{"x", {}}}), InMode(kCopy)), kCancelled);
    }
    EXPECT_EQ(passing.run.elements, visiting.run.elements);
    EXPECT_EQ(passing.run.kept, visiting.run.kept);
    EXPECT_EQ(passing.run.deleted, visiting.run.deleted);
  }
}

TEST(Cancel, InACopyKeepsTheSourceAndWhatWasDeleted) {
  FilterSession session({ManyParagraphs(150)});
  session.user.esc_at_poll = 1;
  EXPECT_EQ(session.Filter(Classic({{"x", {}}}), InMode(kCopy)), kCancelled);
  EXPECT_EQ(session.run.deleted, 100U);
  EXPECT_TRUE(session.Shown("QELM_MSG_FILTER_29"));
}

TEST(RootFiltered, IsAskedAndNoChangesNothing) {
  for (const LaunchMode mode : {kSource, kCopy}) {
    FilterSession session({"Doc x=(P('a'))"});
    session.user.no = {"QELM_MSG_FILTER_15"};
    EXPECT_EQ(session.Filter(Classic({{"x", {}}}), InMode(mode)), 0);
    EXPECT_EQ(session.run.ending, Ending::kDeclined);
    EXPECT_EQ(session.Source(), "Doc(P('a'))");
    EXPECT_EQ(session.inner().catalogs.FindCondition(session.document, "Hidden"), host::kNone);
    EXPECT_TRUE(session.folder.Read("copy.mif").empty());
  }
  FilterSession session({"Doc x=(P('a'))"});
  EXPECT_EQ(session.Filter(Classic({{"x", {}}}), InMode(kSource)), kDone);
  EXPECT_EQ(session.Source(), "Doc(P('a'~Hidden))");
  EXPECT_TRUE(session.run.root_filtered);
}

TEST(SchemeRefused, BeforeAnythingIsChanged) {
  struct {
    schemes::Scheme scheme;
    Ending ending;
    const char* message;
  } const kRows[] = {
      {XPath({"//P", "//P["}, true), Ending::kSchemeRefused, "QELM_MSG_FILTER_38"},
      {XPath({}), Ending::kSchemeRefused, "QELM_MSG_FILTER_39"},
      {XPath({"//P"}, true), Ending::kNodeSetCut, "QELM_MSG_FILTER_40"},
  };
  for (const auto& row : kRows) {
    for (const LaunchMode mode : {kSource, kSourceNr, kCopy}) {
      FilterSession session({ManyParagraphs(101)});  // the engine of the tests stops at 100 matches
      const std::string before = session.Source();
      EXPECT_EQ(session.Filter(row.scheme, InMode(mode)), 0);
      EXPECT_EQ(session.run.ending, row.ending);
      EXPECT_EQ(session.run.cancel_flag, 1U);
      EXPECT_TRUE(session.Shown(row.message));
      EXPECT_EQ(session.Source(), before);
      EXPECT_FALSE(session.inner().documents.Switch(session.document, host::DocumentSwitch::kModified));
      EXPECT_TRUE(session.folder.Read("copy.mif").empty());
    }
  }
}

TEST(NoRestoreFilter, AddsToWhatIsHiddenAndHidesAsAsked) {
  for (const HideAfter hide : {HideAfter::kNever, HideAfter::kAlways, HideAfter::kAsk}) {
    FilterSession session({"Doc(P x=('a') P y=('b'))"});
    session.Filter(Classic({{"x", {}}}), InMode(kSourceNr));
    FilterRun run = InMode(kSourceNr);
    run.hide_after_no_restore = hide;
    session.user.no = {"QELM_MSG_FILTER_37"};
    EXPECT_EQ(session.Filter(Classic({{"y", {}}}), run), kDone);
    EXPECT_EQ(session.Source(), "Doc(P('a'~Hidden) P('b'~Hidden))");
    EXPECT_EQ(session.Shown("QELM_MSG_FILTER_37"), hide == HideAfter::kAsk);
    const host::Id tag = session.inner().catalogs.FindCondition(session.document, "Hidden");
    const bool shown = hide != HideAfter::kAlways;
    EXPECT_EQ(session.inner().catalogs.ConditionShown(session.document, tag), shown);
    EXPECT_EQ(session.inner().documents.Switch(session.document, host::DocumentSwitch::kShowAllConditions),
              shown);
  }
}

TEST(RestoreFirstFilter, TwiceIsOnceAndAnotherSchemeStartsAnew) {
  FilterSession session({"Doc(P x=('a') P y=('b'))"});
  session.Filter(Classic({{"x", {}}}), InMode(kSource));
  const std::string once = session.Source();
  session.Filter(Classic({{"x", {}}}), InMode(kSource));
  EXPECT_EQ(session.Source(), once);
  session.Filter(Classic({{"y", {}}}), InMode(kSource));
  EXPECT_EQ(session.Source(), "Doc(P('a') P('b'~Hidden))");
}

TEST(Restore, TakesTheTagOffEverywhere) {
  FilterSession session(
      {"Doc(P x=('a' Q('b')) Table(Body(Row x=(Cell('1')) Row(Cell(P x=('2'))))))", "Box(P x=('c'))"});
  const std::string before = session.Source();
  schemes::Scheme scheme = Classic({{"x", {}}});
  scheme.process_all_flows = true;
  session.Filter(scheme, InMode(kSource));
  EXPECT_NE(session.Source(), before);
  session.user.no = {"QELM_MSG_FILTER_34"};
  EXPECT_EQ(session.Restore(), 0);
  EXPECT_NE(session.Source(), before);
  session.user.no.clear();
  EXPECT_EQ(session.Restore(), kDone);
  EXPECT_EQ(session.Source(), before);
  EXPECT_TRUE(session.inner().documents.Switch(session.document, host::DocumentSwitch::kShowAllConditions));
  EXPECT_EQ(session.Restore(), kDone);
  EXPECT_EQ(session.Source(), before);
}

TEST(DocumentFilter, UsesTheTagThatTheSettingsName) {
  FilterSession session({"Doc(P x=('a'))"});
  FilterRun run = InMode(kSource);
  run.condition_name = "Internal only";
  session.Filter(Classic({{"x", {}}}), run);
  EXPECT_EQ(session.Source(), "Doc(P('a'~Internal only))");
  EXPECT_EQ(session.inner().catalogs.FindCondition(session.document, "Hidden"), host::kNone);
  session.Restore();
  EXPECT_EQ(session.Source(), "Doc(P('a'))");
}

TEST(DocumentFilter, TextInsetsAreFilteredOrLeftLocked) {
  const char outline[] = "Doc(P x=('a') Inset(P x=('in')) P('b'))";
  FilterSession session({outline});
  EXPECT_EQ(session.Filter(Classic({{"x", {}}}), InMode(kSource)), kDone);
  EXPECT_EQ(session.Source(), "Doc(P('a'~Hidden) P('in'~Hidden) P('b'))");
  host::Tables& tables = session.inner().tables;
  EXPECT_TRUE(tables.InsetLocked(session.document, tables.FirstInset(session.document)));
  EXPECT_EQ(session.Restore(), kDone);
  EXPECT_EQ(session.Source(), "Doc(P('a') P('in') P('b'))");
  EXPECT_TRUE(tables.InsetLocked(session.document, tables.FirstInset(session.document)));

  FilterSession locked({outline});
  FilterRun run = InMode(kSource);
  run.filter_text_insets = false;
  EXPECT_EQ(locked.Filter(Classic({{"x", {}}}), run), kDone);
  EXPECT_EQ(locked.Source(), "Doc(P('a'~Hidden) P('in') P('b'))");
  EXPECT_EQ(locked.run.left, 1U);
}

TEST(DocumentFilter, ADocumentWithoutElementsStaysAsItIs) {
  for (const LaunchMode mode : {kSource, kCopy}) {
    FilterSession session({"'only text'"});
    EXPECT_EQ(session.Filter(Beginners(), InMode(mode)), kDone);
    EXPECT_EQ(session.run.elements, 0U);
    EXPECT_FALSE(
        session.inner().documents.Switch(session.run.result_document, host::DocumentSwitch::kModified));
  }
}

TEST(DebugPrompts, ComeAtEachStepUntilANo) {
  FilterSession session({"Doc(P x=('a') P x=('b') P x=('c'))"});
  session.debug_prompts = true;
  host::Host& host = session.inner();
  const host::Id root = host.elements.Root(session.document, host.elements.MainFlow(session.document));
  host.text.SelectElement(session.document, root);
  // The second element is where the user has seen enough.
  int deletions = 0;
  session.user.answer = [&](const std::string& text) {
    return text.find("Deleting: P element.\n\nContinue debugging?") == std::string::npos || ++deletions < 2;
  };
  EXPECT_EQ(session.Filter(Classic({{"x", {}}}), InMode(kSource)), kDone);
  EXPECT_EQ(deletions, 2);
  EXPECT_EQ(session.run.hidden, 3U);
  ASSERT_GE(session.user.texts.size(), 3U);
  EXPECT_NE(session.user.texts[0].find("Creating 'Hidden' condition.\n\nKeep debugging?"), std::string::npos);
  EXPECT_NE(session.user.texts[1].find("Flow name: A.\n\nKeep debugging?"), std::string::npos);
  EXPECT_NE(session.user.texts[2].find("HLE tag: Doc\n\nKeep debugging?"), std::string::npos);
  // Each prompt selected its element; the selection from before is back.
  EXPECT_EQ(host.text.SelectedElement(session.document), root);
}

TEST(DocumentFilter, SaysThatColoringWasNotRemoved) {
  FilterSession session({kManual});
  FilterRun run = InMode(kCopy);
  run.remove_coloring = true;
  EXPECT_EQ(session.Filter(Beginners(), run), kDone);
  EXPECT_TRUE(session.Shown("QELM_MSG_FILTER_43"));
}

TEST(DuplicateFilter, NeverCopiesOverAnOpenDocument) {
  FilterSession session({kManual});
  FilterRun run = InMode(kCopy);
  run.duplicate_path = session.folder.File("./source.mif");
  EXPECT_EQ(session.Filter(Beginners(), run), kCopyFailed);
  EXPECT_TRUE(session.Shown("QELM_MSG_FILTER_18"));
  run.duplicate_path = session.folder.File("no/such/folder/copy.mif");
  EXPECT_EQ(session.Filter(Beginners(), run), kCopyFailed);
  EXPECT_EQ(session.Source(), "Doc(P('one') P('two' B('three')) P('four'))");
}

TEST(DuplicateFilter, LeavesTheFileOfAnotherOpenDocument) {
  FilterSession session({kManual});
  FilterRun run = InMode(kCopy);
  run.duplicate_path = session.folder.Write("other.mif", testing::MifOf({"Doc(P('other'))"}));
  host::OpenStatus status = host::OpenStatus::kUnreadable;
  ASSERT_NE(session.inner().documents.Open(run.duplicate_path, {}, &status), host::kNone);
  session.inner().documents.Activate(session.document);
  EXPECT_EQ(session.Filter(Beginners(), run), kCopyFailed);
  EXPECT_EQ(session.folder.Read("other.mif"), testing::MifOf({"Doc(P('other'))"}));
}

TEST(DuplicateFilter, SavesAChangedDocumentFirstOrAsks) {
  for (const bool yes : {true, false}) {
    FilterSession session({kManual});
    host::Host& host = session.inner();
    const host::Id first = host.elements.FirstChild(
        session.document, host.elements.Root(session.document, host.elements.MainFlow(session.document)));
    ASSERT_TRUE(host.editing.DeleteElement(session.document, first));
    if (!yes) session.user.no = {"QELM_MSG_FILTER_16"};
    EXPECT_EQ(session.Filter(Beginners(), InMode(kCopy)), kDone);
    EXPECT_TRUE(session.Shown("QELM_MSG_FILTER_16"));
    EXPECT_EQ(session.Result(), yes ? "Doc(P('four'))" : "Doc(P('one') P('four'))");
  }
}

}  // namespace
}  // namespace qelm::filtering
