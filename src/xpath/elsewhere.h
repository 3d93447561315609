// The axes that leave the tree of their context: to the flows of the document, to the book with its
// components, to other documents by their file.
#pragma once

#include <vector>

#include "xpath/environment.h"
#include "xpath/plan.h"

namespace qelm::xpath {

// Appends the nodes of such an axis that pass its node test:
//   flow axes   the root elements of the flows of their kind
//   book        the root elements of the book: the document itself where it is one, else the active book
//   component   the root element of each component of that book whose document is open
//   chapter     the same without generated components
//   file        the root elements of the open document with that path (all of it, or its end)
// From the point above a root element, flow and file axes see that flow only: it stands for the flow being
// searched.
void CollectElsewhere(Environment& environment, const StepPlan& step, const Node& context,
                      std::vector<Node>* nodes);

// The open document that the path of a file step names, 0 when there is none.
host::Id FindFile(Environment& environment, const std::string& path);

}  // namespace qelm::xpath
