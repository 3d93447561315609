// xpath_pugixml FILE SECONDS: evaluates expressions with pugixml; see xpath_worker.h.
#include <cstdio>
#include <pugixml.hpp>
#include <unordered_map>

#include "xpath_worker.h"

namespace {

class PugixmlWorker : public qelm::bench::XPathWorker {
 public:
  bool Load(const char* path) override {
    const pugi::xml_parse_result result = document_.load_file(path, pugi::parse_default);
    if (!result) std::fprintf(stderr, "xpath_pugixml: %s: %s\n", path, result.description());
    return static_cast<bool>(result);
  }

  void Number() override {
    std::uint64_t number = 0;
    for (pugi::xml_node node = document_.document_element(); node;) {
      if (node.type() == pugi::node_element) numbers_[node.internal_object()] = ++number;
      if (node.first_child()) {
        node = node.first_child();
        continue;
      }
      while (node && !node.next_sibling()) node = node.parent();
      if (node) node = node.next_sibling();
    }
  }

  bool Evaluate(const std::string& expression) override {
    const pugi::xpath_query query(expression.c_str());
    if (!query || query.return_type() != pugi::xpath_type_node_set) return false;
    result_ = query.evaluate_node_set(document_.document_element());
    return true;
  }

  std::uint64_t Count() override { return result_.size(); }
  std::uint64_t Nodes() override {
    std::uint64_t sum = 0;
    for (const pugi::xpath_node& node : result_) {
      const pugi::xml_node element = node.attribute() ? node.parent() : node.node();
      sum += qelm::bench::NodeKey(numbers_[element.internal_object()],
                                  node.attribute() ? node.attribute().name() : "");
    }
    return sum;
  }

 private:
  pugi::xml_document document_;
  pugi::xpath_node_set result_;
  std::unordered_map<void*, std::uint64_t> numbers_;
};

}  // namespace

int main(int argc, char** argv) {
  PugixmlWorker worker;
  return qelm::bench::Serve(worker, argc, argv);
}
