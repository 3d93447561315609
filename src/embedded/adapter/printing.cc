#include "embedded/adapter/printing.h"

#include <algorithm>

#include "embedded/adapter/opened_document.h"
#include "embedded/adapter/page_module.h"
#include "embedded/model/book_numbering.h"
#include "embedded/model/files.h"
#include "embedded/model/locate.h"
#include "embedded/model/metadata.h"
#include "embedded/model/page_numbering.h"
#include "embedded/render/design/page_design.h"

namespace qelm::embedded::adapter {
namespace {

// A document as it is laid out: itself, or the MIF of what is XML. Null when there is no such MIF, and `why`
// says so.
class Printable {
 public:
  Printable(OpenFile* file, std::string* why) : document_(file->document.get()) {
    if (document_->format == model::Format::kMif) return;
    std::string error;
    converted_ = model::BuildMif(model::ConvertToMif(*document_), &error);
    document_ = converted_.get();
    if (document_ == nullptr) *why = "the document cannot be written as MIF to print it: " + error;
  }
  const model::Document* get() const { return document_; }

 private:
  const model::Document* document_;
  std::unique_ptr<model::Document> converted_;
};

// What is printed is what a save would write: lines and graphics are read from the bytes of a document.
bool BringInChanges(OpenFile* file, std::string* why) {
  if (SettleDocument(file)) return true;
  *why = "what was changed in the document cannot be written.";
  return false;
}

// The numbers that the file has: those of a document that goes on from others in its book.
void TakeStoredNumbers(const model::Document& document, std::vector<model::ParagraphNumber>* numbers) {
  for (std::size_t i = 1; i < numbers->size(); ++i) {
    model::ParagraphNumber& number = (*numbers)[i];
    if (!number.numbered) continue;
    const std::string stored = model::StoredNumber(document, document.paragraphs[i]);
    if (stored != number.text) number.text = number.only = stored;
  }
}

bool GoesOn(const model::Document& document) {
  return document.At(document.document_statement).find("<PgfNumbering Continue>") != std::string_view::npos;
}

render::PrintSource SourceOf(const model::Document& document, const std::string& path) {
  render::PrintSource source;
  source.document = &document;
  source.path = path;
  source.places = model::DocumentPlaces(document);
  model::Counters counters;
  source.numbers = model::NumberParagraphs(document, source.places, &counters);
  if (GoesOn(document)) TakeStoredNumbers(document, &source.numbers);
  const render::PageNumbering pages = render::ReadPageNumbering(document);
  source.first_page = pages.first;
  source.page_style = pages.style;
  return source;
}

render::PrintOptions OptionsFor(const OpenFile& file, const host::SaveOptions& options) {
  constexpr double kUnitsAPoint = 65536;
  render::PrintOptions print;
  print.page_width = options.pdf_page_width / kUnitsAPoint;
  print.page_height = options.pdf_page_height / kUnitsAPoint;
  print.time = render::CurrentTime();
  const std::size_t slash = file.path.find_last_of('/');
  print.title = file.path.substr(slash == std::string::npos ? 0 : slash + 1);
  print.title = print.title.substr(0, print.title.rfind('.'));
  return print;
}

class BookPrinter {
 public:
  BookPrinter(Workspace& workspace, host::Documents& documents, OpenFile* book, render::PdfMaker* print)
      : workspace_(workspace), documents_(documents), book_(book), print_(print) {}

  // Every component is opened twice: links may lead to what comes later.
  std::size_t Run() {
    workspace_.left_out.clear();
    for (const model::Component& component : book_->book->components) {
      if (!IsPrinted(component)) continue;
      OpenedDocument opened(workspace_, documents_, PathOf(component));
      OpenFile* file = opened.File();
      if (file == nullptr) {
        LeaveOut(PathOf(component), std::string(documents_.LastError()));
        continue;
      }
      std::string why;
      if (!BringInChanges(file, &why)) continue;  // told when its turn comes
      const Printable printable(file, &why);
      if (printable.get() != nullptr) print_->Announce(*printable.get(), file->path);
      CheckSource(*file);
    }
    for (const model::Component& component : book_->book->components) {
      if (IsPrinted(component)) Add(component);
    }
    return pages_;
  }
  // The component whose file was written into meanwhile, so that pages may show something else.
  const std::string& changed() const { return changed_; }

 private:
  static bool IsPrinted(const model::Component& component) {
    return !component.excluded && !component.is_group && !component.removed;
  }
  std::string PathOf(const model::Component& component) const {
    return model::LocateComponent(book_->path, component.path).path;
  }
  void Add(const model::Component& component);
  void LeaveOut(std::string path, const std::string& why) {
    workspace_.Notice(why + " It is left out of " + book_->path + ".");
    workspace_.left_out.push_back(std::move(path));
  }
  void CheckSource(OpenFile& file) {
    if (!file.Tree().source.Intact()) changed_ = file.path;
  }

  Workspace& workspace_;
  host::Documents& documents_;
  OpenFile* book_;
  render::PdfMaker* print_;
  model::BookCounters counters_;
  model::PageCounter page_counter_;
  std::size_t pages_ = 0;
  std::string changed_;
};

void BookPrinter::Add(const model::Component& component) {
  OpenedDocument opened(workspace_, documents_, PathOf(component));
  OpenFile* file = opened.File();
  if (file == nullptr) return;
  std::string why;
  const bool settled = BringInChanges(file, &why);
  const Printable printable(file, &why);
  if (!settled || printable.get() == nullptr) {
    LeaveOut(file->path, file->path + ": " + why);
    return;
  }
  const model::Document& document = *printable.get();
  render::PrintSource source;
  source.document = &document;
  source.path = file->path;
  source.places = model::NextComponent(book_->book->tree, component.span, document, &counters_);
  source.numbers = model::NumberParagraphs(document, source.places, &counters_.paragraphs);
  const model::PageRun run = model::PagesOf(book_->book->tree, component.span, document, page_counter_);
  source.first_page = run.first;
  source.page_style = run.style;
  const std::size_t pages = print_->Add(source);
  CheckSource(*file);
  page_counter_ = {true, run.first + static_cast<std::int64_t>(pages) - 1};
  pages_ += pages;
}

}  // namespace

std::optional<std::string> PrintPdf(Workspace& workspace, host::Documents& documents, OpenFile* file,
                                    const host::SaveOptions& options, std::string* why) {
  const render::PageMaker* const maker = LoadedPageMaker(why);
  if (maker == nullptr) return std::nullopt;
  const std::unique_ptr<render::PdfMaker> print = maker->BeginPdf(OptionsFor(*file, options), why);
  if (print == nullptr) return std::nullopt;
  std::size_t pages = 0;
  if (file->book) {
    BookPrinter printer(workspace, documents, file, print.get());
    pages = printer.Run();
    if (!printer.changed().empty()) {
      *why = printer.changed() + " was changed on disk while it was printed.";
      return std::nullopt;
    }
    if (pages == 0) *why = print->Status();
    if (pages == 0 && why->empty()) *why = "none of the components of the book can be opened.";
  } else {
    if (!BringInChanges(file, why)) return std::nullopt;
    const Printable printable(file, why);
    if (printable.get() == nullptr) return std::nullopt;
    print->Announce(*printable.get(), file->path);
    pages = print->Add(SourceOf(*printable.get(), file->path));
    if (pages == 0) *why = print->Status();
  }
  if (pages == 0) return std::nullopt;
  std::string pdf = print->Finish(why);
  for (const std::string& notice : print->Notices()) workspace.Notice(notice);
  if (pdf.empty()) return std::nullopt;
  std::string warning;
  std::optional<std::string> described =
      maker->PutMetadata(std::move(pdf), model::MetadataPacket(file->Tree()), &warning, why);
  if (!warning.empty()) workspace.Notice(file->path + ": " + warning);
  return described;
}

std::optional<std::string> PrintPage(Workspace& workspace, OpenFile* file, std::size_t page, double dpi,
                                     std::string* why) {
  const render::PageMaker* const maker = LoadedPageMaker(why);
  if (maker == nullptr || !BringInChanges(file, why)) return std::nullopt;
  const Printable printable(file, why);
  if (printable.get() == nullptr) return std::nullopt;
  std::vector<std::string> notices;
  std::string png =
      maker->Png(SourceOf(*printable.get(), file->path), OptionsFor(*file, {}), page, dpi, &notices, why);
  for (const std::string& notice : notices) workspace.Notice(notice);
  if (png.empty()) return std::nullopt;
  return png;
}

namespace {

// The elements of a document in the order of its text.
std::vector<Id> ElementsInOrder(const model::Document& document) {
  std::vector<Id> elements;
  for (Id id = 1; id < document.elements.size(); ++id) {
    const model::Element& element = document.elements[id];
    if (element.definition != 0 && !element.deleted) elements.push_back(id);
  }
  std::stable_sort(elements.begin(), elements.end(), [&](Id one, Id other) {
    return document.elements[one].first_item < document.elements[other].first_item;
  });
  return elements;
}

// Pages of the MIF that XML was made to, by the items of the XML: their elements are the same.
render::FoundPages PagesOfXml(const model::Document& xml, const model::Document& mif,
                              const render::FoundPages& found) {
  const std::vector<Id> elements = ElementsInOrder(xml);
  const std::vector<Id> same = ElementsInOrder(mif);
  render::FoundPages pages;
  pages.count = found.count;
  if (elements.size() != same.size()) return pages;
  auto page = found.starts.begin();
  const render::PageAt* last = nullptr;
  for (std::size_t i = 0; i < elements.size(); ++i) {
    const std::uint32_t item = mif.elements[same[i]].first_item;
    while (page != found.starts.end() && page->item <= item) ++page;
    if (page == found.starts.begin() || &*(page - 1) == last) continue;
    last = &*(page - 1);
    pages.starts.push_back(*last);
    pages.starts.back().item = xml.elements[elements[i]].first_item;
  }
  return pages;
}

render::FoundPages FindPagesOf(OpenFile* file, const model::PageRun& run, std::string* why) {
  const render::PageMaker* const maker = LoadedPageMaker(why);
  if (maker == nullptr) return {};
  const Printable printable(file, why);
  if (printable.get() == nullptr) return {};
  render::PrintSource source = SourceOf(*printable.get(), file->path);
  source.first_page = run.first;
  source.page_style = run.style;
  render::FoundPages found = maker->Find(source, why);
  const bool converted = printable.get() != file->document.get();
  return converted ? PagesOfXml(*file->document, *printable.get(), found) : found;
}

}  // namespace

bool HasStalePages(OpenFile* file) {
  const std::vector<model::Page>& pages = file->Tree().pages;
  const auto is_body = [](const model::Page& page) { return page.kind == model::FlowKind::kBody; };
  return file->layout != kLayoutAsRead || std::none_of(pages.begin(), pages.end(), is_body);
}

const render::FoundPages& LaidPages(Workspace& workspace, OpenFile* file) {
  const render::PageNumbering pages = render::ReadPageNumbering(file->Tree());
  return LaidPages(workspace, file, {pages.first, pages.style});
}

const render::FoundPages& LaidPages(Workspace& workspace, OpenFile* file, const model::PageRun& run) {
  DerivedData& derived = file->derived;
  const auto laid_with = std::make_pair(run.first, std::string(run.style));
  if (derived.laid_at == file->layout && derived.laid_with == laid_with) return derived.laid_pages;
  derived.laid_pages = {};
  std::string why;
  if (file->document) derived.laid_pages = FindPagesOf(file, run, &why);
  if (!why.empty()) {
    workspace.Notice(file->path + ": where its pages begin now cannot be found: " + why +
                     " Page numbers are those that the file has.");
  }
  derived.laid_at = file->layout;
  derived.laid_with = laid_with;
  return derived.laid_pages;
}

}  // namespace qelm::embedded::adapter
