#include "embedded/mif/tokens.h"

#include <array>

namespace qelm::embedded::mif {
namespace {

constexpr std::string_view kNames[] = {"",
#define QELM_MIF_TOKEN(name) #name,
                                       QELM_MIF_TOKENS(QELM_MIF_TOKEN)
#undef QELM_MIF_TOKEN
};
constexpr std::size_t kCount = std::size(kNames);
constexpr unsigned kSlotBits = 11;
constexpr std::size_t kSlots = std::size_t{1} << kSlotBits;

// What the compiler makes one load of.
constexpr std::uint64_t Byte(const char* at, unsigned index) {
  return std::uint64_t{static_cast<unsigned char>(at[index])} << (8 * index);
}
constexpr std::uint64_t Four(const char* at) { return Byte(at, 0) | Byte(at, 1) | Byte(at, 2) | Byte(at, 3); }
constexpr std::uint64_t Eight(const char* at) {
  return Four(at) | Byte(at, 4) | Byte(at, 5) | Byte(at, 6) | Byte(at, 7);
}

// A name as its first and its last bytes, which overlap: up to sixteen bytes they are the whole name.
struct Ends {
  std::uint64_t first = 0;
  std::uint64_t last = 0;
  friend constexpr bool operator==(const Ends&, const Ends&) = default;
};
constexpr std::size_t kWhole = 16;

constexpr Ends EndsOf(std::string_view name) {
  const char* const at = name.data();
  const std::size_t size = name.size();
  if (size >= 8) return {Eight(at), Eight(at + size - 8)};
  if (size >= 4) return {Four(at), Four(at + size - 4)};
  Ends ends;
  for (const char c : name) ends.first = ends.first << 8U | static_cast<unsigned char>(c);
  return ends;
}

// Reading a file looks up a million names.
constexpr std::size_t SlotOf(const Ends& ends, std::size_t size) {
  const std::uint64_t hash = (ends.first + (ends.last << 1U) + size) * 0x9E3779B97F4A7C15U;
  return hash >> (64U - kSlotBits);
}

constexpr std::array<Ends, kCount> MakeEnds() {
  std::array<Ends, kCount> ends{};
  for (std::size_t i = 1; i < kCount; ++i) ends[i] = EndsOf(kNames[i]);
  return ends;
}
constexpr std::array<Ends, kCount> kEnds = MakeEnds();

constexpr std::array<std::uint16_t, kSlots> MakeTable() {
  std::array<std::uint16_t, kSlots> table{};
  for (std::size_t i = 1; i < kCount; ++i) {
    std::size_t slot = SlotOf(kEnds[i], kNames[i].size());
    while (table[slot] != 0) slot = (slot + 1) % kSlots;
    table[slot] = static_cast<std::uint16_t>(i);
  }
  return table;
}

constexpr std::array<std::uint16_t, kSlots> kTable = MakeTable();

}  // namespace

Token FindToken(std::string_view name) {
  if (name.empty()) return Token::kUnknown;
  const Ends ends = EndsOf(name);
  for (std::size_t slot = SlotOf(ends, name.size()); kTable[slot] != 0; slot = (slot + 1) % kSlots) {
    const std::size_t token = kTable[slot];
    if (kEnds[token] != ends || kNames[token].size() != name.size()) continue;
    if (name.size() <= kWhole || kNames[token] == name) return static_cast<Token>(token);
  }
  return Token::kUnknown;
}

std::string_view TokenName(Token token) { return kNames[static_cast<std::size_t>(token)]; }

bool IsTopLevelOnly(Token token) {
  switch (token) {
    case Token::kColorCatalog:
    case Token::kConditionCatalog:
    case Token::kPgfCatalog:
    case Token::kElementDefCatalog:
    case Token::kFmtChangeListCatalog:
    case Token::kFontCatalog:
    case Token::kRulingCatalog:
    case Token::kTblCatalog:
    case Token::kKumihanCatalog:
    case Token::kViews:
    case Token::kVariableFormats:
    case Token::kMarkerTypeCatalog:
    case Token::kXRefFormats:
    case Token::kDocument:
    case Token::kAFrames:
    case Token::kTbls:
    case Token::kTextFlow:
    case Token::kBookElements:
      return true;
    default:
      return false;
  }
}

}  // namespace qelm::embedded::mif
