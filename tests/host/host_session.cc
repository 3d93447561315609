#include "host/host_session.h"

#include <gtest/gtest.h>

#include "schemes/scheme_loading.h"

namespace qelm::testing {
namespace {

constexpr char kCategory[] = "Audience";

std::string SchemeNamed(const std::string& name, const std::string& content) {
  return "<Scheme><SchemeSettings><Name>" + name + "</Name></SchemeSettings>" + content + "</Scheme>";
}

std::string MainSettings() {
  const std::string values = "<Name>Audience</Name><Value>admin</Value><Value>user</Value>";
  const std::string rule =
      "<Rule><RuleSettings><Name>Red</Name><Style>3</Style></RuleSettings><Attribute><Name>Audience</Name>"
      "<Value>admin</Value></Attribute></Rule>";
  const std::string category = std::string("<SchemeCategory><CategorySettings><Name>") + kCategory +
                               "</Name></CategorySettings><FilterSchemes>" +
                               SchemeNamed("Filter",
                                           "<Attribute><Name>Audience</Name><Value>admin</Value>"
                                           "<Value>&lt;no value&gt;</Value></Attribute>") +
                               "</FilterSchemes><ColoringSchemes>" + SchemeNamed("Color", rule) +
                               "</ColoringSchemes><ValidationSchemes>" +
                               SchemeNamed("Check", "<Attribute>" + values + "</Attribute>") +
                               "</ValidationSchemes></SchemeCategory>";
  return "<QELM_MainSettings><SchemeCategories>" + category +
         "</SchemeCategories><SchemeCategories_XPath><SchemeCategory><FilterSchemes/></SchemeCategory>"
         "</SchemeCategories_XPath></QELM_MainSettings>";
}

embedded::adapter::EmbeddedHost::Options HostOptions(const TempFolder& folder, std::int32_t version) {
  folder.Write("QELM.ini", "SETTINGS_LOCATION=INSTALL_FOLDER\n");
  folder.Write("QELM_Local_Settings.txt", "; settings of the test\nNOTEPAD_EXE_PATH=/no/such/editor\n");
  folder.Write("QELM_MainSettings_LocalCopy.fm", MainSettings());
  const std::string assets = QELM_SOURCE_DIR "/assets/";
  for (const char* name : {"QELM_Plugin_Report_Template.fm", "_Report_Template.fm"}) {
    std::filesystem::copy_file(assets + name, folder.File(name));
  }
  embedded::adapter::EmbeddedHost::Options options;
  options.plugin_folder = folder.path();
  options.major_version = version;
  return options;
}

}  // namespace

HostSession::HostSession(std::vector<std::pair<std::string, std::string>> settings, std::int32_t host_version)
    : embedded_(HostOptions(folder, host_version), user, dialogs_, clients, platform_),
      checking_(embedded_.roles()),
      failing_(checking_.roles()) {
  plugin_ = std::make_unique<Plugin>(failing_.roles());
  StartOptions options;
  options.settings = std::move(settings);
  options.install = true;
  entries_ = std::make_unique<Entries>(*plugin_, options);
  {
    const CheckingHost::Entry entry(checking_);
    entries_->Initialize(0);
  }
  embedded_.Attach(entries_.get());
  Shown();
}

HostSession::~HostSession() {
  for (const std::string& violation : checking_.violations()) ADD_FAILURE() << violation;
}

host::Id HostSession::Open(const std::string& path) {
  const CheckingHost::Entry entry(checking_);
  host::OpenStatus status = host::OpenStatus::kOpened;
  return inner().documents.Open(path, {}, &status);
}

host::Id HostSession::OpenMif(const std::string& name, std::string_view notation,
                              std::vector<std::string> hidden) {
  MifFile file;
  file.flows.push_back({std::string(notation)});
  file.hidden = std::move(hidden);
  return Open(folder.Write(name, Mif(file)));
}

void HostSession::Activate(schemes::SchemeKind kind, const std::string& name) {
  schemes::Scheme& scheme = plugin_->schemes.Of(kind);
  scheme.kind = kind;
  const CheckingHost::Entry entry(checking_);
  EXPECT_EQ(schemes::LoadScheme(plugin_->engine, plugin_->messenger, plugin_->main_settings, kCategory, name,
                                true, &scheme),
            schemes::kLoaded)
      << name;
}

void HostSession::ActivateAll() {
  Activate(schemes::SchemeKind::kFilter, "Filter");
  Activate(schemes::SchemeKind::kColoring, "Color");
  Activate(schemes::SchemeKind::kValidation, "Check");
}

std::string HostSession::Command(std::int32_t number) {
  const CheckingHost::Entry entry(checking_);
  entries_->Command(number);
  return Shown();
}

std::string HostSession::Notify(std::int32_t number, host::Id document, std::string_view text,
                                std::int32_t value) {
  const CheckingHost::Entry entry(checking_);
  entries_->Notify(number, document, text, value);
  return Shown();
}

std::string HostSession::Shown() {
  std::string text;
  for (; seen_ < user.shown.size(); ++seen_) text += (text.empty() ? "" : " ") + user.shown[seen_];
  return text;
}

std::string HostSession::Saved(host::Id document) {
  host::SaveOptions options;
  options.path = folder.File("saved.mif");
  EXPECT_TRUE(inner().documents.Save(document, options)) << inner().documents.LastError();
  return folder.Read("saved.mif");
}

}  // namespace qelm::testing
