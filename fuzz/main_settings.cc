// Main settings documents: opened, all schemes listed, loaded and checked.
#include "schemes/main_settings.h"

#include "schemes/scheme_check.h"
#include "schemes/scheme_loading.h"
#include "session.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace qelm;
  fuzz::Session session;
  xpath::bw_XPathEngineInit(session.engine, 0, 0, 0);
  session.platform.files["/settings.xml"] = std::string(reinterpret_cast<const char*>(data), size);
  const host::Id document =
      schemes::OpenMainSettings(session.host, session.engine, session.messenger, "/settings.xml", true);
  if (document == host::kNone) return 0;
  for (const schemes::SchemeListing& listed : schemes::ListSchemes(session.engine, document)) {
    schemes::Scheme scheme;
    scheme.kind = listed.kind;
    schemes::LoadScheme(session.engine, session.messenger, document, listed.category, listed.name, true,
                        &scheme);
  }
  schemes::CheckSchemes(session.engine, document, document);
  return 0;
}
