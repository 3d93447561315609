#include "embedded/adapter/book_update.h"

#include <algorithm>
#include <filesystem>
#include <map>
#include <unordered_map>

#include "embedded/adapter/inset_update.h"
#include "embedded/adapter/opened_document.h"
#include "embedded/adapter/printing.h"
#include "embedded/mif/strings.h"
#include "embedded/model/book_numbering.h"
#include "embedded/model/files.h"
#include "embedded/model/generated_list.h"
#include "embedded/model/index_list.h"
#include "embedded/model/link_statements.h"
#include "embedded/model/locate.h"
#include "embedded/model/master_pages.h"
#include "embedded/model/page_numbering.h"
#include "embedded/model/reference_text.h"

namespace qelm::embedded::adapter {
namespace {

using model::ItemKind;

// A reference to another file: what it asks of that file, and what it shows now.
struct Request {
  std::uint32_t ordinal = 0;  // among the references of its document
  std::string file;           // identity
  std::string named;          // the path, for messages
  std::string target;
  std::string format;
  std::string shown;
};

struct Component {
  Id id = host::kNone;
  std::string path;
  model::BookCounters before;  // what its numbers go on from
  std::int64_t first_page = 1;
  std::string page_style;  // of its page numbers
  std::vector<Request> requests;
  bool readable = false;
  bool generated = false;
};

// The numbers of a document.
struct Numbered {
  std::vector<model::ParagraphNumber> paragraphs;
  model::PlaceNumbers places;
};

// A generated file that is made anew.
struct List {
  const Component* component = nullptr;
  model::ListSettings settings;
  std::unordered_map<std::string, std::string> formats;
  std::vector<model::ListEntry> entries;
  std::optional<model::IndexList> index;  // of an index
};

class Updater {
 public:
  Updater(Workspace& workspace, host::Documents& documents, host::Books& books, Id book, std::uint32_t flags)
      : workspace_(workspace), documents_(documents), books_(books), book_(book), flags_(flags) {}
  UpdateOutcome Run();

 private:
  bool Asked(host::BookUpdate flag) const { return (flags_ & flag) != 0; }
  void FindComponents();
  void Number(Component* component);
  model::Span StatementOf(const Component& component) {
    return workspace_.Book(book_)->components[component.id - 1].span;
  }
  void SkipPages(const Component& component) {
    model::SkipPages(workspace_.Book(book_)->tree, StatementOf(component), &pages_);
  }
  Numbered Numbers(const model::Document& document, const Component* component);
  std::vector<std::string> NextPages(OpenFile* file, Component* component);
  bool NextGoesOn(const Component& component);
  model::ReferenceTargets Targets(OpenFile* file, const Component* component, const Numbered& numbers);
  std::size_t References(OpenFile* file, Component* component, const Numbered& numbers);
  std::size_t OwnReference(OpenFile* file, std::uint32_t item, const model::ReferenceStatement& reference,
                           const std::string& format, model::ReferenceTargets* targets);
  void Insets();
  std::size_t MasterPages(OpenFile* file);
  void Answer();
  void AnswerFrom(const std::string& identity);
  void Apply(Component* component);
  void Generate();
  bool Prepare(const Component& component, List* list);
  void Write(List* list);
  void Keep(const std::string& path, const std::string& shown, const std::string& target,
            const std::string& file, const std::string& why);
  void FindFile(std::string text) {
    if (outcome_.file_error.empty()) outcome_.file_error = text;
    Find(std::move(text));
  }
  void Find(std::string text) {
    outcome_.findings.push_back(std::move(text));
    outcome_.complete = false;
  }

  Workspace& workspace_;
  host::Documents& documents_;
  host::Books& books_;
  Id book_;
  std::uint32_t flags_;
  UpdateOutcome outcome_;
  std::vector<Component> components_;
  std::unordered_map<std::string, std::size_t> by_identity_;  // to components, by their files
  model::BookCounters counters_;
  model::PageCounter pages_;
  // By file, target and format: what is shown.
  using Question = std::pair<std::string, std::string>;
  std::map<std::string, std::map<Question, model::ReferenceText>> answers_;
  std::map<std::string, std::string> names_;  // of files, by identity
};

void Updater::FindComponents() {
  for (Id id = books_.FirstComponent(book_); id != host::kNone; id = books_.NextComponent(book_, id)) {
    if (books_.IsExcluded(book_, id)) continue;
    Component component;
    component.id = id;
    component.path = books_.ComponentPath(book_, id);
    component.generated = books_.IsGenerated(book_, id);
    by_identity_.try_emplace(Workspace::Identity(component.path), components_.size());
    components_.push_back(std::move(component));
  }
}

UpdateOutcome Updater::Run() {
  const std::string path = workspace_.File(book_)->path;
  if (Asked(host::kUpdateOleLinks)) {
    Find(path + ": OLE links cannot be updated: the programs that they need are not available.");
  }
  FindComponents();
  if (Asked(host::kUpdateTextInsets)) Insets();
  constexpr std::uint32_t kReading = host::kUpdateNumbering | host::kUpdateCrossReferences |
                                     host::kUpdateMasterPages | host::kUpdateTextInsets;
  const bool reads = (flags_ & kReading) != 0;
  if (reads) {
    for (Component& component : components_) Number(&component);
    Answer();
    for (Component& component : components_) Apply(&component);
  }
  if (Asked(host::kUpdateGeneratedFiles)) Generate();
  return std::move(outcome_);
}

// The numbers of a document: as its formats say, or when numbers are not to be updated those that it has.
Numbered Updater::Numbers(const model::Document& document, const Component* component) {
  Numbered numbers;
  if (component == nullptr) {
    model::Counters alone;
    numbers.places = model::DocumentPlaces(document);
    numbers.paragraphs = model::NumberParagraphs(document, numbers.places, &alone);
    return numbers;
  }
  model::BookCounters counters = component->before;
  const model::Book& book = *workspace_.Book(book_);
  const model::Span statement = book.components[component->id - 1].span;
  numbers.places = model::NextComponent(book.tree, statement, document, &counters);
  numbers.paragraphs = model::NumberParagraphs(document, numbers.places, &counters.paragraphs);
  counters_ = std::move(counters);
  if (Asked(host::kUpdateNumbering)) return numbers;
  for (std::size_t i = 1; i < numbers.paragraphs.size(); ++i) {
    model::ParagraphNumber& number = numbers.paragraphs[i];
    if (!number.numbered) continue;
    const std::string stored = model::StoredNumber(document, document.paragraphs[i]);
    if (stored != number.text) number.text = number.only = stored;
  }
  return numbers;
}

void Updater::Number(Component* component) {
  OpenedDocument opened(workspace_, documents_, component->path);
  OpenFile* file = opened.File();
  if (file == nullptr) {
    FindFile(opened.Why());
    return SkipPages(*component);
  }
  component->readable = true;
  if (file->document->format != model::Format::kMif) return SkipPages(*component);
  if (!SettleDocument(file)) {
    Find(file->path + ": what was changed in the document cannot be brought into it.");
    return;
  }
  component->before = counters_;
  const Numbered numbers = Numbers(*file->document, component);
  std::size_t changed = 0;
  const std::vector<std::string> pages = NextPages(file, component);
  if (Asked(host::kUpdateNumbering)) {
    changed += model::SetNumbers(file->document.get(), numbers.paragraphs);
    changed += model::SetPageNumbers(file->document.get(), pages);
  }
  if (Asked(host::kUpdateCrossReferences)) changed += References(file, component, numbers);
  if (Asked(host::kUpdateMasterPages)) changed += MasterPages(file);
  if (changed != 0 && !opened.Finish(OpenedDocument::Change::kReferences))
    FindFile(std::string(documents_.LastError()));
}

// Whether the pages of the next component may go on from this one's. A file that was written in this session
// need not be opened to know.
bool Updater::NextGoesOn(const Component& component) {
  const Component* const next = &component + 1;
  if (next == components_.data() + components_.size()) return false;
  const std::optional<bool> of_book = model::PagesGoOn(workspace_.Book(book_)->tree.At(StatementOf(*next)));
  if (of_book) return *of_book;
  const auto written = workspace_.moved_files.find(Workspace::Identity(next->path));
  return written == workspace_.moved_files.end() || written->second;
}

// Goes on to a component. Returns the numbers of the pages that its file has. How many there are is what the
// file says; where text has moved and others go on from them, what layout finds.
std::vector<std::string> Updater::NextPages(OpenFile* file, Component* component) {
  const model::Document& book = workspace_.Book(book_)->tree;
  const model::PageRun run = model::PagesOf(book, StatementOf(*component), *file->document, pages_);
  component->first_page = run.first;
  component->page_style = run.style;
  std::vector<std::string> numbers =
      model::NextPages(book, StatementOf(*component), *file->document, &pages_);
  if (Asked(host::kUpdateNumbering) && HasStalePages(file) && NextGoesOn(*component)) {
    const std::size_t count = LaidPages(workspace_, file, run).count;
    if (count != 0) pages_.last = run.first + static_cast<std::int64_t>(count) - 1;
  }
  return numbers;
}

// A document as the target of references: with the pages that it has on record, or that layout finds where
// its text has moved. Such a document is numbered as its book says when numbers are updated.
model::ReferenceTargets Updater::Targets(OpenFile* file, const Component* component,
                                         const Numbered& numbers) {
  model::ReferenceTargets targets(*file->document, numbers.paragraphs, numbers.places);
  if (!HasStalePages(file)) return targets;
  const bool of_book = component != nullptr && Asked(host::kUpdateNumbering);
  targets.SetPages([this, file, component, of_book] {
    const render::FoundPages& laid =
        of_book ? LaidPages(workspace_, file, {component->first_page, component->page_style})
                : LaidPages(workspace_, file);
    std::vector<model::ReferenceTargets::PageStart> pages;
    for (const render::PageAt& page : laid.starts) {
      pages.push_back({page.item, static_cast<std::int32_t>(page.ordinal), page.text});
    }
    return pages;
  });
  return targets;
}

void Updater::Keep(const std::string& path, const std::string& shown, const std::string& target,
                   const std::string& file, const std::string& why) {
  Find(path + ": the cross-reference \"" + shown + "\" to \"" + target + "\"" +
       (file.empty() ? std::string() : " in " + file) + " is kept as it is: " + why + ".");
}

std::size_t Updater::OwnReference(OpenFile* file, std::uint32_t item,
                                  const model::ReferenceStatement& reference, const std::string& format,
                                  model::ReferenceTargets* targets) {
  model::Document* document = file->document.get();
  const model::ReferenceText text = targets->Expand(format, reference.target);
  if (text.problem.empty()) return model::SetReferenceText(document, item, text) ? 1 : 0;
  Keep(file->path, model::ShownText(*document, item), reference.target, {}, text.problem);
  outcome_.no_targets += text.no_target ? 1 : 0;
  return 0;
}

std::size_t Updater::References(OpenFile* file, Component* component, const Numbered& numbers) {
  model::Document* document = file->document.get();
  const auto formats = model::ReferenceFormats(*document);
  std::optional<model::ReferenceTargets> targets;
  struct Place {
    std::string path;
    std::string identity;
  };
  std::unordered_map<std::string, Place> places;  // by the file as references name it, which few do
  std::size_t changed = 0;
  std::uint32_t ordinal = 0;
  for (std::uint32_t i = 0; i < document->items.size(); ++i) {
    const model::Item& item = document->items[i];
    if (item.kind != ItemKind::kReferenceBegin || item.Is(model::kDeleted)) continue;
    ++ordinal;
    const model::ReferenceStatement reference = model::ReadReference(*document, item.begin);
    const std::string shown = model::ShownText(*document, i);
    const auto format = formats.find(reference.format);
    if (format == formats.end()) {
      Keep(file->path, shown, reference.target, {}, "there is no format \"" + reference.format + "\"");
    } else if (!model::IsPlainReference(*document, i)) {
      Keep(file->path, shown, reference.target, {}, "its text holds more than text");
    } else if (reference.file.empty()) {
      if (!targets) targets.emplace(Targets(file, component, numbers));
      changed += OwnReference(file, i, reference, format->second, &*targets);
    } else {
      const auto [place, is_new] = places.try_emplace(reference.file);
      auto& [path, identity] = place->second;
      if (is_new) {
        path = model::LocateComponent(file->path, reference.file).path;
        identity = Workspace::Identity(path);
      }
      names_.try_emplace(identity, path);
      answers_[identity].try_emplace({reference.target, format->second});
      component->requests.push_back({ordinal, identity, path, reference.target, format->second, shown});
    }
  }
  return changed;
}

// Numbers and references are those of the text that insets have now, so this comes first.
void Updater::Insets() {
  for (const Component& component : components_) {
    if (component.generated) continue;
    OpenedDocument opened(workspace_, documents_, component.path);
    OpenFile* file = opened.File();
    // What cannot be opened is said later on, when all of it is needed.
    if (file == nullptr || file->document->format != model::Format::kMif || !SettleDocument(file)) continue;
    const std::size_t known = outcome_.findings.size();
    const bool changed = UpdateInsets(workspace_, documents_, file, &outcome_.findings) != 0;
    if (outcome_.findings.size() != known) outcome_.complete = false;
    if (changed && !opened.Finish(OpenedDocument::Change::kText))
      FindFile(std::string(documents_.LastError()));
  }
}

std::size_t Updater::MasterPages(OpenFile* file) {
  const std::vector<model::MasterPageRule> rules = model::ReadMasterPageRules(*file->document);
  if (rules.empty()) return 0;
  std::vector<std::string> problems;
  const std::size_t changed = model::ApplyMasterPages(file->document.get(), rules, &problems);
  for (const std::string& problem : problems) Find(file->path + ": " + problem + ".");
  return changed;
}

void Updater::Answer() {
  for (const auto& [identity, questions] : answers_) AnswerFrom(identity);
}

void Updater::AnswerFrom(const std::string& identity) {
  std::map<Question, model::ReferenceText>& questions = answers_[identity];
  OpenedDocument opened(workspace_, documents_, names_[identity]);
  OpenFile* file = opened.File();
  if (file == nullptr || file->document->format != model::Format::kMif || !SettleDocument(file)) {
    std::string why = file == nullptr ? opened.Why() : "the file is not MIF";
    while (!why.empty() && why.back() == '.') why.pop_back();
    std::error_code error;
    const bool is_gone = !std::filesystem::exists(names_[identity], error) && !error;
    for (auto& [question, text] : questions) {
      text.problem = why;
      text.no_target = is_gone;
    }
    return;
  }
  const auto component = by_identity_.find(identity);
  const Component* const known = component == by_identity_.end() ? nullptr : &components_[component->second];
  const Numbered numbers = Numbers(*file->document, known);
  model::ReferenceTargets targets = Targets(file, known, numbers);
  for (auto& [question, text] : questions) text = targets.Expand(question.second, question.first);
}

// The references of a component to other files that show something else now.
void Updater::Apply(Component* component) {
  bool any = false;
  for (const Request& request : component->requests) {
    const model::ReferenceText& text = answers_[request.file][{request.target, request.format}];
    if (!text.problem.empty()) {
      Keep(component->path, request.shown, request.target, request.named, text.problem);
      outcome_.no_targets += text.no_target ? 1 : 0;
    } else {
      any = any || text.Plain() != request.shown;
    }
  }
  if (!any) return;
  OpenedDocument opened(workspace_, documents_, component->path);
  OpenFile* file = opened.File();
  if (file == nullptr) return FindFile(opened.Why());
  model::Document* document = file->document.get();
  auto request = component->requests.begin();
  std::uint32_t ordinal = 0;
  std::size_t changed = 0;
  for (std::uint32_t i = 0; i < document->items.size() && request != component->requests.end(); ++i) {
    const model::Item& item = document->items[i];
    if (item.kind != ItemKind::kReferenceBegin || item.Is(model::kDeleted)) continue;
    if (++ordinal != request->ordinal) continue;
    const model::ReferenceText& text = answers_[request->file][{request->target, request->format}];
    // It was noted when the file was last open. A file that stands twice in the book shows the new text
    // already.
    const std::string shown = model::ShownText(*document, i);
    const bool same = model::ReadReference(*document, item.begin).target == request->target;
    if (!same || (shown != request->shown && shown != text.Plain()))
      return FindFile(component->path + ": the file was changed by somebody while the book was updated.");
    ++request;
    if (text.problem.empty() && model::SetReferenceText(document, i, text)) ++changed;
  }
  if (changed != 0 && !opened.Finish(OpenedDocument::Change::kReferences))
    FindFile(std::string(documents_.LastError()));
}

// How the entries of a list read; false where it cannot be made.
bool Updater::Prepare(const Component& component, List* list) {
  const model::Book& book = *workspace_.Book(book_);
  list->component = &component;
  list->settings =
      model::ReadListSettings(book.tree.At(book.components[component.id - 1].span), book.tree.encoding);
  const model::ListKind kind = model::KindOf(list->settings);
  if (kind == model::ListKind::kUnknown) {
    Find(component.path + ": generated files of the type " + list->settings.type +
         " are not made anew in this version; it stays as it is.");
    return false;
  }
  OpenedDocument opened(workspace_, documents_, component.path);
  if (opened.File() == nullptr) {
    FindFile(opened.Why());
    return false;
  }
  const model::Document& document = *opened.File()->document;
  if (kind == model::ListKind::kIndex) {
    list->index.emplace(document, list->settings);
  } else {
    list->formats = model::EntryFormats(document, list->settings);
  }
  return true;
}

// All lists are filled in one more pass over the components, when their text is what it will be.
void Updater::Generate() {
  std::vector<List> lists;
  for (const Component& component : components_) {
    List list;
    if (component.generated && Prepare(component, &list)) lists.push_back(std::move(list));
  }
  if (lists.empty()) return;
  counters_ = {};
  for (Component& component : components_) {
    OpenedDocument opened(workspace_, documents_, component.path);
    OpenFile* file = opened.File();
    if (file == nullptr || file->document->format != model::Format::kMif) {
      Find(component.path + ": the file cannot be read; nothing of it is listed.");
      continue;
    }
    component.before = counters_;
    const Numbered numbers = Numbers(*file->document, &component);
    if (component.generated) continue;
    model::ReferenceTargets targets = Targets(file, &component, numbers);
    for (List& list : lists) {
      const std::filesystem::path folder = std::filesystem::path(list.component->path).parent_path();
      const std::string name = std::filesystem::path(component.path).lexically_relative(folder).string();
      if (list.index) {
        list.index->Collect(*file->document, &targets, name);
      } else {
        model::CollectEntries(*file->document, &targets, list.settings, list.formats, name, &list.entries);
      }
    }
  }
  for (List& list : lists) Write(&list);
}

void Updater::Write(List* list) {
  OpenedDocument opened(workspace_, documents_, list->component->path);
  OpenFile* file = opened.File();
  if (file == nullptr || !SettleDocument(file)) return Find(std::string(documents_.LastError()));
  if (list->index) {
    std::vector<std::string> problems;
    list->entries = list->index->Entries(&problems);
    for (const std::string& problem : problems) Find(file->path + ": " + problem + ".");
  } else {
    model::SortEntries(list->settings, &list->entries);
  }
  std::string problem;
  const bool changed = model::SetEntries(file->document.get(), list->settings, list->entries, &problem);
  if (!problem.empty()) Find(file->path + ": the list is not made anew: " + problem + "; it stays as it is.");
  if (changed && !opened.Finish(OpenedDocument::Change::kReferences))
    FindFile(std::string(documents_.LastError()));
}

}  // namespace

UpdateOutcome UpdateBook(Workspace& workspace, host::Documents& documents, host::Books& books, Id book,
                         std::uint32_t flags) {
  return Updater(workspace, documents, books, book, flags).Run();
}

std::unique_ptr<model::Document> ErrorLog(const std::string& book, const std::vector<std::string>& findings) {
  std::string text = "<MIFFile 8.00>\n";
  const auto paragraph = [&](const std::string& line) {
    text += "<Para \n <PgfTag `Body'>\n <ParaLine \n  <String `" + mif::Encode(line, mif::Encoding::kUtf8) +
            "'>\n > # end of ParaLine\n> # end of Para\n";
  };
  paragraph("Book error log: " + book);
  for (const std::string& finding : findings) paragraph(finding);
  if (findings.empty()) paragraph("No errors.");
  std::string error;
  return model::BuildMif(std::move(text), &error);
}

}  // namespace qelm::embedded::adapter
