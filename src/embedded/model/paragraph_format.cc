#include "embedded/model/paragraph_format.h"

#include <algorithm>

#include "embedded/mif/reader.h"
#include "embedded/model/mif_layout.h"

namespace qelm::embedded::model {

// Puts the children of one Pgf over those gathered so far.
void ParagraphFormats::AddChanges(Span pgf) {
  const MifLayout layout(document_);
  mif::Reader reader(document_.At(pgf));
  reader.Next();
  while (reader.Next()) {
    if (reader.kind() == mif::Piece::kGroupEnd) continue;
    const std::string_view name = reader.name();
    const std::uint32_t begin = reader.begin();
    if (reader.kind() == mif::Piece::kGroup && !reader.Skip()) return;
    Change change{name, layout.Statement(pgf.begin + begin, pgf.begin + reader.end())};
    const auto old = std::find_if(changes_.begin(), changes_.end(),
                                  [&](const Change& other) { return other.name == name; });
    if (old != changes_.end()) {
      *old = std::move(change);
    } else {
      changes_.push_back(std::move(change));
    }
  }
}

std::vector<std::string> ParagraphFormats::Statements(std::uint32_t paragraph_state) {
  const MifLayout layout(document_);
  std::vector<std::uint32_t> chain;
  std::uint32_t state = paragraph_state;
  while (state != 0 && state != state_ && !document_.paragraph_states[state].override_statement.Empty()) {
    chain.push_back(state);
    state = document_.paragraph_states[state].before;
  }
  if (state != state_ || state == 0) {
    changes_.clear();
    base_ = state;
  }
  for (auto at = chain.rbegin(); at != chain.rend(); ++at) {
    AddChanges(document_.paragraph_states[*at].override_statement);
  }
  state_ = paragraph_state;
  std::vector<std::string> statements;
  if (base_ != 0) {
    statements.push_back("<PgfTag " + layout.Quoted(document_.paragraph_states[base_].tag) + ">");
  }
  if (changes_.empty()) return statements;
  std::string pgf = "<Pgf \n";
  for (const Change& change : changes_) {
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
