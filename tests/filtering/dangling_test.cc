#include "filtering/dangling.h"

#include <gtest/gtest.h>

#include "filtering/filter_session.h"
#include "support/mif_files.h"

namespace qelm::filtering {
namespace {

using host::Id;
using host::kNone;
using testing::FilterSession;

// The documents of a run that filters one after the other, each closed before the next.
class Documents {
 public:
  Id Open(const std::string& name, const std::string& body) {
    testing::MifFile file;
    file.flows = {{.text = body}};
    file.definitions = {{"P", {{"id", "FAttrUniqueId", {}, {}}}}};
    host::OpenStatus status = host::OpenStatus::kOpened;
    return host().documents.Open(session.folder.Write(name, testing::Mif(file)), {}, &status);
  }
  Id First(Id document, const char* tag) {
    const Id definition = host().definitions.FindDefinition(document, tag);
    for (Id id = 1; id < host().elements.IdLimit(document); ++id) {
      if (host().elements.Definition(document, id) == definition) return id;
    }
    return kNone;
  }
  host::Host& host() { return session.inner(); }

  FilterSession session{{"Doc"}};
};

std::string Listed(DanglingReferences* references) {
  std::string text;
  for (const DanglingReference& found : references->Find()) {
    text += found.source.substr(found.source.rfind('/') + 1) + " " + found.element + " -> " +
            found.path.substr(found.path.rfind('/') + 1) + " " + found.target + "\n";
  }
  return text;
}

TEST(DanglingReferences, CrossTheFilesOfARun) {
  Documents documents;
  DanglingReferences references(documents.host(), /*single=*/false, /*with_places=*/true);
  const Id a = documents.Open("a.mif",
                              "<Doc>\n<P><XRef .source=\"x: P\" .file=\"<c>b.mif\">1</XRef></P>\n"
                              "<P><XRef .source=\"y: P\" .file=\"<c>b.mif\">2</XRef></P>\n"
                              "<P><XRef .source=\"x: P\" .file=\"<c>c.mif\">3</XRef></P>\n</Doc>");
  references.Add(a);
  documents.host().documents.Close(a, true);
  const Id b = documents.Open("b.mif",
                              "<Doc>\n<Q><P id=\"x\">x</P></Q>\n<P id=\"y\">y <XRef .source=\"z: P\" "
                              ".file=\"<c>a.mif\">4</XRef></P>\n</Doc>");
  ASSERT_TRUE(documents.host().editing.DeleteElement(b, documents.First(b, "Q")));
  references.Add(b);
  documents.host().documents.Close(b, true);
  references.AddRemovedFile(documents.session.folder.File("c.mif"));
  EXPECT_EQ(Listed(&references),
            "a.mif /Doc[1]/P[1]/XRef[1] -> b.mif x\na.mif /Doc[1]/P[3]/XRef[1] -> c.mif x\n");
}

TEST(DanglingReferences, AFileThatIsNoMoreHasNone) {
  Documents documents;
  DanglingReferences references(documents.host(), /*single=*/false, /*with_places=*/true);
  references.Add(documents.Open(
      "a.mif", "<Doc>\n<P id=\"p\"><XRef .source=\"q: P\" .file=\"<c>b.mif\">1</XRef></P>\n</Doc>"));
  references.AddRemovedFile(documents.session.folder.File("a.mif"));
  references.AddRemovedFile(documents.session.folder.File("b.mif"));
  EXPECT_EQ(Listed(&references), "");
}

}  // namespace
}  // namespace qelm::filtering
