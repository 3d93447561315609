#include "embedded/render/fonts.h"

#include <pango/pangocairo.h>

#include <algorithm>
#include <array>
#include <cmath>

namespace qelm::embedded::render {
namespace {

enum class FontClass : std::uint8_t { kSerif, kSans, kMono, kSymbol };

struct ClassWord {
  std::string_view word;  // in the family's name
  FontClass font_class;
};
// The first word that the name contains decides, so the narrower ones come first.
constexpr std::array kClassWords = {
    ClassWord{"symbol", FontClass::kSymbol},   ClassWord{"dingbat", FontClass::kSymbol},
    ClassWord{"wingding", FontClass::kSymbol}, ClassWord{"webding", FontClass::kSymbol},
    ClassWord{"mono", FontClass::kMono},       ClassWord{"courier", FontClass::kMono},
    ClassWord{"console", FontClass::kMono},    ClassWord{"consolas", FontClass::kMono},
    ClassWord{"typewriter", FontClass::kMono}, ClassWord{"letter gothic", FontClass::kMono},
    ClassWord{"menlo", FontClass::kMono},      ClassWord{"monaco", FontClass::kMono},
    ClassWord{"sans", FontClass::kSans},       ClassWord{"arial", FontClass::kSans},
    ClassWord{"helvetica", FontClass::kSans},  ClassWord{"verdana", FontClass::kSans},
    ClassWord{"tahoma", FontClass::kSans},     ClassWord{"trebuchet", FontClass::kSans},
    ClassWord{"calibri", FontClass::kSans},    ClassWord{"frutiger", FontClass::kSans},
    ClassWord{"myriad", FontClass::kSans},     ClassWord{"univers", FontClass::kSans},
    ClassWord{"futura", FontClass::kSans},     ClassWord{"segoe", FontClass::kSans},
    ClassWord{"gothic", FontClass::kSans},     ClassWord{"avant", FontClass::kSans},
    ClassWord{"optima", FontClass::kSans},     ClassWord{"gill", FontClass::kSans},
    ClassWord{"interval", FontClass::kSans},   ClassWord{"lucida", FontClass::kSans},
};

// What stands for a class: the first one that is installed, and last what every font system knows.
constexpr std::array<std::array<std::string_view, 3>, 4> kStandIns = {{
    {"Liberation Serif", "DejaVu Serif", "serif"},
    {"Liberation Sans", "DejaVu Sans", "sans-serif"},
    {"Liberation Mono", "DejaVu Sans Mono", "monospace"},
    {"DejaVu Sans", "Symbola", "sans-serif"},
}};

struct WeightWord {
  std::string_view word;
  PangoWeight weight;
};
constexpr std::array kWeights = {
    WeightWord{"ultralight", PANGO_WEIGHT_ULTRALIGHT},
    WeightWord{"extralight", PANGO_WEIGHT_ULTRALIGHT},
    WeightWord{"semibold", PANGO_WEIGHT_SEMIBOLD},
    WeightWord{"demi", PANGO_WEIGHT_SEMIBOLD},
    WeightWord{"extrabold", PANGO_WEIGHT_ULTRABOLD},
    WeightWord{"ultrabold", PANGO_WEIGHT_ULTRABOLD},
    WeightWord{"bold", PANGO_WEIGHT_BOLD},
    WeightWord{"black", PANGO_WEIGHT_HEAVY},
    WeightWord{"heavy", PANGO_WEIGHT_HEAVY},
    WeightWord{"medium", PANGO_WEIGHT_MEDIUM},
    WeightWord{"thin", PANGO_WEIGHT_THIN},
    WeightWord{"light", PANGO_WEIGHT_LIGHT},
};

struct LanguageName {
  std::string_view name;
  std::string_view tag;
};
// FLanguage and PgfLanguage keywords.
constexpr std::array kLanguages = {
    LanguageName{"USEnglish", "en-us"},
    LanguageName{"UKEnglish", "en-gb"},
    LanguageName{"German", "de"},
    LanguageName{"SwissGerman", "de-ch"},
    LanguageName{"NewGerman", "de"},
    LanguageName{"NewSwissGerman", "de-ch"},
    LanguageName{"French", "fr"},
    LanguageName{"CanadianFrench", "fr-ca"},
    LanguageName{"Spanish", "es"},
    LanguageName{"Catalan", "ca"},
    LanguageName{"Italian", "it"},
    LanguageName{"Portuguese", "pt"},
    LanguageName{"Brazilian", "pt-br"},
    LanguageName{"Danish", "da"},
    LanguageName{"Dutch", "nl"},
    LanguageName{"Norwegian", "nb"},
    LanguageName{"Nynorsk", "nn"},
    LanguageName{"Finnish", "fi"},
    LanguageName{"Swedish", "sv"},
    LanguageName{"Greek", "el"},
    LanguageName{"Russian", "ru"},
    LanguageName{"Polish", "pl"},
    LanguageName{"Czech", "cs"},
    LanguageName{"Turkish", "tr"},
    LanguageName{"Hungarian", "hu"},
    LanguageName{"Japanese", "ja"},
    LanguageName{"TraditionalChinese", "zh-tw"},
    LanguageName{"SimplifiedChinese", "zh-cn"},
    LanguageName{"Korean", "ko"},
    LanguageName{"Arabic", "ar"},
    LanguageName{"Hebrew", "he"},
};

std::string Small(std::string_view text) {
  std::string small(text);
  for (char& c : small) {
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
  }
  return small;
}

FontClass ClassOf(const std::string& small_family) {
  for (const ClassWord& word : kClassWords) {
    if (small_family.find(word.word) != std::string::npos) return word.font_class;
  }
  return FontClass::kSerif;
}

PangoWeight WeightOf(std::string_view weight) {
  const std::string small = Small(weight);
  for (const WeightWord& word : kWeights) {
    if (small.find(word.word) != std::string::npos) return word.weight;
  }
  return PANGO_WEIGHT_NORMAL;
}

PangoStyle StyleOf(std::string_view angle) {
  const std::string small = Small(angle);
  if (small.find("italic") != std::string::npos) return PANGO_STYLE_ITALIC;
  const bool slanted = small.find("obli") != std::string::npos || small.find("slant") != std::string::npos;
  return slanted ? PANGO_STYLE_OBLIQUE : PANGO_STYLE_NORMAL;
}

PangoStretch StretchOf(std::string_view variation) {
  const std::string small = Small(variation);
  if (small.find("narrow") != std::string::npos || small.find("cond") != std::string::npos) {
    return PANGO_STRETCH_CONDENSED;
  }
  return PANGO_STRETCH_NORMAL;
}

// Super- and subscripts, and small capitals, in a font of this part of the size.
constexpr double kRaisedSize = 0.75;

}  // namespace

Fonts::Fonts() : map_(pango_cairo_font_map_new()) {
  // A point is a unit of the page.
  pango_cairo_font_map_set_resolution(PANGO_CAIRO_FONT_MAP(map_), 72);
  context_ = pango_font_map_create_context(map_);
  cairo_font_options_t* options = cairo_font_options_create();
  cairo_font_options_set_hint_style(options, CAIRO_HINT_STYLE_NONE);
  cairo_font_options_set_hint_metrics(options, CAIRO_HINT_METRICS_OFF);
  pango_cairo_context_set_font_options(context_, options);
  cairo_font_options_destroy(options);
  pango_context_set_round_glyph_positions(context_, FALSE);
  PangoFontFamily** families = nullptr;
  int count = 0;
  pango_font_map_list_families(map_, &families, &count);
  for (int i = 0; i < count; ++i) families_.insert(Small(pango_font_family_get_name(families[i])));
  g_free(families);
}

Fonts::~Fonts() {
  for (auto& [key, face] : faces_) pango_font_description_free(face->description);
  g_object_unref(context_);
  g_object_unref(map_);
}

bool Fonts::Has(std::string_view family) const { return families_.contains(Small(family)); }

std::string Fonts::Installed(std::string_view family) {
  const auto known = places_.find(std::string(family));
  if (known != places_.end()) return known->second;
  const std::string small = Small(family);
  std::string place(family);
  if (!families_.contains(small)) {
    const auto& stand_ins = kStandIns[static_cast<std::size_t>(ClassOf(small))];
    const auto there = std::find_if(stand_ins.begin(), stand_ins.end(),
                                    [&](std::string_view name) { return families_.contains(Small(name)); });
    place = there == stand_ins.end() ? stand_ins.back() : *there;
    notices_.push_back("the font " + std::string(family) + " is not installed; " + place +
                       " takes its place.");
  }
  places_.emplace(family, place);
  return place;
}

const Face& Fonts::Find(const FontFormat& format) {
  const bool raised = format.position != LetterPosition::kNormal;
  const double size = std::clamp(format.size, 0.5, 2000.0) * (raised ? kRaisedSize : 1);
  std::string key(format.family);
  for (const std::string_view part : {format.weight, format.angle, format.variation, format.language}) {
    key.append("|").append(part);
  }
  key.append("|").append(std::to_string(std::lround(size * PANGO_SCALE)));
  if (format.letter_case == LetterCase::kSmallCaps) key += "s";
  std::unique_ptr<Face>& face = faces_[key];
  if (face) return *face;
  face = std::make_unique<Face>();
  face->description = pango_font_description_new();
  pango_font_description_set_family(face->description, Installed(format.family).c_str());
  pango_font_description_set_weight(face->description, WeightOf(format.weight));
  pango_font_description_set_style(face->description, StyleOf(format.angle));
  pango_font_description_set_stretch(face->description, StretchOf(format.variation));
  pango_font_description_set_absolute_size(face->description, size * PANGO_SCALE);
  if (format.letter_case == LetterCase::kSmallCaps) {
    pango_font_description_set_variant(face->description, PANGO_VARIANT_SMALL_CAPS);
  }
  face->language = pango_language_from_string(std::string(LanguageTag(format.language)).c_str());
  PangoFontMetrics* metrics = pango_context_get_metrics(context_, face->description, face->language);
  const double ascent = pango_font_metrics_get_ascent(metrics);
  const double height = std::max(ascent + pango_font_metrics_get_descent(metrics), 1.0);
  pango_font_metrics_unref(metrics);
  face->size = size;
  // Lines are spaced by the size of the font and not by what its designer allows around it.
  face->ascent = size * ascent / height;
  face->descent = size - face->ascent;
  return *face;
}

std::string_view Fonts::LanguageTag(std::string_view language) {
  for (const LanguageName& name : kLanguages) {
    if (name.name == language) return name.tag;
  }
  return {};
}

}  // namespace qelm::embedded::render
