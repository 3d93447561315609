#include "support/observed_host.h"

#include <type_traits>
#include <utility>

namespace qelm::testing {
namespace {

using namespace host;

// What an operation gives when it fails. A question that fails is answered no, which is 1 as error codes are.
template <typename Result>
Result Failure() {
  if constexpr (std::is_same_v<Result, Text::FindResult>) {
    return Text::FindResult::kFailed;
  } else if constexpr (std::is_same_v<Result, std::int32_t>) {
    return 1;
  } else if constexpr (!std::is_void_v<Result>) {
    return Result{};
  }
}

template <typename Argument>
void NoteArgument(HostCall* call, const Argument& argument) {
  call->on = false;
  if constexpr (std::is_same_v<Argument, Id>) {
    call->ids.push_back(argument);
  } else if constexpr (std::is_same_v<Argument, bool>) {
    call->on = argument;
  } else if constexpr (std::is_same_v<Argument, TextLocation>) {
    call->given.push_back(argument);
  } else if constexpr (std::is_same_v<Argument, TextRange>) {
    call->given.insert(call->given.end(), {argument.begin, argument.end});
  }
}

template <typename Value>
void NoteReturned(HostCall* call, const Value& value) {
  if constexpr (std::is_same_v<Value, TextLocation>) {
    call->returned.push_back(value);
  } else if constexpr (std::is_same_v<Value, TextRange>) {
    call->returned.insert(call->returned.end(), {value.begin, value.end});
  } else if constexpr (std::is_same_v<Value, TextRange*>) {
    if (value != nullptr) NoteReturned(call, *value);
  }
}

template <typename RoleType>
class Observed : public RoleType {
 public:
  using Role = RoleType;
  Observed(RoleType& inner, CallObserver& observer, std::string_view role)
      : inner_(inner), observer_(observer), role_(role) {}

 protected:
  template <typename Result, typename... Parameters, typename... Arguments>
  Result Forward(std::string_view name, Result (RoleType::*method)(Parameters...), Arguments&&... arguments) {
    HostCall call{role_, name, {}, false, {}, {}, kNone};
    (NoteArgument(&call, arguments), ...);
    if (!observer_.Before(call)) return Failure<Result>();
    if constexpr (std::is_void_v<Result>) {
      (inner_.*method)(std::forward<Arguments>(arguments)...);
      observer_.After(call);
    } else {
      Result result = (inner_.*method)(arguments...);
      (NoteReturned(&call, arguments), ...);
      NoteReturned(&call, result);
      if constexpr (std::is_same_v<Result, Id> || std::is_same_v<Result, bool>) {
        call.result = static_cast<Id>(result);
      }
      observer_.After(call);
      return result;
    }
  }

  RoleType& inner_;

 private:
  CallObserver& observer_;
  std::string_view role_;
};

#define CALL0(R, N) \
  R N() override { return this->Forward(#N, &Role::N); }
#define CALL1(R, N, A) \
  R N(A a) override { return this->Forward(#N, &Role::N, a); }
#define CALL2(R, N, A, B) \
  R N(A a, B b) override { return this->Forward(#N, &Role::N, a, b); }
#define CALL3(R, N, A, B, C) \
  R N(A a, B b, C c) override { return this->Forward(#N, &Role::N, a, b, c); }
#define CALL4(R, N, A, B, C, D) \
  R N(A a, B b, C c, D d) override { return this->Forward(#N, &Role::N, a, b, c, d); }
#define CALL6(R, N, A, B, C, D, E, F) \
  R N(A a, B b, C c, D d, E e, F f) override { return this->Forward(#N, &Role::N, a, b, c, d, e, f); }

class ObservedSession : public Observed<Session> {
 public:
  using Observed::Observed;
  CALL0(std::string_view, PluginFolder)
  CALL0(std::int32_t, MajorVersion)
  CALL0(std::string_view, InterfaceLanguage)
  CALL1(bool, SetTextEncoding, std::string_view)
  CALL1(void, SetScreenUpdates, bool)
  CALL0(bool, ScreenUpdates)
  CALL1(void, Redisplay, Id)
  CALL2(void, RequestNotification, std::int32_t, bool)
};

class ObservedDocuments : public Observed<Documents> {
 public:
  using Observed::Observed;
  CALL0(Id, ActiveDocument)
  CALL0(Id, ActiveBook)
  CALL1(bool, Activate, Id)
  CALL0(Id, FirstOpenDocument)
  CALL1(Id, NextOpenDocument, Id)
  CALL1(Id, FindOpen, const std::string&)
  CALL3(Id, Open, const std::string&, const OpenOptions&, OpenStatus*)
  CALL2(bool, Save, Id, const SaveOptions&)
  CALL2(bool, Close, Id, bool)
  CALL1(std::string_view, Path, Id)
  CALL1(std::string_view, FileStateAsRead, Id)
  CALL2(bool, SetPath, Id, const std::string&)
  CALL2(bool, Switch, Id, DocumentSwitch)
  CALL3(bool, SetSwitch, Id, DocumentSwitch, bool)
  CALL1(ViewMode, View, Id)
  CALL2(bool, SetView, Id, ViewMode)
  CALL3(bool, ImportFormats, Id, Id, std::uint32_t)
  CALL1(std::string, Metadata, Id)
  CALL2(bool, SetMetadata, Id, std::string_view)
  CALL0(std::int32_t, ErrorCode)
  CALL0(std::string_view, LastError)
};

class ObservedBooks : public Observed<Books> {
 public:
  using Observed::Observed;
  CALL1(bool, IsBook, Id)
  CALL1(Id, FirstComponent, Id)
  CALL2(Id, NextComponent, Id, Id)
  CALL2(std::string_view, ComponentPath, Id, Id)
  CALL2(bool, IsGenerated, Id, Id)
  CALL2(bool, IsExcluded, Id, Id)
  CALL2(Id, ComponentDocument, Id, Id)
  CALL2(std::string_view, EntryText, Id, Id)
  CALL3(bool, SetEntryText, Id, Id, std::string_view)
  CALL3(bool, SetComponentPath, Id, Id, const std::string&)
  CALL2(bool, RemoveComponent, Id, Id)
  CALL2(bool, Update, Id, std::uint32_t)
  CALL1(void, ShowErrorLog, Id)
};

class ObservedElements : public Observed<Elements> {
 public:
  using Observed::Observed;
  CALL1(Id, FirstFlow, Id)
  CALL2(Id, NextFlow, Id, Id)
  CALL1(Id, MainFlow, Id)
  CALL2(std::string_view, FlowName, Id, Id)
  CALL2(FlowKind, KindOfFlow, Id, Id)
  CALL2(Id, Root, Id, Id)
  CALL2(Id, Parent, Id, Id)
  CALL2(Id, FirstChild, Id, Id)
  CALL2(Id, LastChild, Id, Id)
  CALL2(Id, NextSibling, Id, Id)
  CALL2(Id, PreviousSibling, Id, Id)
  CALL2(ElementAround, Around, Id, Id)
  CALL2(bool, IsElement, Id, Id)
  CALL1(Id, IdLimit, Id)
  CALL2(ElementKind, Kind, Id, Id)
  CALL2(Id, Definition, Id, Id)
  CALL2(Id, FlowOf, Id, Id)
  CALL2(std::int64_t, UniqueId, Id, Id)
  CALL2(Id, FindUniqueId, Id, std::int64_t)
  CALL1(std::uint64_t, Revision, Id)
  CALL3(bool, ReadTree, Id, Id, ElementColumns*)
  CALL4(std::size_t, ReadNodes, Id, Id, const WalkedNode&, std::span<WalkedNode>)
  CALL3(bool, ReadTexts, Id, std::span<const Id>, TextColumn*)
};

class ObservedDefinitions : public Observed<Definitions> {
 public:
  using Observed::Observed;
  CALL2(Id, FindDefinition, Id, std::string_view)
  CALL1(Id, FirstDefinition, Id)
  CALL2(Id, NextDefinition, Id, Id)
  CALL2(std::string_view, DefinitionName, Id, Id)
  CALL2(std::span<const AttributeDefinition>, AttributeDefinitions, Id, Id)
  CALL3(void, ReadAttributes, Id, Id, AttributeBuffer*)
  CALL4(void, ReadAttributeColumn, Id, std::span<const Id>, std::string_view, AttributeColumn*)
};

class ObservedEditing : public Observed<Editing> {
 public:
  using Observed::Observed;
  CALL3(bool, SetAttributes, Id, Id, const std::vector<AttributeValue>&)
  CALL4(Id, InsertElement, Id, Id, Id, Id)
  CALL3(bool, SetText, Id, Id, std::string_view)
  CALL4(Id, DefineElement, Id, std::string_view, std::string_view, std::string_view)
  CALL3(bool, SetDefinition, Id, Id, Id)
  CALL2(bool, DeleteElement, Id, Id)
  CALL4(bool, DeleteRows, Id, Id, Id, std::int32_t)
  CALL2(bool, RemoveTitle, Id, Id)
  CALL2(bool, ClearText, Id, const TextRange&)
  CALL3(bool, AppendParagraph, Id, Id, const NewParagraph&)
  CALL3(bool, InsertText, Id, const TextLocation&, std::string_view)
  CALL4(bool, InsertMarker, Id, const TextRange&, std::string_view, std::string_view)
  CALL3(TextRange, FindParagraph, Id, Id, std::string_view)
};

class ObservedText : public Observed<Text> {
 public:
  using Observed::Observed;
  CALL2(TextRange, ElementRange, Id, Id)
  CALL2(TextRange, AnchoredRange, Id, Id)
  CALL2(bool, HasOwnText, Id, Id)
  CALL4(std::string_view, ElementText, Id, Id, std::size_t, std::string*)
  CALL4(bool, ReadElementProperty, Id, Id, ElementProperty, std::string*)
  CALL3(TextProperties, ReadProperties, Id, const TextRange&, std::uint32_t)
  CALL3(bool, WriteProperties, Id, const TextRange&, const TextProperties&)
  CALL2(TextLocation, FlowStart, Id, Id)
  CALL4(FindResult, FindCondition, Id, const TextLocation&, Id, TextRange*)
  CALL1(Id, SelectedElement, Id)
  CALL2(bool, SelectElement, Id, Id)
  CALL1(TextRange, Selection, Id)
  CALL2(bool, SetSelection, Id, const TextRange&)
  CALL2(void, ScrollTo, Id, const TextRange&)
};

class ObservedCatalogs : public Observed<Catalogs> {
 public:
  using Observed::Observed;
  CALL2(Id, FindColor, Id, std::string_view)
  CALL1(Id, FirstColor, Id)
  CALL2(Id, NextColor, Id, Id)
  CALL2(std::string_view, ColorName, Id, Id)
  CALL6(Id, CreateColor, Id, std::string_view, double, double, double, double)
  CALL2(Id, FindCondition, Id, std::string_view)
  CALL1(Id, FirstCondition, Id)
  CALL2(Id, NextCondition, Id, Id)
  CALL2(std::string_view, ConditionName, Id, Id)
  CALL2(Id, CreateCondition, Id, std::string_view)
  CALL2(bool, ConditionShown, Id, Id)
  CALL3(bool, SetConditionShown, Id, Id, bool)
};

class ObservedTables : public Observed<Tables> {
 public:
  using Observed::Observed;
  CALL1(Id, FirstTable, Id)
  CALL2(Id, NextTable, Id, Id)
  CALL2(Id, FirstRow, Id, Id)
  CALL2(Id, NextRow, Id, Id)
  CALL2(ElementKind, PartOfRow, Id, Id)
  CALL2(std::string, TitleText, Id, Id)
  CALL2(std::vector<std::string>, CellTexts, Id, Id)
  CALL2(Id, RowOfElement, Id, Id)
  CALL2(std::vector<Id>, RowConditions, Id, Id)
  CALL3(bool, SetRowConditions, Id, Id, const std::vector<Id>&)
  CALL1(Id, FirstInset, Id)
  CALL2(Id, NextInset, Id, Id)
  CALL2(bool, InsetLocked, Id, Id)
  CALL3(bool, SetInsetLocked, Id, Id, bool)
};

class ObservedLinks : public Observed<Links> {
 public:
  using Observed::Observed;
  CALL2(bool, Read, Id, std::vector<Link>*)
  CALL2(bool, ReadTargets, Id, std::vector<LinkTarget>*)
  CALL3(bool, ReadAll, Id, std::vector<Link>*, std::vector<LinkTarget>*)
  CALL3(bool, SetPath, Id, const Link&, const std::string&)
  CALL3(bool, HasTarget, Id, LinkKind, std::string_view)
};

class ObservedUser : public Observed<UserInterface> {
 public:
  using Observed::Observed;
  CALL1(void, Note, std::string_view)
  CALL1(std::int32_t, Question, std::string_view)
  CALL1(void, ShowStatus, const Status&)
  CALL0(void, HideStatus)
  CALL0(bool, EscPressed)
  CALL1(void, Print, std::string_view)
  CALL2(Id, DefineMenu, std::string_view, std::string_view)
  CALL4(Id, DefineCommand, std::int32_t, std::string_view, std::string_view, std::string_view)
  CALL2(bool, AddToMenu, std::string_view, Id)
  CALL1(bool, AddSeparator, std::string_view)
  CALL2(bool, EnableCommand, Id, bool)
};

class ObservedDialogs : public Observed<Dialogs> {
 public:
  using Observed::Observed;
  CALL1(Id, OpenDialog, std::string_view)
  CALL1(void, CloseDialog, Id)
  CALL2(std::int32_t, RunDialog, Id, std::int32_t)
  CALL1(std::int32_t, ItemCount, Id)
  CALL3(void, SetLabel, Id, std::int32_t, std::string_view)
  CALL2(std::string, LabelOf, Id, std::int32_t)
  CALL3(void, SetText, Id, std::int32_t, std::string_view)
  CALL2(std::string, TextOf, Id, std::int32_t)
  CALL3(void, SetValue, Id, std::int32_t, std::int32_t)
  CALL2(std::int32_t, ValueOf, Id, std::int32_t)
  CALL3(void, SetList, Id, std::int32_t, const std::vector<std::string>&)
  CALL3(void, ShowItem, Id, std::int32_t, bool)
  CALL2(std::string, ChooseFile, std::string_view, const std::string&)
};

class ObservedClients : public Observed<Clients> {
 public:
  using Observed::Observed;
  CALL2(bool, Send, std::string_view, std::string_view)
  CALL1(void, Return, std::int32_t)
};

class ObservedPlatform : public Observed<Platform> {
 public:
  using Observed::Observed;
  CALL1(bool, FileExists, const std::string&)
  CALL1(bool, MayExist, const std::string&)
  CALL1(bool, FolderExists, const std::string&)
  CALL1(std::optional<std::string>, ReadFile, const std::string&)
  CALL2(bool, ReplaceFileByPieces, const std::string&, std::span<const std::string_view>)
  CALL2(bool, AppendFile, const std::string&, std::string_view)
  CALL2(bool, CopyFile, const std::string&, const std::string&)
  CALL2(bool, MoveFile, const std::string&, const std::string&)
  CALL1(bool, RemoveFile, const std::string&)
  CALL1(bool, MakeFolder, const std::string&)
  CALL1(bool, RemoveFolder, const std::string&)
  CALL2(bool, BeginFilling, const std::string&, bool*)
  CALL1(std::int64_t, KeepInside, const std::string&)
  CALL1(void, LetGo, std::int64_t)
  CALL2(bool, EndFilling, const std::string&, bool)
  CALL1(bool, IsUnfinished, const std::string&)
  CALL1(bool, HoldFile, const std::string&)
  CALL1(void, ReleaseFile, const std::string&)
  CALL1(std::string, FileState, const std::string&)
  CALL3(bool, ReplaceUnchanged, const std::string&, std::span<const std::string_view>, std::string*)
  CALL1(std::vector<std::string>, FolderNames, const std::string&)
  CALL1(std::optional<std::vector<std::string>>, ReadFolder, const std::string&)
  CALL1(std::optional<std::uint64_t>, FileSize, const std::string&)
  CALL1(std::optional<std::uint64_t>, FreeSpace, const std::string&)
  CALL1(std::string, ResolvedPath, const std::string&)
  CALL2(bool, SameFile, const std::string&, const std::string&)
  CALL1(std::string, Environment, std::string_view)
  CALL0(LocalTime, Now)
  CALL0(std::int64_t, CalendarSeconds)
  CALL0(std::int64_t, Milliseconds)
  CALL2(bool, Start, const std::string&, const std::vector<std::string>&)
  // These have no way to fail.
  void Listen(WriteListener* listener) override { inner_.Listen(listener); }
  void StopListening(WriteListener* listener) override { inner_.StopListening(listener); }
};

}  // namespace

struct ObservedHost::Roles {
  Roles(Host& inner, CallObserver& observer)
      : session(inner.session, observer, "Session"),
        documents(inner.documents, observer, "Documents"),
        books(inner.books, observer, "Books"),
        elements(inner.elements, observer, "Elements"),
        definitions(inner.definitions, observer, "Definitions"),
        editing(inner.editing, observer, "Editing"),
        text(inner.text, observer, "Text"),
        catalogs(inner.catalogs, observer, "Catalogs"),
        tables(inner.tables, observer, "Tables"),
        links(inner.links, observer, "Links"),
        user(inner.user, observer, "UserInterface"),
        dialogs(inner.dialogs, observer, "Dialogs"),
        clients(inner.clients, observer, "Clients"),
        platform(inner.platform, observer, "Platform") {}

  ObservedSession session;
  ObservedDocuments documents;
  ObservedBooks books;
  ObservedElements elements;
  ObservedDefinitions definitions;
  ObservedEditing editing;
  ObservedText text;
  ObservedCatalogs catalogs;
  ObservedTables tables;
  ObservedLinks links;
  ObservedUser user;
  ObservedDialogs dialogs;
  ObservedClients clients;
  ObservedPlatform platform;
  Host host{session,  documents, books, elements, definitions, editing, text,
            catalogs, tables,    links, user,     dialogs,     clients, platform};
};

ObservedHost::ObservedHost(Host& inner, CallObserver& observer)
    : roles_(std::make_unique<Roles>(inner, observer)) {}

ObservedHost::~ObservedHost() = default;

Host& ObservedHost::roles() { return roles_->host; }

}  // namespace qelm::testing
