#include "embedded/render/pdf_metadata.h"

#include <qpdf/qpdf-c.h>

#include <memory>

#include "embedded/model/xmp_packet.h"

namespace qelm::embedded::render {
namespace {

struct Entry {
  std::string_view field;
  const char* key;
};
constexpr Entry kEntries[] = {
    {"Title", "/Title"}, {"Author", "/Author"}, {"Subject", "/Subject"}, {"Keywords", "/Keywords"}};

struct PdfDeleter {
  void operator()(qpdf_data pdf) const { qpdf_cleanup(&pdf); }
};
using Pdf = std::unique_ptr<_qpdf_data, PdfDeleter>;

void PutStream(qpdf_data pdf, const std::string& packet) {
  const qpdf_oh stream = qpdf_oh_new_stream(pdf);
  qpdf_oh_replace_stream_data(pdf, stream, reinterpret_cast<const unsigned char*>(packet.data()),
                              packet.size(), qpdf_oh_new_null(pdf), qpdf_oh_new_null(pdf));
  const qpdf_oh dictionary = qpdf_oh_get_dict(pdf, stream);
  qpdf_oh_replace_key(pdf, dictionary, "/Type", qpdf_oh_new_name(pdf, "/Metadata"));
  qpdf_oh_replace_key(pdf, dictionary, "/Subtype", qpdf_oh_new_name(pdf, "/XML"));
  qpdf_oh_replace_key(pdf, qpdf_get_root(pdf), "/Metadata", stream);
}

void PutEntries(qpdf_data pdf, std::string_view packet) {
  const qpdf_oh trailer = qpdf_get_trailer(pdf);
  qpdf_oh information = qpdf_oh_get_key(pdf, trailer, "/Info");
  if (qpdf_oh_is_dictionary(pdf, information) == QPDF_FALSE) {
    information = qpdf_make_indirect_object(pdf, qpdf_oh_new_dictionary(pdf));
    qpdf_oh_replace_key(pdf, trailer, "/Info", information);
  }
  for (const model::MetadataField& field : model::PacketFields(packet)) {
    for (const Entry& entry : kEntries) {
      if (entry.field != field.name) continue;
      const qpdf_oh value = qpdf_oh_new_binary_unicode_string(pdf, field.value.data(), field.value.size());
      qpdf_oh_replace_key(pdf, information, entry.key, value);
    }
  }
}

// Compressed streams stay as they are, and the packet stays readable for programs that look for it in the
// bytes of a file.
void Write(qpdf_data pdf) {
  if (qpdf_init_write_memory(pdf) != QPDF_SUCCESS) return;
  qpdf_set_stream_data_mode(pdf, qpdf_s_preserve);
  qpdf_set_deterministic_ID(pdf, QPDF_TRUE);
  qpdf_write(pdf);
}

}  // namespace

std::optional<std::string> PutMetadata(std::string bytes, std::string_view packet, std::string* warning,
                                       std::string* why) {
  if (packet.empty()) return bytes;
  std::string well_formed(packet);
  if (!model::IsWellFormed(packet)) {
    *warning = "the metadata packet is not well-formed XML; its fields were put into the PDF escaped.";
    well_formed = model::EscapedPacket(packet);
  }
  const Pdf pdf(qpdf_init());
  qpdf_silence_errors(pdf.get());
  qpdf_set_suppress_warnings(pdf.get(), QPDF_TRUE);
  qpdf_read_memory(pdf.get(), "the PDF", bytes.data(), bytes.size(), nullptr);
  if (qpdf_has_error(pdf.get()) == QPDF_FALSE) {
    PutStream(pdf.get(), well_formed);
    PutEntries(pdf.get(), packet);
  }
  if (qpdf_has_error(pdf.get()) == QPDF_FALSE) Write(pdf.get());
  if (qpdf_has_error(pdf.get()) != QPDF_FALSE) {
    *why = qpdf_get_error_full_text(pdf.get(), qpdf_get_error(pdf.get()));
    return std::nullopt;
  }
  const auto* const buffer = reinterpret_cast<const char*>(qpdf_get_buffer(pdf.get()));
  return std::string(buffer, qpdf_get_buffer_length(pdf.get()));
}

}  // namespace qelm::embedded::render
