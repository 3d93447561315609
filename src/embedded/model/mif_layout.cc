#include "embedded/model/mif_layout.h"

#include <algorithm>

namespace qelm::embedded::model {

MifLayout::LinePlace MifLayout::PlaceOf(std::uint32_t at) const {
  std::uint32_t begin = at;
  while (begin > 0 && (source_[begin - 1] == ' ' || source_[begin - 1] == '\t')) --begin;
  return {begin == 0 || source_[begin - 1] == '\n' || source_[begin - 1] == '\r', begin};
}

Span MifLayout::Removal(std::uint32_t begin, std::uint32_t end) const {
  const LinePlace place = PlaceOf(begin);
  std::uint32_t after = end;
  while (after < source_.size() && (source_[after] == ' ' || source_[after] == '\t')) ++after;
  if (place.own_line && after < source_.size() && source_[after] == '#') {
    while (after < source_.size() && source_[after] != '\n') ++after;
  }
  const bool ends_line = after >= source_.size() || source_[after] == '\n' || source_[after] == '\r';
  if (place.own_line && ends_line) {
    if (after < source_.size() && source_[after] == '\r') ++after;
    if (after < source_.size() && source_[after] == '\n') ++after;
    return {place.line_begin, after};
  }
  return {begin, end < source_.size() && source_[end] == ' ' ? end + 1 : end};
}

std::string MifLayout::Lines(const std::vector<std::string>& statements, std::size_t indentation) const {
  const std::string blanks(indentation, ' ');
  std::string text;
  for (const std::string& statement : statements) {
    std::size_t at = 0;
    while (at <= statement.size()) {
      const std::size_t end = std::min(statement.find('\n', at), statement.size());
      text += blanks;
      text.append(statement, at, end - at);
      text += line_end_;
      at = end + 1;
    }
  }
  return text;
}

void MifLayout::Insert(std::uint32_t at, std::size_t extra, const std::vector<std::string>& statements,
                       Splice* splice) const {
  if (statements.empty()) return;
  const LinePlace place = PlaceOf(at);
  if (place.own_line) {
    splice->Insert(place.line_begin, Lines(statements, at - place.line_begin + extra));
    return;
  }
  // In a shared line comments would swallow what follows.
  std::string text;
  for (const std::string& statement : statements) {
    bool in_string = false;
    for (std::size_t i = 0; i < statement.size(); ++i) {
      if (statement[i] == '`') in_string = true;
      if (statement[i] == '\'') in_string = false;
      if (statement[i] == '#' && !in_string) {
        i = std::min(statement.find('\n', i), statement.size());
        while (!text.empty() && text.back() == ' ') text.pop_back();
        continue;
      }
      if (statement[i] != '\n') text.push_back(statement[i]);
    }
    text.push_back(' ');
  }
  splice->Insert(at, text);
}

void MifLayout::InsertBefore(std::uint32_t at, const std::vector<std::string>& statements,
                             Splice* splice) const {
  Insert(at, 0, statements, splice);
}

void MifLayout::InsertAtEnd(std::uint32_t close, const std::vector<std::string>& statements,
                            Splice* splice) const {
  Insert(close, 1, statements, splice);
}

void MifLayout::Replace(std::uint32_t begin, std::uint32_t end, const std::string& statement,
                        Splice* splice) const {
  const Span old = Removal(begin, end);
  const bool own_line = old.begin != begin || source_[old.end - 1] == '\n';
  if (own_line) {
    splice->Replace(old.begin, old.end, Lines({statement}, Indentation(begin)));
  } else {
    splice->Remove(old.begin, old.end);
    InsertBefore(begin, {statement}, splice);
  }
}

std::uint32_t MifLayout::LineBegin(std::uint32_t at) const {
  const LinePlace place = PlaceOf(at);
  return place.own_line ? place.line_begin : at;
}

std::size_t MifLayout::Indentation(std::uint32_t at) const {
  const LinePlace place = PlaceOf(at);
  return place.own_line ? at - place.line_begin : 0;
}

std::string MifLayout::Statement(std::uint32_t begin, std::uint32_t end) const {
  const std::size_t indentation = Indentation(begin);
  std::size_t after = source_.find_first_not_of(" \t", end);
  if (after != std::string_view::npos && source_[after] == '#' && source_[begin] == '<') {
    after = source_.find_first_of("\r\n", after);
  } else {
    after = end;
  }
  const std::string_view text =
      source_.substr(begin, after == std::string_view::npos ? after : after - begin);
  std::string result;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] == '\r') continue;
    result.push_back(text[i]);
    if (text[i] != '\n') continue;
    for (std::size_t blank = 0; blank < indentation && i + 1 < text.size() && text[i + 1] == ' '; ++blank)
      ++i;
  }
  return result;
}

void AddToCatalog(const Document& document, const MifLayout& layout, Span catalog, std::string_view name,
                  const std::vector<std::string>& entries, Splice* splice) {
  if (entries.empty()) return;
  const bool is_group = document.At(catalog).find('<', 1) != std::string_view::npos;
  if (!catalog.Empty() && is_group) {
    layout.InsertAtEnd(catalog.end - 1, entries, splice);
    return;
  }
  std::string text = "<" + std::string(name) + " \n";
  text += layout.Lines(entries, 1);
  std::erase(text, '\r');
  text += "> # end of " + std::string(name);
  if (!catalog.Empty()) {
    std::string in_place = layout.Lines({text}, 0);
    in_place.resize(in_place.size() - layout.LineEnd().size());
    splice->Replace(catalog.begin, catalog.end, in_place);
    return;
  }
  // Behind the line of the first statement, where catalogs begin.
  const std::size_t line = document.source.find('\n', document.first_statement_end);
  const std::size_t at = line == std::string::npos ? document.source.size() : line + 1;
  const std::string before = line == std::string::npos ? std::string(layout.LineEnd()) : std::string();
  splice->Insert(static_cast<std::uint32_t>(at), before + layout.Lines({text}, 0));
}

std::string ConditionalStatement(const Document& document, std::uint16_t set) {
  if (set == 0) return "<Unconditional >";
  const MifLayout layout(document);
  std::string text = "<Conditional \n";
  for (const Id condition : document.condition_sets[set]) {
    text += " <InCondition " + layout.Quoted(document.conditions[condition].name) + ">\n";
  }
  return text + "> # end of Conditional";
}

std::string FontStatement(const Document& document, std::uint32_t font) {
  const FontState& state = document.fonts[font];
  std::string text = "<Font \n <FTag " + MifLayout(document).Quoted(state.tag) + ">\n";
  bool locked_written = false;
  for (const FontState::Override& change : state.overrides) {
    // FLocked stands before the colors.
    const bool late =
        change.name == "FSeparation" || change.name == "FColor" || change.name == "FBackgroundColor";
    if (late && !locked_written) {
      text += " <FLocked No>\n";
      locked_written = true;
    }
    text += " ";
    text += change.text;
    text += "\n";
  }
  if (!locked_written) text += " <FLocked No>\n";
  return text + "> # end of Font";
}

}  // namespace qelm::embedded::model
