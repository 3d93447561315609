#include "schemes/settings_writer.h"

#include <algorithm>

#include "schemes/settings_tree.h"

namespace qelm::schemes {

bool SettingsWriter::Fail(std::string_view message, std::string_view tag) {
  if (!Failed()) failure_ = {message, tag};
  return false;
}

host::Id SettingsWriter::Definition(std::string_view tag) {
  return host_.definitions.FindDefinition(document_, tag);
}

host::Id SettingsWriter::Root() { return SettingsTree(host_, document_).Root(); }

std::vector<host::Id> SettingsWriter::All(std::string_view tag) {
  if (!tree_read_) {
    const host::Id root = Root();
    tree_read_ = root == host::kNone || host_.elements.ReadTree(document_, root, &tree_);
  }
  std::vector<host::Id> found;
  const host::Id definition = Definition(tag);
  for (std::size_t i = 0; definition != host::kNone && i < tree_.elements.size(); ++i) {
    if (tree_.definitions[i] == definition) found.push_back(tree_.elements[i]);
  }
  return found;
}

host::Id SettingsWriter::Child(host::Id parent, std::string_view tag) {
  return SettingsTree(host_, document_).FirstChild(parent, tag);
}

bool SettingsWriter::Define(std::span<const ElementForm> forms) {
  for (const ElementForm& form : forms) {
    if (Failed()) return false;
    const host::Id made =
        host_.editing.DefineElement(document_, form.tag, form.content_rule, form.paragraph_format);
    if (made == host::kNone) return Fail(kCannotCreateElement, form.tag);
  }
  return true;
}

bool SettingsWriter::Redefine(const ElementForm& form) {
  if (Failed()) return false;
  if (Definition(form.tag) == host::kNone) return Fail(kCannotFindDefinition, form.tag);
  const host::Id changed =
      host_.editing.DefineElement(document_, form.tag, form.content_rule, form.paragraph_format);
  return changed != host::kNone || Fail(kCannotChangeDefinition, form.tag);
}

host::Id SettingsWriter::Insert(host::Id parent, host::Id before, std::string_view tag,
                                std::string_view text) {
  if (Failed()) return host::kNone;
  const host::Id definition = Definition(tag);
  const host::Id element = definition == host::kNone
                               ? host::kNone
                               : host_.editing.InsertElement(document_, parent, before, definition);
  const bool made =
      element != host::kNone && (text.empty() || host_.editing.SetText(document_, element, text));
  return made || Fail(kCannotCreateElement, tag) ? element : host::kNone;
}

bool SettingsWriter::InsertEach(host::Id parent, std::string_view tag,
                                const std::vector<std::string>& texts) {
  return std::all_of(texts.begin(), texts.end(), [&](const std::string& text) {
    return Insert(parent, host::kNone, tag, text) != host::kNone;
  });
}

std::vector<std::string> SettingsWriter::Values(host::Id element, std::string_view attribute) {
  host_.definitions.ReadAttributes(document_, element, &attributes_);
  for (const host::AttributeView& view : attributes_.attributes) {
    if (view.name != attribute) continue;
    const auto first = attributes_.values.begin() + view.first_value;
    return {first, first + view.value_count};
  }
  return {};
}

std::string SettingsWriter::Value(host::Id element, std::string_view attribute) {
  std::vector<std::string> values = Values(element, attribute);
  return values.empty() ? std::string() : std::move(values.front());
}

bool SettingsWriter::Clear(host::Id element, std::span<const std::string_view> attributes) {
  if (Failed()) return false;
  host_.definitions.ReadAttributes(document_, element, &attributes_);
  std::vector<host::AttributeValue> kept;
  for (const host::AttributeView& view : attributes_.attributes) {
    if (std::find(attributes.begin(), attributes.end(), view.name) != attributes.end()) continue;
    const auto first = attributes_.values.begin() + view.first_value;
    kept.push_back({std::string(view.name), {first, first + view.value_count}});
  }
  if (kept.size() == attributes_.attributes.size()) return true;
  return host_.editing.SetAttributes(document_, element, kept) ||
         Fail(kCannotChangeElement, SettingsTree(host_, document_).Tag(element));
}

}  // namespace qelm::schemes
