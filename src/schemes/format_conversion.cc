#include "schemes/format_conversion.h"

#include <algorithm>
#include <optional>

#include "common/paths.h"
#include "messages/status_shown.h"
#include "schemes/conversion_backup.h"
#include "schemes/element_forms.h"
#include "schemes/main_settings.h"
#include "schemes/settings_tree.h"
#include "schemes/settings_writer.h"

namespace qelm::schemes {
namespace {

constexpr char kTitle[] = "QELM - Scheme Editing";
constexpr char kTemplate[] = "QELM_MainSettings_Template.fm";
constexpr std::string_view kEmptySwitch = "False";
constexpr std::string_view kNoBackground = "None";
constexpr std::uint32_t kImports = host::kImportParagraphFormats | host::kImportCharacterFormats |
                                   host::kImportVariableFormats | host::kImportElementDefinitions |
                                   host::kImportColors | host::kImportConditions;

// What the conversions have in common: progress, backup, the failure in words, saving.
class Conversion {
 public:
  Conversion(host::Host& host, messages::Messenger& messenger, const ConversionOptions& options,
             std::string_view version, host::Id* document)
      : host_(host), messenger_(messenger), options_(options), version_(version), document_(*document) {}

  // Runs the steps in between, which return false when they failed.
  template <typename Steps>
  ConversionResult Run(const Steps& steps) {
    std::optional<messages::StatusShown> status;
    if (options_.show_progress) status.emplace(host_.user);
    Show("Converting File...");
    if (Keep()) {
      Show("Converting main settings file to new format...");
      if (steps() && options_.save) Save();
    }
    return std::move(result_);
  }

  void Show(const char* line1, const char* line2 = "") {
    if (options_.show_progress) messenger_.ShowStatus({kTitle, line1, line2, ""});
  }
  bool Told(const SettingsWriter& writer) {
    if (!writer.Failed()) return true;
    return Fail(messenger_.Format(writer.failure().message, std::string(writer.failure().tag)));
  }
  bool Fail(std::string text) {
    result_.error = std::move(text);
    return false;
  }

 private:
  bool Keep() {
    if (!options_.backup) return true;
    Show("Saving backup of original file...", "Please wait...");
    return BackUp(host_, version_, &document_, &result_.backup) || Fail(messenger_.Get("QELM_MSG_CONVERT_1"));
  }
  bool Save() {
    Show("Saving converted file...");
    const std::string path(host_.documents.Path(document_));
    if (host_.documents.Save(document_, {})) return true;
    return Fail(messenger_.Format("QELM_MSG_CONVERT_9", path, std::string(host_.documents.LastError())));
  }

  host::Host& host_;
  messages::Messenger& messenger_;
  const ConversionOptions& options_;
  std::string_view version_;
  host::Id& document_;
  ConversionResult result_;
};

// The steps from attributes to elements, one kind of element after the other.
class AttributesToElements {
 public:
  AttributesToElements(host::Host& host, host::Id document)
      : host_(host), document_(document), to_(host, document) {}

  bool Run() { return Attributes() && Colors() && Categories() && Schemes() && Rules() && History(); }
  SettingsWriter& writer() { return to_; }

 private:
  bool Attributes();
  bool Colors();
  bool Categories();
  bool Schemes();
  bool Rules();
  bool History();
  bool Settings(host::Id element, std::string_view tag, std::span<const std::string_view> names);
  bool Expressions(host::Id element);
  host::Id First(host::Id element) { return host_.elements.FirstChild(document_, element); }

  host::Host& host_;
  host::Id document_;
  SettingsWriter to_;
};

bool AttributesToElements::Attributes() {
  if (!to_.Define(kAttributeParts) || !to_.Redefine(kAttributeForm)) return false;
  constexpr std::string_view kOld[] = {"Name", "Values"};
  const auto convert = [this, &kOld](host::Id attribute) {
    if (to_.Child(attribute, "Name") != host::kNone) return true;
    return to_.Insert(attribute, host::kNone, "Name", to_.Value(attribute, "Name")) != host::kNone &&
           to_.InsertEach(attribute, "Value", to_.Values(attribute, "Values")) && to_.Clear(attribute, kOld);
  };
  return std::ranges::all_of(to_.All("Attribute"), convert);
}

bool AttributesToElements::Colors() {
  if (!to_.Define(kColorListParts) || !to_.Redefine(kColorListForm)) return false;
  const std::vector<host::Id> lists = to_.All("ColorList");
  if (lists.empty()) return to_.Fail(kCannotFindElement, "ColorList");
  constexpr std::string_view kOld[] = {"Names"};
  return to_.InsertEach(lists.front(), "Color", to_.Values(lists.front(), "Names")) &&
         to_.Clear(lists.front(), kOld);
}

bool AttributesToElements::Categories() {
  if (!to_.Define(kCategoryParts) || !to_.Redefine(kCategoryForm)) return false;
  constexpr std::string_view kOld[] = {"Name"};
  const auto convert = [this, &kOld](host::Id category) {
    if (to_.Child(category, "CategorySettings") != host::kNone) return true;
    const host::Id settings = to_.Insert(category, First(category), "CategorySettings");
    return to_.Insert(settings, host::kNone, "Name", to_.Value(category, "Name")) != host::kNone &&
           to_.Clear(category, kOld);
  };
  return std::ranges::all_of(to_.All("SchemeCategory"), convert);
}

// The settings of a scheme or rule as its first child. An attribute that is empty becomes "False" whatever it
// says, names and comments included: deliberately so, and kept.
bool AttributesToElements::Settings(host::Id element, std::string_view tag,
                                    std::span<const std::string_view> names) {
  if (to_.Child(element, tag) != host::kNone) return true;
  const host::Id settings = to_.Insert(element, First(element), tag);
  for (const std::string_view name : names) {
    const std::string value = to_.Value(element, name);
    to_.Insert(settings, host::kNone, name, value.empty() ? kEmptySwitch : value);
  }
  return to_.Clear(element, names);
}

bool AttributesToElements::Expressions(host::Id element) {
  constexpr std::string_view kOld[] = {"XPathExpressions"};
  const std::vector<std::string> expressions = to_.Values(element, kOld[0]);
  if (!expressions.empty()) {
    to_.InsertEach(to_.Insert(element, host::kNone, "XPathExpressions"), "XPathExpression", expressions);
  }
  return to_.Clear(element, kOld);
}

bool AttributesToElements::Schemes() {
  return to_.Define(kSchemeParts) && to_.Redefine(kSchemeForm) &&
         std::ranges::all_of(to_.All("Scheme"), [this](host::Id scheme) {
           return Settings(scheme, "SchemeSettings", kSchemeSwitches) && Expressions(scheme);
         });
}

bool AttributesToElements::Rules() {
  return to_.Define(kRuleParts) && to_.Redefine(kRuleForm) &&
         std::ranges::all_of(to_.All("Rule"), [this](host::Id rule) {
           return Settings(rule, "RuleSettings", kRuleSwitches) && Expressions(rule);
         });
}

bool AttributesToElements::History() {
  if (!to_.Define(kHistoryParts) || !to_.Redefine(kOldRootForm)) return false;
  constexpr std::string_view kOld[] = {"XPathHistory"};
  std::vector<std::string> expressions;
  const std::vector<host::Id> categories = to_.All("SchemeCategories_XPath");
  if (!categories.empty()) {
    expressions = to_.Values(categories.front(), kOld[0]);
    if (!to_.Clear(categories.front(), kOld)) return false;
  }
  const host::Id root = to_.Root();
  if (root == host::kNone) return to_.Fail(kCannotFindElement, kOldRootTag);
  host::Id history = to_.Child(root, "XPathHistory");
  if (history == host::kNone) history = to_.Insert(root, host::kNone, "XPathHistory");
  return to_.InsertEach(history, "XPathExpression", expressions);
}

// Formats and definitions of the template, under which the highest element gets its name of today.
class TemplateImport {
 public:
  TemplateImport(host::Host& host, messages::Messenger& messenger, host::Id document)
      : host_(host), messenger_(messenger), document_(document) {}

  // The failure in words; empty when there is none.
  std::string Run(const std::string& plugin_folder);

 private:
  std::string Rename();

  host::Host& host_;
  messages::Messenger& messenger_;
  host::Id document_;
};

std::string TemplateImport::Run(const std::string& plugin_folder) {
  const std::string path = common::JoinPath(plugin_folder, kTemplate);
  host::OpenStatus status = host::OpenStatus::kOpened;
  const host::Id source = host_.documents.Open(path, {.visible = false, .suppress_alerts = true}, &status);
  if (source == host::kNone) {
    return messenger_.Format("QELM_MSG_CONVERT_7", path, std::string(host_.documents.LastError()));
  }
  const bool imported = host_.documents.ImportFormats(document_, source, kImports);
  const std::string why(imported ? std::string_view() : host_.documents.LastError());
  if (status != host::OpenStatus::kAlreadyOpen) host_.documents.Close(source, true);
  return imported ? Rename() : messenger_.Format("QELM_MSG_CONVERT_8", path, why);
}

std::string TemplateImport::Rename() {
  SettingsTree tree(host_, document_);
  const host::Id root = tree.Root();
  if (root == host::kNone || tree.Tag(root) != kOldRootTag) {
    return messenger_.Format(kCannotFindElement, std::string(kOldRootTag));
  }
  const host::Id definition = host_.definitions.FindDefinition(document_, kRootTag);
  if (definition == host::kNone) return messenger_.Format(kCannotFindDefinition, std::string(kRootTag));
  if (host_.editing.SetDefinition(document_, root, definition)) return {};
  return messenger_.Format(kCannotChangeElement, std::string(kOldRootTag));
}

bool AddBackgrounds(host::Host& host, host::Id document, SettingsWriter* writer) {
  if (!writer->Define({&kBackgroundForm, 1}) || !writer->Redefine(kRuleSettingsForm)) return false;
  return std::ranges::all_of(writer->All(kRuleSettingsForm.tag), [&](host::Id settings) {
    SettingsTree tree(host, document);
    return tree.FirstChild(settings, kBackgroundForm.tag) != host::kNone ||
           writer->Insert(settings, host::kNone, kBackgroundForm.tag, kNoBackground) != host::kNone;
  });
}

}  // namespace

SettingsFormat FormatOf(host::Host& host, host::Id document) {
  if (IsOldMainSettings(host, document)) return SettingsFormat::kBefore300;
  if (host.definitions.FindDefinition(document, kRuleSettingsForm.tag) == host::kNone) {
    return SettingsFormat::kCurrent;
  }
  SettingsWriter reader(host, document);
  const bool known = host.definitions.FindDefinition(document, kBackgroundForm.tag) != host::kNone;
  const bool has_rules = !reader.All(kRuleSettingsForm.tag).empty();
  const bool has_backgrounds = !reader.All(kBackgroundForm.tag).empty();
  return !known || (has_rules && !has_backgrounds) ? SettingsFormat::k300 : SettingsFormat::kCurrent;
}

ConversionResult ConvertTo300(host::Host& host, messages::Messenger& messenger,
                              const ConversionOptions& options, host::Id* document) {
  Conversion conversion(host, messenger, options, "3.00", document);
  return conversion.Run([&] {
    AttributesToElements steps(host, *document);
    steps.Run();
    if (!conversion.Told(steps.writer())) return false;
    conversion.Show("Importing the new template and EDD...");
    std::string error = TemplateImport(host, messenger, *document).Run(options.plugin_folder);
    return error.empty() || conversion.Fail(std::move(error));
  });
}

ConversionResult ConvertTo304(host::Host& host, messages::Messenger& messenger,
                              const ConversionOptions& options, host::Id* document) {
  Conversion conversion(host, messenger, options, "3.04", document);
  return conversion.Run([&] {
    SettingsWriter writer(host, *document);
    AddBackgrounds(host, *document, &writer);
    return conversion.Told(writer);
  });
}

}  // namespace qelm::schemes
