#include "embedded/model/numbering.h"

#include <algorithm>
#include <charconv>
#include <unordered_map>

#include "embedded/mif/reader.h"
#include "embedded/model/mif_layout.h"
#include "embedded/model/mif_scan.h"
#include "embedded/model/text_access.h"

namespace qelm::embedded::model {
namespace {

using mif::Piece;
using mif::Token;

// One piece of a number format.
struct FormatPiece {
  enum class Kind : std::uint8_t { kText, kCounter, kVolume, kChapter, kSection, kSubsection };
  Kind kind = Kind::kText;
  std::string text;    // kText
  char style = 0;      // kCounter: n, a, A, r, R; 0: not shown
  bool steps = false;  // it goes up by one
  bool sets = false;   // it is set to `value`
  std::int64_t value = 0;
};

struct NumberFormat {
  std::string label;
  std::vector<FormatPiece> pieces;
};

struct Word {
  std::string_view name;
  FormatPiece::Kind kind;
};
constexpr Word kWords[] = {
    {"$volnum", FormatPiece::Kind::kVolume},
    {"$chapnum", FormatPiece::Kind::kChapter},
    {"$sectionnum", FormatPiece::Kind::kSection},
    {"$subsectionnum", FormatPiece::Kind::kSubsection},
};

// What stands between "<" and ">". Switches of the character format are no part of the text.
bool ReadBlock(std::string_view block, FormatPiece* piece) {
  for (const Word& word : kWords) {
    if (block != word.name) continue;
    piece->kind = word.kind;
    return true;
  }
  constexpr std::string_view kStyles = "naArR ";
  if (block.empty() || kStyles.find(block[0]) == std::string_view::npos) return false;
  std::string_view rest = block.substr(1);
  if (!rest.empty() && rest[0] == '=') rest.remove_prefix(1);
  if (rest == "+") {
    piece->steps = true;
  } else if (!rest.empty()) {
    const auto read = std::from_chars(rest.data(), rest.data() + rest.size(), piece->value);
    if (read.ec != std::errc() || read.ptr != rest.data() + rest.size()) return false;
    piece->sets = true;
  }
  piece->kind = FormatPiece::Kind::kCounter;
  piece->style = block[0] == ' ' ? '\0' : block[0];
  return true;
}

// Escapes of format strings, which are not those of MIF.
struct Escape {
  std::string_view code;
  std::string_view text;
};
constexpr Escape kEscapes[] = {
    {"t", "\t"},
    {"b", "\xE2\x80\xA2"},
    {"sm", "\xE2\x80\x83"},
    {"sn", "\xE2\x80\x82"},
    {"st", "\xE2\x80\x89"},
    {"s#", "\xE2\x80\x87"},
    {" ", "\xC2\xA0"},
    {"+", "\xE2\x80\x91"},
    {"=", "\xE2\x80\x93"},
    {"_", "\xE2\x80\x94"},
    {"\\", "\\"},
    {"<", "<"},
    {">", ">"},
};

NumberFormat ReadFormat(std::string_view text) {
  NumberFormat format;
  if (text.size() >= 2 && text[1] == ':') {
    format.label = text.substr(0, 1);
    text.remove_prefix(2);
  }
  std::string plain;
  const auto finish_text = [&] {
    if (plain.empty()) return;
    FormatPiece piece;
    piece.text = std::move(plain);
    format.pieces.push_back(std::move(piece));
    plain.clear();
  };
  for (std::size_t at = 0; at < text.size(); ++at) {
    if (text[at] == '\\') {
      at += AppendFormatEscape(text.substr(at + 1), &plain);
      continue;
    }
    const std::size_t end = text[at] == '<' ? text.find('>', at) : std::string_view::npos;
    if (end == std::string_view::npos) {
      plain.push_back(text[at]);
      continue;
    }
    FormatPiece piece;
    if (ReadBlock(text.substr(at + 1, end - at - 1), &piece)) {
      finish_text();
      format.pieces.push_back(std::move(piece));
    }
    at = end;
  }
  finish_text();
  return format;
}

// What a paragraph format says of numbers. The views are into the source or kept by the document.
struct NumberProperties {
  bool on = false;
  std::string format;
};

void ReadProperties(mif::Reader* reader, mif::Encoding encoding, NumberProperties* properties,
                    std::string* tag) {
  Children(reader, [&] {
    const std::string_view name = reader->name();
    if (name == "PgfAutoNum") properties->on = reader->data() == "Yes";
    if (name == "PgfNumFormat") properties->format = mif::DecodeString(reader->data(), encoding);
    if (reader->token() == Token::kPgfTag && tag != nullptr)
      *tag = mif::DecodeString(reader->data(), encoding);
  });
}

std::unordered_map<std::string, NumberProperties> CatalogProperties(const Document& document) {
  std::unordered_map<std::string, NumberProperties> catalog;
  mif::Reader reader(document.source);
  while (reader.Next()) {
    if (reader.kind() != Piece::kGroup) continue;
    if (reader.token() == Token::kDocument || reader.token() == Token::kTextFlow) break;
    if (reader.token() != Token::kPgfCatalog) {
      reader.Skip();
      continue;
    }
    Children(&reader, [&] {
      if (reader.token() != Token::kPgf || reader.kind() != Piece::kGroup) return;
      NumberProperties properties;
      std::string tag;
      ReadProperties(&reader, document.encoding, &properties, &tag);
      catalog.insert_or_assign(std::move(tag), std::move(properties));
    });
    break;
  }
  return catalog;
}

// By paragraph state. A state stands on one before it.
std::vector<NumberProperties> StateProperties(const Document& document) {
  const auto catalog = CatalogProperties(document);
  std::vector<NumberProperties> states(document.paragraph_states.size());
  for (std::size_t i = 1; i < states.size(); ++i) {
    const ParagraphState& state = document.paragraph_states[i];
    if (state.override_statement.Empty()) {
      const auto found = catalog.find(std::string(state.tag));
      if (found != catalog.end()) states[i] = found->second;
      continue;
    }
    states[i] = states[state.before];
    mif::Reader reader(document.At(state.override_statement));
    if (reader.Next() && reader.kind() == Piece::kGroup) {
      ReadProperties(&reader, document.encoding, &states[i], nullptr);
    }
  }
  return states;
}

class Numberer {
 public:
  Numberer(const Document& document, const PlaceNumbers& places, Counters* counters)
      : document_(document), places_(places), counters_(*counters) {}
  std::vector<ParagraphNumber> Run();

 private:
  void NumberFlow(const Flow& flow);
  void NoteEmptyCell(const Part& part);
  void Number(const NumberFormat& format, ParagraphNumber* number);
  std::int64_t Count(const FormatPiece& piece, std::size_t place, std::vector<std::int64_t>* series);
  const NumberFormat& FormatOf(const std::string& text);

  const Document& document_;
  const PlaceNumbers& places_;
  Counters& counters_;
  std::vector<NumberProperties> states_;
  std::unordered_map<std::string, NumberFormat> formats_;
  std::vector<ParagraphNumber> numbers_;
  std::vector<std::uint32_t> empty_cells_;  // their paragraphs
};

const NumberFormat& Numberer::FormatOf(const std::string& text) {
  const auto [found, is_new] = formats_.try_emplace(text);
  if (is_new) found->second = ReadFormat(text);
  return found->second;
}

// Text on master and reference pages is no part of the document's own.
std::vector<ParagraphNumber> Numberer::Run() {
  states_ = StateProperties(document_);
  numbers_.resize(document_.paragraphs.size());
  for (std::size_t i = 1; i < document_.flows.size(); ++i) {
    const Flow& flow = document_.flows[i];
    if (flow.kind == FlowKind::kBody) NumberFlow(flow);
  }
  return std::move(numbers_);
}

// A paragraph has its number where it begins, before the tables that are anchored in it. Whether it counts is
// said by its mark, which comes later, so the items are gone over from behind for that.
void Numberer::NumberFlow(const Flow& flow) {
  std::vector<std::uint32_t> paragraphs;
  std::vector<bool> counts(document_.paragraphs.size(), false);
  for (std::uint32_t i = flow.first_item; i < flow.end_item; ++i) {
    const Item& item = document_.items[i];
    if (item.kind == ItemKind::kParagraphBegin) paragraphs.push_back(item.ref);
    if (item.kind == ItemKind::kPartBegin) NoteEmptyCell(document_.parts[item.ref]);
    if (item.kind == ItemKind::kParagraphEnd && !item.Is(kDeleted)) {
      counts[item.ref] = IsShown(document_, item.conditions);
    }
  }
  std::sort(empty_cells_.begin(), empty_cells_.end());
  for (const std::uint32_t paragraph : paragraphs) {
    if (!counts[paragraph]) continue;
    const NumberProperties& properties = states_[document_.paragraphs[paragraph].state];
    if (!properties.on || properties.format.empty()) continue;
    numbers_[paragraph].numbered = true;
    if (std::binary_search(empty_cells_.begin(), empty_cells_.end(), paragraph)) continue;
    Number(FormatOf(properties.format), &numbers_[paragraph]);
  }
}

// The paragraph of a cell with nothing in it has an empty number, and counts nothing.
void Numberer::NoteEmptyCell(const Part& part) {
  if (part.kind != ElementKind::kTableCell) return;
  std::uint32_t paragraph = 0;
  for (std::uint32_t i = part.first_item; i < part.end_item; ++i) {
    const Item& item = document_.items[i];
    if (IsContent(item.kind) || (item.kind == ItemKind::kParagraphBegin && paragraph != 0)) return;
    if (item.kind == ItemKind::kParagraphBegin) paragraph = item.ref;
  }
  if (paragraph != 0) empty_cells_.push_back(paragraph);
}

std::int64_t Numberer::Count(const FormatPiece& piece, std::size_t place, std::vector<std::int64_t>* series) {
  if (series->size() <= place) series->resize(place + 1, 0);
  std::int64_t& value = (*series)[place];
  if (piece.steps) ++value;
  if (piece.sets) value = piece.value;
  return value;
}

void Numberer::Number(const NumberFormat& format, ParagraphNumber* number) {
  std::vector<std::int64_t>& series = counters_.series[format.label];
  std::size_t place = 0;
  std::size_t first = std::string::npos;
  std::size_t last = 0;
  std::string& text = number->text;
  for (const FormatPiece& piece : format.pieces) {
    const std::size_t begin = text.size();
    bool counted = true;
    switch (piece.kind) {
      case FormatPiece::Kind::kText:
        text += piece.text;
        counted = false;
        break;
      case FormatPiece::Kind::kCounter: {
        const std::int64_t value = Count(piece, place++, &series);
        counted = piece.style != 0;
        if (counted) text += NumberIn(std::string_view(&piece.style, 1), value);
        break;
      }
      case FormatPiece::Kind::kVolume:
        text += places_.volume;
        break;
      case FormatPiece::Kind::kChapter:
        text += places_.chapter;
        break;
      case FormatPiece::Kind::kSection:
        text += places_.section;
        break;
      case FormatPiece::Kind::kSubsection:
        text += places_.subsection;
        break;
    }
    if (!counted) continue;
    first = std::min(first, begin);
    last = text.size();
  }
  if (first == std::string::npos) return;
  // A letter behind the last counter belongs to the number: "124A".
  const auto is_word = [](char c) {
    return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
  };
  while (last < text.size() && is_word(text[last])) ++last;
  number->only = text.substr(first, last - first);
}

std::string Roman(std::int64_t value) {
  struct Digit {
    std::int64_t value;
    std::string_view text;
  };
  constexpr Digit kDigits[] = {{1000, "m"}, {900, "cm"}, {500, "d"}, {400, "cd"}, {100, "c"},
                               {90, "xc"},  {50, "l"},   {40, "xl"}, {10, "x"},   {9, "ix"},
                               {5, "v"},    {4, "iv"},   {1, "i"}};
  std::string text;
  for (const Digit& digit : kDigits) {
    for (; value >= digit.value; value -= digit.value) text += digit.text;
  }
  return text;
}

// a to z, then aa, ab as columns of a sheet are called.
std::string Letters(std::int64_t value) {
  constexpr std::int64_t kLetters = 26;
  std::string text;
  for (; value > 0; value = (value - 1) / kLetters) {
    text.insert(text.begin(), static_cast<char>('a' + (value - 1) % kLetters));
  }
  return text;
}

std::string Upper(std::string text) {
  for (char& c : text) c = static_cast<char>(c - 'a' + 'A');
  return text;
}

// Where a paragraph's number stands in the source; for one without, where it goes, empty.
Span NumberPlace(const Document& document, const Paragraph& paragraph) {
  const std::string_view bytes =
      std::string_view(document.source).substr(paragraph.begin, paragraph.end - paragraph.begin);
  mif::Reader reader(bytes);
  reader.Next();
  while (reader.Next()) {
    const std::uint32_t begin = paragraph.begin + reader.begin();
    if (reader.kind() == Piece::kGroupEnd) return {begin, begin};
    if (reader.token() == Token::kPgfNumString) return {begin, paragraph.begin + reader.end()};
    const bool before =
        reader.token() == Token::kUnique || reader.token() == Token::kPgfTag || reader.token() == Token::kPgf;
    if (!before) return {begin, begin};
    if (reader.kind() == Piece::kGroup && !reader.Skip()) break;
  }
  return {};
}

}  // namespace

std::size_t AppendFormatEscape(std::string_view rest, std::string* text) {
  for (const Escape& escape : kEscapes) {
    if (!rest.starts_with(escape.code)) continue;
    text->append(escape.text);
    return escape.code.size();
  }
  return 0;
}

std::string NumberIn(std::string_view style, std::int64_t value) {
  constexpr std::int64_t kLargestWritten = 4999;
  const bool arabic = value <= 0 || value > kLargestWritten || style == "n" || style == "Arabic";
  if (arabic) return std::to_string(value);
  if (style == "r" || style == "LCRoman") return Roman(value);
  if (style == "R" || style == "UCRoman") return Upper(Roman(value));
  if (style == "a" || style == "LCAlpha") return Letters(value);
  if (style == "A" || style == "UCAlpha") return Upper(Letters(value));
  return std::to_string(value);
}

std::vector<ParagraphNumber> NumberParagraphs(const Document& document, const PlaceNumbers& places,
                                              Counters* counters) {
  return Numberer(document, places, counters).Run();
}

std::string StoredNumber(const Document& document, const Paragraph& paragraph) {
  const Span place = NumberPlace(document, paragraph);
  if (place.Empty()) return {};
  mif::Reader reader(document.At(place));
  return reader.Next() ? mif::DecodeString(reader.data(), document.encoding) : std::string();
}

std::size_t SetNumbers(Document* document, const std::vector<ParagraphNumber>& numbers) {
  const MifLayout layout(*document);
  std::size_t changed = 0;
  for (std::size_t i = 1; i < numbers.size(); ++i) {
    const Paragraph& paragraph = document->paragraphs[i];
    if (!numbers[i].numbered || StoredNumber(*document, paragraph) == numbers[i].text) continue;
    const Span place = NumberPlace(*document, paragraph);
    if (place.begin == 0) continue;
    std::string statement = "<PgfNumString " + layout.Quoted(numbers[i].text) + ">";
    if (place.Empty()) {
      statement += std::string(layout.LineEnd()) + std::string(layout.Indentation(place.begin), ' ');
    }
    document->replacements.insert_or_assign(paragraph.begin, Replacement{place, std::move(statement)});
    ++changed;
  }
  if (changed != 0) document->modified = true;
  return changed;
}

}  // namespace qelm::embedded::model
