#include "embedded/render/graphics.h"

#include <cairo-pdf.h>
#include <gdk-pixbuf/gdk-pixbuf.h>
#include <gtest/gtest.h>

#include "embedded/model/files.h"
#include "embedded/render/color.h"
#include "embedded/render/images.h"
#include "support/temp_folder.h"

namespace qelm::embedded::render {
namespace {

std::unique_ptr<model::Document> WithFrame(const std::string& objects) {
  std::string error;
  auto document = model::BuildMif(
      "<MIFFile 10.0>\n<ColorCatalog <Color <ColorTag `Red'> <ColorMagenta 100> <ColorYellow 100>>\n"
      "<Color <ColorTag `Black'> <ColorBlack 100>>>\n"
      "<AFrames <Frame <ID 1> <Pen 15> <Fill 15> <ShapeRect 0 0 100 pt 100 pt> <FrameType Below> <NSOffset 3 "
      "pt>\n" +
          objects +
          "\n>>\n<TextFlow <Para <ParaLine <TextRectID 9>>>>\n"
          "<TextFlow <TFTag `A'> <TFAutoConnect Yes> <Para <ParaLine <AFrame 1>>>>\n",
      &error);
  EXPECT_TRUE(document) << error;
  return document;
}

// The first frame of a document as an image, a point a pixel, the frame's corner at 10, 10.
class Picture {
 public:
  Picture(const model::Document& document, const std::string& folder)
      : surface_(cairo_image_surface_create(CAIRO_FORMAT_RGB24, 120, 120)) {
    cairo_t* const cr = cairo_create(surface_);
    cairo_set_source_rgb(cr, 1, 1, 1);
    cairo_paint(cr);
    Graphics graphics(document, folder);
    graphics.DrawFrame(cr, 1, 10, 10, nullptr);
    missing = graphics.missing();
    cairo_destroy(cr);
    cairo_surface_flush(surface_);
  }
  ~Picture() { cairo_surface_destroy(surface_); }
  Picture(const Picture&) = delete;
  Picture& operator=(const Picture&) = delete;

  // A color by its hexadecimal digits.
  std::string At(int x, int y) const {
    const unsigned char* const pixel = cairo_image_surface_get_data(surface_) +
                                       (y + 10) * cairo_image_surface_get_stride(surface_) + (x + 10) * 4;
    char text[8];
    std::snprintf(text, sizeof text, "%02X%02X%02X", pixel[2], pixel[1], pixel[0]);
    return text;
  }

  std::set<std::string> missing;

 private:
  cairo_surface_t* surface_;
};

TEST(Color, TintHasAShareOfItsBase) {
  std::string error;
  const auto document = model::BuildMif(
      "<MIFFile 10.0>\n<ColorCatalog <Color <ColorTag `Pale'> <ColorBlack 100> <ColorTintPercentage 25.0> "
      "<ColorTintBaseColor `Green'>>>\n<TextFlow <TFTag `A'> <TFAutoConnect Yes> <Para <ParaLine>>>\n",
      &error);
  ASSERT_TRUE(document) << error;
  EXPECT_EQ(ColorNamed(*document, "Pale"), (Rgb{0.75, 1, 0.75}));
}

TEST(Graphics, ObjectsStandWhereTheirStatementsSay) {
  struct Case {
    std::string_view objects;
    int x, y;
    std::string_view color;
  };
  for (const Case& c : {
           Case{"<Rectangle <Fill 0> <ObColor `Red'> <ShapeRect 10 pt 10 pt 20 pt 10 pt>>", 20, 15, "FF0000"},
           // What an object does not say is as the one before it said.
           Case{"<Rectangle <Fill 0> <ObColor `Red'> <ShapeRect 0 0 2 pt 2 pt>>"
                "<Ellipse <ShapeRect 50 pt 50 pt 20 pt 10 pt>>",
                60, 55, "FF0000"},
           Case{"<Rectangle <Fill 4> <ObColor `Red'> <ShapeRect 10 pt 10 pt 20 pt 10 pt>>", 20, 15, "FFB3B3"},
           Case{"<Rectangle <Fill 0> <Angle 90> <ShapeRect 10 pt 40 pt 60 pt 4 pt>>", 40, 20, "000000"},
           Case{"<Rectangle <Fill 0> <Angle 90> <ShapeRect 10 pt 40 pt 60 pt 4 pt>>", 15, 42, "FFFFFF"},
           // Counterclockwise.
           Case{"<PolyLine <Pen 0> <PenWidth 4 pt> <Angle 45> <NumPoints 2> <Point 20 pt 50 pt> <Point 80 pt "
                "50 pt>>",
                65, 35, "000000"},
           Case{"<Arc <Fill 0> <ArcRect 0 0 80 pt 80 pt> <ArcTheta 0> <ArcDTheta 90>>", 50, 30, "000000"},
           Case{"<Arc <Fill 0> <ArcRect 0 0 80 pt 80 pt> <ArcTheta 0> <ArcDTheta 90>>", 30, 30, "FFFFFF"},
           Case{"<Frame <Fill 15> <ShapeRect 20 pt 20 pt 40 pt 40 pt> <FrameType NotAnchored> "
                "<Rectangle <Fill 0> <ShapeRect 10 pt 10 pt 90 pt 10 pt>>>",
                35, 35, "000000"},
           // Cut off at the frame.
           Case{"<Frame <Fill 15> <ShapeRect 20 pt 20 pt 40 pt 40 pt> <FrameType NotAnchored> "
                "<Rectangle <Fill 0> <ShapeRect 10 pt 10 pt 90 pt 10 pt>>>",
                70, 35, "FFFFFF"},
           Case{"<Rectangle <Fill 0> <ShapeRect 90 pt 0 90 pt 90 pt>>", 105, 40, "FFFFFF"},
           Case{"<PolyLine <Fill 0> <Pen 15> <NumPoints 3> <Point 10 pt 10 pt> <Point 90 pt 10 pt> <Point 50 "
                "pt 90 pt>>",
                50, 30, "FFFFFF"},
       }) {
    const auto document = WithFrame(std::string(c.objects));
    EXPECT_EQ(Picture(*document, "").At(c.x, c.y), c.color) << c.objects;
  }
}

// The catalog need not have what every document has, and has the say where it does.
TEST(Graphics, ReservedColorsNeedNoCatalog) {
  const auto document = WithFrame(
      "<Rectangle <Fill 0> <ObColor `White'> <ShapeRect 0 0 90 pt 90 pt>>"
      "<Rectangle <ObColor `Blue'> <ShapeRect 0 0 20 pt 20 pt>>"
      "<Rectangle <ObColor `nobody knows'> <ShapeRect 40 pt 0 20 pt 20 pt>>");
  const Picture picture(*document, "");
  EXPECT_EQ(picture.At(70, 70), "FFFFFF");
  EXPECT_EQ(picture.At(10, 10), "0000FF");
  EXPECT_EQ(picture.At(50, 10), "000000");
}

TEST(Graphics, FramesInFramesHaveNoLimit) {
  std::string objects;
  constexpr int kDepth = 100'000;
  for (int i = 0; i < kDepth; ++i) objects += "<Frame <FrameType NotAnchored>\n";
  objects += std::string(kDepth, '>');
  const auto document = WithFrame(objects);
  EXPECT_EQ(Picture(*document, "").At(50, 50), "FFFFFF");
}

std::string Encoded(const char* type, int width, int height) {
  GdkPixbuf* const pixels = gdk_pixbuf_new(GDK_COLORSPACE_RGB, FALSE, 8, width, height);
  gdk_pixbuf_fill(pixels, 0xFF0000FFU);
  gchar* data = nullptr;
  gsize size = 0;
  gdk_pixbuf_save_to_buffer(pixels, &data, &size, type, nullptr, nullptr);
  std::string bytes(data, size);
  g_free(data);
  g_object_unref(pixels);
  return bytes;
}

std::string Import(const std::string& file) {
  return "<ImportObject <Fill 15> <ImportObFileDI `" + file + "'> <ShapeRect 10 pt 10 pt 50 pt 50 pt>>";
}

TEST(Graphics, ImagesComeFromFilesAndFromTheDocument) {
  testing::TempFolder folder;
  folder.Write("art/red.png", Encoded("png", 4, 4));
  folder.Write("red.svg",
               "<svg xmlns='http://www.w3.org/2000/svg' width='4' height='4'><rect width='4' height='4' "
               "fill='red'/></svg>");
  std::string facet = "<ImportObject <Fill 15>\n=FrameVector\n&%v\n&<MakerVector>\\x00\\x\n=PNG\n&%v\n&\\x";
  for (const char c : Encoded("png", 4, 4)) {
    char digits[3];
    std::snprintf(digits, sizeof digits, "%02X", static_cast<unsigned char>(c));
    facet += digits;
    if (facet.size() % 80 < 2) facet += "\n&";
  }
  facet += "\\x\n=EndInset\n\n<ImportObFile `2.0 internal inset'> <ShapeRect 10 pt 10 pt 50 pt 50 pt>>";
  for (const std::string& object :
       {Import("<c\\>art<c\\>red.png"), Import("<c\\>art<c\\>Red.PNG"), Import("red.svg"), facet}) {
    const auto document = WithFrame(object);
    const Picture picture(*document, folder.path());
    EXPECT_EQ(picture.At(30, 30), "FF0000") << object;
    EXPECT_EQ(picture.At(70, 70), "FFFFFF");
    EXPECT_TRUE(picture.missing.empty());
  }
}

TEST(Graphics, WhatCannotBeShownIsABoxAndIsSaidOnce) {
  struct Case {
    std::string_view file;
    std::string content;
    std::string_view reason;
  };
  // The claim of a picture of 60000 by 60000 pixels.
  std::string bomb = Encoded("bmp", 4, 4);
  for (const std::size_t at : {18U, 22U}) bomb.replace(at, 4, std::string("\x60\xEA\0\0", 4));
  testing::TempFolder folder;
  for (const Case& c :
       {Case{"none.png", "", "there is no such file"}, Case{"bomb.bmp", bomb, "million pixels"},
        Case{"cut.png", Encoded("png", 40, 40).substr(0, 60), "ends before"},
        Case{"a.eps", "%!PS-Adobe-3.0\n", "PostScript"}}) {
    if (!c.content.empty()) folder.Write(c.file, c.content);
    const std::string import = Import("<c\\>" + std::string(c.file));
    const auto document = WithFrame(import + import);
    const Picture picture(*document, folder.path());
    ASSERT_EQ(picture.missing.size(), 1U) << c.file;
    EXPECT_NE(picture.missing.begin()->find(c.reason), std::string::npos) << *picture.missing.begin();
    EXPECT_EQ(picture.At(10, 30), "999999");
  }
}

cairo_status_t Append(void* pdf, const unsigned char* data, unsigned length) {
  static_cast<std::string*>(pdf)->append(reinterpret_cast<const char*>(data), length);
  return CAIRO_STATUS_SUCCESS;
}

std::string Printed(const model::Document& document, const std::string& folder,
                    std::set<std::string>* missing) {
  std::string pdf;
  cairo_surface_t* const surface = cairo_pdf_surface_create_for_stream(Append, &pdf, 120, 120);
  cairo_t* const cr = cairo_create(surface);
  Graphics graphics(document, folder);
  for (int page = 0; page < 2; ++page) {
    graphics.DrawFrame(cr, 1, 10, 10, nullptr);
    cairo_show_page(cr);
  }
  cairo_destroy(cr);
  cairo_surface_destroy(surface);
  *missing = graphics.missing();
  return pdf;
}

TEST(Graphics, APdfTakesAJpegOnceAndAsItIs) {
  testing::TempFolder folder;
  const std::string jpeg = Encoded("jpeg", 64, 64);
  folder.Write("red.jpg", jpeg);
  const auto document = WithFrame(Import("<c\\>red.jpg") + Import("<c\\>red.jpg"));
  std::set<std::string> missing;
  const std::string pdf = Printed(*document, folder.path(), &missing);
  const std::size_t first = pdf.find(jpeg);
  ASSERT_NE(first, std::string::npos);
  EXPECT_EQ(pdf.find(jpeg, first + 1), std::string::npos);
  EXPECT_TRUE(missing.empty());
}

TEST(Graphics, ADamagedJpegIsABox) {
  const std::string whole = Encoded("jpeg", 64, 64);
  const std::string cut = whole.substr(0, whole.size() - 10);
  std::string tables = whole;  // of codes: more of them than there can be
  std::fill_n(tables.begin() + static_cast<std::ptrdiff_t>(tables.find("\xFF\xC4") + 5), 16, '\x7F');
  for (const std::string& damaged : {cut, tables}) {
    testing::TempFolder folder;
    folder.Write("red.jpg", damaged);
    const auto document = WithFrame(Import("<c\\>red.jpg"));
    std::set<std::string> missing;
    const std::string pdf = Printed(*document, folder.path(), &missing);
    EXPECT_EQ(pdf.find(damaged.substr(0, 20)), std::string::npos);
    ASSERT_EQ(missing.size(), 1U);
    EXPECT_TRUE(missing.begin()->starts_with("red.jpg: ")) << *missing.begin();
  }
}

}  // namespace
}  // namespace qelm::embedded::render
