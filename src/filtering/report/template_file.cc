#include "filtering/report/template_file.h"

#include <fmt/printf.h>

namespace qelm::filtering {
namespace {

// The doubled blanks are part of the text.
constexpr std::string_view kCannotOpen =
    "An error occurred while attempting to generate the plugin report, using  the following "
    "template:\n\n%s\n\nMake sure that the template exists  and that it isn't corrupt.";

}  // namespace

host::Id OpenTemplate(messages::Messenger& messenger, host::Documents& documents, const std::string& path,
                      bool visible) {
  host::OpenOptions options;
  options.visible = visible;
  options.suppress_alerts = true;
  options.as_new = true;
  host::OpenStatus status = host::OpenStatus::kNotFound;
  const host::Id document = documents.Open(path, options, &status);
  if (document == host::kNone) messenger.Alert(fmt::sprintf(kCannotOpen, path));
  return document;
}

}  // namespace qelm::filtering
