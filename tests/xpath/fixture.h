// An engine over a tree host, and short ways to ask it.
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "messages/messenger.h"
#include "support/tree_host.h"
#include "xpath/engine.h"
#include "xpath/paths.h"

namespace qelm::xpath {

class XPathTest : public ::testing::Test {
 protected:
  static constexpr host::Id kDocument = 1;

  // The tree as the flow "Main" of a document.
  void Load(std::string_view tree) {
    if (!loaded_) tree_host.Add("/docs/manual.fm");
    loaded_ = true;
    tree_host.Document(kDocument).AddFlow("Main", host::FlowKind::kBody, tree);
  }

  host::Id First(std::string_view expression) { return FindFirst(engine, kDocument, 0, expression).element; }

  MatchList Matches(std::string_view expression, host::Id context = 0) {
    return MatchAllFromText(engine, kDocument, context, expression, 0, 0);
  }

  // The matches in the engine's order, as paths without "[1]".
  std::string Paths(std::string_view expression, host::Id context = 0) {
    const std::int32_t result = bw_ParseXPath(engine, expression, 0);
    if (result >= kFirstError) return std::string(LastParseError(engine).id);
    host::Host& roles = tree_host.roles();
    std::string paths;
    for (const Match& match : Matches(expression, context)) {
      std::string path = NodePath(roles.elements, roles.definitions, match.document, match.element);
      for (std::size_t at = path.find("[1]"); at != path.npos; at = path.find("[1]", at)) path.erase(at, 3);
      if (match.attribute >= 0) path += "@" + std::to_string(match.attribute);
      paths += (paths.empty() ? "" : " ") + path;
    }
    return paths;
  }

  testing::TreeHost tree_host;
  messages::Messenger messenger{tree_host.user, tree_host.platform};
  Engine engine{tree_host.roles(), messenger};

 private:
  bool loaded_ = false;
};

}  // namespace qelm::xpath
