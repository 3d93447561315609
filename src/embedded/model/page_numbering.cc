#include "embedded/model/page_numbering.h"

#include <algorithm>
#include <charconv>
#include <string_view>

#include "embedded/mif/reader.h"
#include "embedded/model/mif_layout.h"
#include "embedded/model/numbering.h"

namespace qelm::embedded::model {
namespace {

// What a statement, of a component or of a document, says of its pages.
struct PageSettings {
  std::optional<bool> continues;
  std::int64_t start = 1;
  std::string_view style = "Arabic";
  std::int64_t pages = 0;  // NumPages
};

// No book has more pages, so that sums of these numbers are numbers.
std::int64_t Number(std::string_view data, std::int64_t other) {
  constexpr std::int64_t kMost = 1'000'000;
  std::from_chars(data.data(), data.data() + data.size(), other);
  return std::clamp(other, -kMost, kMost);
}

PageSettings ReadPageSettings(std::string_view statement) {
  PageSettings settings;
  std::string_view method;
  mif::Reader reader(statement);
  while (reader.Next()) {
    if (reader.kind() != mif::Piece::kLeaf || reader.depth() != 1) continue;
    const std::string_view name = reader.name();
    const std::string_view data = reader.data();
    if (name == "ContPageNum") settings.continues = data == "Yes";
    if (name == "PageNumbering") method = data;
    if (name == "PageNumStart" || name == "DStartPage") settings.start = Number(data, 1);
    if (name == "PageNumStyle" || name == "DPageNumStyle") settings.style = data;
    if (name == "NumPages") settings.pages = Number(data, 0);
  }
  // The method is what newer files say, and says more than the switch.
  if (method == "Continue" || method == "Restart") settings.continues = method == "Continue";
  if (method == "ReadFromFile") settings.continues.reset();
  return settings;
}

bool HasPointPages(const Document& document) {
  return std::any_of(document.pages.begin(), document.pages.end(), [](const Page& page) {
    return page.kind == FlowKind::kBody && page.number.find('.') != std::string_view::npos;
  });
}

}  // namespace

PageRun PagesOf(const Document& book, Span component, const Document& document, const PageCounter& counter) {
  const PageSettings of_book = ReadPageSettings(book.At(component));
  const PageSettings of_file = ReadPageSettings(document.At(document.document_statement));
  const PageSettings& settings = of_book.continues ? of_book : of_file;
  const bool goes_on = settings.continues.value_or(false) && counter.any;
  return {goes_on ? counter.last + 1 : settings.start, settings.style};
}

std::optional<bool> PagesGoOn(std::string_view statement) { return ReadPageSettings(statement).continues; }

std::vector<std::string> NextPages(const Document& book, Span component, const Document& document,
                                   PageCounter* counter) {
  const PageRun run = PagesOf(book, component, document, *counter);
  std::int64_t next = run.first;
  const bool keeps = HasPointPages(document);
  std::vector<std::string> numbers(document.pages.size());
  for (std::size_t i = 0; i < numbers.size(); ++i) {
    const Page& page = document.pages[i];
    if (page.kind != FlowKind::kBody) continue;
    if (!keeps) numbers[i] = NumberIn(run.style, next);
    if (!keeps || page.number.find('.') == std::string_view::npos) ++next;
  }
  *counter = {true, next - 1};
  return numbers;
}

void SkipPages(const Document& book, Span component, PageCounter* counter) {
  const PageSettings settings = ReadPageSettings(book.At(component));
  const bool goes_on = settings.continues.value_or(false) && counter->any;
  *counter = {true, (goes_on ? counter->last : settings.start - 1) + settings.pages};
}

std::size_t SetPageNumbers(Document* document, const std::vector<std::string>& numbers) {
  const MifLayout layout(*document);
  std::size_t changed = 0;
  for (std::size_t i = 0; i < numbers.size(); ++i) {
    Page& page = document->pages[i];
    if (numbers[i].empty() || page.number == numbers[i]) continue;
    mif::Reader reader(document->At(page.span));
    while (reader.Next() && reader.token() != mif::Token::kPageNum) {
    }
    if (reader.kind() != mif::Piece::kLeaf || reader.token() != mif::Token::kPageNum) continue;
    const Span statement{page.span.begin + reader.begin(), page.span.begin + reader.end()};
    document->replacements.insert_or_assign(
        statement.begin, Replacement{statement, "<PageNum " + layout.Quoted(numbers[i]) + ">"});
    page.number = document->Keep(numbers[i]);
    ++changed;
  }
  document->modified = document->modified || changed != 0;
  return changed;
}

}  // namespace qelm::embedded::model
