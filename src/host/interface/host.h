// The host as the plug-in sees it: one of each role. A function takes the roles that it uses, not this
// struct.
//
// All calls come from one thread, inside one of the plug-in's entry points. Nothing here throws, and nothing
// the plug-in does may let an exception pass into the host. The roles outlive the plug-in; it never deletes
// one.
#pragma once

#include "host/interface/books.h"
#include "host/interface/catalogs.h"
#include "host/interface/documents.h"
#include "host/interface/editing.h"
#include "host/interface/elements.h"
#include "host/interface/links.h"
#include "host/interface/platform.h"
#include "host/interface/session.h"
#include "host/interface/text.h"
#include "host/interface/user_interface.h"

namespace qelm::host {

struct Host {
  Session& session;
  Documents& documents;
  Books& books;
  Elements& elements;
  Definitions& definitions;
  Editing& editing;
  Text& text;
  Catalogs& catalogs;
  Tables& tables;
  Links& links;
  UserInterface& user;
  Dialogs& dialogs;
  Clients& clients;
  Platform& platform;
};

}  // namespace qelm::host
