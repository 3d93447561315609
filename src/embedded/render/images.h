// Images: read from a file or from the data that a document has of them, and kept for as long as they are
// needed.
//
// Of an image that was copied into the document there are one or more forms (facets); the first one that can
// be read is taken. What comes out is a surface of the drawing library. A JPEG keeps its own bytes beside its
// pixels, and a PDF takes those as they are; its pixels are only made when something else is drawn on. An
// image is made once and drawn from where it lies; what has not been used for longest goes when many are
// large.
#pragma once

#include <list>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>

#include "embedded/model/document.h"
#include "embedded/render/design/drawings.h"

typedef struct _cairo_surface cairo_surface_t;

namespace qelm::embedded::render {

// Pixels beyond this are not made: a small file can claim to be a picture that no memory holds.
inline constexpr std::int64_t kMostPixels = 100'000'000;

// The data of one form of an image in an ImportObject statement, decoded from MIF's facet lines. An object
// has them one after the other; `*at` goes behind the one that is read. False when there is none behind
// `*at`.
bool NextFacet(std::string_view statement, std::size_t* at, std::string_view* name, std::string* bytes);

class Images {
 public:
  // `folder`: what relative paths stand on.
  Images(const model::Document& document, std::string folder);
  ~Images();
  Images(const Images&) = delete;
  Images& operator=(const Images&) = delete;

  // The image, null when it cannot be shown; `why` then says so, with its file. `index` tells it from other
  // images of the document. A PDF (`as_file`) takes the bytes of a JPEG instead of its pixels. The surface
  // holds until the next call.
  cairo_surface_t* Find(std::uint32_t index, const ImportedImage& image, bool as_file, std::string* why);

  // What to call an image in the box that stands for it.
  static std::string NameOf(const ImportedImage& image);

 private:
  struct Entry {
    std::string key;
    cairo_surface_t* surface = nullptr;  // null: it cannot be shown
    std::size_t bytes = 0;
    std::string why;
  };
  void Read(const ImportedImage& image, const std::string& path, bool as_file, Entry* entry) const;
  void MakeRoom();
  const std::string& PathOf(const std::string& file);

  const model::Document& document_;
  std::string folder_;
  std::list<Entry> entries_;  // the one used last in front
  std::unordered_map<std::string_view, std::list<Entry>::iterator> index_;
  std::size_t bytes_ = 0;
  std::unordered_map<std::string, std::string> paths_;  // by the name that the document has
};

}  // namespace qelm::embedded::render
