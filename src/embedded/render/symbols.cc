#include "embedded/render/symbols.h"

#include <array>

namespace qelm::embedded::render {
namespace {

// What stands in the places of "!" to "~".
constexpr std::u32string_view kSymbolLetters =
    U"!∀#∃%&∋()∗+,−./0123456789:;<=>?≅"
    U"ΑΒΧΔΕΦΓΗΙϑΚΛΜΝΟΠΘΡΣΤΥςΩΞΨΖ[∴]⊥_‾"
    U"αβχδεφγηιϕκλμνοπθρστυϖωξψζ{|}∼";
constexpr std::u32string_view kDingbatLetters =
    U"✁✂✃✄☎✆✇✈✉☛☞✌✍✎✏✐✑✒✓✔✕✖✗✘✙✚✛✜✝✞✟✠"
    U"✡✢✣✤✥✦✧★✩✪✫✬✭✮✯✰✱✲✳✴✵✶✷✸✹✺✻✼✽✾✿❀"
    U"❁❂❃❄❅❆❇❈❉❊❋●❍■❏❐❑❒▲▼◆❖◗❘❙❚❛❜❝❞";
constexpr std::u32string_view kWingdingLetters =
    U"✏✂✁👓🕭🕮🕯☎✆🖂🖃📪📫📬📭📁📂📄🗏🗐🗄⌛🖮🖰🖲🖳🖴"
    U"🖫"
    U"🖬"
    U"✇"
    U"✍"
    U"🖎"
    U"✌👌👍👎☜☞☝☟✋☺😐☹💣☠🏳🏱✈☼💧❄🕆✞🕈✠✡☪☯ॐ☸♈♉"
    U"♊"
    U"♋♌♍♎♏♐♑♒♓🙰🙵●❍■□❐❑❒⬧⧫◆❖⬥⌧⮹⌘🏵🏶🙶🙷";

// Characters beyond these that serve as bullets and arrows, as documents have them once they are decoded.
struct Sign {
  char32_t written;
  char32_t shown;
};
constexpr std::array kWingdingSigns = {
    Sign{U'\u00A7', U'\u25AA'}, Sign{U'\u00A8', U'\u25FB'}, Sign{U'\u00D8', U'\u27A2'},
    Sign{U'\u00E0', U'\u2192'}, Sign{U'\u00E8', U'\u2794'}, Sign{U'\u00F0', U'\u21E8'},
    Sign{U'\u00FB', U'\u2717'}, Sign{U'\u00FC', U'\u2713'}, Sign{U'\u00FD', U'\u2612'},
    Sign{U'\u00FE', U'\u2611'},
};
constexpr std::array kSymbolSigns = {
    Sign{U'\u00B7', U'\u2022'}, Sign{U'\u00AE', U'\u2192'}, Sign{U'\u00AC', U'\u2190'},
    Sign{U'\u00B3', U'\u2265'}, Sign{U'\u00A3', U'\u2264'}, Sign{U'\u00A5', U'\u221E'},
    Sign{U'\u00D6', U'\u221A'}, Sign{U'\u00E5', U'\u2211'}, Sign{U'\u00D1', U'\u2207'},
    Sign{U'\u00DE', U'\u21D2'},
};

enum class Family : unsigned char { kNone, kSymbol, kDingbats, kWingdings };

Family FamilyOf(std::string_view family) {
  if (family == "Symbol" || family == "Symbol MT") return Family::kSymbol;
  if (family.starts_with("ZapfDingbats") || family.starts_with("Zapf Dingbats") ||
      family.starts_with("ITC Zapf Dingbats")) {
    return Family::kDingbats;
  }
  return family == "Wingdings" ? Family::kWingdings : Family::kNone;
}

char32_t Shown(Family family, char32_t c) {
  // Where symbols were put beyond Unicode, their code is behind that.
  constexpr char32_t kPrivate = 0xF000;
  if (c > kPrivate && c <= kPrivate + 0xFF) c -= kPrivate;
  if (c > U' ' && c <= U'~') {
    const std::u32string_view table = family == Family::kSymbol     ? kSymbolLetters
                                      : family == Family::kDingbats ? kDingbatLetters
                                                                    : kWingdingLetters;
    return table[c - U'!'];
  }
  if (family == Family::kWingdings) {
    for (const Sign& sign : kWingdingSigns) {
      if (sign.written == c) return sign.shown;
    }
  }
  if (family == Family::kSymbol) {
    for (const Sign& sign : kSymbolSigns) {
      if (sign.written == c) return sign.shown;
    }
  }
  return c;
}

char32_t Decode(std::string_view text, std::size_t* at) {
  const auto byte = [&](std::size_t i) { return static_cast<unsigned char>(text[i]); };
  const unsigned char first = byte((*at)++);
  if (first < 0xC0) return first;
  const int more = first >= 0xF0 ? 3 : first >= 0xE0 ? 2 : 1;
  char32_t c = static_cast<char32_t>(first & (0x3F >> more));
  for (int i = 0; i < more && *at < text.size(); ++i) {
    c = (c << 6) | static_cast<char32_t>(byte((*at)++) & 0x3F);
  }
  return c;
}

void Encode(char32_t c, std::string* text) {
  if (c < 0x80) {
    text->push_back(static_cast<char>(c));
    return;
  }
  const int more = c >= 0x10000 ? 3 : c >= 0x800 ? 2 : 1;
  constexpr unsigned char kLead[] = {0, 0xC0, 0xE0, 0xF0};
  text->push_back(static_cast<char>(kLead[more] | (c >> (6 * more))));
  for (int i = more - 1; i >= 0; --i) text->push_back(static_cast<char>(0x80 | ((c >> (6 * i)) & 0x3F)));
}

}  // namespace

bool IsSymbolFamily(std::string_view family) { return FamilyOf(family) != Family::kNone; }

std::string SymbolText(std::string_view family, std::string_view text) {
  const Family known = FamilyOf(family);
  std::string shown;
  for (std::size_t at = 0; at < text.size();) Encode(Shown(known, Decode(text, &at)), &shown);
  return shown;
}

}  // namespace qelm::embedded::render
