// xpath_libxml2 FILE SECONDS: evaluates expressions with libxml2; see xpath_worker.h.
#include <libxml/parser.h>
#include <libxml/xpath.h>

#include <cstdio>

#include "xpath_worker.h"

namespace {

class Libxml2Worker : public qelm::bench::XPathWorker {
 public:
  ~Libxml2Worker() override {
    xmlXPathFreeObject(result_);
    xmlXPathFreeContext(context_);
    xmlFreeDoc(document_);
  }

  bool Load(const char* path) override {
    document_ = xmlReadFile(path, nullptr, XML_PARSE_HUGE | XML_PARSE_NONET | XML_PARSE_NOBLANKS);
    if (document_ == nullptr) return false;
    context_ = xmlXPathNewContext(document_);
    context_->node = xmlDocGetRootElement(document_);
    return true;
  }

  void Number() override {
    std::uintptr_t number = 0;
    for (xmlNode* node = xmlDocGetRootElement(document_); node != nullptr;) {
      if (node->type == XML_ELEMENT_NODE) node->_private = reinterpret_cast<void*>(++number);
      if (node->type == XML_ELEMENT_NODE && node->children != nullptr) {
        node = node->children;
        continue;
      }
      while (node != nullptr && node->next == nullptr) {
        node = node->parent->type == XML_ELEMENT_NODE ? node->parent : nullptr;
      }
      if (node != nullptr) node = node->next;
    }
  }

  bool Evaluate(const std::string& expression) override {
    xmlXPathFreeObject(result_);
    result_ = xmlXPathEvalExpression(reinterpret_cast<const xmlChar*>(expression.c_str()), context_);
    return result_ != nullptr && result_->type == XPATH_NODESET;
  }

  std::uint64_t Count() override {
    const xmlNodeSet* nodes = result_->nodesetval;
    return nodes == nullptr ? 0 : static_cast<std::uint64_t>(nodes->nodeNr);
  }
  std::uint64_t Nodes() override {
    std::uint64_t sum = 0;
    for (std::uint64_t i = 0; i < Count(); ++i) {
      const xmlNode* node = result_->nodesetval->nodeTab[i];
      const bool is_attribute = node->type == XML_ATTRIBUTE_NODE;
      const xmlNode* element = is_attribute ? node->parent : node;
      sum += qelm::bench::NodeKey(reinterpret_cast<std::uintptr_t>(element->_private),
                                  is_attribute ? reinterpret_cast<const char*>(node->name) : "");
    }
    return sum;
  }

 private:
  xmlDoc* document_ = nullptr;
  xmlXPathContext* context_ = nullptr;
  xmlXPathObject* result_ = nullptr;
};

}  // namespace

int main(int argc, char** argv) {
  Libxml2Worker worker;
  return qelm::bench::Serve(worker, argc, argv);
}
