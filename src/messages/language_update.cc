#include "messages/language_update.h"

#include <iterator>
#include <utility>

#include "common/text.h"
#include "messages/placeholders.h"

namespace qelm::messages {
namespace {

constexpr std::string_view kMarkComment =
    "# Not translated yet: the text is the English one. Translate it and remove this line.";
constexpr std::string_view kObsoletePrefix = "#~";

// A comment for translators that the program's side keeps: placeholders, places, flags.
bool IsExtracted(std::string_view line) {
  return line.starts_with("#.") || line.starts_with("#:") ||
         (line.starts_with("#,") && line.find("fuzzy") == line.npos);
}

bool IsTranslatorsOwn(std::string_view line) {
  return line.starts_with('#') && !IsExtracted(line) && !line.starts_with("#~") && !line.starts_with("#,") &&
         !line.starts_with("#|") && !line.starts_with(kNotTranslatedYet);
}

class Lines {
 public:
  explicit Lines(std::string_view end) : end_(end) {}
  void Add(std::string_view line) { text_.append(line).append(end_); }
  std::string Take() { return std::move(text_); }

 private:
  std::string text_;
  std::string_view end_;
};

// The lines that the entry itself has in English; without its text when it is to be empty.
void AddContent(const LanguageEntry& english, bool empty, Lines* lines) {
  for (const std::string_view source : SourceLines(english)) {
    const std::string_view line = common::Trim(source);
    if (line.empty() || line.starts_with('#')) continue;
    if (empty && line.starts_with("msgstr")) {
      lines->Add("msgstr \"\"");
      return;
    }
    lines->Add(line);
  }
}

// An English entry for a file in which it is to be translated. With `all_comments` the headings of the
// English file are taken over too.
LanguageEntry Untranslated(const LanguageEntry& english, bool all_comments, std::string_view line_end) {
  Lines lines(line_end);
  LanguageEntry entry = english;
  const bool own_id = english.IsOwnText();
  if (!all_comments) lines.Add("");
  bool marked = own_id;
  for (const std::string_view line : SourceLines(english)) {
    if (!line.empty() && !line.starts_with('#')) break;
    const bool extracted = IsExtracted(line);
    if (extracted && !std::exchange(marked, true)) lines.Add(kMarkComment);
    if (extracted || all_comments) lines.Add(line);
  }
  if (!marked) lines.Add(kMarkComment);
  AddContent(english, own_id, &lines);
  entry.source = lines.Take();
  entry.to_translate = !own_id;
  if (own_id) entry.text.clear();
  return entry;
}

bool MayBeRevived(const LanguageEntry& english, const LanguageEntry& obsolete) {
  return !obsolete.text.empty() && !obsolete.fuzzy && !obsolete.to_translate &&
         PlaceholderKinds(obsolete.text) == PlaceholderKinds(english.EnglishText());
}

// The entry that was commented out, in use again under the comments that English has now.
LanguageEntry Revived(const LanguageEntry& english, const LanguageEntry& obsolete,
                      std::string_view line_end) {
  Lines lines(line_end);
  LanguageEntry entry = obsolete;
  lines.Add("");
  for (const std::string_view line : SourceLines(obsolete)) {
    if (IsTranslatorsOwn(line)) lines.Add(line);
  }
  for (const std::string_view line : SourceLines(english)) {
    if (IsExtracted(line)) lines.Add(line);
  }
  for (const std::string_view source : SourceLines(obsolete)) {
    const std::string_view line = common::Trim(source);
    if (!line.starts_with(kObsoletePrefix)) continue;
    const std::string_view content = common::Trim(line.substr(kObsoletePrefix.size()));
    if (!content.empty() && content.front() != '|') lines.Add(content);
  }
  entry.source = lines.Take();
  entry.obsolete = false;
  return entry;
}

// A text as a string of the file.
std::string Quoted(std::string_view text) {
  std::string escaped = common::ReplaceAll(text, "\\", "\\\\");
  escaped = common::ReplaceAll(escaped, "\"", "\\\"");
  return "\"" + common::ReplaceAll(escaped, "\n", "\\n") + "\"";
}

// The header of a new file: the English one, but for what is a language's own.
LanguageEntry Header(const LanguageEntry& english, const NewLanguage& language) {
  const std::pair<std::string_view, std::string_view> fields[] = {{"Language: ", language.code},
                                                                  {"Language-Team: ", language.name},
                                                                  {"Last-Translator: ", ""},
                                                                  {"PO-Revision-Date: ", language.date}};
  Lines lines("\n");
  lines.Add("# The " + language.name + " texts of QELM.");
  bool first = true;
  for (const std::string_view line : SourceLines(english)) {
    if (line.starts_with('#') && !std::exchange(first, false)) lines.Add(line);
  }
  lines.Add("msgid \"\"");
  lines.Add("msgstr \"\"");
  for (const std::string_view line : common::SplitLines(english.text)) {
    std::string text(line);
    for (const auto& [field, value] : fields) {
      if (line.starts_with(field)) text = std::string(field).append(value);
    }
    lines.Add(Quoted(text + "\n"));
  }
  LanguageEntry header = english;
  header.source = lines.Take();
  return header;
}

// What is to be put into a file: behind which of its entries.
struct Additions {
  std::vector<std::vector<LanguageEntry>> behind;  // [0] before the first entry, [i + 1] behind entry i
  std::vector<bool> revived;                       // by the place of the entry that was commented out
};

}  // namespace

UpdateCounts AddMissingEntries(const LanguageFile& english, LanguageFile* file) {
  const std::vector<LanguageEntry>& entries = file->Entries();
  const LanguageIndex places = file->Index(false);
  const LanguageIndex obsolete = file->Index(true);
  Additions additions{std::vector<std::vector<LanguageEntry>>(entries.size() + 1),
                      std::vector<bool>(entries.size(), false)};
  UpdateCounts counts;
  std::size_t at = 0;
  for (const LanguageEntry& wanted : english.Entries()) {
    if (wanted.obsolete || wanted.fuzzy) continue;
    if (const auto found = places.find(wanted.Key()); found != places.end()) {
      at = found->second + 1;
      continue;
    }
    if (wanted.id.empty()) continue;
    const auto old = obsolete.find(wanted.Key());
    if (old != obsolete.end() && MayBeRevived(wanted, entries[old->second])) {
      additions.behind[at].push_back(Revived(wanted, entries[old->second], file->LineEnd()));
      additions.revived[old->second] = true;
      ++counts.revived;
    } else {
      additions.behind[at].push_back(Untranslated(wanted, false, file->LineEnd()));
      ++counts.added;
    }
  }
  std::vector<LanguageEntry> result = std::move(additions.behind[0]);
  for (std::size_t i = 0; i < entries.size(); ++i) {
    if (!additions.revived[i]) result.push_back(entries[i]);
    std::move(additions.behind[i + 1].begin(), additions.behind[i + 1].end(), std::back_inserter(result));
  }
  file->SetEntries(std::move(result));
  return counts;
}

LanguageFile MakeLanguageFile(const LanguageFile& english, const NewLanguage& language) {
  LanguageFile file;
  std::vector<LanguageEntry> entries;
  for (const LanguageEntry& entry : english.Entries()) {
    if (entry.obsolete || entry.fuzzy) continue;
    entries.push_back(entry.id.empty() ? Header(entry, language) : Untranslated(entry, true, file.LineEnd()));
  }
  file.SetEntries(std::move(entries));
  return file;
}

}  // namespace qelm::messages
