#include <algorithm>

#include "embedded/adapter/roles.h"
#include "embedded/model/edit.h"

namespace qelm::embedded::adapter {
namespace {

class CatalogsRole : public host::Catalogs {
 public:
  explicit CatalogsRole(Workspace& workspace) : workspace_(workspace) {}

  Id FindColor(Id document, std::string_view name) override {
    const model::Document* model = workspace_.Document(document);
    if (model == nullptr) return host::kNone;
    const auto found = model->color_index.find(name);
    return found != model->color_index.end() && Defined(model->colors[found->second]) ? found->second
                                                                                      : host::kNone;
  }
  Id FirstColor(Id document) override { return ColorFrom(document, 1); }
  Id NextColor(Id document, Id color) override {
    return color == host::kNone ? host::kNone : ColorFrom(document, color + 1);
  }
  std::string_view ColorName(Id document, Id color) override {
    const model::Document* model = workspace_.Document(document);
    if (model == nullptr || color == host::kNone || color >= model->colors.size()) return {};
    return model->colors[color].name;
  }
  Id CreateColor(Id document, std::string_view name, double cyan, double magenta, double yellow,
                 double black) override;

  Id FindCondition(Id document, std::string_view name) override {
    const model::Document* model = workspace_.Document(document);
    if (model == nullptr) return host::kNone;
    const auto found = model->condition_index.find(name);
    return found == model->condition_index.end() ? host::kNone : found->second;
  }
  Id FirstCondition(Id document) override { return Condition(document, 1) != nullptr ? 1 : host::kNone; }
  Id NextCondition(Id document, Id condition) override {
    return Condition(document, condition + 1) != nullptr ? condition + 1 : host::kNone;
  }
  std::string_view ConditionName(Id document, Id condition) override {
    const model::Condition* found = Condition(document, condition);
    return found == nullptr ? std::string_view() : found->name;
  }
  Id CreateCondition(Id document, std::string_view name) override;
  bool ConditionShown(Id document, Id condition) override {
    const model::Condition* found = Condition(document, condition);
    return found != nullptr && found->shown;
  }
  bool SetConditionShown(Id document, Id condition, bool shown) override {
    const model::Condition* found = Condition(document, condition);
    if (found == nullptr) return workspace_.FailId(document);
    if (found->shown == shown) return true;
    OpenFile* file = workspace_.DocumentFile(document);
    DeclareConditions(file->document.get(), {condition});
    model::SetConditionShown(file->document.get(), condition, shown);
    MarkEdited(file, EditOf::kVisibility);
    return true;
  }

 private:
  // A color that text names but no catalog has is not defined.
  static bool Defined(const model::Color& color) { return color.declared || color.created; }

  const model::Condition* Condition(Id document, Id id) {
    const model::Document* model = workspace_.Document(document);
    return model != nullptr && id != host::kNone && id < model->conditions.size() ? &model->conditions[id]
                                                                                  : nullptr;
  }
  Id ColorFrom(Id document, Id first) {
    const model::Document* model = workspace_.Document(document);
    if (model == nullptr) return host::kNone;
    for (Id id = first; id < model->colors.size(); ++id) {
      if (Defined(model->colors[id])) return id;
    }
    return host::kNone;
  }

  Workspace& workspace_;
};

Id CatalogsRole::CreateColor(Id document, std::string_view name, double cyan, double magenta, double yellow,
                             double black) {
  OpenFile* file = workspace_.DocumentFile(document);
  if (file == nullptr) return workspace_.FailId(document), host::kNone;
  const auto is_part = [](double part) { return part >= 0 && part <= 100; };
  if (name.empty() || !is_part(cyan) || !is_part(magenta) || !is_part(yellow) || !is_part(black)) {
    workspace_.Fail(Error::kInvalidArgument,
                    file->path + ": a color needs a name and parts of 0 to 100 percent.");
    return host::kNone;
  }
  if (const Id existing = FindColor(document, name); existing != host::kNone) return existing;
  model::Document& model = *file->document;
  const auto used = model.color_index.find(name);
  const Id id =
      used != model.color_index.end() ? used->second : model.InternColor(model.Keep(std::string(name)));
  model::Color& color = model.colors[id];
  color.cyan = cyan;
  color.magenta = magenta;
  color.yellow = yellow;
  color.black = black;
  color.created = true;
  MarkEdited(file, EditOf::kLooks);
  return id;
}

Id CatalogsRole::CreateCondition(Id document, std::string_view name) {
  OpenFile* file = workspace_.DocumentFile(document);
  if (file == nullptr) return workspace_.FailId(document), host::kNone;
  if (name.empty()) {
    workspace_.Fail(Error::kInvalidArgument, file->path + ": a condition needs a name.");
    return host::kNone;
  }
  const Id existing = FindCondition(document, name);
  if (existing != host::kNone && file->document->conditions[existing].declared) return existing;
  const Id id = model::CreateCondition(file->document.get(), name);
  MarkEdited(file, EditOf::kLooks);
  return id;
}

}  // namespace

std::unique_ptr<host::Catalogs> MakeCatalogs(Workspace& workspace) {
  return std::make_unique<CatalogsRole>(workspace);
}

}  // namespace qelm::embedded::adapter
