// Expressions: the text is parsed and, when it is one, evaluated over a small document.
#include "session.h"

namespace {

constexpr char kDocument[] =
    "<Manual Version='2'><Title>Pump</Title><Section Audience='admin expert' Level='1'><Title>A 'b' &amp; "
    "\"c\"</Title><Para Level='007'>one <Bold>two</Bold> three</Para><Para/><Section Audience='user'><Para>x"
    "</Para><Note Kind=''>y</Note></Section></Section><table><tbody><tr><td>1</td><td>2</td></tr></tbody>"
    "</table></Manual>";

struct Searched : qelm::fuzz::Session {
  Searched() {
    qelm::xpath::bw_XPathEngineInit(engine, 50, 2000, 1000);
    document = Open("/manual.xml", kDocument);
  }
  qelm::host::Id document = qelm::host::kNone;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static Searched session;
  session.user.notes.clear();
  session.user.questions.clear();
  const std::string_view text(reinterpret_cast<const char*>(data), size);
  qelm::xpath::MatchAllFromText(session.engine, session.document, 0, text, 0, 0);
  qelm::xpath::FindFirst(session.engine, session.document, 0, text);
  return 0;
}
