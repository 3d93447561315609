#include "xpath/elsewhere.h"

#include "common/paths.h"

namespace qelm::xpath {
namespace {

using host::FlowKind;
using host::Id;
using host::kNone;

bool IsOfKind(Axis axis, FlowKind kind) {
  switch (axis) {
    case Axis::kBodyFlow:
      return kind == FlowKind::kBody;
    case Axis::kMasterFlow:
      return kind == FlowKind::kMaster;
    case Axis::kReferenceFlow:
      return kind == FlowKind::kReference;
    default:
      return true;
  }
}

class Collector {
 public:
  Collector(Environment& environment, const StepPlan& step, std::vector<Node>* nodes)
      : environment_(environment), host_(environment.Host()), step_(step), nodes_(*nodes) {}

  void Flow(Id document, Id flow) {
    const Id root = host_.elements.Root(document, flow);
    if (root == kNone || !IsOfKind(step_.axis, host_.elements.KindOfFlow(document, flow))) return;
    const std::uint32_t tree = environment_.TreeOfDocument(document);
    const Node node{root, Node::kElement, tree};
    if (environment_.TreeOf(node).Passes(step_, root)) nodes_.push_back(node);
  }

  void Flows(Id document) {
    for (Id flow = host_.elements.FirstFlow(document); flow != kNone;
         flow = host_.elements.NextFlow(document, flow)) {
      Flow(document, flow);
    }
  }

  void Components(Id book) {
    for (Id component = host_.books.FirstComponent(book); component != kNone;
         component = host_.books.NextComponent(book, component)) {
      if (step_.axis == Axis::kFmChapter && host_.books.IsGenerated(book, component)) continue;
      const Id document = host_.books.ComponentDocument(book, component);
      if (document != kNone) Flow(document, host_.elements.MainFlow(document));
    }
  }

 private:
  Environment& environment_;
  host::Host& host_;
  const StepPlan& step_;
  std::vector<Node>& nodes_;
};

Id BookOf(Environment& environment) {
  host::Host& host = environment.Host();
  return host.books.IsBook(environment.Document()) ? environment.Document() : host.documents.ActiveBook();
}

}  // namespace

Id FindFile(Environment& environment, const std::string& path) {
  const std::string wanted = common::PlatformPath(path);
  const std::string ending = common::kPathSeparator + wanted;
  host::Documents& documents = environment.Host().documents;
  const auto is_it = [&](Id document) {
    const std::string_view open = documents.Path(document);
    return open == wanted || (!common::IsAbsolutePath(wanted) && open.ends_with(ending));
  };
  if (is_it(environment.Document())) return environment.Document();
  Id document = documents.FirstOpenDocument();
  while (document != kNone && !is_it(document)) document = documents.NextOpenDocument(document);
  return document;
}

void CollectElsewhere(Environment& environment, const StepPlan& step, const Node& context,
                      std::vector<Node>* nodes) {
  Collector collector(environment, step, nodes);
  const Id document = environment.TreeOf(context).Document();
  if (IsFlowAxis(step.axis) || step.axis == Axis::kFmFile) {
    const Id target = step.axis == Axis::kFmFile ? FindFile(environment, step.name) : document;
    if (context.IsAboveRoot() && target == document) {
      collector.Flow(document, environment.Host().elements.FlowOf(document, context.element));
    } else if (target != kNone) {
      collector.Flows(target);
    }
  } else if (const Id book = BookOf(environment)) {
    step.axis == Axis::kFmBook ? collector.Flows(book) : collector.Components(book);
  }
}

}  // namespace qelm::xpath
