#include "embedded/render/design/page_design.h"

#include <algorithm>
#include <charconv>
#include <unordered_map>
#include <unordered_set>
#include <utility>

#include "embedded/mif/reader.h"
#include "embedded/model/mif_scan.h"
#include "embedded/render/design/drawings.h"

namespace qelm::embedded::render {

using mif::Piece;

namespace {

constexpr double kPlainMargin = 72;

// What the Document statement says of pages.
struct PageSettings {
  double width = 0;
  double height = 0;
  bool double_sided = false;
  std::string_view parity;
  PageNumbering numbering;
};

PageSettings ReadSettings(const model::Document& document, double unit) {
  PageSettings settings;
  if (document.document_statement.Empty()) return settings;
  mif::Reader reader(document.At(document.document_statement));
  if (!reader.Next() || reader.kind() != Piece::kGroup) return settings;
  model::Children(&reader, [&] {
    const std::string_view name = reader.name();
    const std::string_view data = reader.data();
    if (name == "DPageSize") {
      const std::vector<double> size = Lengths(data, unit);
      if (size.size() >= 2) std::tie(settings.width, settings.height) = std::tie(size[0], size[1]);
    } else if (name == "DTwoSides") {
      settings.double_sided = data == "Yes";
    } else if (name == "DParity") {
      settings.parity = data;
    } else if (name == "DStartPage") {
      std::from_chars(data.data(), data.data() + data.size(), settings.numbering.first);
    } else if (name == "DPageNumStyle") {
      settings.numbering.style = data;
    } else if (name == "ContPageNum") {
      settings.numbering.continues = data == "Yes";
    }
  });
  return settings;
}

// Whether a flow's paragraphs may stand in an area at the side.
bool HasSideHeads(const model::Document& document, model::Id flow) {
  mif::Reader reader(document.At(document.flows[flow].span));
  while (reader.Next() && reader.token() != mif::Token::kPara) {
    if (reader.name() == "TFSideheads") return reader.data() == "Yes";
  }
  return false;
}

}  // namespace

class PageDesigns::Builder {
 public:
  Builder(const model::Document& document, PageDesigns* designs)
      : document_(document), drawings_(document), designs_(*designs) {}

  void Run();

 private:
  PageDesign Plain() const;
  PageDesign Master(std::uint32_t page, bool left) const;
  Sides Record(std::uint32_t page) const;
  PageDesign OnSide(std::uint32_t page, bool left) const;
  void AddColumns(const Object& frame, bool side_heads, bool left, std::vector<Column>* columns) const;
  void SetSize(std::uint32_t page, PageDesign* design) const;
  // The text frames of a page with their places on the page, those of one flow in the order of the text.
  struct FlowFrames {
    model::Id flow = 0;
    std::vector<std::pair<std::uint32_t, Object>> frames;  // behind their places among the flow's frames
  };
  std::vector<FlowFrames> FramesOf(std::uint32_t page) const;
  void PutFrames(const FlowFrames& frames, PageDesign* design) const;
  bool IsTemplate(model::Id flow) const;
  void FindChains();
  std::uint32_t FindMaster(std::string_view name) const;
  bool IsMain(model::Id flow) const;
  std::uint32_t SideMaster(bool left) const;

  const model::Document& document_;
  Drawings drawings_;
  PageDesigns& designs_;
  std::unordered_map<std::uint32_t, FlowPlace> flow_of_;  // by the number of a text frame
  std::unordered_map<std::string_view, std::uint32_t> masters_;
  std::uint32_t right_ = model::kNoIndex;
  std::uint32_t left_ = model::kNoIndex;
  std::vector<bool> side_heads_;               // by flow
  std::unordered_set<std::string_view> tags_;  // of the flows of body pages
};

// On a master page the main flow is a template of the same name, through which text connects from page to
// page.
bool PageDesigns::Builder::IsMain(model::Id flow) const {
  if (flow == document_.main_flow) return flow != 0;
  const model::Flow& other = document_.flows[flow];
  if (other.kind != model::FlowKind::kMaster || !other.auto_connect) return false;
  return document_.main_flow == 0 || other.name == document_.flows[document_.main_flow].name;
}

// A flow of a master page that only says where body pages have a flow of its name.
bool PageDesigns::Builder::IsTemplate(model::Id flow) const {
  const model::Flow& other = document_.flows[flow];
  return other.kind == model::FlowKind::kMaster && other.auto_connect && !other.name.empty() &&
         tags_.contains(other.name);
}

// Frames that lie in others have their places in those.
std::vector<PageDesigns::Builder::FlowFrames> PageDesigns::Builder::FramesOf(std::uint32_t page) const {
  std::vector<FlowFrames> flows;
  std::unordered_map<model::Id, std::size_t> index;
  std::vector<Point> around{{}};
  const Range range = drawings_.pages[page].objects;
  for (std::uint32_t i = range.begin; i < range.end; ++i) {
    Object object = drawings_.objects[i];
    const Point origin = around.back();
    object.place.x += origin.x;
    object.place.y += origin.y;
    if (object.kind == ObjectKind::kFrameBegin) around.push_back({object.place.x, object.place.y});
    if (object.kind == ObjectKind::kFrameEnd) around.pop_back();
    if (object.kind != ObjectKind::kTextFrame) continue;
    const auto found = flow_of_.find(drawings_.text_frames[object.detail].number);
    if (found == flow_of_.end()) continue;
    // On a master page several flows may be templates of the main one.
    const model::Id flow = IsMain(found->second.flow) ? document_.main_flow : found->second.flow;
    const auto [at, is_new] = index.try_emplace(flow, flows.size());
    if (is_new) flows.push_back({flow, {}});
    flows[at->second].frames.emplace_back(found->second.place, object);
  }
  for (FlowFrames& flow : flows) {
    std::stable_sort(flow.frames.begin(), flow.frames.end(),
                     [](const auto& a, const auto& b) { return a.first < b.first; });
  }
  return flows;
}

// Puts the frames of a flow where the page's text runs through them.
void PageDesigns::Builder::PutFrames(const FlowFrames& frames, PageDesign* design) const {
  const bool main = frames.flow == document_.main_flow;
  std::vector<Column>* columns = &design->columns;
  if (!main) {
    columns =
        &design->others.emplace_back(FlowColumns{frames.flow, document_.flows[frames.flow].name, {}}).columns;
  }
  for (const auto& [place, frame] : frames.frames) {
    AddColumns(frame, side_heads_[frames.flow], design->left, columns);
  }
}

void PageDesigns::Builder::AddColumns(const Object& frame, bool side_heads, bool left,
                                      std::vector<Column>* columns) const {
  const TextShape& shape = drawings_.text_frames[frame.detail];
  // Where a hand-written file gives no size, there is only the page's.
  const bool has_size = frame.place.width >= 1 && frame.place.height >= 1;
  Rect text = has_size ? frame.place : static_cast<Rect>(Plain().columns.front());
  const Rect whole = text;
  Rect side;
  const double taken = shape.side_head_width + shape.side_head_gap;
  if (side_heads && taken < text.width) {
    const bool at_left = shape.side_head_side == TextShape::Side::kLeft ||
                         (shape.side_head_side == TextShape::Side::kInside && !left) ||
                         (shape.side_head_side == TextShape::Side::kOutside && left);
    side = text;
    side.width = shape.side_head_width;
    text.width -= taken;
    if (at_left) {
      text.x += taken;
    } else {
      side.x += text.width + shape.side_head_gap;
    }
  }
  const bool balanced = shape.balanced && shape.columns > 1;
  for (const Rect& column : ColumnsOf(shape, text))
    columns->push_back({column, side, whole, frame.angle, balanced});
}

void PageDesigns::Builder::SetSize(std::uint32_t page, PageDesign* design) const {
  const Drawings::PageShape& shape = drawings_.pages[page];
  if (shape.width <= 0 || shape.height <= 0) return;
  design->width = shape.width;
  design->height = shape.height;
}

PageDesign PageDesigns::Builder::Plain() const {
  PageDesign design;
  design.width = designs_.width_;
  design.height = designs_.height_;
  const double margin = std::min({kPlainMargin, design.width / 8, design.height / 8});
  const Rect all{margin, margin, design.width - 2 * margin, design.height - 2 * margin};
  design.columns.push_back({all, {}, all});
  return design;
}

// `page` may be none: a plain page.
PageDesign PageDesigns::Builder::Master(std::uint32_t page, bool left) const {
  PageDesign design = Plain();
  design.left = left;
  if (page == model::kNoIndex) return design;
  design.master = page;
  design.master_name = drawings_.pages[page].name;
  SetSize(page, &design);
  const std::vector<Column> plain = std::exchange(design.columns, {});
  for (const FlowFrames& frames : FramesOf(page)) {
    if (frames.flow == document_.main_flow || IsTemplate(frames.flow)) {
      PutFrames(frames, &design);
      continue;
    }
    // Such text is laid out in its first frame; it only runs on in others where it is long.
    const auto& [place, first] = frames.frames.front();
    if (place == 0) design.background.push_back({frames.flow, first.place, first.angle});
  }
  if (design.columns.empty()) design.columns = plain;
  return design;
}

std::uint32_t PageDesigns::Builder::FindMaster(std::string_view name) const {
  const auto found = masters_.find(name);
  return found == masters_.end() ? model::kNoIndex : found->second;
}

std::uint32_t PageDesigns::Builder::SideMaster(bool left) const {
  return left && left_ != model::kNoIndex ? left_ : right_;
}

PageDesign PageDesigns::Builder::OnSide(std::uint32_t page, bool left) const {
  const std::string_view background = drawings_.pages[page].background;
  std::uint32_t master = background == "None" ? model::kNoIndex : FindMaster(background);
  if (background.empty() || background == "Default") master = SideMaster(left);
  PageDesign design = Master(master, left);
  design.page = page;
  SetSize(page, &design);
  design.columns.clear();
  design.others.clear();
  for (const FlowFrames& frames : FramesOf(page)) PutFrames(frames, &design);
  return design;
}

PageDesigns::Sides PageDesigns::Builder::Record(std::uint32_t page) const {
  return {OnSide(page, false), OnSide(page, true)};
}

void PageDesigns::Builder::Run() {
  const PageSettings settings = ReadSettings(document_, drawings_.unit);
  if (settings.width > 0 && settings.height > 0) {
    designs_.width_ = settings.width;
    designs_.height_ = settings.height;
  }
  designs_.double_sided_ = settings.double_sided;
  if (settings.parity == "FirstLeft") designs_.first_side_ = FirstSide::kLeft;
  if (settings.parity == "FirstRight") designs_.first_side_ = FirstSide::kRight;
  side_heads_.resize(document_.flows.size(), false);
  for (model::Id flow = 1; flow < document_.flows.size(); ++flow) {
    if (document_.format == model::Format::kMif) side_heads_[flow] = HasSideHeads(document_, flow);
    if (document_.flows[flow].kind == model::FlowKind::kBody) tags_.insert(document_.flows[flow].name);
  }
  flow_of_ = drawings_.FollowFlows(document_);
  for (std::uint32_t i = 0; i < drawings_.pages.size(); ++i) {
    if (document_.pages[i].kind != model::FlowKind::kMaster) continue;
    masters_.try_emplace(drawings_.pages[i].name, i);
    if (drawings_.pages[i].right_master && right_ == model::kNoIndex) right_ = i;
    if (drawings_.pages[i].left_master && left_ == model::kNoIndex) left_ = i;
  }
  if (right_ == model::kNoIndex) right_ = left_;
  designs_.further_ = {Master(SideMaster(false), false), Master(SideMaster(true), true)};
  for (std::uint32_t i = 0; i < drawings_.pages.size(); ++i) {
    if (document_.pages[i].kind == model::FlowKind::kBody) designs_.recorded_.push_back(Record(i));
  }
  FindChains();
}

// Pages come in the order of the places that their first frames have among the flow's.
void PageDesigns::Builder::FindChains() {
  std::vector<std::vector<std::pair<std::uint32_t, FlowChain::Visit>>> visits(document_.flows.size());
  std::size_t ordinal = 0;
  for (std::uint32_t i = 0; i < drawings_.pages.size(); ++i) {
    if (document_.pages[i].kind != model::FlowKind::kBody) continue;
    ++ordinal;
    std::size_t index = 0;
    for (const FlowFrames& frames : FramesOf(i)) {
      if (frames.flow == document_.main_flow) continue;
      visits[frames.flow].push_back({frames.frames.front().first, {ordinal, index++}});
    }
  }
  for (model::Id flow = 1; flow < document_.flows.size(); ++flow) {
    if (flow == document_.main_flow || document_.flows[flow].kind != model::FlowKind::kBody) continue;
    std::stable_sort(visits[flow].begin(), visits[flow].end(),
                     [](const auto& a, const auto& b) { return a.first < b.first; });
    FlowChain& chain = designs_.chains_.emplace_back();
    chain.flow = flow;
    for (const auto& [place, visit] : visits[flow]) chain.visits.push_back(visit);
  }
}

PageNumbering ReadPageNumbering(const model::Document& document) {
  PageNumbering numbering = ReadSettings(document, 72).numbering;
  // Some documents of a book hold a number that no page has, and take theirs from the component before.
  constexpr std::int64_t kMost = 1'000'000;
  if (numbering.first < -kMost || numbering.first > kMost) numbering.first = 1;
  return numbering;
}

PageDesigns::PageDesigns(const model::Document& document) : document_(document) {
  Builder(document, this).Run();
}

bool PageDesigns::IsLeft(std::size_t ordinal, std::int64_t number) const {
  if (!double_sided_) return false;
  const bool odd = ordinal % 2 != 0;
  switch (first_side_) {
    case FirstSide::kLeft:
      return odd;
    case FirstSide::kRight:
      return !odd;
    case FirstSide::kByNumber:
      break;
  }
  return number % 2 == 0;
}

const PageDesign& PageDesigns::Design(std::size_t ordinal, std::int64_t number) const {
  const bool recorded = ordinal != 0 && ordinal <= recorded_.size();
  const Sides& sides = recorded ? recorded_[ordinal - 1] : further_;
  return IsLeft(ordinal, number) ? sides.left : sides.right;
}

std::vector<Column> PageDesigns::FurtherColumns(model::Id flow, std::size_t ordinal,
                                                std::int64_t number) const {
  const PageDesign& design = IsLeft(ordinal, number) ? further_.left : further_.right;
  const std::string_view tag = document_.flows[flow].name;
  for (const FlowColumns& other : design.others) {
    if (other.tag == tag) return other.columns;
  }
  const bool as_main = document_.flows[document_.main_flow].name == tag;
  return as_main ? design.columns : std::vector<Column>();
}

}  // namespace qelm::embedded::render
