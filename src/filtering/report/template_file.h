// Opening the template that a report is made from.
#pragma once

#include <string>

#include "host/interface/documents.h"
#include "messages/messenger.h"

namespace qelm::filtering {

// Opens the template as a new document. 0, with an alert that names it, when it cannot be opened.
host::Id OpenTemplate(messages::Messenger& messenger, host::Documents& documents, const std::string& path,
                      bool visible);

}  // namespace qelm::filtering
