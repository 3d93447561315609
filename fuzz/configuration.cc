// Batch configurations: found in a document and run over a small one, without pages.
#include "filtering/batch_filter.h"
#include "session.h"

namespace {

constexpr char kDocument[] =
    "<Manual><Para Audience='admin'>one</Para><Para Audience='user'>two<Bold>three</Bold></Para></Manual>";

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace qelm;
  fuzz::Session session;
  xpath::bw_XPathEngineInit(session.engine, 0, 0, 0);
  session.platform.files["/docs/doc.xml"] = kDocument;
  session.platform.files["/docs/configuration.xml"] = std::string(reinterpret_cast<const char*>(data), size);
  filtering::BatchContext context{session.host, session.messenger, session.engine};
  filtering::BatchRequest request = filtering::BatchDefaults(config::LocalSettings{});
  request.source = "/docs/doc.xml";
  request.configuration = "/docs/configuration.xml";
  filtering::RunBatchFilter(context, request);
  return 0;
}
