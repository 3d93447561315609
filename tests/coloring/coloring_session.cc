#include "coloring/coloring_session.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "embedded/model/files.h"
#include "support/golden_text.h"

namespace qelm::testing {

bool CallCounter::Before(const HostCall& call) {
  ++calls[std::string(call.name)];
  return true;
}

std::uint64_t CallCounter::Of(std::string_view name) const {
  const auto found = calls.find(name);
  return found == calls.end() ? 0 : found->second;
}

std::uint64_t CallCounter::Total() const {
  std::uint64_t total = 0;
  for (const auto& [name, count] : calls) total += count;
  return total;
}

ColoringSession::ColoringSession()
    : embedded_({}, user, dialogs_, clients, platform_),
      checking_(embedded_.roles()),
      counted_(checking_.roles(), counter) {}

ColoringSession::~ColoringSession() { EXPECT_EQ(checking_.violations(), std::vector<std::string>{}); }

host::Id ColoringSession::OpenFile(const std::string& path) {
  host::OpenStatus status = host::OpenStatus::kUnreadable;
  const host::Id id = inner().documents.Open(path, {}, &status);
  EXPECT_NE(id, host::kNone) << inner().documents.LastError();
  return id;
}

host::Id ColoringSession::Open(const std::string& name, std::string_view content) {
  return OpenFile(folder.Write(name, content));
}

host::Id ColoringSession::OpenMif(std::string_view notation, std::vector<MifDefinition> definitions) {
  MifFile file;
  file.flows.push_back({std::string(notation)});
  file.definitions = std::move(definitions);
  return Open("doc.mif", Mif(file));
}

std::int32_t ColoringSession::Run(coloring::Command command, const schemes::Scheme& scheme, bool report) {
  const CheckingHost::Entry entry(checking_);
  host::Host& roles = counted_.roles();
  messages::Messenger messenger(roles.user, roles.platform);
  xpath::Engine engine(roles, messenger);
  xpath::bw_XPathEngineInit(engine, 0, 1000, 100000);
  run = wanted;
  coloring::ColoringContext context{roles, messenger, engine, scheme, run};
  return coloring::RunColoring(context, command, report);
}

std::string ColoringSession::Saved(host::Id document) {
  const std::string source(inner().documents.Path(document));
  const std::string path =
      folder.File("saved-" + std::to_string(document) + (source.ends_with(".xml") ? ".xml" : ".mif"));
  host::SaveOptions options;
  options.path = path;
  EXPECT_TRUE(inner().documents.Save(document, options)) << inner().documents.LastError();
  return folder.Read(path.substr(path.rfind('/') + 1));
}

std::string ColoringSession::Golden(host::Id document) {
  std::string error;
  const std::string bytes = Saved(document);
  const auto model = bytes.starts_with("<MIFFile") ? embedded::model::BuildMif(bytes, &error)
                                                   : embedded::model::BuildXml(bytes, &error);
  if (!model) return error;
  return testing::Golden(*model);
}

host::Id ColoringSession::Find(host::Id document, std::string_view tag) {
  host::Elements& elements = inner().elements;
  const host::Id definition = inner().definitions.FindDefinition(document, tag);
  for (host::Id id = 1; id < elements.IdLimit(document); ++id) {
    if (elements.Definition(document, id) == definition) return id;
  }
  return host::kNone;
}

bool ColoringSession::Shown(const std::string& id) const {
  return std::find(user.shown.begin(), user.shown.end(), id) != user.shown.end();
}

schemes::Rule RuleOf(const std::string& attribute, std::vector<std::string> values, const std::string& color,
                     std::int32_t style, const std::string& background) {
  schemes::Rule rule;
  rule.color = color;
  rule.style = style;
  rule.background = background;
  rule.conditions.push_back({attribute, std::move(values)});
  return rule;
}

schemes::Scheme Classic(std::vector<schemes::Rule> rules) {
  schemes::Scheme scheme;
  scheme.category = "Review";
  scheme.name = "Test";
  scheme.rules = std::move(rules);
  return scheme;
}

schemes::Rule Selecting(std::vector<std::string> expressions, const std::string& color, std::int32_t style) {
  return RuleOf("XPathExpressions", std::move(expressions), color, style);
}

schemes::Scheme XPath(std::vector<schemes::Rule> rules) {
  schemes::Scheme scheme = Classic(std::move(rules));
  scheme.is_xpath = true;
  return scheme;
}

}  // namespace qelm::testing
