#include "embedded/render/images.h"

#include <cairo.h>
#include <gdk-pixbuf/gdk-pixbuf.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <optional>
#include <utility>

#include "embedded/model/book.h"
#include "embedded/model/locate.h"

namespace qelm::embedded::render {
namespace {

// What is kept of images, in bytes of pixels.
constexpr std::size_t kMostKept = std::size_t{256} << 20U;
constexpr std::uintmax_t kLargestFile = std::uintmax_t{1} << 30U;
// Drawings without pixels of their own are made this fine.
constexpr double kDotsPerInch = 300;

struct ObjectDeleter {
  void operator()(gpointer object) const { g_object_unref(object); }
};
using Pixbuf = std::unique_ptr<GdkPixbuf, ObjectDeleter>;

std::string TakeMessage(GError* error) {
  std::string text = error == nullptr ? "the data is damaged" : error->message;
  g_clear_error(&error);
  while (!text.empty() && (text.back() == '.' || text.back() == '\n')) text.pop_back();
  return text;
}

std::string TooLarge() {
  return "it has more than " + std::to_string(kMostPixels / 1'000'000) + " million pixels";
}

// ---------------------------------------------------------------------------------------------------------------
// Reading pixels.

struct SizeCheck {
  int width = 0;  // of a drawing: as fine as it is to be made; 0: as it is
  int height = 0;
  bool rough = false;  // nobody looks at the pixels
  bool too_large = false;
};

// Called when the size is known and nothing is made yet. A size of nothing ends reading.
void OnSize(GdkPixbufLoader* loader, int width, int height, gpointer data) {
  auto* const check = static_cast<SizeCheck*>(data);
  GdkPixbufFormat* const format = gdk_pixbuf_loader_get_format(loader);
  const bool scales = format != nullptr && gdk_pixbuf_format_is_scalable(format) != FALSE;
  if (scales && check->width > 0 && check->height > 0) {
    gdk_pixbuf_loader_set_size(loader, check->width, check->height);
    return;
  }
  check->too_large = std::int64_t{width} * height > kMostPixels;
  // The coarsest that JPEG can be read to.
  if (check->rough) gdk_pixbuf_loader_set_size(loader, std::max(width / 8, 1), std::max(height / 8, 1));
  if (check->too_large) gdk_pixbuf_loader_set_size(loader, 0, 0);
}

// Called when there is room for the pixels. What a damaged image lacks is blank, not what was in memory;
// other formats come here with their pixels made.
void OnPrepared(GdkPixbufLoader* loader, gpointer) {
  constexpr std::array<std::string_view, 3> kInPieces = {"png", "jpeg", "bmp"};
  GdkPixbuf* const pixels = gdk_pixbuf_loader_get_pixbuf(loader);
  GdkPixbufFormat* const format = gdk_pixbuf_loader_get_format(loader);
  if (pixels == nullptr || format == nullptr) return;
  const std::unique_ptr<gchar, decltype(&g_free)> name(gdk_pixbuf_format_get_name(format), g_free);
  if (std::find(kInPieces.begin(), kInPieces.end(), name.get()) == kInPieces.end()) return;
  gdk_pixbuf_fill(pixels, gdk_pixbuf_get_has_alpha(pixels) != FALSE ? 0 : 0xFFFFFFFFU);
}

Pixbuf Decode(std::string_view bytes, SizeCheck check, std::string* why) {
  const std::unique_ptr<GdkPixbufLoader, ObjectDeleter> loader(gdk_pixbuf_loader_new());
  g_signal_connect(loader.get(), "size-prepared", G_CALLBACK(OnSize), &check);
  g_signal_connect(loader.get(), "area-prepared", G_CALLBACK(OnPrepared), nullptr);
  GError* error = nullptr;
  const auto* const data = reinterpret_cast<const guchar*>(bytes.data());
  const bool written = gdk_pixbuf_loader_write(loader.get(), data, bytes.size(), &error) != FALSE;
  // Closed in any case; an error that came first says more than the one of closing.
  const bool closed = gdk_pixbuf_loader_close(loader.get(), written ? &error : nullptr) != FALSE;
  GdkPixbuf* const pixels = gdk_pixbuf_loader_get_pixbuf(loader.get());
  const std::string message = written && closed ? std::string() : TakeMessage(error);
  if (check.too_large) {
    *why = TooLarge();
    return nullptr;
  }
  if (!written || !closed || pixels == nullptr) {
    *why = message.empty() ? "the data is damaged" : message;
    return nullptr;
  }
  return Pixbuf(static_cast<GdkPixbuf*>(g_object_ref(pixels)));
}

std::uint32_t Premultiplied(std::uint32_t value, std::uint32_t alpha) { return (value * alpha + 127) / 255; }

// The drawing library has a pixel as one number, its color multiplied by its opacity.
cairo_surface_t* MakeSurface(const GdkPixbuf* pixels) {
  const int width = gdk_pixbuf_get_width(pixels);
  const int height = gdk_pixbuf_get_height(pixels);
  const bool alpha = gdk_pixbuf_get_has_alpha(pixels) != FALSE;
  cairo_surface_t* const surface =
      cairo_image_surface_create(alpha ? CAIRO_FORMAT_ARGB32 : CAIRO_FORMAT_RGB24, width, height);
  unsigned char* const target = cairo_image_surface_get_data(surface);
  if (target == nullptr) return surface;
  const int target_stride = cairo_image_surface_get_stride(surface);
  const int stride = gdk_pixbuf_get_rowstride(pixels);
  const int channels = gdk_pixbuf_get_n_channels(pixels);
  const guint8* const source = gdk_pixbuf_read_pixels(pixels);
  for (int y = 0; y < height; ++y) {
    const guint8* from = source + static_cast<std::ptrdiff_t>(y) * stride;
    unsigned char* to = target + static_cast<std::ptrdiff_t>(y) * target_stride;
    for (int x = 0; x < width; ++x, from += channels, to += 4) {
      const std::uint32_t opacity = alpha ? from[3] : 255;
      const std::uint32_t pixel = opacity << 24U | Premultiplied(from[0], opacity) << 16U |
                                  Premultiplied(from[1], opacity) << 8U | Premultiplied(from[2], opacity);
      std::memcpy(to, &pixel, sizeof pixel);
    }
  }
  cairo_surface_mark_dirty(surface);
  return surface;
}

// ---------------------------------------------------------------------------------------------------------------
// JPEG as it is.

struct JpegSize {
  int width = 0;
  int height = 0;
  int components = 0;
};

// Goes through the segments of a JPEG (ITU-T T.81, B.1.1) up to its first scan: `segment(marker, at)` is told
// of each with the place behind its length, and ends it with true. Returns where it ended; npos where the
// file did.
template <typename Segment>
std::size_t WalkJpeg(std::string_view bytes, Segment&& segment) {
  const auto byte = [&](std::size_t at) { return static_cast<unsigned char>(bytes[at]); };
  for (std::size_t at = bytes.starts_with("\xFF\xD8") ? 2 : bytes.size(); at + 4 <= bytes.size();) {
    if (byte(at) != 0xFF) break;
    const unsigned marker = byte(at + 1);
    if (marker == 0xFF) {
      ++at;
      continue;
    }
    if (segment(marker, at + 4) || (marker >= 0xD0 && marker <= 0xDA)) return at;
    at += 2U + static_cast<std::size_t>(byte(at + 2) << 8U | byte(at + 3));
  }
  return std::string_view::npos;
}

// What the frame header of a JPEG says (ITU-T T.81, B.2.2). Nothing for what is no plain JPEG.
std::optional<JpegSize> ReadJpegSize(std::string_view bytes) {
  const auto byte = [&](std::size_t at) { return static_cast<unsigned char>(bytes[at]); };
  const auto word = [&](std::size_t at) { return byte(at) << 8U | byte(at + 1); };
  std::optional<JpegSize> size;
  WalkJpeg(bytes, [&](unsigned marker, std::size_t at) {
    // Baseline, extended and progressive Huffman coding: what PDF readers are made to read.
    const bool frame = marker >= 0xC0 && marker <= 0xC2 && at + 6 <= bytes.size();
    if (frame && byte(at) == 8) size = JpegSize{word(at + 3), word(at + 1), byte(at + 5)};
    return frame;
  });
  return size;
}

void DeleteBytes(void* data) { delete static_cast<std::string*>(data); }

// Hands the surface a copy of the bytes to keep.
void AttachBytes(cairo_surface_t* surface, const char* type, std::string_view bytes) {
  auto kept = std::make_unique<std::string>(bytes);
  const auto* const data = reinterpret_cast<const unsigned char*>(kept->data());
  const auto status = cairo_surface_set_mime_data(surface, type, data, kept->size(), DeleteBytes, kept.get());
  if (status == CAIRO_STATUS_SUCCESS) static_cast<void>(kept.release());
}

// A PDF stretches the JPEG over the surface that it is attached to, however large that is, and never looks at
// its pixels: one is enough.
cairo_surface_t* MakeJpegSurface(std::string_view bytes, std::string* why) {
  const std::optional<JpegSize> size = ReadJpegSize(bytes);
  // Four inks come in more than one meaning; those are made into pixels.
  const bool plain = size && (size->components == 1 || size->components == 3);
  if (!plain || size->width == 0 || size->height == 0) return nullptr;
  if (std::int64_t{size->width} * size->height > kMostPixels) {
    *why = TooLarge();
    return nullptr;
  }
  // A reader of the PDF would show damage as nothing, or not open the page at all.
  if (Decode(bytes, {.rough = true}, why) == nullptr) return nullptr;
  cairo_surface_t* const surface = cairo_image_surface_create(CAIRO_FORMAT_RGB24, 1, 1);
  AttachBytes(surface, CAIRO_MIME_TYPE_JPEG, bytes);
  return surface;
}

// The preview of an EPS file for systems without PostScript, a TIFF; empty when there is none.
std::string_view EpsPreview(std::string_view bytes) {
  constexpr std::size_t kHeader = 30;
  const auto number = [&](std::size_t at) {
    std::size_t value = 0;
    for (std::size_t i = 4; i-- > 0;) value = value << 8U | static_cast<unsigned char>(bytes[at + i]);
    return value;
  };
  if (bytes.size() < kHeader) return {};
  const std::size_t begin = number(20);
  return begin < bytes.size() ? bytes.substr(begin, number(24)) : std::string_view();
}

// Readers of PNG and JPEG take what there is of a file that was cut off. A picture within the picture ends
// before the scan.
bool IsCutOff(std::string_view bytes) {
  if (bytes.starts_with("\x89PNG")) return bytes.find("IEND") == std::string_view::npos;
  const std::size_t scan = WalkJpeg(bytes, [](unsigned, std::size_t) { return false; });
  return scan != std::string_view::npos && bytes.find("\xFF\xD9", scan) == std::string_view::npos;
}

cairo_surface_t* MakeImage(std::string_view bytes, const SizeCheck& check, bool as_file, std::string* why) {
  const bool has_preview = bytes.starts_with("\xC5\xD0\xD3\xC6");
  if (has_preview) bytes = EpsPreview(bytes);
  if (bytes.starts_with("%!PS") || (has_preview && bytes.empty())) {
    *why = "PostScript is not drawn";
    return nullptr;
  }
  if (IsCutOff(bytes)) {
    *why = "the file ends before the picture does";
    return nullptr;
  }
  if (as_file) {
    cairo_surface_t* const jpeg = MakeJpegSurface(bytes, why);
    if (jpeg != nullptr || !why->empty()) return jpeg;
  }
  const Pixbuf pixels = Decode(bytes, check, why);
  return pixels == nullptr ? nullptr : MakeSurface(pixels.get());
}

// ---------------------------------------------------------------------------------------------------------------
// Files and facets.

std::optional<std::string> ReadImageFile(const std::string& path, std::string* why) {
  std::error_code error;
  // A pipe or a device could be read forever.
  if (!std::filesystem::is_regular_file(path, error)) {
    *why = std::filesystem::exists(path, error) ? "it is no file" : "there is no such file";
    return std::nullopt;
  }
  if (std::filesystem::file_size(path, error) > kLargestFile || error) {
    *why = "the file is larger than a gigabyte";
    return std::nullopt;
  }
  std::ifstream file(path, std::ios::binary);
  std::string bytes((std::istreambuf_iterator<char>(file)), std::istreambuf_iterator<char>());
  if (!file) {
    *why = "the file cannot be read";
    return std::nullopt;
  }
  return bytes;
}

int HexDigit(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  return c >= 'a' && c <= 'f' ? c - 'a' + 10 : -1;
}

// The data lines of a facet: printable text stands for itself, `\x` begins and ends hexadecimal digits, `\r`,
// `\n` and `\t` are bytes that would break the line.
class FacetText {
 public:
  explicit FacetText(std::string* bytes) : bytes_(*bytes) {}
  void Add(std::string_view line);

 private:
  void Digit(char c);

  std::string& bytes_;
  bool hexadecimal_ = false;
  int high_ = -1;  // the first digit of a byte that was begun
};

void FacetText::Digit(char c) {
  const int digit = HexDigit(c);
  if (digit < 0) return;
  if (high_ < 0) {
    high_ = digit;
  } else {
    bytes_.push_back(static_cast<char>(high_ * 16 + digit));
    high_ = -1;
  }
}

void FacetText::Add(std::string_view line) {
  for (std::size_t i = 0; i < line.size(); ++i) {
    const char c = line[i];
    if (c != '\\' || i + 1 == line.size()) {
      if (hexadecimal_) {
        Digit(c);
      } else {
        bytes_.push_back(c);
      }
      continue;
    }
    const char escaped = line[++i];
    if (escaped == 'x') {
      hexadecimal_ = !hexadecimal_;
      high_ = -1;
    } else {
      bytes_.push_back(escaped == 'r' ? '\r' : escaped == 'n' ? '\n' : escaped == 't' ? '\t' : escaped);
    }
  }
}

// Forms that nothing here draws.
constexpr std::array<std::string_view, 4> kOtherFacets = {"FrameVector", "EPSI", "WMF", "OLE2"};

// What a drawing is made to: as fine as its place asks for, within the limit.
SizeCheck Fineness(const Rect& place) {
  const double dots = kDotsPerInch / 72;
  double width = std::max(1.0, place.width * dots);
  double height = std::max(1.0, place.height * dots);
  const double most = std::max({1.0, width / 8192, height / 8192});
  return {.width = static_cast<int>(width / most), .height = static_cast<int>(height / most)};
}

}  // namespace

bool NextFacet(std::string_view statement, std::size_t* at, std::string_view* name, std::string* bytes) {
  // A facet begins with `=Name` in the first column.
  std::size_t begin = *at;
  do {
    begin = statement.find("\n=", begin);
    if (begin == std::string_view::npos) return false;
    begin += 2;
  } while (statement.substr(begin).starts_with("EndInset"));
  const auto line_at = [&](std::size_t from) {
    std::string_view line = statement.substr(from, statement.find('\n', from) - from);
    if (line.ends_with('\r')) line.remove_suffix(1);
    return line;
  };
  *name = line_at(begin);
  bytes->clear();
  FacetText text(bytes);
  std::size_t next = statement.find('\n', begin);
  while (next != std::string_view::npos && statement.substr(next + 1).starts_with('&')) {
    const std::string_view line = line_at(next + 1);
    // The first line of a facet says of what type its data is.
    if (!line.starts_with("&%") || !bytes->empty()) {
      text.Add(line.substr(1));
    } else if (line.size() != 3) {
      text.Add(line.substr(1));
    }
    next = statement.find('\n', next + 1);
  }
  *at = std::min(next, statement.size());
  return true;
}

Images::Images(const model::Document& document, std::string folder)
    : document_(document), folder_(std::move(folder)) {}

Images::~Images() {
  for (const Entry& entry : entries_) {
    if (entry.surface != nullptr) cairo_surface_destroy(entry.surface);
  }
}

std::string Images::NameOf(const ImportedImage& image) {
  if (image.file.empty()) return "embedded image";
  const std::string path = model::PlatformPath(image.file);
  const std::size_t slash = path.find_last_of("/\\");
  return slash == std::string::npos ? path : path.substr(slash + 1);
}

void Images::Read(const ImportedImage& image, const std::string& path, bool as_file, Entry* entry) const {
  const SizeCheck check = Fineness(image.place);
  const std::string_view statement = document_.At(image.span);
  std::string_view facet;
  std::string bytes;
  for (std::size_t at = 0; entry->surface == nullptr && NextFacet(statement, &at, &facet, &bytes);) {
    if (std::find(kOtherFacets.begin(), kOtherFacets.end(), facet) != kOtherFacets.end()) {
      if (entry->why.empty()) entry->why = "pictures of the form " + std::string(facet) + " are not drawn";
      continue;
    }
    entry->why.clear();
    entry->surface = MakeImage(bytes, check, as_file, &entry->why);
    entry->bytes = bytes.size();
  }
  if (entry->surface != nullptr || path.empty()) return;
  if (!entry->why.empty()) return;
  const std::optional<std::string> file = ReadImageFile(path, &entry->why);
  if (!file) return;
  entry->surface = MakeImage(*file, check, as_file, &entry->why);
  entry->bytes = file->size();
}

void Images::MakeRoom() {
  while (bytes_ > kMostKept && entries_.size() > 1) {
    const Entry& last = entries_.back();
    bytes_ -= last.bytes;
    if (last.surface != nullptr) cairo_surface_destroy(last.surface);
    index_.erase(last.key);
    entries_.pop_back();
  }
}

// Looking for a file that is not there goes through folders, so each is looked for once.
const std::string& Images::PathOf(const std::string& file) {
  const auto [found, is_new] = paths_.try_emplace(file);
  if (is_new && !file.empty()) {
    found->second = model::LocateComponent(folder_ + "/document", model::PlatformPath(file)).path;
  }
  return found->second;
}

cairo_surface_t* Images::Find(std::uint32_t index, const ImportedImage& image, bool as_file,
                              std::string* why) {
  const std::string& path = PathOf(image.file);
  // The same file at many places is one image; data in the document is told apart by its place.
  std::string key = image.embedded || path.empty() ? "#" + std::to_string(index) : path;
  // A JPEG for a file has no pixels.
  if (as_file) key += '*';
  if (const auto found = index_.find(key); found != index_.end()) {
    entries_.splice(entries_.begin(), entries_, found->second);
    *why = entries_.front().why;
    return entries_.front().surface;
  }
  Entry& entry = entries_.emplace_front();
  entry.key = std::move(key);
  index_.emplace(entry.key, entries_.begin());
  if (path.empty() && !image.embedded) {
    entry.why = "no file is named";
  } else {
    Read(image, path, as_file, &entry);
  }
  if (entry.surface != nullptr && cairo_surface_status(entry.surface) != CAIRO_STATUS_SUCCESS) {
    cairo_surface_destroy(entry.surface);
    entry.surface = nullptr;
    entry.why = "there is not enough memory for it";
  }
  if (entry.surface != nullptr) {
    entry.why.clear();
    AttachBytes(entry.surface, CAIRO_MIME_TYPE_UNIQUE_ID, entry.key);
    entry.bytes += static_cast<std::size_t>(cairo_image_surface_get_stride(entry.surface)) *
                   static_cast<std::size_t>(cairo_image_surface_get_height(entry.surface));
    bytes_ += entry.bytes;
    MakeRoom();
  } else {
    const std::string named = image.file.empty() ? NameOf(image) : model::PlatformPath(image.file);
    entry.why = named + ": " + entry.why;
  }
  *why = entry.why;
  return entry.surface;
}

}  // namespace qelm::embedded::render
