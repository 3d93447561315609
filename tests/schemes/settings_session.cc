#include "schemes/settings_session.h"

#include <gtest/gtest.h>

#include <fstream>
#include <iterator>

#include "common/text.h"

namespace qelm::testing {

SettingsSession::SettingsSession()
    : embedded_({}, user, dialogs_, clients_, platform),
      messenger(user, platform),
      engine(embedded_.roles(), messenger) {
  xpath::bw_XPathEngineInit(engine, 0, 1000, 0);
}

host::Id SettingsSession::Open(const std::string& path, std::string content) {
  platform.files[path] = std::move(content);
  host::OpenStatus status = host::OpenStatus::kOpened;
  const host::Id document = host().documents.Open(path, {.visible = false}, &status);
  EXPECT_NE(document, host::kNone) << host().documents.LastError();
  return document;
}

host::Id SettingsSession::OpenSource(const std::string& path) {
  std::ifstream file(std::string(QELM_SOURCE_DIR) + "/" + path, std::ios::binary);
  return Open("/" + path, {std::istreambuf_iterator<char>(file), {}});
}

std::int32_t SettingsSession::Load(host::Id document, schemes::SchemeKind kind, std::string_view category,
                                   std::string_view name, schemes::Scheme* scheme, bool report) {
  scheme->kind = kind;
  return schemes::LoadScheme(engine, messenger, document, category, name, report, scheme);
}

std::string E(std::string_view tag, std::string_view content) {
  const std::string name(tag);
  return "<" + name + ">" + std::string(content) + "</" + name + ">\n";
}

std::string T(std::string_view tag, std::string_view text) {
  return E(tag, common::ReplaceAll(common::ReplaceAll(text, "&", "&amp;"), "<", "&lt;"));
}

std::string Category(std::string_view name, std::string_view filters, std::string_view colorings,
                     std::string_view validations) {
  return E("SchemeCategory", E("CategorySettings", T("Name", name)) + E("FilterSchemes", filters) +
                                 E("ColoringSchemes", colorings) + E("ValidationSchemes", validations));
}

std::string SchemeOf(std::string_view name, std::string_view settings, std::string_view content) {
  return E("Scheme", E("SchemeSettings", T("Name", name).append(settings)).append(content));
}

std::string Attribute(std::string_view name, const std::vector<std::string>& values) {
  std::string content = T("Name", name);
  for (const std::string& value : values) content += T("Value", value);
  return E("Attribute", content);
}

std::string Expressions(const std::vector<std::string>& expressions) {
  std::string content;
  for (const std::string& expression : expressions) content += T("XPathExpression", expression);
  return E("XPathExpressions", content);
}

std::string RuleOf(std::string_view settings, std::string_view content) {
  return E("Rule", E("RuleSettings", settings).append(content));
}

std::string MainSettings(std::string_view classic, std::string_view xpath) {
  return E("QELM_MainSettings", E("SchemeCategories", classic) + E("SchemeCategories_XPath", xpath) +
                                    E("AttributeList", "") + E("ColorList", "") + E("XPathHistory", ""));
}

}  // namespace qelm::testing
