#include "embedded/adapter/delivery.h"

#include "embedded/model/delivered_xml.h"
#include "embedded/model/files.h"
#include "embedded/model/locate.h"
#include "embedded/xml/names.h"
#include "embedded/xml/write.h"

namespace qelm::embedded::adapter {
namespace {

using model::Format;

bool HasElements(const model::Document& document) {
  return document.main_flow != 0 && document.flows[document.main_flow].root != 0;
}

// The elements of a book around those of its documents.
class BookWriter {
 public:
  BookWriter(Workspace& workspace, host::Documents& documents, Id book, const std::string& path)
      : workspace_(workspace),
        documents_(documents),
        book_(*workspace.Book(book)),
        book_path_(workspace.File(book)->path),
        delivery_{path, {}} {}

  std::string Run(std::string* why);

 private:
  bool Elements(Id root);
  void Begin(Id element);
  void End(Id element) { body_ += "</" + NameOf(element) + ">\n"; }
  bool Component(std::size_t number);
  std::string NameOf(Id element) const {
    return xml::ToName(book_.tree.definitions[book_.tree.elements[element].definition].name);
  }

  Workspace& workspace_;
  host::Documents& documents_;
  const model::Book& book_;
  std::string book_path_;
  model::Delivery delivery_;
  std::string body_;
  std::string why_;
  model::Declarations declarations_;
};

std::string BookWriter::Run(std::string* why) {
  const model::Document& tree = book_.tree;
  const Id root = tree.main_flow == 0 ? host::kNone : tree.flows[tree.main_flow].root;
  for (const model::Component& component : book_.components) {
    if (!component.is_group) delivery_.files.insert(model::LocateComponent(book_path_, component.path).path);
  }
  model::DeliveredXml xml;
  bool done = true;
  if (root != host::kNone) {
    xml.root = NameOf(root);
    done = Elements(root);
  } else {
    xml.root = "book";
    declarations_.used[xml.root];
    body_ = "<book>\n";
    for (std::size_t i = 0; done && i < book_.components.size(); ++i) done = Component(i);
    body_ += "</book>\n";
  }
  *why = why_;
  if (!done) return {};
  body_.pop_back();
  xml.body = std::move(body_);
  return model::FileOf(xml, declarations_);
}

// In the order of the tree, without recursion: a book may hold groups in groups.
bool BookWriter::Elements(Id root) {
  const model::SharedArray<model::Element>& elements = book_.tree.elements;
  Id at = root;
  for (bool down = true;;) {
    const std::uint32_t component =
        at < book_.element_components.size() ? book_.element_components[at] : model::kNoIndex;
    const bool is_file = component != model::kNoIndex && !book_.components[component].is_group;
    if (down && !elements[at].deleted && elements[at].definition != 0) {
      if (is_file) {
        if (!Component(component)) return false;
      } else {
        Begin(at);
      }
      if (!is_file && elements[at].first_child != host::kNone) {
        at = elements[at].first_child;
        continue;
      }
    }
    const bool written = !elements[at].deleted && elements[at].definition != 0 && !is_file;
    if (written) End(at);
    if (at == root) return true;
    down = elements[at].next != host::kNone;
    at = down ? elements[at].next : elements[at].parent;
  }
}

void BookWriter::Begin(Id element) {
  const model::Document& tree = book_.tree;
  const model::Element& found = tree.elements[element];
  const std::string name = NameOf(element);
  std::set<std::string>& used = declarations_.used[name];
  body_ += "<" + name;
  for (std::uint32_t i = 0; i < found.attribute_count; ++i) {
    const model::Attribute& attribute = tree.attributes[found.first_attribute + i];
    const std::string attribute_name = xml::ToName(tree.names[attribute.name]);
    body_ += " " + attribute_name + "=\"";
    for (std::uint32_t v = 0; v < attribute.value_count; ++v) {
      if (v > 0) body_ += ' ';
      xml::AppendValue(xml::ToContent(tree.values[attribute.first_value + v]), '"', &body_);
    }
    body_ += '"';
    used.insert(attribute_name);
  }
  body_ += ">\n";
}

bool BookWriter::Component(std::size_t number) {
  const model::Component& component = book_.components[number];
  if (component.removed || component.excluded || component.is_group) return true;
  const model::Located located = model::LocateComponent(book_path_, component.path);
  if (!located.exists) return true;
  host::OpenStatus status = host::OpenStatus::kUnreadable;
  const Id id = documents_.Open(located.path, {.visible = false, .suppress_alerts = true}, &status);
  const model::Document* document = workspace_.Document(id);
  if (document == nullptr) {
    why_ = documents_.LastError();
    return false;
  }
  if (HasElements(*document)) {
    const bool is_xml = document->format == Format::kXml;
    std::string text = is_xml ? model::XmlPieces(*document).Joined() : Converted(*document, Format::kXml);
    body_ += model::Deliver(*document, std::move(text), delivery_, &declarations_).body + "\n";
  }
  if (status == host::OpenStatus::kOpened) documents_.Close(id, /*discard=*/true);
  return true;
}

}  // namespace

// Conversion goes by elements in the order of their ids, so a tree that insertions brought out of order is
// built anew.
std::string Converted(const model::Document& tree, Format format) {
  if (!tree.order.empty()) {
    const bool is_xml = tree.format == Format::kXml;
    std::string bytes = (is_xml ? model::XmlPieces(tree) : model::MifPieces(tree)).Joined();
    std::string error;
    const std::unique_ptr<model::Document> in_order =
        is_xml ? model::BuildXml(std::move(bytes), &error) : model::BuildMif(std::move(bytes), &error);
    if (in_order) return Converted(*in_order, format);
  }
  return format == Format::kXml ? model::ConvertToXml(tree) : model::ConvertToMif(tree);
}

std::string DeliveredDocument(const model::Document& tree, const std::string& path) {
  const bool is_xml = tree.format == Format::kXml;
  std::string text = is_xml ? model::XmlPieces(tree).Joined() : Converted(tree, Format::kXml);
  model::Declarations declarations;
  return model::FileOf(model::Deliver(tree, std::move(text), {path, {}}, &declarations), declarations);
}

std::string DeliveredBook(Workspace& workspace, host::Documents& documents, Id book, const std::string& path,
                          std::string* why) {
  return BookWriter(workspace, documents, book, path).Run(why);
}

}  // namespace qelm::embedded::adapter
