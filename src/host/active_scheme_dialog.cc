#include "host/active_scheme_dialog.h"

#include <algorithm>
#include <array>

#include "host/session_schemes.h"
#include "messages/dialog.h"
#include "messages/drop_down.h"
#include "schemes/scheme_listing.h"
#include "schemes/scheme_loading.h"

namespace qelm {
namespace {

using schemes::kNoName;
using schemes::SchemeKind;

// What differs between the kinds: the titles of the two lists, and where the settings keep the names.
struct Kind {
  std::int32_t code;
  SchemeKind kind;
  std::string_view category_title;
  std::string_view scheme_title;
  std::string config::LocalSettings::*category;
  std::string config::LocalSettings::*name;
};
constexpr std::array<Kind, 3> kKinds = {{
    {kSetColoringScheme, SchemeKind::kColoring, "Set Active Coloring Scheme - Category",
     "Set Active Coloring Scheme", &config::LocalSettings::coloring_category,
     &config::LocalSettings::color_default_coloring_scheme},
    {kSetValidationScheme, SchemeKind::kValidation, "Set Active Validation Scheme - Category",
     "Set Active Validation Scheme", &config::LocalSettings::validation_category,
     &config::LocalSettings::val_default_validation_scheme},
    {kSetFilterScheme, SchemeKind::kFilter, "Set Active Filter Scheme - Category", "Set Active Filter Scheme",
     nullptr, nullptr},
}};

class ActiveSchemeDialog {
 public:
  ActiveSchemeDialog(Plugin& plugin, const Kind& kind)
      : plugin_(plugin), kind_(kind), listing_(schemes::ListSchemes(plugin.engine, plugin.main_settings)) {
    Preset();
  }

  void Run();

 private:
  void Preset();
  std::vector<std::string> Categories() const;
  std::vector<std::string> SchemesOf(std::string_view category) const;
  bool Choose(std::string_view title, const std::vector<std::string>& entries, std::string* choice);
  void Load();

  Plugin& plugin_;
  const Kind& kind_;
  std::vector<schemes::SchemeListing> listing_;
  std::string category_;
  std::string name_;
};

// The lists begin at the scheme that is active, or that the settings name though none could be loaded.
void ActiveSchemeDialog::Preset() {
  const schemes::Scheme& active = plugin_.schemes.Of(kind_.kind);
  const config::LocalSettings& settings = plugin_.settings;
  if (active.Active()) {
    category_ = active.category;
    name_ = active.name;
  } else {
    category_ = kind_.category != nullptr ? settings.*kind_.category : settings.default_scheme_category;
    if (kind_.name != nullptr) name_ = settings.*kind_.name;
  }
}

std::vector<std::string> ActiveSchemeDialog::Categories() const {
  std::vector<std::string> names{std::string(kNoName)};
  for (const schemes::SchemeListing& scheme : listing_) {
    if (scheme.kind == kind_.kind && std::find(names.begin(), names.end(), scheme.category) == names.end()) {
      names.push_back(scheme.category);
    }
  }
  return names;
}

std::vector<std::string> ActiveSchemeDialog::SchemesOf(std::string_view category) const {
  std::vector<std::string> names{std::string(kNoName)};
  for (const schemes::SchemeListing& scheme : listing_) {
    if (scheme.kind == kind_.kind && scheme.category == category) names.push_back(scheme.name);
  }
  return names;
}

bool ActiveSchemeDialog::Choose(std::string_view title, const std::vector<std::string>& entries,
                                std::string* choice) {
  const auto current = std::find(entries.begin(), entries.end(), *choice);
  const auto selected = current == entries.end() ? 0 : static_cast<std::int32_t>(current - entries.begin());
  const std::string translated = plugin_.messenger.Translated(messages::kDialogStrings, title);
  const std::int32_t chosen = messages::ChooseEntry(plugin_.messenger, translated, entries, selected);
  if (chosen < 0) return false;
  *choice = entries[static_cast<std::size_t>(chosen)];
  return true;
}

void ActiveSchemeDialog::Run() {
  const std::vector<std::string> categories = Categories();
  if (categories.size() == 1) {
    plugin_.messenger.Alert("QELM_MSG_DIALOG_2");
    return;
  }
  if (!Choose(kind_.category_title, categories, &category_)) return;
  if (category_ == kNoName) {
    name_ = kNoName;
  } else if (!Choose(kind_.scheme_title, SchemesOf(category_), &name_)) {
    return;
  }
  Load();
  NoteActiveScheme(&plugin_.settings, kind_.kind, category_, name_);
}

// A scheme that is not found any more, as the document was changed meanwhile, leaves none active.
void ActiveSchemeDialog::Load() {
  schemes::Scheme& scheme = plugin_.schemes.Of(kind_.kind);
  scheme = {};
  scheme.kind = kind_.kind;
  if (name_ == kNoName) return;
  const std::int32_t result = schemes::LoadScheme(plugin_.engine, plugin_.messenger, plugin_.main_settings,
                                                  category_, name_, true, &scheme);
  if (result == schemes::kLoaded) {
    schemes::PrintAfterLoading(plugin_.host.user, plugin_.settings, scheme);
    return;
  }
  if (result == schemes::kInvalidNames) {
    constexpr std::string_view kId = "QELM_MSG_DIALOG_3";
    plugin_.messenger.AlertFormatted(kId, plugin_.messenger.Format(kId, category_, name_));
  }
  name_ = kNoName;
}

}  // namespace

void ChooseActiveScheme(Plugin& plugin, std::int32_t kind) {
  const auto found =
      std::find_if(kKinds.begin(), kKinds.end(), [kind](const Kind& known) { return known.code == kind; });
  if (found == kKinds.end()) return;
  if (plugin.main_settings == host::kNone) {
    plugin.messenger.Alert("QELM_MSG_DIALOG_4");
    return;
  }
  ActiveSchemeDialog(plugin, *found).Run();
}

}  // namespace qelm
