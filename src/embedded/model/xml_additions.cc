#include "embedded/model/xml_additions.h"

#include <algorithm>
#include <unordered_map>

#include "embedded/model/xml_marks.h"
#include "embedded/model/xml_tags.h"
#include "embedded/xml/write.h"

namespace qelm::embedded::model {
namespace {

class XmlAdditions {
 public:
  XmlAdditions(const Document& document, xml::Encoding encoding)
      : document_(document),
        additions_(document.additions),
        encoding_(encoding),
        declares_elements_(document.source.find("<!ELEMENT") != std::string::npos) {}

  std::vector<XmlEdit> Run();

 private:
  // What becomes of an element's own tags.
  struct TagChange {
    bool renamed = false;
    std::string opened;  // what goes between the tags of an element that was one empty tag
    bool is_opened = false;
  };

  void SaveParent(Id parent);
  void SaveRun(Id parent, Id last_before, Id first);
  void SaveTag(Id element, const TagChange& change);
  void AppendNew(Id id, const std::string& separator, std::string* text);
  void AppendText(Id id, std::string* text) const;
  std::string Separator(Id beside) const;
  std::string LayoutInside(Id parent) const;
  std::uint32_t TagOf(Id element) const;
  std::string Writable(const std::string& mark) const;
  std::string_view Name(Id element) const {
    return document_.definitions[document_.elements[element].definition].name;
  }
  void Add(std::uint32_t begin, std::uint32_t end, std::string text) {
    edits_.push_back({begin, end, std::move(text)});
  }

  const Document& document_;
  const Additions& additions_;
  xml::Encoding encoding_;
  bool declares_elements_;
  std::vector<XmlEdit> edits_;
  std::unordered_map<Id, TagChange> tags_;
  std::unordered_map<Id, bool> emptied_;
};

std::vector<XmlEdit> XmlAdditions::Run() {
  for (const Id id : additions_.renamed) {
    if (!document_.elements[id].deleted) tags_[id].renamed = true;
  }
  for (const Id id : additions_.emptied) emptied_[id] = true;
  std::vector<Id> parents = additions_.parents;
  std::sort(parents.begin(), parents.end());
  parents.erase(std::unique(parents.begin(), parents.end()), parents.end());
  for (const Id parent : parents) {
    if (!document_.elements[parent].deleted) SaveParent(parent);
  }
  for (const Insertion& insertion : additions_.insertions) {
    std::string text;
    if (insertion.marker_type.empty()) {
      xml::AppendText(insertion.text, &text);
    } else {
      text = Writable(MarkerMark(insertion.marker_type, insertion.text));
    }
    const Item& item = document_.items[insertion.item];
    if (item.kind == ItemKind::kElementEnd && item.begin == item.end) {
      TagChange& change = tags_[item.ref];
      change.is_opened = true;
      change.opened += text;
    } else {
      Add(item.begin, item.begin, text);
    }
  }
  for (const auto& [id, change] : tags_) SaveTag(id, change);
  std::stable_sort(edits_.begin(), edits_.end(), [](const XmlEdit& a, const XmlEdit& b) {
    return a.begin != b.begin ? a.begin < b.begin : a.end < b.end;
  });
  return std::move(edits_);
}

// The item of the start tag: behind a table's or footnote's anchor.
std::uint32_t XmlAdditions::TagOf(Id id) const {
  const Element& element = document_.elements[id];
  const ItemKind kind = document_.items[element.first_item].kind;
  const bool anchored = kind == ItemKind::kTableAnchor || kind == ItemKind::kNoteAnchor;
  return element.first_item + (anchored ? 1 : 0);
}

// A mark as the encoding can hold it: references to characters, as text has them, mean nothing in marks.
std::string XmlAdditions::Writable(const std::string& mark) const {
  std::string bytes;
  xml::AppendEncoded(mark, encoding_, xml::Missing::kEscape, &bytes);
  return xml::ToUtf8(bytes, encoding_);
}

void XmlAdditions::SaveParent(Id parent) {
  if (emptied_.contains(parent)) {
    const Element& element = document_.elements[parent];
    // Marks stay: what they begin or end may lie outside.
    std::uint32_t behind = document_.items[TagOf(parent)].end;
    for (std::uint32_t i = TagOf(parent) + 1; i < element.end_item; ++i) {
      const Item& item = document_.items[i];
      if (behind < item.begin) Add(behind, item.begin, {});
      behind = std::max(behind, item.end);
      const bool stays =
          item.kind == ItemKind::kConditional || item.kind == ItemKind::kFont || i + 1 == element.end_item;
      if (!stays && item.begin != item.end) Add(item.begin, item.end, {});
    }
    SaveRun(parent, 0, element.first_child);
    return;
  }
  ForEachNewRun(document_.elements, additions_, parent,
                [&](Id last_before, Id first) { SaveRun(parent, last_before, first); });
}

// The line end and indentation before an element that stands first in its line, where that is layout and no
// text; else nothing.
std::string XmlAdditions::Separator(Id beside) const {
  const Element& element = document_.elements[beside];
  if (element.first_item == 0 || element.parent == 0 || element.kind == ElementKind::kText) return {};
  const Item& before = document_.items[element.first_item - 1];
  Span layout{before.end, document_.items[TagOf(beside)].begin};
  if (layout.Empty() && before.kind == ItemKind::kOther) layout.begin = before.begin;
  if (layout.begin >= layout.end) return {};
  const std::string blank = xml::ToUtf8(document_.At(layout), encoding_);
  const std::size_t line = blank.rfind('\n');
  if (line == std::string::npos || blank.find_first_not_of(" \t\r\n") != std::string::npos) return {};
  return std::string(document_.crlf ? "\r\n" : "\n") + blank.substr(line + 1);
}

// The same for the first element in another one, made from where that stands. A document that declares
// elements may count white space as text.
std::string XmlAdditions::LayoutInside(Id parent) const {
  const std::string around = Separator(parent);
  const Id above = document_.elements[parent].parent;
  if (declares_elements_ || (around.empty() && above != 0)) return {};
  constexpr std::string_view kStep = "  ";
  if (above == 0) return std::string(document_.crlf ? "\r\n" : "\n") + std::string(kStep);
  const std::string outer = above == 0 ? std::string() : Separator(above);
  const std::size_t line = around.rfind('\n') + 1;
  const std::size_t outer_line = outer.empty() ? 0 : outer.rfind('\n') + 1;
  const std::size_t indentation = around.size() - line;
  const std::size_t outer_indentation = outer.size() - outer_line;
  const std::size_t step = indentation > outer_indentation ? indentation - outer_indentation : kStep.size();
  return around + std::string(step, around.find('\t') != std::string::npos ? '\t' : ' ');
}

void XmlAdditions::AppendText(Id id, std::string* text) const {
  const NewContent& content = additions_.Of(id);
  if (content.is_paragraph) {
    text->append(kParagraphMark);
    if (!content.marker_type.empty())
      text->append(Writable(MarkerMark(content.marker_type, content.marker_text)));
    if (!content.variable.empty()) text->append(Writable(VariableMark(content.variable)));
  }
  xml::AppendText(content.text, text);
}

// A new child with all that is in it. Each element in it that has only elements has them on lines of their
// own where `separator` has one.
void XmlAdditions::AppendNew(Id top, const std::string& separator, std::string* text) {
  struct Open {
    Id element;
    Id next_child;
    std::string separator;  // before each of its children
    std::string own;        // before its end tag
  };
  std::vector<Open> open;
  const auto enter = [&](Id id, const std::string& before) {
    const Element& element = document_.elements[id];
    if (element.kind == ElementKind::kText) {
      AppendText(id, text);
      return;
    }
    text->append(before);
    std::string tag = StartTag(document_, element);
    if (element.first_child == 0) {
      tag.insert(tag.size() - 1, "/");
      text->append(tag);
      return;
    }
    text->append(tag);
    bool mixed = false;
    for (Id child = element.first_child; child != 0; child = document_.elements[child].next) {
      mixed = mixed || document_.elements[child].kind == ElementKind::kText;
    }
    const bool lines = !mixed && !before.empty();
    open.push_back(
        {id, element.first_child, lines ? before + "  " : std::string(), lines ? before : std::string()});
  };
  enter(top, separator);
  while (!open.empty()) {
    Open& innermost = open.back();
    if (innermost.next_child == 0) {
      text->append(innermost.own).append("</").append(Name(innermost.element)).append(">");
      open.pop_back();
      continue;
    }
    const Id child = innermost.next_child;
    innermost.next_child = document_.elements[child].next;
    const std::string before = innermost.separator;
    enter(child, before);
  }
}

void XmlAdditions::SaveRun(Id parent, Id last_before, Id first) {
  if (first == 0) return;
  const Element& element = document_.elements[parent];
  Id after = first;
  bool mixed = false;
  while (after != 0 && additions_.IsNew(after)) {
    mixed = mixed || document_.elements[after].kind == ElementKind::kText;
    after = document_.elements[after].next;
  }
  std::string separator;
  if (last_before != 0) {
    separator = Separator(last_before);
  } else if (after != 0) {
    separator = Separator(after);
  } else if (!mixed) {
    separator = LayoutInside(parent);
  }
  std::string text;
  for (Id child = first; child != after; child = document_.elements[child].next) {
    AppendNew(child, separator, &text);
  }
  const Item& end = document_.items[element.end_item - 1];
  const std::uint32_t tag = TagOf(parent);
  if (last_before != 0) {
    const Item& before = document_.items[document_.elements[last_before].end_item - 1];
    Add(before.end, before.end, text);
  } else if (after != 0 || end.begin != end.end) {
    const bool is_layout = after == 0 && !mixed && !separator.empty();
    std::uint32_t place = document_.items[tag].end;
    // An element that held nothing ends on a line of its own now.
    const bool has_layout = end.begin > place;
    if (is_layout && !has_layout) text += Separator(parent).empty() ? std::string("\n") : Separator(parent);
    Add(place, place, text);
  } else {
    TagChange& change = tags_[parent];
    change.is_opened = true;
    if (!mixed && !separator.empty())
      text += Separator(parent).empty() ? std::string("\n") : Separator(parent);
    change.opened = text;
  }
}

void XmlAdditions::SaveTag(Id id, const TagChange& change) {
  const Element& element = document_.elements[id];
  const Item& item = document_.items[TagOf(id)];
  std::string tag = xml::ToUtf8(document_.At(item), encoding_);
  if (element.attributes_changed) tag = RewrittenTag(document_, element, tag);
  if (change.renamed) {
    const std::size_t end = std::min(tag.find_first_of(" \t\r\n/>"), tag.size());
    tag.replace(1, end - 1, Name(id));
  }
  if (change.is_opened) {
    std::size_t slash = tag.rfind('/');
    if (slash != std::string::npos) {
      std::size_t blank = slash;
      while (blank > 0 && (tag[blank - 1] == ' ' || tag[blank - 1] == '\t')) --blank;
      tag.erase(blank, slash + 1 - blank);
    }
    tag.append(change.opened).append("</").append(Name(id)).append(">");
  }
  Add(item.begin, item.end, tag);
  const Item& end = document_.items[element.end_item - 1];
  if (change.renamed && end.begin != end.end) {
    Add(end.begin, end.end, "</" + std::string(Name(id)) + ">");
  }
}

}  // namespace

std::vector<XmlEdit> AdditionEdits(const Document& document, xml::Encoding encoding) {
  return XmlAdditions(document, encoding).Run();
}

}  // namespace qelm::embedded::model
