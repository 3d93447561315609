#include "embedded/model/metadata.h"

#include <algorithm>
#include <array>
#include <utility>
#include <vector>

#include "embedded/mif/reader.h"
#include "embedded/model/mif_layout.h"
#include "embedded/model/mif_scan.h"
#include "embedded/model/xmp_packet.h"
#include "embedded/xml/encoding.h"
#include "embedded/xml/names.h"

namespace qelm::embedded::model {
namespace {

using mif::Piece;

// Where the packet is kept, and where the fields that PDF readers show.
struct StatementNames {
  std::string_view packet;
  std::string_view keys;
};
constexpr StatementNames kDocumentNames{"DocFileInfo", "PDFDocInfo"};
constexpr StatementNames kBookNames{"BookFileInfo", "PDFBookInfo"};

// The fields that are entries of a PDF's document information.
constexpr std::array<std::string_view, 4> kInformationFields = {"Title", "Author", "Subject", "Keywords"};

// A value of more bytes is written as several.
constexpr std::size_t kLongestValue = 250;

// Hexadecimal digits a line, as FrameMaker writes them up to level 7 and later.
constexpr std::size_t kOldWidth = 234;
constexpr std::size_t kWidth = 1002;

// What is missing is put in as a whole; among the document's replacements it goes with the first statement.
constexpr std::uint32_t kMissing = 0;

constexpr std::string_view kMarkBegin = "<?qelm metadata ";
constexpr std::string_view kMarkEnd = "?>";

bool IsBook(const Document& document) { return document.source.starts_with("<Book"); }

StatementNames NamesOf(const Document& document) { return IsBook(document) ? kBookNames : kDocumentNames; }

int HexDigit(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  return c >= 'a' && c <= 'f' ? c - 'a' + 10 : -1;
}

// Everything that is no digit is layout.
std::string FromHexadecimal(std::string_view digits) {
  std::string bytes;
  int high = -1;
  for (const char c : digits) {
    const int digit = HexDigit(c);
    if (digit < 0) continue;
    if (high < 0) {
      high = digit;
    } else {
      bytes.push_back(static_cast<char>(high * 16 + digit));
      high = -1;
    }
  }
  return bytes;
}

std::string ToHexadecimal(std::string_view bytes, std::size_t width, std::string_view line_end) {
  constexpr std::string_view kDigits = "0123456789ABCDEF";
  std::string text;
  std::size_t in_line = 0;
  for (const char c : bytes) {
    if (in_line == width) {
      text += line_end;
      in_line = 0;
    }
    const auto byte = static_cast<unsigned char>(c);
    text.push_back(kDigits[byte >> 4U]);
    text.push_back(kDigits[byte & 15U]);
    in_line += 2;
  }
  return text;
}

// What PDFDocInfo says, in its order.
using Keys = std::vector<std::pair<std::string, std::string>>;

// The two statements of a document, as they are now.
struct Statements {
  std::string packet;  // decoded
  Keys keys;
};

// Where they stand in the source.
struct Places {
  Span packet;  // empty: missing
  Span keys;
  std::uint32_t insertion = 0;  // where what is missing goes: before the line, or the statement, there
  std::size_t indentation = 0;
  bool without_document = false;  // a Document statement is missing too
};

void ReadKeys(mif::Reader* reader, mif::Encoding encoding, Keys* keys) {
  Children(reader, [&] {
    if (reader->name() == "Key") keys->emplace_back(mif::DecodeString(reader->data(), encoding), "");
    if (reader->name() == "Value" && !keys->empty()) {
      keys->back().second += mif::DecodeString(reader->data(), encoding);
    }
  });
}

// Reads both statements out of a piece of MIF in which they stand.
void ReadStatements(std::string_view mif, const StatementNames& names, mif::Encoding encoding,
                    Statements* statements) {
  mif::Reader reader(mif);
  while (reader.Next()) {
    if (reader.name() == names.packet && reader.kind() == Piece::kLeaf) {
      statements->packet = FromHexadecimal(reader.data());
    } else if (reader.name() == names.keys && reader.kind() == Piece::kGroup) {
      statements->keys.clear();
      ReadKeys(&reader, encoding, &statements->keys);
    } else if (reader.kind() == Piece::kGroup && reader.token() != mif::Token::kDocument) {
      reader.Skip();
    }
  }
}

bool EndsBookHead(mif::Token token) {
  return mif::IsTopLevelOnly(token) || token == mif::Token::kBookSettings ||
         token == mif::Token::kBookComponent || token == mif::Token::kBookXRef;
}

// The statements are members of Document; in a book they stand at the top level, before the catalogs.
Places FindPlaces(const Document& document) {
  Places places;
  const MifLayout layout(document);
  const StatementNames names = NamesOf(document);
  const bool book = IsBook(document);
  const Span within =
      book ? Span{0, static_cast<std::uint32_t>(document.source.size())} : document.document_statement;
  mif::Reader reader(document.At(within));
  std::uint32_t end = within.end;
  while (reader.Next()) {
    const std::uint32_t begin = within.begin + reader.begin();
    const bool is_document = !book && reader.depth() == 1 && reader.token() == mif::Token::kDocument;
    if (is_document && reader.kind() == Piece::kGroup) continue;
    if (book && EndsBookHead(reader.token())) {
      end = begin;
      break;
    }
    if (reader.kind() == Piece::kGroupEnd) {
      end = begin;
      continue;
    }
    const std::string_view name = reader.name();
    if (reader.kind() == Piece::kGroup && !reader.Skip()) break;
    const Span statement{begin, within.begin + reader.end()};
    if (name == names.packet) places.packet = statement;
    if (name == names.keys) places.keys = statement;
  }
  places.insertion = layout.LineBegin(end);
  places.indentation = book ? 0 : layout.Indentation(end) + 1;
  places.without_document = !book && document.document_statement.Empty();
  if (!places.without_document) return places;
  places.indentation = 1;
  // It follows the catalogs; a document without content ends with them.
  places.insertion = document.content_begin != 0 ? layout.LineBegin(document.content_begin)
                                                 : static_cast<std::uint32_t>(document.source.size());
  return places;
}

Statements CurrentStatements(const Document& document, const Places& places) {
  Statements statements;
  const StatementNames names = NamesOf(document);
  for (const Span place : {Span{kMissing, kMissing}, places.packet, places.keys}) {
    const auto changed = document.replacements.find(place.begin);
    const bool is_new = changed != document.replacements.end();
    const std::string_view text = is_new ? std::string_view(changed->second.text) : document.At(place);
    ReadStatements(text, names, document.encoding, &statements);
  }
  return statements;
}

std::string Packet(const Statements& statements) {
  std::string packet = statements.packet;
  const std::vector<MetadataField> fields = PacketFields(packet);
  for (const auto& entry : statements.keys) {
    const std::string& key = entry.first;
    const bool is_field =
        std::find(kInformationFields.begin(), kInformationFields.end(), key) != kInformationFields.end();
    const bool is_there = std::any_of(fields.begin(), fields.end(),
                                      [&](const MetadataField& field) { return field.name == key; });
    if (is_field && !is_there) packet = MergePackets(packet, OneFieldPacket(key, entry.second));
  }
  return packet;
}

// Sets the entries that the packet has; others stay.
void AgreeWith(std::string_view packet, Keys* keys) {
  for (const MetadataField& field : PacketFields(packet)) {
    if (std::find(kInformationFields.begin(), kInformationFields.end(), field.name) ==
        kInformationFields.end()) {
      continue;
    }
    const auto known = std::find_if(keys->begin(), keys->end(),
                                    [&](const auto& entry) { return entry.first == field.name; });
    if (known != keys->end()) {
      known->second = field.value;
    } else {
      keys->emplace_back(field.name, field.value);
    }
  }
}

// Writes the two statements with a document's line ends, in its encoding.
class StatementWriter {
 public:
  StatementWriter(std::string_view line_end, mif::Encoding encoding)
      : line_end_(line_end), encoding_(encoding) {}

  // Without the line end behind them.
  std::string PacketStatement(std::string_view name, std::string_view packet, std::size_t width,
                              std::size_t indentation) const {
    std::string text = "<" + std::string(name) + " " + line_end_;
    text += ToHexadecimal(packet, width, line_end_);
    return text + line_end_ + std::string(indentation, ' ') + ">";
  }
  std::string KeysStatement(std::string_view name, const Keys& keys, std::size_t indentation) const;

 private:
  std::string String(std::string_view text) const { return "`" + mif::Encode(text, encoding_) + "'"; }

  std::string line_end_;
  mif::Encoding encoding_;
};

std::string StatementWriter::KeysStatement(std::string_view name, const Keys& keys,
                                           std::size_t indentation) const {
  const std::string blanks(indentation + 1, ' ');
  std::string text = "<" + std::string(name) + " " + line_end_;
  for (const auto& [key, value] : keys) {
    if (value.empty()) continue;
    text += blanks + "<Key " + String(key) + ">" + line_end_;
    std::string_view rest = value;
    while (!rest.empty()) {
      std::size_t length = std::min(rest.size(), kLongestValue);
      // Not in the middle of a character.
      while (length < rest.size() && (static_cast<unsigned char>(rest[length]) & 0xC0U) == 0x80U) --length;
      if (length == 0) length = rest.size();
      text += blanks + "<Value " + String(rest.substr(0, length)) + ">" + line_end_;
      rest.remove_prefix(length);
    }
  }
  return text + std::string(indentation, ' ') + ">";
}

// As many digits a line as the statement has so far.
std::size_t WidthOf(const Document& document, Span statement) {
  const std::string_view text = document.At(statement);
  const std::size_t begin = text.find('\n');
  const std::size_t end = begin == std::string_view::npos ? begin : text.find('\n', begin + 1);
  const std::size_t last = end == std::string_view::npos ? end : text.find('\n', end + 1);
  if (last != std::string_view::npos) {
    std::string_view line = text.substr(begin + 1, end - begin - 1);
    while (!line.empty() && HexDigit(line.back()) < 0) line.remove_suffix(1);
    const std::size_t digits = line.size();
    // Digits come in pairs.
    if (digits >= 2 && digits % 2 == 0) return digits;
  }
  return document.level < 8 ? kOldWidth : kWidth;
}

// Puts the text of a statement in the place of the one in the source; one that is missing is added to
// `missing`.
void PutStatement(Document* document, Span place, std::string_view name, std::string text,
                  std::size_t indentation, std::string* missing) {
  if (!place.Empty()) {
    document->replacements.insert_or_assign(place.begin, Replacement{place, std::move(text)});
    return;
  }
  *missing += std::string(indentation, ' ') + text + " # end of " + std::string(name);
  *missing += document->crlf ? "\r\n" : "\n";
}

void PutMissing(Document* document, const Places& places, std::string missing) {
  if (missing.empty()) return;
  const std::string line_end = document->crlf ? "\r\n" : "\n";
  if (places.without_document) {
    missing = "<Document " + line_end + missing + "> # end of Document" + line_end;
  }
  const std::uint32_t at = places.insertion;
  if (at > 0 && document->source[at - 1] != '\n') missing.insert(0, line_end);
  document->replacements.insert_or_assign(kMissing, Replacement{{at, at}, std::move(missing)});
}

void SetInMif(Document* document, std::string_view packet) {
  const Places places = FindPlaces(*document);
  const Statements now = CurrentStatements(*document, places);
  const StatementNames names = NamesOf(*document);
  const MifLayout layout(*document);
  const StatementWriter writer(layout.LineEnd(), document->encoding);
  const std::string merged = MergePackets(Packet(now), packet);
  Keys keys = now.keys;
  AgreeWith(merged, &keys);
  std::string missing;
  const auto indentation = [&](Span place) {
    return place.Empty() ? places.indentation : layout.Indentation(place.begin);
  };
  if (!keys.empty()) {
    PutStatement(document, places.keys, names.keys,
                 writer.KeysStatement(names.keys, keys, indentation(places.keys)), places.indentation,
                 &missing);
  }
  PutStatement(document, places.packet, names.packet,
               writer.PacketStatement(names.packet, merged, WidthOf(*document, places.packet),
                                      indentation(places.packet)),
               places.indentation, &missing);
  PutMissing(document, places, std::move(missing));
}

// ---------------------------------------------------------------------------------------------------------------
// XML.

// The instruction in the source, and where one goes: before the root's tag.
Span FindMark(const Document& document, std::uint32_t* root) {
  Span mark;
  const xml::Encoding encoding = xml::DetectEncoding(document.source);
  *root = static_cast<std::uint32_t>(document.source.size());
  for (const Item& item : document.items) {
    if (item.kind != ItemKind::kOther) {
      *root = item.begin;
      break;
    }
    const std::string text = xml::ToUtf8(document.At(item), encoding);
    if (text.starts_with(kMarkBegin) && text.ends_with(kMarkEnd)) mark = {item.begin, item.end};
  }
  return mark;
}

std::string PacketOfMark(std::string_view mark) {
  mark.remove_prefix(kMarkBegin.size());
  mark = mark.substr(0, mark.find(kMarkEnd));
  return xml::FromData(mark);
}

std::string PacketInXml(const Document& document, Span mark) {
  const auto changed = document.replacements.find(mark.Empty() ? kMissing : mark.begin);
  if (changed != document.replacements.end()) return PacketOfMark(changed->second.text);
  if (mark.Empty()) return {};
  return PacketOfMark(xml::ToUtf8(document.At(mark), xml::DetectEncoding(document.source)));
}

void SetInXml(Document* document, std::string_view packet) {
  std::uint32_t root = 0;
  const Span mark = FindMark(*document, &root);
  const std::string merged = MergePackets(PacketInXml(*document, mark), packet);
  const Span place = mark.Empty() ? Span{root, root} : mark;
  const std::uint32_t key = mark.Empty() ? kMissing : mark.begin;
  document->replacements.insert_or_assign(key, Replacement{place, MetadataMark(merged)});
}

}  // namespace

std::string MetadataPacket(const Document& document) {
  if (document.format == Format::kXml) {
    std::uint32_t root = 0;
    const Span mark = FindMark(document, &root);
    return PacketInXml(document, mark);
  }
  return Packet(CurrentStatements(document, FindPlaces(document)));
}

bool SetMetadata(Document* document, std::string_view packet, std::string* why) {
  if (!IsPacket(packet)) {
    *why = "what was handed over as metadata is no XMP packet.";
    return false;
  }
  if (document->format == Format::kXml) {
    SetInXml(document, packet);
  } else {
    SetInMif(document, packet);
  }
  document->modified = true;
  return true;
}

std::string MetadataStatements(std::string_view packet) {
  if (packet.empty()) return {};
  const StatementWriter writer("\n", mif::Encoding::kUtf8);
  Keys keys;
  AgreeWith(packet, &keys);
  std::string text;
  if (!keys.empty()) text = " " + writer.KeysStatement("PDFDocInfo", keys, 1) + " # end of PDFDocInfo\n";
  return text + " " + writer.PacketStatement("DocFileInfo", packet, kWidth, 1) + " # end of DocFileInfo\n";
}

// White space at its end is room that an instruction has no use for.
std::string MetadataMark(std::string_view packet) {
  std::string text(packet);
  const std::size_t end = text.rfind("<?xpacket end");
  if (end != std::string::npos) {
    std::size_t begin = end;
    while (begin > 0 && (text[begin - 1] == ' ' || text[begin - 1] == '\n' || text[begin - 1] == '\r'))
      --begin;
    text.erase(begin, end - begin);
  }
  return std::string(kMarkBegin) + xml::ToData(text) + std::string(kMarkEnd);
}

}  // namespace qelm::embedded::model
