// Every operation that a filter run asks of the host is made to fail, call by call.
#include <gtest/gtest.h>

#include <algorithm>
#include <set>

#include "filtering/filter_session.h"
#include "support/failing_host.h"

namespace qelm::filtering {
namespace {

using testing::FailingHost;
using testing::FilterSession;

const char kOutline[] =
    "Doc(P x=('a' Q('b')) Inset(P x=('in')) Table(Title('t') Heading x=(Row(Cell('h')))"
    " Body(Row x=(Cell('1')) Row(Cell(P x=('2'))))) P x=('c'))";

// What changes something: when it fails, the result is not what was asked for, and that must not pass in
// silence. Screen, selection, status and notifications are not among it.
const std::set<std::string> kMustBeTold = {
    "Catalogs::CreateCondition", "Catalogs::SetConditionShown", "Documents::Open",     "Documents::Save",
    "Documents::ActiveDocument", "Editing::DeleteElement",      "Editing::DeleteRows", "Platform::CopyFile",
    "Tables::SetRowConditions",  "Text::WriteProperties",       "Text::FindCondition"};

schemes::Scheme Marked(bool xpath) {
  return xpath ? testing::XPath({"//*[@x]"}, true) : testing::Classic({{"x", {}}});
}

// What a reader of the document sees.
std::string State(FilterSession& session) {
  host::Host& host = session.inner();
  const host::Id document = session.run.result_document;
  const host::Id tag = host.catalogs.FindCondition(document, "Hidden");
  return session.Result() + (host.catalogs.ConditionShown(document, tag) ? " shown" : "") +
         (host.documents.Switch(document, host::DocumentSwitch::kShowAllConditions) ? " all" : "");
}

void FailEach(LaunchMode mode, bool xpath) {
  std::map<std::string, std::int64_t> calls;
  std::string unharmed;
  {
    FilterSession session({kOutline});
    FailingHost host(session.checked().roles());
    EXPECT_EQ(session.FilterThrough(host.roles(), Marked(xpath), testing::InMode(mode)), kDone);
    calls = host.calls();
    unharmed = State(session);
  }
  for (const auto& [operation, count] : calls) {
    // What only reads is called over and over; its first calls stand for the rest.
    const std::int64_t last = kMustBeTold.contains(operation) ? count : std::min<std::int64_t>(count, 4);
    for (std::int64_t n = 1; n <= last; ++n) {
      SCOPED_TRACE(operation + " " + std::to_string(n));
      FilterSession session({kOutline});
      session.user.no = {"QELM_MSG_FILTER_37"};
      FailingHost host(session.checked().roles());
      host.FailAt(operation, n);
      FilterRun wanted = testing::InMode(mode);
      wanted.completion_prompt = false;
      wanted.disable_screen_updates = true;
      const std::string before = testing::MifOf({kOutline});
      const std::int32_t result = session.FilterThrough(host.roles(), Marked(xpath), wanted);
      if (host.failed().empty()) continue;  // a failure before it took another way
      if (kMustBeTold.contains(operation)) {
        EXPECT_TRUE(result != kDone || !session.user.shown.empty() || State(session) == unharmed);
      }
      EXPECT_EQ(result == kDone, session.run.ending == Ending::kCompleted);
      EXPECT_EQ(session.folder.Read("source.mif"), before);
    }
  }
}

TEST(EveryHostOperationFailsOnce, RestoreFirst) { FailEach(LaunchMode::kSourceRestoreFirst, false); }
TEST(EveryHostOperationFailsOnce, NoRestore) { FailEach(LaunchMode::kSourceNoRestore, true); }
TEST(EveryHostOperationFailsOnce, Duplicate) { FailEach(LaunchMode::kDuplicate, true); }

}  // namespace
}  // namespace qelm::filtering
