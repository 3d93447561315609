#include "embedded/render/design/variables.h"

#include <array>
#include <charconv>
#include <chrono>
#include <cstdlib>
#include <ctime>
#include <filesystem>

#include "embedded/model/metadata.h"
#include "embedded/model/xmp_packet.h"

namespace qelm::embedded::render {
namespace {

using model::Document;
using model::StyledRun;

constexpr std::array<std::string_view, 12> kMonths = {"January",   "February", "March",    "April",
                                                      "May",       "June",     "July",     "August",
                                                      "September", "October",  "November", "December"};
constexpr std::array<std::string_view, 7> kDays = {"Sunday",   "Monday", "Tuesday", "Wednesday",
                                                   "Thursday", "Friday", "Saturday"};
constexpr std::size_t kShortName = 3;

std::string TwoDigits(int value) {
  const int digits = value % 100;
  return {static_cast<char>('0' + digits / 10), static_cast<char>('0' + digits % 10)};
}

// A block about a moment. Names that end in 00 or 01 ask for two digits.
struct TimeBlock {
  std::string_view name;
  std::string (*text)(const PrintTime& time);
};
constexpr TimeBlock kTimeBlocks[] = {
    {"year", [](const PrintTime& t) { return std::to_string(t.year); }},
    {"shortyear", [](const PrintTime& t) { return TwoDigits(t.year); }},
    {"monthnum", [](const PrintTime& t) { return std::to_string(t.month); }},
    {"monthnum01", [](const PrintTime& t) { return TwoDigits(t.month); }},
    {"monthname",
     [](const PrintTime& t) { return std::string(kMonths[static_cast<std::size_t>(t.month - 1)]); }},
    {"shortmonthname",
     [](const PrintTime& t) {
       return std::string(kMonths[static_cast<std::size_t>(t.month - 1)].substr(0, kShortName));
     }},
    {"daynum", [](const PrintTime& t) { return std::to_string(t.day); }},
    {"daynum01", [](const PrintTime& t) { return TwoDigits(t.day); }},
    {"dayname", [](const PrintTime& t) { return std::string(kDays[static_cast<std::size_t>(t.weekday)]); }},
    {"shortdayname",
     [](const PrintTime& t) {
       return std::string(kDays[static_cast<std::size_t>(t.weekday)].substr(0, kShortName));
     }},
    {"hour", [](const PrintTime& t) { return std::to_string((t.hour + 11) % 12 + 1); }},
    {"hour01", [](const PrintTime& t) { return TwoDigits((t.hour + 11) % 12 + 1); }},
    {"hour24", [](const PrintTime& t) { return std::to_string(t.hour); }},
    {"minute", [](const PrintTime& t) { return std::to_string(t.minute); }},
    {"minute00", [](const PrintTime& t) { return TwoDigits(t.minute); }},
    {"second", [](const PrintTime& t) { return std::to_string(t.second); }},
    {"second00", [](const PrintTime& t) { return TwoDigits(t.second); }},
    {"ampm", [](const PrintTime& t) { return std::string(t.hour < 12 ? "am" : "pm"); }},
    {"AMPM", [](const PrintTime& t) { return std::string(t.hour < 12 ? "AM" : "PM"); }},
};

// A block about the document or the page, by its name.
struct FactBlock {
  std::string_view name;
  std::string (*text)(const Document& document, const PageFacts& facts);
};
constexpr FactBlock kFactBlocks[] = {
    {"curpagenum", [](const Document&, const PageFacts& f) { return f.number; }},
    {"lastpagenum", [](const Document&, const PageFacts& f) { return f.last; }},
    {"pagecount", [](const Document&, const PageFacts& f) { return f.count.empty() ? f.last : f.count; }},
    {"volnum", [](const Document&, const PageFacts& f) { return f.places.volume; }},
    {"chapnum", [](const Document&, const PageFacts& f) { return f.places.chapter; }},
    {"sectionnum", [](const Document&, const PageFacts& f) { return f.places.section; }},
    {"subsectionnum", [](const Document&, const PageFacts& f) { return f.places.subsection; }},
    {"fullfilename", [](const Document& d, const PageFacts&) { return d.path; }},
    {"filename",
     [](const Document& d, const PageFacts&) { return std::filesystem::path(d.path).filename().string(); }},
};

// "2009-11-23T12:32:17.0Z", as metadata has it; hours are those of the text.
std::optional<PrintTime> ReadTime(std::string_view text) {
  constexpr std::array<std::size_t, 6> kBegins = {0, 5, 8, 11, 14, 17};
  constexpr std::array<std::size_t, 6> kLengths = {4, 2, 2, 2, 2, 2};
  std::array<int, 6> parts{};
  for (std::size_t i = 0; i < parts.size(); ++i) {
    const std::string_view part = text.substr(std::min(kBegins[i], text.size()), kLengths[i]);
    const auto read = std::from_chars(part.data(), part.data() + part.size(), parts[i]);
    if (read.ec != std::errc() && i < 3) return std::nullopt;
  }
  using namespace std::chrono;
  const year_month_day date{year(parts[0]), month(static_cast<unsigned>(parts[1])),
                            day(static_cast<unsigned>(parts[2]))};
  if (!date.ok() || parts[3] > 23 || parts[3] < 0) return std::nullopt;
  PrintTime time;
  time.year = parts[0];
  time.month = parts[1];
  time.day = parts[2];
  time.weekday = static_cast<int>(weekday(sys_days(date)).c_encoding());
  time.hour = parts[3];
  time.minute = parts[4];
  time.second = parts[5];
  return time;
}

// Variables that tell when the document was made or changed take it from its metadata, where it says so.
PrintTime TimeOf(const Document& document, std::string_view variable, const PrintTime& now) {
  const bool creation = variable.starts_with("Creation Date");
  if (!creation && !variable.starts_with("Modification Date")) return now;
  const std::string text =
      model::PacketProperty(model::MetadataPacket(document), creation ? "CreateDate" : "ModifyDate");
  return ReadTime(text).value_or(now);
}

class Expander {
 public:
  Expander(const Document& document, const PageFacts& facts, const PrintTime& time)
      : document_(document), facts_(facts), time_(time) {}

  std::vector<StyledRun> Run(std::string_view definition);

 private:
  std::string Block(std::string_view block) const;

  const Document& document_;
  const PageFacts& facts_;
  const PrintTime& time_;
};

std::string Expander::Block(std::string_view block) const {
  std::string_view name = block;
  std::string_view argument;
  const std::size_t open = block.find('[');
  if (open != std::string_view::npos && block.ends_with(']')) {
    name = block.substr(0, open);
    argument = block.substr(open + 1, block.size() - open - 2);
  }
  for (const FactBlock& known : kFactBlocks) {
    if (known.name == name) return known.text(document_, facts_);
  }
  for (const TimeBlock& known : kTimeBlocks) {
    if (known.name == name) return known.text(time_);
  }
  return facts_.running ? facts_.running(name, argument) : std::string();
}

std::vector<StyledRun> Expander::Run(std::string_view definition) {
  std::vector<StyledRun> runs(1);
  for (std::size_t at = 0; at < definition.size(); ++at) {
    std::string& text = runs.back().text;
    if (definition[at] == '\\') {
      at += model::AppendFormatEscape(definition.substr(at + 1), &text);
      continue;
    }
    const std::size_t end = definition[at] == '<' ? definition.find('>', at) : std::string_view::npos;
    if (end == std::string_view::npos) {
      text.push_back(definition[at]);
      continue;
    }
    const std::string_view block = definition.substr(at + 1, end - at - 1);
    at = end;
    if (block.starts_with('$')) {
      text += Block(block.substr(1));
    } else {
      const bool is_default = block.starts_with("Default ") && block.ends_with(" Font");
      runs.push_back({{}, is_default ? std::string() : std::string(block)});
    }
  }
  std::erase_if(runs, [](const StyledRun& run) { return run.text.empty(); });
  return runs;
}

}  // namespace

PrintTime TimeOfSeconds(std::int64_t seconds) {
  using namespace std::chrono;
  const sys_seconds moment{std::chrono::seconds(seconds)};
  const auto days = floor<std::chrono::days>(moment);
  const year_month_day date(days);
  const hh_mm_ss clock(moment - days);
  PrintTime time;
  time.year = static_cast<int>(date.year());
  time.month = static_cast<int>(static_cast<unsigned>(date.month()));
  time.day = static_cast<int>(static_cast<unsigned>(date.day()));
  time.weekday = static_cast<int>(weekday(days).c_encoding());
  time.hour = static_cast<int>(clock.hours().count());
  time.minute = static_cast<int>(clock.minutes().count());
  time.second = static_cast<int>(clock.seconds().count());
  return time;
}

PrintTime CurrentTime() {
  if (const char* const fixed = std::getenv("SOURCE_DATE_EPOCH"); fixed != nullptr) {
    const std::string_view text = fixed;
    std::int64_t seconds = 0;
    const auto read = std::from_chars(text.data(), text.data() + text.size(), seconds);
    constexpr std::int64_t kYear9999 = 253402300799;
    if (read.ec == std::errc() && seconds >= 0 && seconds <= kYear9999) return TimeOfSeconds(seconds);
  }
  const std::time_t now = std::time(nullptr);
  std::tm local{};
  if (localtime_r(&now, &local) == nullptr) return TimeOfSeconds(now);
  return {local.tm_year + 1900, local.tm_mon + 1, local.tm_mday, local.tm_wday,
          local.tm_hour,        local.tm_min,     local.tm_sec};
}

std::vector<StyledRun> VariableRuns(const Document& document, std::string_view name, const PageFacts& facts,
                                    const PrintTime& time) {
  const auto found = document.variables.find(name);
  if (found == document.variables.end()) return {{std::string(name), std::nullopt}};
  const PrintTime moment = TimeOf(document, name, time);
  return Expander(document, facts, moment).Run(found->second);
}

std::string VariableText(const Document& document, std::string_view name, const PageFacts& facts,
                         const PrintTime& time) {
  std::string text;
  for (const StyledRun& run : VariableRuns(document, name, facts, time)) text += run.text;
  return text;
}

}  // namespace qelm::embedded::render
