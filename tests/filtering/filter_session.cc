#include "filtering/filter_session.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "filtering/restore.h"

namespace qelm::testing {

FilterSession::FilterSession(const std::vector<std::string>& outlines,
                             const std::vector<MifDefinition>& definitions)
    : embedded_({}, user, dialogs_, clients, platform_), checking_(embedded_.roles()) {
  const std::string path = folder.Write("source.mif", MifOf(outlines, definitions));
  host::OpenStatus status = host::OpenStatus::kUnreadable;
  document = embedded_.roles().documents.Open(path, {}, &status);
  EXPECT_NE(document, host::kNone) << embedded_.roles().documents.LastError();
}

FilterSession::~FilterSession() { EXPECT_EQ(checking_.violations(), std::vector<std::string>{}); }

std::int32_t FilterSession::FilterThrough(host::Host& roles, const schemes::Scheme& scheme,
                                          const filtering::FilterRun& wanted) {
  const CheckingHost::Entry entry(checking_);
  messages::Messenger messenger(roles.user, roles.platform);
  messenger.SetDebugPrompts(debug_prompts);
  xpath::Engine engine(roles, messenger);
  xpath::bw_XPathEngineInit(engine, 0, 1000, 100);
  run = wanted;
  if (run.duplicate_path.empty()) run.duplicate_path = folder.File("copy.mif");
  filtering::FilterContext context{roles, messenger, engine, scheme, run};
  if (logged) context.log.sink = [](host::Id, host::Id, std::string_view) {};
  return filtering::FilterActiveDocument(context);
}

std::int32_t FilterSession::Filter(const schemes::Scheme& scheme, const filtering::FilterRun& wanted) {
  return FilterThrough(checking_.roles(), scheme, wanted);
}

std::int32_t FilterSession::Restore() {
  messages::Messenger messenger(checking_.roles().user, checking_.roles().platform);
  const CheckingHost::Entry entry(checking_);
  return filtering::RestoreDocument(checking_.roles(), messenger, run, document, true, true);
}

bool FilterSession::Shown(const std::string& id) const {
  return std::find(user.shown.begin(), user.shown.end(), id) != user.shown.end();
}

schemes::Scheme Classic(std::vector<schemes::Condition> rules) {
  schemes::Scheme scheme;
  scheme.kind = schemes::SchemeKind::kFilter;
  scheme.category = "Audience";
  scheme.name = "Beginner";
  scheme.attributes = std::move(rules);
  return scheme;
}

schemes::Scheme XPath(std::vector<std::string> expressions, bool negative) {
  schemes::Scheme scheme = Classic({});
  scheme.is_xpath = true;
  scheme.expressions = std::move(expressions);
  scheme.use_negative_logic = negative;
  return scheme;
}

filtering::FilterRun InMode(filtering::LaunchMode mode) {
  filtering::FilterRun wanted;
  wanted.mode = mode;
  return wanted;
}

}  // namespace qelm::testing
