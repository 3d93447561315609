#include "embedded/model/tree_builder.h"

#include <algorithm>

#include "embedded/model/room_behind.h"

namespace qelm::embedded::model {
namespace {

class TreeBuilder {
 public:
  TreeBuilder(Document* document, Scan* scan) : document_(*document), scan_(*scan) {}
  void Run();

 private:
  struct Range {
    std::uint32_t at;
    std::uint32_t end;
    std::uint32_t block;  // the hidden block that the range is, else 0
  };

  void FindBlocks(const RawFlow& hidden);
  void BuildFlow(const RawFlow& raw);
  void Step();
  void TakePlain(Range* range);
  void Emit(const Item& raw, std::uint32_t block);
  void EmitElementBegin(const Item& item);
  void EmitElementEnd(Item item);
  void EmitPartBegin(Item item);
  void EmitPartEnd(Item item);
  void EmitAnchor(Item item, const std::unordered_map<std::uint32_t, std::uint32_t>& parts);
  void EmitFrame(Item item);
  void EmitObject(const Item& item, ElementKind kind);
  void EmitReferenceEnd(Item item);
  void EmitHiddenPlace(Item item);
  Id NewElement(std::uint32_t raw, ElementKind kind);
  void Attach(Id element);
  void Open(Id element);
  void CloseTop();
  void AddText(const Item& item);
  void EndText();
  void Warn(std::uint32_t offset, const char* text);
  void ChooseMainFlow();
  FlowKind KindOf(const Flow& flow, std::int32_t* page) const;
  std::uint32_t Here() const { return static_cast<std::uint32_t>(document_.items.size()); }

  Document& document_;
  RoomBehind passed_;  // of the raw items
  std::vector<std::uint32_t> open_insets_;
  Scan& scan_;
  std::vector<Range> ranges_;
  std::vector<Id> open_;  // elements, outermost first
  struct OpenPart {
    std::size_t height;  // of open_ before the part
    Id element;
  };
  std::vector<OpenPart> open_parts_;
  Id text_ = 0;  // the text node that is being added to
  Flow* flow_ = nullptr;
  std::unordered_map<std::uint32_t, std::uint32_t> block_index_;
};

void TreeBuilder::Warn(std::uint32_t offset, const char* text) {
  constexpr std::size_t kMostWarnings = 100;
  if (document_.warnings.size() >= kMostWarnings) return;
  const mif::Place place = mif::PlaceOf(document_.source, offset);
  document_.warnings.push_back({"line " + std::to_string(place.line) + ": " + text});
}

void TreeBuilder::Run() {
  document_.items.reserve(scan_.items.size());
  document_.elements.reserve(scan_.elements.size() * 2);
  document_.flows.reserve(scan_.flows.size() + 1);
  const auto is_hidden = [&](const RawFlow& raw) {
    std::int32_t page = -1;
    return raw.flow.name == "HIDDEN" || KindOf(raw.flow, &page) == FlowKind::kHidden;
  };
  for (const RawFlow& raw : scan_.flows) {
    if (is_hidden(raw)) FindBlocks(raw);
  }
  for (const RawFlow& raw : scan_.flows) {
    if (!is_hidden(raw)) BuildFlow(raw);
  }
  for (HiddenBlock& block : document_.blocks) {
    if (block.place == kNoIndex) block.first_item = block.end_item = kNoIndex;
  }
  ChooseMainFlow();
}

// The blocks of a hidden flow. A block ends at its own end mark, or behind the paragraph end after it when
// the mark of its last paragraph is hidden too.
void TreeBuilder::FindBlocks(const RawFlow& hidden) {
  const auto base = static_cast<std::uint32_t>(document_.hidden_items.size());
  HiddenBlock block;
  bool open = false;
  for (std::uint32_t i = hidden.items.begin; i < hidden.items.end; ++i) {
    const Item& item = scan_.items[i];
    document_.hidden_items.push_back(item);
    const std::uint32_t stored = base + (i - hidden.items.begin);
    if (item.kind == ItemKind::kHiddenBegin) {
      block = HiddenBlock();
      block.number = item.ref;
      block.first_stored = stored;
      block.first_item = i;
      open = true;
    } else if (item.kind == ItemKind::kHiddenEnd && open && item.ref == block.number) {
      block.end_stored = stored + 1;
      block.end_item = i + 1;
      open = false;
      for (std::uint32_t next = i + 1; next < hidden.items.end; ++next) {
        const Item& after = scan_.items[next];
        if (after.kind == ItemKind::kParagraphEnd) {
          if (document_.paragraphs[after.ref].hidden_mark) {
            block.end_stored += next - i;
            block.end_item = next + 1;
          }
          break;
        }
      }
      block_index_[block.number] = static_cast<std::uint32_t>(document_.blocks.size());
      document_.blocks.push_back(block);
    }
  }
}

FlowKind TreeBuilder::KindOf(const Flow& flow, std::int32_t* page) const {
  const auto found = document_.text_frame_index.find(flow.text_frame);
  if (found == document_.text_frame_index.end()) return FlowKind::kBody;
  const TextFrame& frame = document_.text_frames[found->second];
  *page = frame.page;
  return frame.page < 0 ? FlowKind::kFrame : document_.pages[static_cast<std::size_t>(frame.page)].kind;
}

void TreeBuilder::BuildFlow(const RawFlow& raw) {
  document_.flows.push_back(raw.flow);
  flow_ = &document_.flows.back();
  flow_->name = document_.KeepName(flow_->name);
  flow_->kind = KindOf(raw.flow, &flow_->page);
  const auto frame = document_.text_frame_index.find(raw.flow.text_frame);
  if (flow_->kind == FlowKind::kFrame && frame != document_.text_frame_index.end()) {
    document_.frame_flows.emplace(document_.text_frames[frame->second].frame,
                                  static_cast<Id>(document_.flows.size()) - 1);
  }
  flow_->first_item = Here();
  open_.clear();
  open_parts_.clear();
  text_ = 0;
  if (raw.top_elements > 1) {
    Warn(raw.flow.span.begin,
         "the flow has no single highest-level element; one called NoName stands for it");
    RawElement none;
    none.definition = document_.InternDefinition("NoName");
    none.source = raw.flow.span.begin;
    scan_.elements.push_back(none);
    const Id root =
        NewElement(static_cast<std::uint32_t>(scan_.elements.size()) - 1, ElementKind::kContainer);
    document_.elements[root].is_virtual = true;
    Open(root);
  }
  ranges_.push_back({raw.items.begin, raw.items.end, 0});
  passed_.Begin(raw.items.begin);
  while (!ranges_.empty()) Step();
  EndText();
  const bool has_virtual = !open_.empty() && document_.elements[open_.front()].is_virtual;
  if (open_.size() > (has_virtual ? 1U : 0U)) {
    Warn(raw.flow.span.begin, "elements are still open at the end of the flow; they are closed there");
  }
  while (!open_.empty()) CloseTop();
  flow_->end_item = Here();
}

// Text and the file's layout, which most items are, from the innermost range.
void TreeBuilder::TakePlain(Range* range) {
  for (; range->at < range->end; ++range->at) {
    const Item& raw = scan_.items[range->at];
    switch (raw.kind) {
      case ItemKind::kString:
        AddText(raw);
        break;
      case ItemKind::kLine:
      case ItemKind::kParagraphBegin:
      case ItemKind::kParagraphEnd:
        document_.items.push_back(raw);
        break;
      default:
        return;
    }
    if (range->block != 0) document_.items.back().flags |= kInBlock;
  }
}

void TreeBuilder::Step() {
  Range& range = ranges_.back();
  TakePlain(&range);
  const bool in_flow = ranges_.size() == 1;
  if (in_flow) passed_.Pass(scan_.items.All(), range.at);
  if (range.at >= range.end) {
    if (range.block != 0) document_.blocks[range.block].end_item = Here();
    ranges_.pop_back();
    return;
  }
  const std::uint32_t at = range.at++;
  const std::uint32_t block = range.block;
  const Item raw = scan_.items[at];
  // A note's text follows its anchor; where the file has it, it is passed over.
  if (raw.kind == ItemKind::kPartBegin && document_.parts[raw.ref].kind == ElementKind::kFootnote &&
      document_.parts[raw.ref].anchor == kNoIndex) {
    range.at = scan_.part_items[raw.ref].end;
    if (in_flow) passed_.Begin(range.at);
    return;
  }
  Emit(raw, block);
}

void TreeBuilder::Emit(const Item& raw, std::uint32_t block) {
  Item item = raw;
  if (block != 0) item.flags |= kInBlock;
  switch (raw.kind) {
    case ItemKind::kElementBegin:
      EmitElementBegin(item);
      break;
    case ItemKind::kElementEnd:
      EmitElementEnd(item);
      break;
    case ItemKind::kPartBegin:
      EmitPartBegin(item);
      break;
    case ItemKind::kPartEnd:
      EmitPartEnd(item);
      break;
    case ItemKind::kTableAnchor:
      EmitAnchor(item, scan_.tables);
      break;
    case ItemKind::kNoteAnchor:
      EmitAnchor(item, scan_.notes);
      break;
    case ItemKind::kFrameAnchor:
      EmitFrame(item);
      break;
    case ItemKind::kMarker:
      EmitObject(item, ElementKind::kMarker);
      break;
    case ItemKind::kVariable:
      EmitObject(item, ElementKind::kSystemVariable);
      break;
    case ItemKind::kReferenceBegin:
      EmitObject(item, ElementKind::kCrossReference);
      break;
    case ItemKind::kReferenceEnd:
      EmitReferenceEnd(item);
      break;
    case ItemKind::kHiddenPlace:
      EmitHiddenPlace(item);
      break;
    case ItemKind::kHiddenBegin:
    case ItemKind::kHiddenEnd:
      item.ref = block;
      document_.items.push_back(item);
      break;
    case ItemKind::kInsetBegin: {
      Inset inset;
      inset.first_item = Here();
      item.ref = static_cast<std::uint32_t>(document_.insets.size());
      document_.insets.push_back(inset);
      open_insets_.push_back(item.ref);
      AddText(item);
      break;
    }
    case ItemKind::kInsetEnd:
      if (!open_insets_.empty()) {
        document_.insets[open_insets_.back()].end_item = Here() + 1;
        open_insets_.pop_back();
      }
      AddText(item);
      break;
    default:
      if (IsContent(raw.kind)) {
        AddText(item);
      } else {
        document_.items.push_back(item);
      }
  }
}

// Content belongs to a text node where it stands in an element and is not generated.
void TreeBuilder::AddText(const Item& item) {
  if (text_ == 0 && !open_.empty() && !item.Is(kGenerated)) {
    text_ = static_cast<Id>(document_.elements.size());
    Element& node = document_.elements.emplace_back();
    node.kind = ElementKind::kText;
    node.first_item = Here();
    Attach(text_);
  }
  document_.items.push_back(item);
  if (text_ != 0) document_.elements[text_].end_item = Here();
}

void TreeBuilder::EndText() { text_ = 0; }

Id TreeBuilder::NewElement(std::uint32_t raw, ElementKind kind) {
  EndText();
  const RawElement& from = scan_.elements[raw];
  const auto id = static_cast<Id>(document_.elements.size());
  Element& element = document_.elements.emplace_back();
  element.definition = from.definition;
  element.first_attribute = from.first_attribute;
  element.attribute_count = from.attribute_count;
  element.source = from.source;
  element.kind = kind;
  element.first_item = Here();
  element.end_item = Here() + 1;
  Attach(id);
  return id;
}

// A child of the innermost open element, or the flow's root.
void TreeBuilder::Attach(Id id) {
  Element& element = document_.elements[id];
  Id parent = open_.empty() ? 0 : open_.back();
  if (parent == 0) {
    if (flow_->root == 0) {
      flow_->root = id;
      return;
    }
    // Only what is anchored outside the root can come here; the root takes it, so that nothing is
    // unreachable.
    parent = flow_->root;
  }
  Element& above = document_.elements[parent];
  element.parent = parent;
  element.previous = above.last_child;
  if (above.last_child != 0) {
    document_.elements[above.last_child].next = id;
  } else {
    above.first_child = id;
  }
  above.last_child = id;
}

void TreeBuilder::Open(Id element) { open_.push_back(element); }

void TreeBuilder::CloseTop() {
  document_.elements[open_.back()].end_item = Here();
  open_.pop_back();
  EndText();
}

void TreeBuilder::EmitElementBegin(const Item& item) {
  const Id id = NewElement(item.ref, ElementKind::kContainer);
  document_.items.push_back(item).ref = id;
  Open(id);
}

// The tag of an ElementEnd is only advice (MIF reference, "ElementEnd"): ends are matched by nesting.
void TreeBuilder::EmitElementEnd(Item item) {
  const std::size_t floor =
      open_parts_.empty() ? 0 : open_parts_.back().height + (open_parts_.back().element != 0 ? 1U : 0U);
  const bool nothing_open =
      open_.size() <= floor || (open_.size() == 1 && document_.elements[open_.back()].is_virtual);
  if (nothing_open) {
    Warn(item.begin, "an ElementEnd ends no element; it is ignored");
    item.kind = ItemKind::kOther;
    item.ref = 0;
    document_.items.push_back(item);
    return;
  }
  document_.items.push_back(item).ref = open_.back();
  CloseTop();
}

void TreeBuilder::EmitPartBegin(Item item) {
  Part& part = document_.parts[item.ref];
  const std::uint32_t raw_element = scan_.part_elements[item.ref];
  EndText();
  open_parts_.push_back({open_.size(), 0});
  part.first_item = Here();
  if (raw_element != 0) {
    part.element = NewElement(raw_element, part.kind);
    if (part.anchor != kNoIndex) document_.elements[part.element].first_item = part.anchor;
    Open(part.element);
    open_parts_.back().element = part.element;
  }
  document_.items.push_back(item);
}

void TreeBuilder::EmitPartEnd(Item item) {
  if (open_parts_.empty()) return;
  const OpenPart top = open_parts_.back();
  open_parts_.pop_back();
  const std::size_t floor = top.height + (top.element != 0 ? 1U : 0U);
  if (open_.size() > floor) Warn(item.begin, "elements are still open here; they are closed");
  while (open_.size() > floor) CloseTop();
  document_.items.push_back(item);
  document_.parts[item.ref].end_item = Here();
  if (top.element != 0) CloseTop();
  EndText();
}

void TreeBuilder::EmitAnchor(Item item, const std::unordered_map<std::uint32_t, std::uint32_t>& parts) {
  const auto found = parts.find(item.ref);
  // A part that is anchored twice stays with its first anchor.
  if (found == parts.end() || document_.parts[found->second].anchor != kNoIndex) {
    item.ref = 0;
    AddText(item);
    return;
  }
  const std::uint32_t part = found->second;
  item.ref = part;
  document_.parts[part].anchor = Here();
  if (scan_.part_elements[part] != 0) {
    EndText();
    document_.items.push_back(item);
  } else {
    AddText(item);
  }
  ranges_.push_back({scan_.part_items[part].begin, scan_.part_items[part].end, 0});
}

void TreeBuilder::EmitFrame(Item item) {
  const auto found = scan_.frames.find(item.ref);
  item.ref = found == scan_.frames.end() ? 0 : found->second;
  AnchoredFrame& frame = document_.frames[item.ref];
  if (item.ref == 0 || frame.anchor != kNoIndex) {
    item.ref = 0;
    AddText(item);
    return;
  }
  frame.anchor = Here();
  if (scan_.frame_elements[item.ref] != 0) {
    frame.element = NewElement(scan_.frame_elements[item.ref], frame.kind);
    document_.items.push_back(item);
  } else {
    AddText(item);
  }
}

void TreeBuilder::EmitObject(const Item& item, ElementKind kind) {
  if (item.ref == 0) {
    AddText(item);
    return;
  }
  const Id id = NewElement(item.ref, kind);
  document_.items.push_back(item).ref = id;
  // A cross-reference has text of its own up to its end.
  if (kind == ElementKind::kCrossReference) Open(id);
}

void TreeBuilder::EmitReferenceEnd(Item item) {
  const bool ends_element =
      !open_.empty() && document_.elements[open_.back()].kind == ElementKind::kCrossReference;
  if (!ends_element) {
    AddText(item);
    return;
  }
  item.ref = open_.back();
  document_.items.push_back(item);
  CloseTop();
}

void TreeBuilder::EmitHiddenPlace(Item item) {
  const auto found = block_index_.find(item.ref);
  if (found == block_index_.end() || document_.blocks[found->second].place != kNoIndex) {
    Warn(item.begin, "a place of hidden text has no text to it");
    item.kind = ItemKind::kMarker;
    item.ref = 0;
    AddText(item);
    return;
  }
  const std::uint32_t index = found->second;
  HiddenBlock& block = document_.blocks[index];
  item.ref = index;
  block.place = Here();
  document_.items.push_back(item);
  const Range range{block.first_item, block.end_item, index};
  block.first_item = Here();
  ranges_.push_back(range);
}

// The flow of the document's text: on a body page, tagged and auto-connected. Where several are, one that
// holds elements goes first, then the one on the earliest page.
void TreeBuilder::ChooseMainFlow() {
  const auto rank = [&](const Flow& flow) {
    int score = 0;
    if (flow.kind == FlowKind::kBody) score += 8;
    if (!flow.name.empty() && flow.auto_connect) score += 4;
    if (flow.root != 0) score += 2;
    return score;
  };
  for (Id id = 1; id < document_.flows.size(); ++id) {
    if (document_.main_flow == 0) {
      document_.main_flow = id;
      continue;
    }
    const Flow& best = document_.flows[document_.main_flow];
    const Flow& flow = document_.flows[id];
    if (rank(flow) > rank(best) || (rank(flow) == rank(best) && flow.page < best.page)) {
      document_.main_flow = id;
    }
  }
}

}  // namespace

void BuildTree(Document* document, Scan* scan) { TreeBuilder(document, scan).Run(); }

}  // namespace qelm::embedded::model
