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
constexpr std::size_t kSlots = 1024;

// Names are short and differ early, late and in length, so these bytes spread them well enough.
constexpr std::size_t SlotOf(std::string_view name) {
  std::uint32_t hash = static_cast<std::uint32_t>(name.size()) * 0x9E3779B1U;
  for (const char c : name) hash = (hash ^ static_cast<unsigned char>(c)) * 0x01000193U;
  return (hash ^ (hash >> 15)) % kSlots;
}

constexpr std::array<std::uint16_t, kSlots> MakeTable() {
  std::array<std::uint16_t, kSlots> table{};
  for (std::size_t i = 1; i < kCount; ++i) {
    std::size_t slot = SlotOf(kNames[i]);
    while (table[slot] != 0) slot = (slot + 1) % kSlots;
    table[slot] = static_cast<std::uint16_t>(i);
  }
  return table;
}

constexpr std::array<std::uint16_t, kSlots> kTable = MakeTable();

}  // namespace

Token FindToken(std::string_view name) {
  if (name.empty()) return Token::kUnknown;
  for (std::size_t slot = SlotOf(name); kTable[slot] != 0; slot = (slot + 1) % kSlots) {
    if (kNames[kTable[slot]] == name) return static_cast<Token>(kTable[slot]);
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
