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

// Names differ early, late, in the middle and in length, so four bytes spread them: reading a file looks up a
// million names. Of a name that is not empty.
constexpr std::size_t SlotOf(std::string_view name) {
  const std::size_t size = name.size();
  const auto byte = [&](std::size_t at) {
    return static_cast<std::uint32_t>(static_cast<unsigned char>(name[at]));
  };
  const std::uint32_t bytes =
      byte(0) | (byte(size / 2) << 8U) | (byte(size - 1) << 16U) | (byte(size * 3 / 4) << 24U);
  const std::uint32_t hash = (bytes + static_cast<std::uint32_t>(size) * 0x01000193U) * 0x9E3779B1U;
  return hash >> (32U - kSlotBits);
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
