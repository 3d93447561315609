#include "cli/page_table.h"

#include <cmath>

#include "embedded/render/design/page_design.h"

namespace qelm::cli {
namespace {

namespace model = embedded::model;
namespace render = embedded::render;
using Json = nlohmann::ordered_json;

// Hundredths of a point are more than anybody measures.
double Rounded(double points) { return std::round(points * 100) / 100; }

Json PageJson(const model::Document& document, const render::PageDesign& design) {
  const model::Page& page = document.pages[design.page];
  return {{"ordinal", page.ordinal},
          {"number", page.number},
          {"master", design.master_name.empty() ? Json(nullptr) : Json(design.master_name)},
          {"side", design.left ? "left" : "right"},
          {"width", Rounded(design.width)},
          {"height", Rounded(design.height)},
          {"columns", design.columns.size()},
          {"other_text", design.others.size()}};
}

std::string MasterOf(const Json& page) {
  return page["master"].is_null() ? "no master page" : page["master"].get<std::string>();
}

std::string SizeOf(const Json& page) {
  const auto columns = page["columns"].get<std::size_t>();
  std::string text = page["width"].dump() + " x " + page["height"].dump() + " pt, ";
  if (columns == 0) return text + "no text frame of the main flow";
  return text + std::to_string(columns) + (columns == 1 ? " column" : " columns");
}

// The last of the pages from `first` on that look the same, or whose two looks take turns.
std::size_t LastAlike(const Json& pages, std::size_t first) {
  std::size_t last = first;
  while (last + 1 < pages.size() && SizeOf(pages[last + 1]) == SizeOf(pages[first]) &&
         (last == first || MasterOf(pages[last + 1]) == MasterOf(pages[last - 1]))) {
    ++last;
  }
  // Two pages are no turns yet.
  const bool differ = last == first + 1 && MasterOf(pages[last]) != MasterOf(pages[first]);
  return differ ? first : last;
}

}  // namespace

Json PagesJson(const model::Document& document) {
  const render::PageDesigns designs(document);
  const render::PageNumbering numbering = render::ReadPageNumbering(document);
  Json pages = Json::array();
  for (std::size_t ordinal = 1; ordinal <= designs.recorded(); ++ordinal) {
    const auto number = numbering.first + static_cast<std::int64_t>(ordinal) - 1;
    pages.push_back(PageJson(document, designs.Design(ordinal, number)));
  }
  Json masters = Json::array();
  for (const model::Page& page : document.pages) {
    if (page.kind == model::FlowKind::kMaster) masters.push_back(page.number);
  }
  return {{"pages", std::move(pages)},
          {"masters", std::move(masters)},
          {"double_sided", designs.double_sided()},
          {"first_page", numbering.first},
          {"page_style", numbering.style}};
}

std::string PagesText(const Json& info) {
  std::string text;
  const Json& pages = info["pages"];
  for (std::size_t first = 0; first < pages.size();) {
    const std::size_t last = LastAlike(pages, first);
    text += pages[first]["number"].get<std::string>();
    if (last != first) text += "-" + pages[last]["number"].get<std::string>();
    text += ": " + MasterOf(pages[first]);
    const bool turns = last != first && MasterOf(pages[first + 1]) != MasterOf(pages[first]);
    if (turns) text += " and " + MasterOf(pages[first + 1]) + " by turns";
    text += ", " + SizeOf(pages[first]) + "\n";
    first = last + 1;
  }
  return text + std::to_string(pages.size()) + (pages.size() == 1 ? " page, " : " pages, ") +
         (info["double_sided"].get<bool>() ? "double-sided\n" : "single-sided\n");
}

}  // namespace qelm::cli
