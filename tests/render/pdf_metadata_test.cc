#include "embedded/render/pdf_metadata.h"

#include <cairo-pdf.h>
#include <gtest/gtest.h>

#include "embedded/model/xmp_packet.h"

namespace qelm::embedded::render {
namespace {

cairo_status_t Append(void* pdf, const unsigned char* data, unsigned length) {
  static_cast<std::string*>(pdf)->append(reinterpret_cast<const char*>(data), length);
  return CAIRO_STATUS_SUCCESS;
}

std::string EmptyPage() {
  std::string pdf;
  cairo_surface_t* const surface = cairo_pdf_surface_create_for_stream(Append, &pdf, 100, 100);
  cairo_pdf_surface_set_metadata(surface, CAIRO_PDF_METADATA_CREATE_DATE, "2001-02-03T04:05:06Z");
  cairo_pdf_surface_set_metadata(surface, CAIRO_PDF_METADATA_TITLE, "before");
  cairo_t* const cr = cairo_create(surface);
  cairo_show_page(cr);
  cairo_destroy(cr);
  cairo_surface_destroy(surface);
  return pdf;
}

TEST(PdfMetadata, FieldsAreInTheStreamAndTheInformation) {
  struct Case {
    std::string_view title;
    bool warned;
  };
  for (const Case& c : {Case{"Pumps", false}, Case{"M\xC3\xBCller & Sons < 'x'", true}}) {
    std::string packet = model::OneFieldPacket("Title", "0title0");
    packet.replace(packet.find("0title0"), 7, c.title);
    for (const std::string_view name : model::MetadataNames()) {
      if (name != "Title")
        packet = model::MergePackets(packet, model::OneFieldPacket(name, "its " + std::string(name)));
    }
    std::string warning;
    std::string why;
    const std::optional<std::string> pdf = PutMetadata(EmptyPage(), packet, &warning, &why);
    ASSERT_TRUE(pdf) << why;
    EXPECT_EQ(!warning.empty(), c.warned) << c.title;
    EXPECT_EQ(pdf, PutMetadata(EmptyPage(), packet, &warning, &why));

    const std::size_t begin = pdf->find("<?xpacket begin");
    const std::size_t end = pdf->find("<?xpacket end='w'?>");
    ASSERT_NE(end, std::string::npos);
    const std::string kept = pdf->substr(begin, end + 19 - begin);
    EXPECT_TRUE(model::IsWellFormed(kept)) << kept;
    const std::vector<model::MetadataField> fields = model::PacketFields(kept);
    ASSERT_EQ(fields.size(), model::MetadataNames().size());
    EXPECT_EQ(fields[0].value, c.title);
    EXPECT_NE(pdf->find("/Keywords (its Keywords)"), std::string::npos);
    EXPECT_NE(pdf->find("20010203040506"), std::string::npos);
    EXPECT_EQ(pdf->find("(before)"), std::string::npos);
  }
}

TEST(PdfMetadata, WhatIsNoPdfIsSaid) {
  std::string warning;
  std::string why;
  EXPECT_FALSE(PutMetadata("no PDF", model::OneFieldPacket("Title", "x"), &warning, &why));
  EXPECT_NE(why, "");
}

}  // namespace
}  // namespace qelm::embedded::render
