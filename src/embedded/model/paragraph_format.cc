#include "embedded/model/paragraph_format.h"

#include <algorithm>

#include "embedded/mif/reader.h"
#include "embedded/model/mif_layout.h"

namespace qelm::embedded::model {
namespace {

struct Change {
  std::string_view name;
  std::string text;
};

// Puts the children of one Pgf over those gathered so far.
void AddChanges(const Document& document, const MifLayout& layout, Span pgf, std::vector<Change>* changes) {
  mif::Reader reader(document.At(pgf));
  reader.Next();
  while (reader.Next()) {
    if (reader.kind() == mif::Piece::kGroupEnd) continue;
    const std::string_view name = reader.name();
    const std::uint32_t begin = reader.begin();
    if (reader.kind() == mif::Piece::kGroup && !reader.Skip()) return;
    Change change{name, layout.Statement(pgf.begin + begin, pgf.begin + reader.end())};
    const auto old = std::find_if(changes->begin(), changes->end(),
                                  [&](const Change& other) { return other.name == name; });
    if (old != changes->end()) {
      *old = std::move(change);
    } else {
      changes->push_back(std::move(change));
    }
  }
}

}  // namespace

std::vector<std::string> FormatStatements(const Document& document, std::uint32_t paragraph_state) {
  const MifLayout layout(document);
  std::vector<Span> overrides;
  std::uint32_t state = paragraph_state;
  while (state != 0 && !document.paragraph_states[state].override_statement.Empty()) {
    overrides.push_back(document.paragraph_states[state].override_statement);
    state = document.paragraph_states[state].before;
  }
  std::vector<std::string> statements;
  if (state != 0) {
    statements.push_back("<PgfTag " + layout.Quoted(document.paragraph_states[state].tag) + ">");
  }
  std::vector<Change> changes;
  for (auto at = overrides.rbegin(); at != overrides.rend(); ++at)
    AddChanges(document, layout, *at, &changes);
  if (changes.empty()) return statements;
  std::string pgf = "<Pgf \n";
  for (const Change& change : changes) {
    std::string indented = " ";
    for (const char c : change.text) {
      indented.push_back(c);
      if (c == '\n') indented.push_back(' ');
    }
    pgf += indented + "\n";
  }
  statements.push_back(pgf + "> # end of Pgf");
  return statements;
}

}  // namespace qelm::embedded::model
