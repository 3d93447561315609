#include "embedded/model/import_catalogs.h"

#include <algorithm>
#include <iterator>
#include <optional>
#include <unordered_map>
#include <vector>

#include "embedded/mif/reader.h"
#include "embedded/model/edit.h"
#include "embedded/model/files.h"
#include "embedded/model/mif_layout.h"
#include "embedded/model/mif_scan.h"
#include "embedded/model/settle.h"
#include "embedded/model/splice.h"

namespace qelm::embedded::model {
namespace {

// The statements of a file's top level in the order in which FrameMaker expects them; what is not named may
// stand anywhere before them. `entry` and `key` are given for catalogs that can be taken over: the statement
// of an entry, and the one in it that names it.
struct Section {
  std::string_view name;
  std::uint32_t catalog = 0;
  std::string_view entry = {};
  std::string_view key = {};
};
constexpr Section kSections[] = {
    {"ColorCatalog", kColorCatalog, "Color", "ColorTag"},
    {"ConditionCatalog", kConditionCatalog, "Condition", "CTag"},
    {"BoolCondCatalog"},
    {"DefAttrValuesCatalog"},
    {"AttrCondExprCatalog"},
    {"DictionaryPreferences"},
    {"CombinedFontCatalog"},
    {"PgfCatalog", kParagraphFormatCatalog, "Pgf", "PgfTag"},
    {"ElementDefCatalog", kDefinitionCatalog, "ElementDef", "EDTag"},
    {"FmtChangeListCatalog", kDefinitionCatalog, "FmtChangeList", "FclTag"},  // what definitions refer to
    {"FontCatalog", kCharacterFormatCatalog, "Font", "FTag"},
    {"RulingCatalog"},
    {"TblCatalog"},
    {"StyleCatalog"},
    {"KumihanCatalog"},
    {"Views"},
    {"VariableFormats", kVariableCatalog, "VariableFormat", "VariableName"},
    {"MarkerTypeCatalog"},
    {"XRefFormats"},
    {"Document"},
    {"BookComponent"},
    {"InitialAutoNums"},
    {"Dictionary"},
    {"AcrobatElements"},
    {"AFrames"},
    {"Tbls"},
    {"Page"},
    {"InlineComponentsInfo"},
    {"TextFlow"},
    {"Para"},
};
constexpr std::size_t kSectionCount = std::size(kSections);

struct Entry {
  std::string name;
  Span span;
};

// A file's bytes with where its sections are.
class CatalogFile {
 public:
  CatalogFile(std::string bytes, mif::Encoding encoding, bool crlf);

  const Document& shell() const { return shell_; }
  const MifLayout& layout() const { return *layout_; }
  Span Place(std::size_t section) const { return places_[section]; }
  // The first statement of a later section; nothing when there is none.
  std::optional<std::uint32_t> FirstBehind(std::size_t section) const;
  std::vector<Entry> Entries(std::size_t section) const;

 private:
  Document shell_;  // bytes and how they are written, nothing that is read from them
  std::optional<MifLayout> layout_;
  Span places_[kSectionCount];
};

CatalogFile::CatalogFile(std::string bytes, mif::Encoding encoding, bool crlf) {
  shell_.source = std::move(bytes);
  shell_.encoding = encoding;
  shell_.crlf = crlf;
  layout_.emplace(shell_);
  mif::Reader reader(shell_.source);
  while (reader.Next()) {
    const std::uint32_t begin = reader.begin();
    const std::string_view name = reader.name();
    if (reader.kind() == mif::Piece::kGroup && !reader.Skip()) break;
    if (shell_.first_statement_end == 0) shell_.first_statement_end = reader.end();
    const auto* section = std::find_if(std::begin(kSections), std::end(kSections),
                                       [name](const Section& known) { return known.name == name; });
    if (section == std::end(kSections)) continue;
    Span& place = places_[section - std::begin(kSections)];
    if (place.Empty()) place = {begin, reader.end()};
    if (name == "Page" || name == "TextFlow" || name == "Para") break;  // no catalog stands behind content
  }
}

std::optional<std::uint32_t> CatalogFile::FirstBehind(std::size_t section) const {
  std::optional<std::uint32_t> first;
  for (std::size_t later = section + 1; later < kSectionCount; ++later) {
    if (places_[later].Empty()) continue;
    first = std::min(first.value_or(places_[later].begin), places_[later].begin);
  }
  return first;
}

std::vector<Entry> CatalogFile::Entries(std::size_t section) const {
  std::vector<Entry> entries;
  const Span place = places_[section];
  const Section& form = kSections[section];
  mif::Reader reader(shell_.At(place));
  if (!reader.Next() || reader.kind() != mif::Piece::kGroup) return entries;
  Children(&reader, [&] {
    if (reader.kind() != mif::Piece::kGroup || reader.name() != form.entry) return;
    Entry entry;
    bool named = false;
    entry.span.begin = place.begin + reader.begin();
    Children(&reader, [&] {
      if (named || reader.kind() != mif::Piece::kLeaf || reader.name() != form.key) return;
      entry.name = mif::DecodeString(reader.data(), shell_.encoding);
      named = true;
    });
    entry.span.end = place.begin + reader.end();
    if (named) entries.push_back(std::move(entry));
  });
  return entries;
}

// The source's catalogs put into the target's bytes.
class CatalogMerge {
 public:
  CatalogMerge(const CatalogFile& target, const CatalogFile& source) : target_(target), source_(source) {}

  std::string Run(std::uint32_t catalogs);

 private:
  void Merge(std::size_t section);
  void AddNew(std::size_t section, const std::vector<std::string>& added);
  std::string Copied(Span entry) const;
  std::string WithState(std::string statement, Span old) const;

  const CatalogFile& target_;
  const CatalogFile& source_;
  Splice splice_;
};

std::string CatalogMerge::Run(std::uint32_t catalogs) {
  for (std::size_t section = 0; section < kSectionCount; ++section) {
    if ((kSections[section].catalog & catalogs) != 0) Merge(section);
  }
  return splice_.Apply(target_.shell().source).Joined();
}

void CatalogMerge::Merge(std::size_t section) {
  std::unordered_map<std::string, Span> known;
  for (Entry& entry : target_.Entries(section)) known[std::move(entry.name)] = entry.span;
  std::vector<std::string> added;
  for (const Entry& entry : source_.Entries(section)) {
    std::string statement = Copied(entry.span);
    const auto old = known.find(entry.name);
    if (old == known.end()) {
      added.push_back(std::move(statement));
      continue;
    }
    const Span span = old->second;
    const bool reserved = target_.shell().At(span).find("ColorIsReserved") != std::string_view::npos;
    if (kSections[section].catalog == kColorCatalog && reserved) continue;
    if (kSections[section].catalog == kConditionCatalog) statement = WithState(std::move(statement), span);
    if (statement == target_.layout().Statement(span.begin, span.end)) continue;
    target_.layout().Replace(span.begin, span.end, statement, &splice_);
  }
  AddNew(section, added);
}

void CatalogMerge::AddNew(std::size_t section, const std::vector<std::string>& added) {
  if (added.empty()) return;
  const std::string name(kSections[section].name);
  const std::optional<std::uint32_t> behind = target_.FirstBehind(section);
  if (!target_.Place(section).Empty() || !behind) {
    AddToCatalog(target_.shell(), target_.layout(), target_.Place(section), name, added, &splice_);
    return;
  }
  std::string text = "<" + name + " \n" + target_.layout().Lines(added, 1);
  std::erase(text, '\r');
  target_.layout().InsertBefore(*behind, {text + "> # end of " + name}, &splice_);
}

// An entry of the source as the target's file writes it.
std::string CatalogMerge::Copied(Span entry) const {
  std::string statement = source_.layout().Statement(entry.begin, entry.end);
  const mif::Encoding from = source_.shell().encoding;
  const mif::Encoding to = target_.shell().encoding;
  if (from == to) return statement;
  std::string written;
  std::size_t copied = 0;
  mif::Reader reader(statement);
  while (reader.Next()) {
    const bool is_string = reader.kind() == mif::Piece::kLeaf && mif::IsString(reader.data());
    if (!is_string || mif::IsPlain(mif::Inside(reader.data()), from)) continue;
    const auto begin = static_cast<std::size_t>(reader.data().data() - statement.data());
    written.append(statement, copied, begin - copied);
    written.append("`").append(mif::Encode(mif::DecodeString(reader.data(), from), to)).append("'");
    copied = begin + reader.data().size();
  }
  return written.append(statement, copied);
}

// Where a condition's statement says whether it is shown.
std::optional<Span> StateIn(std::string_view statement) {
  mif::Reader reader(statement);
  while (reader.Next()) {
    if (reader.kind() == mif::Piece::kLeaf && reader.name() == "CState")
      return Span{reader.begin(), reader.end()};
  }
  return std::nullopt;
}

// A condition's statement with the state that the old one has.
std::string CatalogMerge::WithState(std::string statement, Span old) const {
  const std::string_view before = target_.shell().At(old);
  const std::optional<Span> kept = StateIn(before);
  const std::optional<Span> place = StateIn(statement);
  if (!place) return statement;
  const std::string_view state =
      kept ? before.substr(kept->begin, kept->end - kept->begin) : std::string_view("<CState CShown>");
  return statement.replace(place->begin, place->end - place->begin, state);
}

// A document in XML, which has no catalogs.
void ImportNames(Document* target, const Document& source, std::uint32_t catalogs, std::uint32_t* left_out) {
  *left_out = catalogs & (kParagraphFormatCatalog | kCharacterFormatCatalog | kVariableCatalog);
  if ((catalogs & kDefinitionCatalog) != 0) {
    for (std::size_t id = 1; id < source.definitions.size(); ++id) {
      const Definition& from = source.definitions[id];
      if (!from.declared) continue;
      Definition& to = target->definitions[target->InternDefinition(from.name)];
      if (!to.declared) to.kind = from.kind;
      to.declared = true;
      to.content_rule = target->KeepName(from.content_rule);
    }
  }
  if ((catalogs & kColorCatalog) != 0) {
    for (std::size_t id = 1; id < source.colors.size(); ++id) {
      const Color& from = source.colors[id];
      Color& to = target->colors[target->InternColor(from.name)];
      if (!from.declared || to.declared) continue;
      const std::string_view name = to.name;
      to = from;
      to.name = name;
      to.created = true;
    }
  }
  if ((catalogs & kConditionCatalog) != 0) {
    for (std::size_t id = 1; id < source.conditions.size(); ++id) {
      if (source.conditions[id].declared) CreateCondition(target, source.conditions[id].name);
    }
  }
}

// Paragraphs that wait to be written name their format alone where the file has it in its catalog, and
// that it will have.
std::vector<std::string_view> AnnounceFormats(Document* target, const Document& source) {
  std::vector<std::string_view> announced;
  for (const auto& [name, properties] : source.paragraph_formats) {
    if (target->paragraph_formats.contains(name)) continue;
    announced.push_back(target->KeepName(name));
    target->paragraph_formats.emplace(announced.back(), CharacterProperties());
  }
  return announced;
}

}  // namespace

bool ImportCatalogs(Document* target, const Document& source, std::uint32_t catalogs, std::uint32_t* left_out,
                    std::string* why) {
  *left_out = 0;
  if (target->format == Format::kXml) {
    ImportNames(target, source, catalogs, left_out);
    return true;
  }
  if (source.format == Format::kXml) {
    *why = "an XML document has no formats and definitions that a MIF document could take over.";
    return false;
  }
  std::vector<std::string_view> announced;
  if ((catalogs & kParagraphFormatCatalog) != 0) announced = AnnounceFormats(target, source);
  const CatalogFile to(MifPieces(*target).Joined(), target->encoding, target->crlf);
  const CatalogFile from(MifPieces(source).Joined(), source.encoding, source.crlf);
  if (ReadAnew(target, CatalogMerge(to, from).Run(catalogs))) {
    target->modified = true;
    return true;
  }
  for (const std::string_view name : announced) target->paragraph_formats.erase(name);
  *why = "the formats that were to be imported cannot be written into it.";
  return false;
}

}  // namespace qelm::embedded::model
