#include "embedded/model/format_rules.h"

#include <algorithm>
#include <charconv>
#include <utility>

#include "embedded/model/mif_scan.h"
#include "embedded/model/text_access.h"

namespace qelm::embedded::model {

using mif::Piece;

namespace {

std::optional<std::int32_t> ReadLevel(std::string_view text) {
  std::int32_t level = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), level);
  return error == std::errc() && end == text.data() + text.size() && !text.empty()
             ? std::optional<std::int32_t>(level)
             : std::nullopt;
}

bool IsOneOf(std::string_view name, const std::vector<std::string>& names) {
  return std::find(names.begin(), names.end(), name) != names.end();
}

}  // namespace

// Rules nest as deep as a file says, so what is open is kept in a stack of its own.
class FormatRules::Reader {
 public:
  Reader(Document* document, FormatRules* rules)
      : document_(*document), rules_(*rules), reader_(document->source) {}

  void Run() {
    while (reader_.Next()) {
      if (reader_.kind() != Piece::kGroup) continue;
      if (reader_.token() == mif::Token::kFmtChangeListCatalog) {
        Children(&reader_, [&] { ReadNamedList(); });
      } else if (reader_.token() == mif::Token::kElementDefCatalog) {
        Children(&reader_, [&] { ReadDefinition(); });
        break;
      } else if (!reader_.Skip()) {
        break;
      }
    }
  }
  // The catalog of change lists may stand behind the definitions that name its lists. Where they name none
  // that is not known, it is not looked for: the rest of the document is long.
  void ResolveNames() {
    const bool all_known = std::all_of(named_.begin(), named_.end(), [this](const Named& named) {
      return rules_.change_lists_.contains(named.name);
    });
    while (!all_known && reader_.Next()) {
      if (reader_.kind() != Piece::kGroup) continue;
      if (reader_.token() != mif::Token::kFmtChangeListCatalog) {
        if (!reader_.Skip()) break;
        continue;
      }
      Children(&reader_, [&] { ReadNamedList(); });
      break;
    }
    for (const Named& named : named_) {
      const auto list = rules_.change_lists_.find(named.name);
      if (list != rules_.change_lists_.end()) {
        rules_.rules_[named.rule].clauses[named.clause].properties.Take(list->second);
      }
    }
  }

 private:
  // What is open: a part of a definition, a rule, or a clause of one.
  struct Open {
    RuleList* part;
    std::uint32_t rule;
    std::optional<std::size_t> clause;
  };
  struct Named {
    std::uint32_t rule;
    std::size_t clause;
    std::string_view name;
  };

  CharacterProperties ReadList() {
    CharacterProperties properties;
    ScanFont(&reader_, &document_, &properties, nullptr, nullptr);
    return properties;
  }

  void ReadNamedList() {
    if (reader_.kind() != Piece::kGroup || reader_.name() != "FmtChangeList") return;
    const mif::Reader::Mark mark = reader_.MarkGroup();
    std::string_view name;
    Children(&reader_, [&] {
      if (reader_.name() == "FclTag") name = StringData(reader_, &document_);
    });
    reader_.ReturnTo(mark);
    rules_.change_lists_[name] = ReadList();
  }

  void ReadDefinition() {
    if (reader_.kind() != Piece::kGroup || reader_.token() != mif::Token::kElementDef) return;
    DefinitionRules definition;
    std::string_view tag;
    Children(&reader_, [&] {
      if (reader_.token() == mif::Token::kEDTag) tag = StringData(reader_, &document_);
      if (reader_.kind() != Piece::kGroup) return;
      if (reader_.name() == "EDTextFormatRules")
        ReadPart(&definition.parts[0]);
      else if (reader_.name() == "EDPrefixRules")
        ReadPart(&definition.parts[1]);
      else if (reader_.name() == "EDSuffixRules")
        ReadPart(&definition.parts[2]);
    });
    const auto id = document_.definition_index.find(tag);
    if (id == document_.definition_index.end()) return;
    for (RuleList& part : definition.parts) {
      if (!rules_.Sets(part)) part.clear();
      if (!part.empty()) has_rules_ = true;
    }
    if (std::exchange(has_rules_, false)) rules_.definitions_[id->second] = std::move(definition);
  }

  void ReadPart(RuleList* part) {
    std::vector<Open> open;
    const std::size_t inside = reader_.depth();
    while (reader_.Next()) {
      if (reader_.kind() == Piece::kGroupEnd) {
        if (reader_.depth() < inside) return;
        Close(&open);
      } else if (reader_.kind() == Piece::kGroup) {
        OpenGroup(part, &open);
      } else if (!open.empty() && open.back().clause) {
        ReadLeaf(open.back());
      } else if (!open.empty() && reader_.name() == "StopCountingAt") {
        rules_.rules_[open.back().rule].stops.emplace_back(StringData(reader_, &document_));
      }
    }
  }

  static void Close(std::vector<Open>* open) {
    if (open->empty()) return;
    if (open->back().clause) {
      open->back().clause.reset();
    } else {
      open->pop_back();
    }
  }

  void OpenGroup(RuleList* part, std::vector<Open>* open) {
    const std::string_view name = reader_.name();
    const bool in_clause = !open->empty() && open->back().clause;
    if (name == "ContextFormatRule" || name == "LevelFormatRule") {
      const auto rule = static_cast<std::uint32_t>(rules_.rules_.size());
      rules_.rules_.emplace_back();
      if (in_clause) {
        ClauseOf(open->back()).rules.push_back(rule);
      } else {
        part->push_back(rule);
      }
      open->push_back({part, rule, std::nullopt});
    } else if (!open->empty() && !in_clause && (name == "If" || name == "ElseIf" || name == "Else")) {
      std::vector<Clause>& clauses = rules_.rules_[open->back().rule].clauses;
      clauses.emplace_back().otherwise = name == "Else";
      open->back().clause = clauses.size() - 1;
    } else if (in_clause && name == "FmtChangeList") {
      ClauseOf(open->back()).properties.Take(ReadList());
    } else if (!open->empty() && !in_clause && name == "CountElements") {
      Children(&reader_, [&] {
        if (reader_.name() != "CountElement") return;
        rules_.rules_[open->back().rule].counted.emplace_back(StringData(reader_, &document_));
      });
    } else {
      reader_.Skip();
    }
  }

  Clause& ClauseOf(const Open& open) { return rules_.rules_[open.rule].clauses[*open.clause]; }

  void ReadLeaf(const Open& open) {
    Clause& clause = ClauseOf(open);
    const std::string_view name = reader_.name();
    if (name == "Context") {
      clause.context = FormatContext::Parse(StringData(reader_, &document_));
    } else if (name == "Level") {
      clause.level = ReadLevel(StringData(reader_, &document_));
    } else if (name == "IsTextRange") {
      clause.text_range = reader_.data() == "Yes";
    } else if (name == "FmtChangeListTag") {
      named_.push_back({open.rule, *open.clause, StringData(reader_, &document_)});
    }
  }

  Document& document_;
  FormatRules& rules_;
  mif::Reader reader_;
  std::vector<Named> named_;
  bool has_rules_ = false;
};

FormatRules::FormatRules(Document* document) : document_(*document) {
  if (document->format != Format::kMif) return;
  Reader reader(document, this);
  reader.Run();
  reader.ResolveNames();
}

// A named change list may set anything, so a rule that names one is kept.
bool FormatRules::Sets(const RuleList& rules) const {
  RuleList open = rules;
  while (!open.empty()) {
    const Rule& rule = rules_[open.back()];
    open.pop_back();
    for (const Clause& clause : rule.clauses) {
      if (clause.properties.known != 0 || clause.text_range) return true;
      open.insert(open.end(), clause.rules.begin(), clause.rules.end());
    }
  }
  return false;
}

std::int32_t FormatRules::LevelOf(const Rule& rule, Id id) const {
  const std::string_view own = document_.definitions[document_.elements[id].definition].name;
  std::int32_t level = 0;
  for (Id at = id; at != 0; at = document_.elements[at].parent) {
    const std::string_view name = document_.definitions[document_.elements[at].definition].name;
    if (at != id && IsOneOf(name, rule.stops)) break;
    if (rule.counted.empty() ? name == own : IsOneOf(name, rule.counted)) ++level;
  }
  return level;
}

bool FormatRules::Holds(const Rule& rule, const Clause& clause, Id element) const {
  if (clause.otherwise) return true;
  if (clause.level) return LevelOf(rule, element) == *clause.level;
  return clause.context && clause.context->Holds(document_, element);
}

CharacterProperties FormatRules::Of(Id element, Part part) const {
  const auto definition = definitions_.find(document_.elements[element].definition);
  if (definition == definitions_.end()) return {};
  const RuleList& rules = definition->second.parts[static_cast<std::size_t>(part)];
  CharacterProperties properties;
  bool text_range = false;
  RuleList open(rules.rbegin(), rules.rend());
  while (!open.empty()) {
    const Rule& rule = rules_[open.back()];
    open.pop_back();
    const auto clause = std::find_if(rule.clauses.begin(), rule.clauses.end(),
                                     [&](const Clause& one) { return Holds(rule, one, element); });
    if (clause == rule.clauses.end()) continue;
    properties.Take(clause->properties);
    text_range = text_range || clause->text_range;
    open.insert(open.end(), clause->rules.rbegin(), clause->rules.rend());
  }
  if (!text_range) return {};
  properties.known &= kDefinedBits;
  return properties;
}

namespace {

// What is anchored has formats of its own: nothing comes down to it from the text around its anchor.
bool TakesFromAround(ElementKind kind) {
  return kind != ElementKind::kTable && kind != ElementKind::kFootnote;
}

// Goes over items in order and knows what the rules of the elements around each say.
class DefinedFormats {
 public:
  DefinedFormats(Document* document, const FormatRules& rules, const ItemParagraphs& paragraphs)
      : document_(*document), rules_(rules), changes_(document, paragraphs) {}

  void Apply(Id top) {
    if (rules_.None()) {
      for (std::uint32_t i = document_.elements[top].first_item; i < document_.elements[top].end_item; ++i) {
        if (IsThere(document_.items[i])) changes_.Reset(i, {});
      }
      return;
    }
    around_.assign(1, {});
    around_.front().end = kNoIndex;
    EnterAncestors(top);
    const Element& element = document_.elements[top];
    Id next = top;
    for (std::uint32_t i = element.first_item; i < element.end_item; ++i) {
      while (around_.back().end <= i) around_.pop_back();
      for (; next != 0 && document_.elements[next].first_item <= i; next = After(top, next)) Enter(next);
      ApplyTo(i);
    }
  }

 private:
  struct Around {
    Id element = 0;
    std::uint32_t end = 0;  // the item behind the element
    bool suffix = false;    // what is generated from here on is its suffix
    CharacterProperties properties;
  };

  static bool IsThere(const Item& item) { return IsContent(item.kind) && !item.Is(kDeleted); }

  void EnterAncestors(Id top) {
    std::vector<Id> ancestors;
    for (Id at = document_.elements[top].parent; at != 0; at = document_.elements[at].parent) {
      ancestors.push_back(at);
    }
    for (auto at = ancestors.rbegin(); at != ancestors.rend(); ++at) Enter(*at);
  }

  void Enter(Id id) {
    const Element& element = document_.elements[id];
    if (element.definition == 0) return;
    Around around{id, element.end_item, false, {}};
    if (TakesFromAround(element.kind)) around.properties = around_.back().properties;
    around.properties.Take(rules_.Of(id, FormatRules::Part::kText));
    around_.push_back(around);
  }

  // The element after `id` in document order below `top`.
  Id After(Id top, Id id) const {
    if (document_.elements[id].first_child != 0) return document_.elements[id].first_child;
    while (id != top && document_.elements[id].next == 0) id = document_.elements[id].parent;
    return id == top ? 0 : document_.elements[id].next;
  }

  void ApplyTo(std::uint32_t index) {
    const Item& item = document_.items[index];
    Around& around = around_.back();
    if (item.kind == ItemKind::kPrefixEnd || item.kind == ItemKind::kSuffixBegin) {
      around.suffix = item.kind == ItemKind::kSuffixBegin;
    }
    if (!IsThere(item)) return;
    CharacterProperties properties = around.properties;
    if (item.Is(kGenerated) && around.element != 0) {
      const auto part = around.suffix ? FormatRules::Part::kSuffix : FormatRules::Part::kPrefix;
      properties.Take(rules_.Of(around.element, part));
    }
    changes_.Reset(index, properties);
  }

  Document& document_;
  const FormatRules& rules_;
  ItemChanges changes_;
  std::vector<Around> around_;
};

}  // namespace

void ApplyDefinedFormats(Document* document, const FormatRules& rules, Id element,
                         const ItemParagraphs& paragraphs) {
  DefinedFormats formats(document, rules, paragraphs);
  if (element != 0) {
    formats.Apply(element);
    return;
  }
  for (std::size_t i = 1; i < document->flows.size(); ++i) {
    if (document->flows[i].root != 0) formats.Apply(document->flows[i].root);
  }
}

}  // namespace qelm::embedded::model
