// Fonts: what the formats of a document name, as Pango has it.
//
// A family that is not installed is replaced by one of the same class - with serifs, without, of equal width,
// symbols - and said once. What is found for a format is kept, so that a paragraph asks no font system.
#pragma once

#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "embedded/render/design/formats.h"

typedef struct _PangoContext PangoContext;
typedef struct _PangoFontDescription PangoFontDescription;
typedef struct _PangoFontMap PangoFontMap;
typedef struct _PangoLanguage PangoLanguage;

namespace qelm::embedded::render {

// A font of one size. Lengths are points.
struct Face {
  PangoFontDescription* description = nullptr;  // owned by Fonts
  PangoLanguage* language = nullptr;
  double size = 0;
  double ascent = 0;  // of a line's height, so that a line as high as the font is large has room for it
  double descent = 0;
};

class Fonts {
 public:
  Fonts();
  ~Fonts();
  Fonts(const Fonts&) = delete;
  Fonts& operator=(const Fonts&) = delete;

  // Holds as long as this does.
  const Face& Find(const FontFormat& format);
  // Whether a family is installed.
  bool Has(std::string_view family) const;
  PangoContext* context() const { return context_; }

  // "Palatino is not installed; Liberation Serif takes its place.", each family once.
  const std::vector<std::string>& notices() const { return notices_; }

  // The language of a format as in "en-us", "" for none.
  static std::string_view LanguageTag(std::string_view language);

 private:
  std::string Installed(std::string_view family);

  PangoFontMap* map_ = nullptr;
  PangoContext* context_ = nullptr;
  std::unordered_set<std::string> families_;             // in small letters
  std::unordered_map<std::string, std::string> places_;  // family to the one that is installed
  std::unordered_map<std::string, std::unique_ptr<Face>> faces_;
  std::vector<std::string> notices_;
};

}  // namespace qelm::embedded::render
