#include "host/notifications.h"

#include <algorithm>
#include <array>
#include <string>

#include "coloring/validation.h"
#include "host/contexts.h"
#include "host/document_commands.h"
#include "host/plugin.h"
#include "messages/message_box.h"

namespace qelm {
namespace {

constexpr std::array<Notification, 10> kWanted = {
    kElementChanged53, kElementChanged57, kSelectionChanged, kNoAction42, kNoAction43,
    kDocumentOpened,   kElementChanged59, kAttributeChanged, kNoAction40, kClientCall};

// A filter hides by a condition that is not shown. With all conditions shown, nothing is hidden.
bool LooksFiltered(Plugin& plugin, host::Id document) {
  host::Catalogs& catalogs = plugin.host.catalogs;
  const host::Id tag = catalogs.FindCondition(document, plugin.settings.source_file_filter_condition_tag);
  return tag != host::kNone && !catalogs.ConditionShown(document, tag) &&
         !plugin.host.documents.Switch(document, host::DocumentSwitch::kShowAllConditions);
}

void OfferRestore(Plugin& plugin, host::Id document) {
  if (!plugin.settings.prompt_opened_previously_filtered_doc_warning || !LooksFiltered(plugin, document)) {
    return;
  }
  const std::string question = plugin.messenger.Get("QELM_MSG_GEN_26");
  const std::string check_box = plugin.messenger.Get("QELM_MSG_GEN_32");
  bool not_again = false;
  const std::int32_t answer = messages::MessageBox(plugin.messenger,
                                                   {.title = "QELM Alert",
                                                    .text = question,
                                                    .check_box = check_box,
                                                    .buttons = messages::BoxButtons::kYesNo},
                                                   &not_again);
  if (not_again) {
    SwitchOffForSession(plugin, "PROMPT_OPENED_PREVIOUSLY_FILTERED_DOC_WARNING",
                        &plugin.settings.prompt_opened_previously_filtered_doc_warning);
  }
  constexpr std::int32_t kYes = 1;
  if (answer == kYes) RestoreWithoutAsking(plugin, document);
}

void AutoValidate(Plugin& plugin, host::Id document, host::Id object) {
  if (!plugin.settings.val_auto_validation_enabled) return;
  coloring::PrepareValidation(plugin.settings, &plugin.validation_run);
  coloring::ValidationContext context{
      plugin.host, plugin.messenger, plugin.schemes.validation, plugin.validation_run, {}, {}};
  coloring::AutoValidate(context, document, object);
}

void CloseMainSettings(Plugin& plugin) {
  if (plugin.main_settings != host::kNone) plugin.host.documents.Close(plugin.main_settings, true);
  plugin.main_settings = host::kNone;
}

// A caller gets an answer also where something throws on the way.
void AnswerCall(Plugin& plugin, std::string_view text) {
  plugin.calls.last = {};
  plugin.host.clients.Return(plugin.calls.last.value);
  calls::CallContext context = CallContextOf(plugin);
  const calls::Answer answer = calls::AnswerCall(context, text);
  plugin.host.clients.Return(answer.value);
}

}  // namespace

void RegisterNotifications(Plugin& plugin) {
  for (const Notification number : kWanted) plugin.host.session.RequestNotification(number, true);
}

void HandleNotification(Plugin& plugin, std::int32_t notification, host::Id document, std::string_view text,
                        std::int32_t value) {
  if (document == host::kNone) document = plugin.host.documents.ActiveDocument();
  const auto object = static_cast<host::Id>(value);
  switch (notification) {
    case kDocumentOpened:
      return OfferRestore(plugin, document);
    case kClientCall:
      return AnswerCall(plugin, text);
    case kCloseMainSettings:
      return CloseMainSettings(plugin);
    case kElementChanged53:
    case kElementChanged57:
    case kElementChanged59:
      return AutoValidate(plugin, document, object);
    case kSelectionChanged:
      if (document == host::kNone) return;
      return AutoValidate(plugin, document, plugin.host.text.SelectedElement(document));
    case kAttributeChanged:
      if (CheckAttributeChange(plugin, document, object, text) != AttributeChange::kToBeChecked) return;
      return AutoValidate(plugin, document, object);
    default:
      return;
  }
}

AttributeChange CheckAttributeChange(Plugin& plugin, host::Id document, host::Id object,
                                     std::string_view attribute) {
  host::Host& host = plugin.host;
  if (document == host::kNone || !host.elements.IsElement(document, object) ||
      host.elements.Definition(document, object) == host::kNone) {
    return AttributeChange::kNoElement;
  }
  if (document == plugin.main_settings) return AttributeChange::kInMainSettings;
  const auto named = [attribute](const auto& one) { return one.name == attribute; };
  const auto declared =
      host.definitions.AttributeDefinitions(document, host.elements.Definition(document, object));
  host::AttributeBuffer carried;
  host.definitions.ReadAttributes(document, object, &carried);
  const bool known = std::any_of(declared.begin(), declared.end(), named) ||
                     std::any_of(carried.attributes.begin(), carried.attributes.end(), named);
  // A host that does not name the attribute means any of them.
  return known || attribute.empty() ? AttributeChange::kToBeChecked : AttributeChange::kNoAttribute;
}

}  // namespace qelm
