// What the format rules of the element definitions say of the character properties of text.
//
// Only rules for a range of text count: what a rule says of whole paragraphs is in the paragraph's own
// format, which is where the document's file has it. Rules that never set one of the properties are
// left out when the rules are read, so that most elements cost nothing. A rule whose condition is not
// understood does not hold.
#pragma once

#include <array>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

#include "embedded/model/character_edit.h"
#include "embedded/model/format_context.h"

namespace qelm::embedded::model {

class FormatRules {
 public:
  // Reads the rules from the document's source; none where it has no element definitions.
  explicit FormatRules(Document* document);

  // Whether there are none that set anything.
  bool None() const { return definitions_.empty(); }

  enum class Part : std::uint8_t { kText, kPrefix, kSuffix };
  // What the rules of the element's definition set on its text, its prefix or its suffix.
  CharacterProperties Of(Id element, Part part) const;

 private:
  // A rule is a list of clauses, the first of which that holds counts; what it sets comes before what the
  // rules inside it set. Rules are named by their index.
  struct Clause {
    std::optional<FormatContext> context;  // of a context rule
    std::optional<std::int32_t> level;     // of a level rule
    bool otherwise = false;                // Else: always holds
    bool text_range = false;
    CharacterProperties properties;
    std::vector<std::uint32_t> rules;  // inside it
  };
  struct Rule {
    std::vector<std::string> counted;  // of a level rule
    std::vector<std::string> stops;
    std::vector<Clause> clauses;
  };
  using RuleList = std::vector<std::uint32_t>;
  struct DefinitionRules {
    std::array<RuleList, 3> parts;
  };
  class Reader;

  bool Sets(const RuleList& rules) const;
  bool Holds(const Rule& rule, const Clause& clause, Id element) const;
  std::int32_t LevelOf(const Rule& rule, Id element) const;

  const Document& document_;
  std::vector<Rule> rules_;
  std::unordered_map<Id, DefinitionRules> definitions_;
  std::unordered_map<std::string_view, CharacterProperties> change_lists_;
};

// Gives the text of the element, or of all elements of the document (0), the properties again that its
// formats and the format rules define.
void ApplyDefinedFormats(Document* document, const FormatRules& rules, Id element,
                         const ItemParagraphs& paragraphs);

}  // namespace qelm::embedded::model
