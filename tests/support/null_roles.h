// The host's roles doing nothing: every operation gives what it gives when it fails. Test hosts derive from
// these and fill in what their tests are about.
#pragma once

#include "host/interface/host.h"

namespace qelm::testing {

class NullSession : public host::Session {
 public:
  std::string_view PluginFolder() override { return {}; }
  std::int32_t MajorVersion() override { return 0; }
  std::string_view InterfaceLanguage() override { return {}; }
  void SetScreenUpdates(bool) override {}
  bool ScreenUpdates() override { return true; }
  void Redisplay(host::Id) override {}
  void RequestNotification(std::int32_t, bool) override {}
};

class NullDocuments : public host::Documents {
 public:
  host::Id ActiveDocument() override { return 0; }
  host::Id ActiveBook() override { return 0; }
  bool Activate(host::Id) override { return false; }
  host::Id FirstOpenDocument() override { return 0; }
  host::Id NextOpenDocument(host::Id) override { return 0; }
  host::Id FindOpen(const std::string&) override { return 0; }
  host::Id Open(const std::string&, const host::OpenOptions&, host::OpenStatus* status) override {
    *status = host::OpenStatus::kNotFound;
    return 0;
  }
  bool Save(host::Id, const host::SaveOptions&) override { return false; }
  bool Close(host::Id, bool) override { return false; }
  std::string_view Path(host::Id) override { return {}; }
  bool SetPath(host::Id, const std::string&) override { return false; }
  bool Switch(host::Id, host::DocumentSwitch) override { return false; }
  bool SetSwitch(host::Id, host::DocumentSwitch, bool) override { return false; }
  host::ViewMode View(host::Id) override { return host::ViewMode::kWysiwyg; }
  bool SetView(host::Id, host::ViewMode) override { return false; }
  bool ImportFormats(host::Id, host::Id, std::uint32_t) override { return false; }
  std::string Metadata(host::Id) override { return {}; }
  bool SetMetadata(host::Id, std::string_view) override { return false; }
  std::int32_t ErrorCode() override { return 0; }
  std::string_view LastError() override { return {}; }
};

class NullBooks : public host::Books {
 public:
  bool IsBook(host::Id) override { return false; }
  host::Id FirstComponent(host::Id) override { return 0; }
  host::Id NextComponent(host::Id, host::Id) override { return 0; }
  std::string_view ComponentPath(host::Id, host::Id) override { return {}; }
  bool IsGenerated(host::Id, host::Id) override { return false; }
  bool IsExcluded(host::Id, host::Id) override { return false; }
  host::Id ComponentDocument(host::Id, host::Id) override { return 0; }
  std::string_view EntryText(host::Id, host::Id) override { return {}; }
  bool SetEntryText(host::Id, host::Id, std::string_view) override { return false; }
  bool SetComponentPath(host::Id, host::Id, const std::string&) override { return false; }
  bool RemoveComponent(host::Id, host::Id) override { return false; }
  bool Update(host::Id, std::uint32_t) override { return false; }
  void ShowErrorLog(host::Id) override {}
};

class NullEditing : public host::Editing {
 public:
  bool SetAttributes(host::Id, host::Id, const std::vector<host::AttributeValue>&) override { return false; }
  host::Id InsertElement(host::Id, host::Id, host::Id, host::Id) override { return 0; }
  bool SetText(host::Id, host::Id, std::string_view) override { return false; }
  host::Id DefineElement(host::Id, std::string_view, std::string_view, std::string_view) override {
    return 0;
  }
  bool SetDefinition(host::Id, host::Id, host::Id) override { return false; }
  bool DeleteElement(host::Id, host::Id) override { return false; }
  bool DeleteRows(host::Id, host::Id, host::Id, std::int32_t) override { return false; }
  bool RemoveTitle(host::Id, host::Id) override { return false; }
  bool ClearText(host::Id, const host::TextRange&) override { return false; }
  bool AppendParagraph(host::Id, host::Id, const host::NewParagraph&) override { return false; }
  bool InsertText(host::Id, const host::TextLocation&, std::string_view) override { return false; }
  bool InsertMarker(host::Id, const host::TextRange&, std::string_view, std::string_view) override {
    return false;
  }
  host::TextRange FindParagraph(host::Id, host::Id, std::string_view) override { return {}; }
};

class NullText : public host::Text {
 public:
  host::TextRange ElementRange(host::Id, host::Id) override { return {}; }
  host::TextRange AnchoredRange(host::Id, host::Id) override { return {}; }
  bool HasOwnText(host::Id, host::Id) override { return false; }
  std::string_view ElementText(host::Id, host::Id, std::size_t, std::string*) override { return {}; }
  bool ReadElementProperty(host::Id, host::Id, host::ElementProperty, std::string* value) override {
    value->clear();
    return false;
  }
  host::TextProperties ReadProperties(host::Id, const host::TextRange&, std::uint32_t) override { return {}; }
  bool WriteProperties(host::Id, const host::TextRange&, const host::TextProperties&) override {
    return false;
  }
  host::TextLocation FlowStart(host::Id, host::Id) override { return {}; }
  FindResult FindCondition(host::Id, const host::TextLocation&, host::Id, host::TextRange*) override {
    return FindResult::kNotFound;
  }
  host::Id SelectedElement(host::Id) override { return 0; }
  bool SelectElement(host::Id, host::Id) override { return false; }
  host::TextRange Selection(host::Id) override { return {}; }
  bool SetSelection(host::Id, const host::TextRange&) override { return false; }
  void ScrollTo(host::Id, const host::TextRange&) override {}
};

class NullCatalogs : public host::Catalogs {
 public:
  host::Id FindColor(host::Id, std::string_view) override { return 0; }
  host::Id FirstColor(host::Id) override { return 0; }
  host::Id NextColor(host::Id, host::Id) override { return 0; }
  std::string_view ColorName(host::Id, host::Id) override { return {}; }
  host::Id CreateColor(host::Id, std::string_view, double, double, double, double) override { return 0; }
  host::Id FindCondition(host::Id, std::string_view) override { return 0; }
  host::Id FirstCondition(host::Id) override { return 0; }
  host::Id NextCondition(host::Id, host::Id) override { return 0; }
  std::string_view ConditionName(host::Id, host::Id) override { return {}; }
  host::Id CreateCondition(host::Id, std::string_view) override { return 0; }
  bool ConditionShown(host::Id, host::Id) override { return true; }
  bool SetConditionShown(host::Id, host::Id, bool) override { return false; }
};

class NullTables : public host::Tables {
 public:
  host::Id FirstTable(host::Id) override { return 0; }
  host::Id NextTable(host::Id, host::Id) override { return 0; }
  host::Id FirstRow(host::Id, host::Id) override { return 0; }
  host::Id NextRow(host::Id, host::Id) override { return 0; }
  host::ElementKind PartOfRow(host::Id, host::Id) override { return host::ElementKind::kTable; }
  std::string TitleText(host::Id, host::Id) override { return {}; }
  std::vector<std::string> CellTexts(host::Id, host::Id) override { return {}; }
  host::Id RowOfElement(host::Id, host::Id) override { return 0; }
  std::vector<host::Id> RowConditions(host::Id, host::Id) override { return {}; }
  bool SetRowConditions(host::Id, host::Id, const std::vector<host::Id>&) override { return false; }
  host::Id FirstInset(host::Id) override { return 0; }
  host::Id NextInset(host::Id, host::Id) override { return 0; }
  bool InsetLocked(host::Id, host::Id) override { return false; }
  bool SetInsetLocked(host::Id, host::Id, bool) override { return false; }
};

class NullLinks : public host::Links {
 public:
  bool Read(host::Id, std::vector<host::Link>* links) override {
    links->clear();
    return false;
  }
  bool ReadTargets(host::Id, std::vector<host::LinkTarget>* targets) override {
    targets->clear();
    return false;
  }
  bool SetPath(host::Id, const host::Link&, const std::string&) override { return false; }
  bool HasTarget(host::Id, host::LinkKind, std::string_view) override { return false; }
};

class NullDialogs : public host::Dialogs {
 public:
  host::Id OpenDialog(std::string_view) override { return 0; }
  void CloseDialog(host::Id) override {}
  std::int32_t RunDialog(host::Id, std::int32_t) override { return 0; }
  std::int32_t ItemCount(host::Id) override { return 0; }
  void SetLabel(host::Id, std::int32_t, std::string_view) override {}
  std::string LabelOf(host::Id, std::int32_t) override { return {}; }
  void SetText(host::Id, std::int32_t, std::string_view) override {}
  std::string TextOf(host::Id, std::int32_t) override { return {}; }
  void SetValue(host::Id, std::int32_t, std::int32_t) override {}
  std::int32_t ValueOf(host::Id, std::int32_t) override { return 0; }
  void SetList(host::Id, std::int32_t, const std::vector<std::string>&) override {}
  void ShowItem(host::Id, std::int32_t, bool) override {}
  std::string ChooseFile(std::string_view, const std::string&) override { return {}; }
};

class NullClients : public host::Clients {
 public:
  bool Send(std::string_view, std::string_view) override { return false; }
  void Return(std::int32_t) override {}
};

}  // namespace qelm::testing
