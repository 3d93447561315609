#include "messages/debug_log.h"

#include <gtest/gtest.h>

#include "embedded/adapter/clients.h"
#include "embedded/adapter/dialogs.h"
#include "embedded/adapter/embedded_host.h"
#include "support/memory_platform.h"
#include "support/mif_files.h"

namespace qelm::messages {
namespace {

constexpr char kHeader[] =
    "This is a debug log for the QELM plugin. It was generated due to the activation of the \"write log\" "
    "debug "
    "mode. Please contact Brenwick for more information.\r\n"
    "\r\nActions/events are listed in order with the most recent at the top."
    "\r\n--------------------------------------------------"
    "\r\n--------------------------------------------------\r\n";
constexpr char kEnd[] = "\r\n\r\n----------------------------------------\r\n\r\n";

class DebugLogTest : public ::testing::Test {
 protected:
  static embedded::adapter::EmbeddedHost::Options HostOptions() {
    embedded::adapter::EmbeddedHost::Options options;
    options.plugin_folder = "/plugin";
    return options;
  }
  host::Id Open(const host::OpenOptions& options) {
    platform.files["/doc.mif"] =
        testing::Mif("<Doc>\n<P>one two three four five six seven eight nine ten é leven</P>\n</Doc>");
    host::OpenStatus status = host::OpenStatus::kUnreadable;
    return roles.documents.Open("/doc.mif", options, &status);
  }
  void OpenLog(std::int32_t mode) { log.Open({"QELM", mode, "", "", 10}); }
  const std::string& Content() { return platform.files["/plugin/QELM_debug_log.txt"]; }
  // What the log holds behind its header.
  std::string Entries() { return Content().substr(sizeof(kHeader) - 1); }

  testing::MemoryPlatform platform;
  testing::RecordingUser user;
  embedded::adapter::EventLog events;
  embedded::adapter::NoDialogs dialogs{events};
  embedded::adapter::RecordedClients clients{events};
  embedded::adapter::EmbeddedHost embedded{HostOptions(), user, dialogs, clients, platform};
  host::Host& roles{embedded.roles()};
  DebugLog log{roles};
};

TEST_F(DebugLogTest, HeaderAndEntriesAreAlwaysTheSameBytes) {
  const host::Id document = Open({});
  const host::Id root = roles.elements.Root(document, roles.elements.MainFlow(document));
  platform.seconds = 1735689600;
  platform.files["/plugin/QELM_debug_log.txt"] = "of an earlier session";
  OpenLog(kDebugWriteLog);
  EXPECT_EQ(Content(), kHeader);
  log.Event(document, root, "Preparing to delete");
  EXPECT_EQ(Entries(),
            "\r\n** EVENT/ACTION: Preparing to delete\r\nTIMESTAMP: 1735689600\r\n\r\nDOC: 1\r\nFILEPATH: "
            "/doc.mif\r\n\r\nOBJECT TYPE: Element\r\nELEMENT TAG: Doc\r\nELEMENT UID: " +
                std::to_string(roles.elements.UniqueId(document, root)) +
                "\r\nELEMENT TEXT: one two three four five six seven eight nine ten é" + kEnd);
}

TEST_F(DebugLogTest, AFullLogSaysSoAndStaysAsItIs) {
  OpenLog(kDebugWriteLog);
  log.Event(host::kNone, host::kNone, std::string(DebugLog::kLongest, 'x'));
  const std::string full = Content();
  EXPECT_NE(full.find("THE LOG IS FULL"), std::string::npos);
  log.Event(host::kNone, host::kNone, "x");
  EXPECT_TRUE(Content() == full);
  OpenLog(kDebugWriteLog);
  log.Event(host::kNone, host::kNone, "x");
  EXPECT_LT(Content().size(), 1000U) << "opened again, it begins anew";
}

}  // namespace
}  // namespace qelm::messages
