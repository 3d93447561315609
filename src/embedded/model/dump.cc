#include "embedded/model/dump.h"

#include <string>
#include <unordered_map>
#include <vector>

#include "embedded/model/text_access.h"

namespace qelm::embedded::model {
namespace {

// The name of an object that stands in the text without an element; empty for other items.
std::string_view ObjectName(ItemKind kind) {
  switch (kind) {
    case ItemKind::kTableAnchor:
      return "table";
    case ItemKind::kNoteAnchor:
      return "footnote";
    case ItemKind::kFrameAnchor:
      return "frame";
    case ItemKind::kMarker:
      return "marker";
    case ItemKind::kReferenceBegin:
      return "cross-reference";
    default:
      return {};
  }
}

class Dumper {
 public:
  Dumper(const Document& document, Id flow, DumpSink* sink)
      : document_(document), flow_(document.flows[flow]), sink_(*sink) {}

  void Run();

 private:
  void FindParagraphs();
  void FindRowConditions();
  void VisitTree();
  void VisitText(std::uint32_t begin, std::uint32_t end, bool paragraph_ends);
  void Add(std::string_view text, std::string_view object, std::uint32_t item);
  void EndRun();
  CharacterProperties Properties(std::uint32_t item);

  const Document& document_;
  const Flow& flow_;
  DumpSink& sink_;
  std::vector<std::uint32_t> paragraphs_;  // of the flow's items: the paragraph, 0 for none
  std::unordered_map<Id, std::uint16_t> row_conditions_;
  std::unordered_map<std::uint64_t, CharacterProperties> properties_;  // by paragraph state and font
  DumpRun run_;
  std::string text_;     // of the run
  std::string decoded_;  // of one item
};

void Dumper::Run() {
  FindParagraphs();
  FindRowConditions();
  if (flow_.root != 0 && !document_.elements[flow_.root].deleted) {
    VisitTree();
  } else {
    VisitText(flow_.first_item, flow_.end_item, true);
  }
  EndRun();
}

// The mark that ends a paragraph carries its format, so the paragraphs are found from behind; the text of a
// cell or a footnote stands inside the paragraph that holds the anchor and has its own.
void Dumper::FindParagraphs() {
  paragraphs_.assign(flow_.end_item - flow_.first_item, 0);
  std::vector<std::uint32_t> around;
  std::uint32_t paragraph = 0;
  for (std::uint32_t i = flow_.end_item; i-- > flow_.first_item;) {
    const Item& item = document_.items[i];
    if (item.kind == ItemKind::kPartEnd) {
      around.push_back(paragraph);
      paragraph = 0;
    } else if (item.kind == ItemKind::kPartBegin && !around.empty()) {
      paragraph = around.back();
      around.pop_back();
    } else if (item.kind == ItemKind::kParagraphEnd) {
      paragraph = item.ref;
    }
    paragraphs_[i - flow_.first_item] = paragraph;
  }
}

void Dumper::FindRowConditions() {
  for (const Part& part : document_.parts) {
    if (part.kind == ElementKind::kTableRow && part.element != 0 && part.conditions != 0) {
      row_conditions_[part.element] = part.conditions;
    }
  }
}

void Dumper::VisitTree() {
  Id node = flow_.root;
  while (node != 0) {
    const Element& element = document_.elements[node];
    if (element.definition == 0) {
      VisitText(element.first_item, element.end_item, false);
    } else {
      EndRun();
      const auto row = row_conditions_.find(node);
      sink_.BeginElement(node, row == row_conditions_.end() ? std::uint16_t{0} : row->second);
      if (element.first_child != 0) {
        node = element.first_child;
        continue;
      }
      // What a variable shows is text that no node holds.
      if (element.kind == ElementKind::kSystemVariable)
        VisitText(element.first_item, element.end_item, false);
      EndRun();
      sink_.EndElement(node);
    }
    while (node != flow_.root && document_.elements[node].next == 0) {
      node = document_.elements[node].parent;
      EndRun();
      sink_.EndElement(node);
    }
    node = node == flow_.root ? 0 : document_.elements[node].next;
  }
}

void Dumper::VisitText(std::uint32_t begin, std::uint32_t end, bool paragraph_ends) {
  for (std::uint32_t i = begin; i < end; ++i) {
    const Item& item = document_.items[i];
    if (item.Is(kDeleted) || item.Is(kGenerated)) continue;
    if (item.kind == ItemKind::kParagraphEnd && paragraph_ends) {
      Add("\n", {}, i);
      continue;
    }
    decoded_.clear();
    AppendItemText(document_, item, &decoded_);
    const std::string_view object = ObjectName(item.kind);
    if (!decoded_.empty() || !object.empty()) Add(decoded_, object, i);
  }
}

void Dumper::Add(std::string_view text, std::string_view object, std::uint32_t item) {
  DumpRun next;
  next.object = object;
  next.properties = Properties(item);
  next.conditions = document_.items[item].conditions;
  if (!object.empty() || text_.empty() || !run_.SameProperties(next)) EndRun();
  run_ = next;
  text_ += text;
  if (!object.empty()) EndRun();
}

void Dumper::EndRun() {
  if (!text_.empty() || !run_.object.empty()) {
    run_.text = text_;
    sink_.Run(run_);
  }
  text_.clear();
  run_ = DumpRun();
}

CharacterProperties Dumper::Properties(std::uint32_t index) {
  const std::uint32_t font = document_.items[index].font;
  const std::uint32_t paragraph = paragraphs_[index - flow_.first_item];
  const std::uint32_t state = paragraph == 0 ? 0 : document_.paragraphs[paragraph].state;
  const std::uint64_t key = (static_cast<std::uint64_t>(state) << 32U) | font;
  const auto [found, is_new] = properties_.try_emplace(key);
  if (is_new) {
    CharacterProperties& result = found->second;
    const FontState& over = document_.fonts[font];
    if (state != 0) result.Take(document_.paragraph_states[state].font);
    const auto format = document_.character_formats.find(over.tag);
    if (!over.tag.empty() && format != document_.character_formats.end()) result.Take(format->second);
    result.Take(over.properties);
  }
  return found->second;
}

}  // namespace

bool DumpRun::SameProperties(const DumpRun& other) const {
  const CharacterProperties& a = properties;
  const CharacterProperties& b = other.properties;
  return conditions == other.conditions && a.color == b.color && a.underlining == b.underlining &&
         a.overline == b.overline && a.strikethrough == b.strikethrough && a.change_bar == b.change_bar &&
         a.background == b.background;
}

void DumpFlow(const Document& document, Id flow, DumpSink* sink) { Dumper(document, flow, sink).Run(); }

}  // namespace qelm::embedded::model
