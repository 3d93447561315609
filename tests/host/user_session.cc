#include "host/user_session.h"

#include <algorithm>
#include <fstream>
#include <sstream>

namespace qelm::testing {
namespace {

std::string Scheme(const std::string& name) {
  return "<Scheme><SchemeSettings><Name>" + name + "</Name></SchemeSettings></Scheme>";
}

std::string Category(const std::string& name) {
  return "<SchemeCategory><CategorySettings><Name>" + name + "</Name></CategorySettings><FilterSchemes/>" +
         "<ColoringSchemes>" + Scheme("Draft") + "</ColoringSchemes><ValidationSchemes>" + Scheme("Strict") +
         "</ValidationSchemes></SchemeCategory>";
}

std::string Shipped(const std::string& name) {
  std::ostringstream text;
  text << std::ifstream(std::string(QELM_SOURCE_DIR) + "/assets/" + name).rdbuf();
  return text.str();
}

}  // namespace

std::string MainSettingsXml() {
  return "<QELM_MainSettings><SchemeCategories>" + Category("Review") +
         "</SchemeCategories><SchemeCategories_XPath>" + Category("Quality") +
         "</SchemeCategories_XPath></QELM_MainSettings>";
}

std::string MainSettingsWithoutColors() {
  std::string content = Shipped("QELM_MainSettings_Template.fm");
  constexpr std::string_view kColor = "<ColorTag `BkgdColor'>";
  return content.replace(content.find(kColor), kColor.size(), "<ColorTag `Other'>");
}

UserSession::UserSession() {
  folder.Write("plugin/QELM_Local_Settings.txt", "; local settings\n;MAIN_SETTINGS_PATH=DEFAULT\n;\n");
  for (const std::string name : {"QELM_MainSettings_LocalCopy.fm", "QELM_Plugin_Report_Template.fm"}) {
    folder.Write("plugin/" + name, Shipped(name));
  }
  // All other texts are missing, so that what is shown ends with the message's id.
  folder.Write("plugin/languages/English.po",
               "msgctxt \"General Strings\"\nmsgid \"QELM_MSG_HEADER_1\"\n"
               "msgstr \"QELM:\"\n");
  platform.SetEnvironment("APPDATA", folder.File("profile"));
  options.install = true;
}

bool UserSession::Start() {
  embedded::adapter::EmbeddedHost::Options host_options;
  host_options.plugin_folder = folder.File("plugin");
  plugin.reset();
  host = std::make_unique<embedded::adapter::EmbeddedHost>(host_options, user, browser, clients, platform);
  plugin = std::make_unique<Plugin>(host->roles());
  return plugin->Initialize(options);
}

bool UserSession::Shown(const std::string& id) const {
  return std::find(user.shown.begin(), user.shown.end(), id) != user.shown.end();
}

bool UserSession::Said(const std::string& text) const {
  return std::any_of(user.texts.begin(), user.texts.end(),
                     [&text](const std::string& shown) { return shown.find(text) != std::string::npos; });
}

}  // namespace qelm::testing
