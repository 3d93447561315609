// Calls of other clients: each line of the input is one, over a document, by a plug-in with one scheme of
// each kind. Every call must be answered, and the session must stand afterwards.
#include "edits.h"
#include "host/entries.h"
#include "host/notifications.h"
#include "session.h"

namespace {

using namespace qelm;

constexpr char kSettings[] =
    "<QELM_MainSettings><SchemeCategories><SchemeCategory><CategorySettings><Name>A</Name></CategorySettings>"
    "<FilterSchemes><Scheme><SchemeSettings><Name>F</Name></SchemeSettings><Attribute><Name>Audience</Name>"
    "<Value>admin</Value></Attribute></Scheme></FilterSchemes><ColoringSchemes><Scheme><SchemeSettings>"
    "<Name>C</Name></SchemeSettings><Rule><RuleSettings><Name>Red</Name></RuleSettings><Attribute>"
    "<Name>Audience</Name><Value>admin</Value></Attribute></Rule></Scheme></ColoringSchemes>"
    "<ValidationSchemes><Scheme><SchemeSettings><Name>V</Name></SchemeSettings><Attribute>"
    "<Name>Audience</Name><Value>user</Value></Attribute></Scheme></ValidationSchemes></SchemeCategory>"
    "</SchemeCategories><SchemeCategories_XPath/></QELM_MainSettings>";
constexpr char kDocument[] =
    "<Manual><Para Audience='admin'>one</Para><Para Audience='user'>two<Bold>three</Bold></Para></Manual>";

struct Called : fuzz::Session {
  Called() {
    platform.files["/settings.fm"] = kSettings;
    Open("/doc.xml", kDocument);
    StartOptions options;
    options.main_settings_path = "/settings.fm";
    plugin = std::make_unique<Plugin>(host);
    entries = std::make_unique<Entries>(*plugin, options);
    entries->Initialize(0);
  }
  std::unique_ptr<Plugin> plugin;
  std::unique_ptr<Entries> entries;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  std::string_view text(reinterpret_cast<const char*>(data), size);
  Called session;
  fuzz::Check(session.entries->started(), "the plug-in did not start");
  for (int count = 0; !text.empty() && count < 50; ++count) {
    const std::string_view call = text.substr(0, text.find('\n'));
    text.remove_prefix(std::min(call.size() + 1, text.size()));
    session.entries->Notify(kClientCall, host::kNone, call, 0);
    fuzz::Check(session.clients.TakeReturned().has_value(), "a call was not answered");
  }
  return 0;
}
