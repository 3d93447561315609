#include "embedded/render/print.h"

#include <cairo-pdf.h>
#include <cairo.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <filesystem>
#include <utility>

#include "embedded/model/text_access.h"
#include "embedded/render/drawing.h"
#include "embedded/render/flow_layout.h"
#include "embedded/render/link_table.h"
#include "embedded/render/outline.h"

namespace qelm::embedded::render {
namespace {

// One document on its way to pages.
struct Job {
  Job(const PrintSource& source, const PrintOptions& options, Fonts& fonts)
      : graphics(*source.document, std::filesystem::path(source.path).parent_path().string(), &fonts),
        setting(*source.document, fonts, graphics),
        designs(*source.document),
        page_style(source.page_style),
        first_page(source.first_page) {
    setting.time = options.time;
    setting.numbers = source.numbers;
    setting.facts.places = source.places;
    DrawObjectsInLines(fonts.context());
  }

  std::size_t Run(PageSink* sink, std::vector<PageStart>* starts = nullptr) {
    setting.notices.clear();
    FlowLayout layout(setting, designs, page_style, first_page, sink);
    const std::size_t pages = layout.Run();
    if (starts != nullptr) *starts = layout.TakePageStarts();
    return pages;
  }
  // How many pages there are, where some text asks for it, is known when they were laid out once.
  void CountPages();

  Graphics graphics;
  Setting setting;
  PageDesigns designs;
  std::string page_style;
  std::int64_t first_page;
};

// Puts the language, and that the text is tagged, into a PDF as Cairo ends it: the catalog is the last
// object, so that nothing behind it moves but the place of the table of objects.
void CompleteCatalog(const std::string& language, std::string* pdf) {
  constexpr std::string_view kCatalog = "/Type /Catalog\n";
  constexpr std::string_view kStart = "startxref\n";
  const std::size_t catalog = pdf->rfind(kCatalog);
  const std::size_t start = pdf->rfind(kStart);
  if (catalog == std::string::npos || start == std::string::npos || catalog > start) return;
  const char* const digits = pdf->data() + start + kStart.size();
  std::size_t table = 0;
  const char* const end = std::from_chars(digits, pdf->data() + pdf->size(), table).ptr;
  if (table < catalog || pdf->compare(table, 4, "xref") != 0) return;
  std::string entry = "   /MarkInfo << /Marked true >>\n";
  if (!language.empty()) entry += "   /Lang (" + language + ")\n";
  const std::string moved = std::to_string(table + entry.size());
  pdf->replace(start + kStart.size(), static_cast<std::size_t>(end - digits), moved);
  pdf->insert(catalog + kCatalog.size(), entry);
}

class Counter : public PageSink {
 public:
  bool Take(LaidPage&&) override { return true; }
};

// Whether text shows a variable that says how many pages there are.
bool AsksForLast(const model::Document& document) {
  constexpr std::array<std::string_view, 2> kBlocks = {"$lastpagenum", "$pagecount"};
  std::unordered_set<std::string_view> asking;
  for (const auto& [name, definition] : document.variables) {
    for (const std::string_view block : kBlocks) {
      if (definition.find(block) != std::string_view::npos) asking.insert(name);
    }
  }
  return !asking.empty() &&
         std::any_of(document.items.begin(), document.items.end(), [&](const model::Item& item) {
           return item.kind == model::ItemKind::kVariable && !item.Is(model::kDeleted) &&
                  asking.contains(model::Substatement(document, item, "VariableName"));
         });
}

void Job::CountPages() {
  if (!AsksForLast(setting.document)) return;
  Counter counter;
  const std::size_t pages = Run(&counter);
  setting.facts.count = std::to_string(pages);
  setting.facts.last = model::NumberIn(
      page_style, first_page + static_cast<std::int64_t>(std::max<std::size_t>(pages, 1)) - 1);
}

std::string DateText(const PrintTime& time) {
  const auto digits = [](int value, std::size_t width) {
    std::string text = std::to_string(value);
    return std::string(width - std::min(width, text.size()), '0') + text;
  };
  return digits(time.year, 4) + "-" + digits(time.month, 2) + "-" + digits(time.day, 2) + "T" +
         digits(time.hour, 2) + ":" + digits(time.minute, 2) + ":" + digits(time.second, 2);
}

cairo_status_t Append(void* closure, const unsigned char* data, unsigned int length) {
  static_cast<std::string*>(closure)->append(reinterpret_cast<const char*>(data), length);
  return CAIRO_STATUS_SUCCESS;
}

void AddNotices(const Job& job, const std::string& path, std::vector<std::string>* notices) {
  const auto add = [&](const std::string& notice) {
    notices->emplace_back(path).append(": ").append(notice);
  };
  std::for_each(job.graphics.missing().begin(), job.graphics.missing().end(), add);
  std::for_each(job.setting.notices.begin(), job.setting.notices.end(), add);
}

}  // namespace

class PdfPrint::Work {
 public:
  explicit Work(const PrintOptions& options) : options_(options) {}
  ~Work() {
    if (cr_ != nullptr) cairo_destroy(cr_);
    if (surface_ != nullptr) cairo_surface_destroy(surface_);
  }

  std::size_t Add(const PrintSource& source);
  std::string Finish(std::string* why);
  std::string Status() const {
    return cr_ == nullptr ? "no page was made." : cairo_status_to_string(cairo_status(cr_));
  }

  LinkTable links;
  Fonts fonts;
  std::vector<std::string> notices;

 private:
  class Sink;
  // Begins a page. It ends with the next one, so that places can still be put on the last.
  void Open(double width, double height);
  void PlaceName(const std::string& name);
  void AddHeading(int level, const std::string& title, double y);

  PrintOptions options_;
  std::string bytes_;
  std::string language_;  // of the first document
  cairo_surface_t* surface_ = nullptr;
  cairo_t* cr_ = nullptr;
  int pages_ = 0;
  std::unordered_set<std::string> placed_;
  struct Heading {
    int level;
    int id;
  };
  std::vector<Heading> headings_;  // the last one and those around it
};

class PdfPrint::Work::Sink : public PageSink {
 public:
  Sink(Work& work, Job& job, std::size_t document)
      : work_(work), job_(job), outline_(job.setting), document_(document) {}

  bool Take(LaidPage&& page) override {
    const PrintOptions& options = work_.options_;
    const double width = options.page_width > 0 ? options.page_width : page.design->width;
    const double height = options.page_height > 0 ? options.page_height : page.design->height;
    work_.Open(width, height);
    ++work_.pages_;
    if (page.ordinal == 1) work_.PlaceName(LinkTable::PlaceName(document_, {}));
    DrawPage(job_.setting, work_.cr_, page, true);
    for (const LaidPage::Begin& begin : page.begins) {
      const int level = outline_.Level(begin.paragraph->story(), begin.paragraph->format());
      if (level > 0) work_.AddHeading(level, Outline::Title(begin.paragraph->story()), begin.y);
    }
    return cairo_status(work_.cr_) == CAIRO_STATUS_SUCCESS;
  }

 private:
  Work& work_;
  Job& job_;
  Outline outline_;
  std::size_t document_;
};

void PdfPrint::Work::Open(double width, double height) {
  if (surface_ != nullptr) {
    cairo_show_page(cr_);
    cairo_pdf_surface_set_size(surface_, width, height);
    return;
  }
  surface_ = cairo_pdf_surface_create_for_stream(Append, &bytes_, width, height);
  cr_ = cairo_create(surface_);
  const std::string date = DateText(options_.time);
  cairo_pdf_surface_set_metadata(surface_, CAIRO_PDF_METADATA_CREATE_DATE, date.c_str());
  cairo_pdf_surface_set_metadata(surface_, CAIRO_PDF_METADATA_MOD_DATE, date.c_str());
  if (!options_.title.empty()) {
    cairo_pdf_surface_set_metadata(surface_, CAIRO_PDF_METADATA_TITLE, options_.title.c_str());
  }
}

void PdfPrint::Work::PlaceName(const std::string& name) {
  if (!placed_.insert(name).second) return;
  const std::string attributes = "name='" + name + "' x=0 y=0";
  cairo_tag_begin(cr_, CAIRO_TAG_DEST, attributes.c_str());
  cairo_tag_end(cr_, CAIRO_TAG_DEST);
}

void PdfPrint::Work::AddHeading(int level, const std::string& title, double y) {
  if (title.empty()) return;
  while (!headings_.empty() && headings_.back().level >= level) headings_.pop_back();
  const int parent = headings_.empty() ? CAIRO_PDF_OUTLINE_ROOT : headings_.back().id;
  const std::string place =
      "page=" + std::to_string(pages_) + " pos=[0 " + std::to_string(std::lround(y)) + "]";
  const auto flags =
      static_cast<cairo_pdf_outline_flags_t>(headings_.empty() ? CAIRO_PDF_OUTLINE_FLAG_OPEN : 0);
  const int id = cairo_pdf_surface_add_outline(surface_, parent, title.c_str(), place.c_str(), flags);
  headings_.push_back({level, id});
}

std::size_t PdfPrint::Work::Add(const PrintSource& source) {
  Job job(source, options_, fonts);
  const std::size_t index = links.Find(source.path);
  if (index != LinkTable::npos) {
    job.setting.link = [this, index](std::string_view file, std::string_view target) {
      return links.Attributes(index, file, target);
    };
    job.setting.FindPlaces([this, index](std::string_view target) {
      return links.IsWanted(index, target) ? LinkTable::PlaceName(index, target) : std::string();
    });
  }
  if (language_.empty()) language_ = job.setting.language;
  job.CountPages();
  job.setting.placed = std::exchange(placed_, {});
  Sink sink(*this, job, index == LinkTable::npos ? 0 : index);
  headings_.clear();
  const std::size_t pages = job.Run(&sink);
  placed_.insert(job.setting.placed.begin(), job.setting.placed.end());
  AddNotices(job, source.path, &notices);
  return cr_ != nullptr && cairo_status(cr_) == CAIRO_STATUS_SUCCESS ? pages : 0;
}

// A link whose place did not come to stand on a page - the text it lies in is not shown after all - would
// keep the PDF from being made, so it leads to the end.
std::string PdfPrint::Work::Finish(std::string* why) {
  if (surface_ == nullptr) Open(612, 792);
  std::vector<std::string> names(links.used().begin(), links.used().end());
  std::sort(names.begin(), names.end());
  for (const std::string& name : names) PlaceName(name);
  cairo_show_page(cr_);
  cairo_surface_finish(surface_);
  const cairo_status_t status = cairo_surface_status(surface_);
  if (status != CAIRO_STATUS_SUCCESS) {
    *why = cairo_status_to_string(status);
    return {};
  }
  CompleteCatalog(language_, &bytes_);
  return std::move(bytes_);
}

PdfPrint::PdfPrint(const PrintOptions& options) : work_(std::make_unique<Work>(options)) {}
PdfPrint::~PdfPrint() = default;

void PdfPrint::Announce(const model::Document& document, const std::string& path) {
  work_->links.Add(document, path);
}

std::size_t PdfPrint::Add(const PrintSource& source) { return work_->Add(source); }

std::string PdfPrint::Status() const { return work_->Status(); }

std::string PdfPrint::Finish(std::string* why) { return work_->Finish(why); }

std::vector<std::string> PdfPrint::Notices() const {
  std::vector<std::string> notices = work_->fonts.notices();
  notices.insert(notices.end(), work_->notices.begin(), work_->notices.end());
  return notices;
}

namespace {

class PngSink : public PageSink {
 public:
  PngSink(Job& job, std::size_t wanted, double dpi) : job_(job), wanted_(wanted), dpi_(dpi) {}

  bool Take(LaidPage&& page) override {
    for (const auto& [part, number] : page.note_numbers) job_.setting.note_numbers[part] = number;
    if (page.ordinal != wanted_) return true;
    const double scale = dpi_ / 72;
    const auto pixels = [scale](double points) {
      return static_cast<int>(std::lround(std::clamp(points * scale, 1.0, 32000.0)));
    };
    const int width = pixels(page.design->width);
    const int height = pixels(page.design->height);
    too_large_ = static_cast<double>(width) * height > kMostPixels;
    if (too_large_) return false;
    cairo_surface_t* surface = cairo_image_surface_create(CAIRO_FORMAT_RGB24, width, height);
    cairo_t* cr = cairo_create(surface);
    cairo_set_source_rgb(cr, 1, 1, 1);
    cairo_paint(cr);
    cairo_scale(cr, scale, scale);
    DrawPage(job_.setting, cr, page, false);
    cairo_destroy(cr);
    status_ = cairo_surface_write_to_png_stream(surface, Append, &png_);
    cairo_surface_destroy(surface);
    return false;
  }

  std::string png_;
  cairo_status_t status_ = CAIRO_STATUS_SUCCESS;
  bool too_large_ = false;

 private:
  static constexpr double kMostPixels = 1e8;
  Job& job_;
  std::size_t wanted_;
  double dpi_;
};

}  // namespace

std::string PrintPng(const PrintSource& source, const PrintOptions& options, std::size_t page, double dpi,
                     std::vector<std::string>* notices, std::string* why) {
  Fonts fonts;
  Job job(source, options, fonts);
  job.CountPages();
  PngSink sink(job, page, dpi);
  const std::size_t pages = job.Run(&sink);
  *notices = fonts.notices();
  AddNotices(job, source.path, notices);
  if (sink.too_large_) {
    *why = "the picture would have more than 100 million pixels; fewer dots an inch make a smaller one.";
    return {};
  }
  if (sink.status_ != CAIRO_STATUS_SUCCESS) {
    *why = cairo_status_to_string(sink.status_);
    return {};
  }
  if (sink.png_.empty())
    *why = "there is no page " + std::to_string(page) + "; the document has " + std::to_string(pages) + ".";
  return std::move(sink.png_);
}

FoundPages FindPages(const PrintSource& source) {
  Fonts fonts;
  Job job(source, PrintOptions(), fonts);
  Counter counter;
  std::vector<PageStart> starts;
  FoundPages found;
  found.count = job.Run(&counter, &starts);
  const std::vector<model::Flow>& flows = source.document->flows;
  auto start = starts.begin();
  for (const model::Flow& flow : flows) {
    const bool any = start != starts.end() && start->item < flow.end_item;
    for (; start != starts.end() && start->item < flow.end_item; ++start) {
      const auto ordinal = static_cast<std::size_t>(start->number - source.first_page + 1);
      found.starts.push_back({start->item, ordinal, start->number, std::move(start->text)});
    }
    if (any) found.starts.push_back({flow.end_item, 0, 0, {}});
  }
  return found;
}

}  // namespace qelm::embedded::render
