// XML documents: read without expat as expat reads them, changed, saved, read again, written as MIF.
#include <cstdlib>
#include <string>

#include "document.h"
#include "embedded/xml/plain_reader.h"

namespace {

using qelm::embedded::xml::AttributeDeclaration;
using qelm::embedded::xml::Event;

// All that is said about a file, as one text.
class Record : public qelm::embedded::xml::Handler {
 public:
  void OnEvent(const Event& event) override {
    Add(static_cast<int>(event.kind), event.begin, event.end, event.plain, event.referenced, event.in_entity);
    Add(event.name.size(), event.text.size(), event.attributes.size());
    text_.append(event.name).append(event.text);
    for (const auto& attribute : event.attributes) {
      Add(attribute.name.size(), attribute.value.size(), attribute.specified);
      text_.append(attribute.name).append(attribute.value);
    }
  }
  void OnPlainText(std::uint32_t begin, std::uint32_t end, std::string_view text, bool is_blank) override {
    if (is_blank != (text.find_first_not_of(" \t\n") == std::string_view::npos)) std::abort();
    Handler::OnPlainText(begin, end, text, is_blank);
  }
  void OnAttributeDeclaration(const AttributeDeclaration& declaration) override {
    text_.append(declaration.element)
        .append(" ")
        .append(declaration.name)
        .append(" ")
        .append(declaration.type);
    text_.append(declaration.default_value);
    Add(declaration.has_default, declaration.required);
  }
  void OnElementDeclaration(std::string_view name, bool mixed) override {
    text_.append(name);
    Add(mixed);
  }
  const std::string& text() const { return text_; }

 private:
  void Add(auto... numbers) { ((text_ += std::to_string(numbers) + ' '), ...); }
  std::string text_;
};

void CompareReaders(std::string_view bytes) {
  Record plain;
  if (!qelm::embedded::xml::ReadPlain(bytes, &plain)) {
    if (!plain.text().empty()) std::abort();
    return;
  }
  Record expat;
  qelm::embedded::xml::Error error;
  if (!qelm::embedded::xml::ReadByExpat(bytes, &expat, &error) || plain.text() != expat.text()) std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace qelm::embedded::model;
  CompareReaders({reinterpret_cast<const char*>(data), size});
  qelm::fuzz::TryDocument(data, size, BuildXml, ConvertToMif, BuildMif);
  return 0;
}
