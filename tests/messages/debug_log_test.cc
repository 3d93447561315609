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

TEST_F(DebugLogTest, WhatIsNotKnownIsSaid) {
  const host::Id unsaved = Open({.as_new = true});
  OpenLog(kDebugWriteLog);
  log.Event(unsaved, host::kNone, "**FILTER COMPLETE**");
  log.Event(host::kNone, 4711, "x");
  EXPECT_EQ(Entries(),
            std::string("\r\n** EVENT/ACTION: **FILTER COMPLETE**\r\nTIMESTAMP: 0\r\n\r\nDOC: 1\r\n"
                        "FILEPATH: <none>\r\n\r\nNULL OR UNRECOGNIZABLE OBJECT SENT. ID: 0") +
                kEnd +
                "\r\n** EVENT/ACTION: x\r\nTIMESTAMP: 0\r\n\r\nNo doc ID sent\r\n\r\n"
                "NULL OR UNRECOGNIZABLE OBJECT SENT. ID: 4711" +
                kEnd);
}

TEST_F(DebugLogTest, OnlyOneModeWrites) {
  OpenLog(kDebugOff);
  EXPECT_EQ(log.Path(), "");
  OpenLog(kDebugPrompts);
  log.Event(host::kNone, host::kNone, "x");
  EXPECT_TRUE(platform.files.empty());
  OpenLog(kDebugWriteLog);
  log.Event(host::kNone, host::kNone, "x");
  OpenLog(kDebugWriteLog);
  EXPECT_EQ(Content(), kHeader) << "opened again, it begins anew";
  OpenLog(kDebugOff);
  log.Event(host::kNone, host::kNone, "x");
  EXPECT_EQ(Content(), kHeader);
}

TEST_F(DebugLogTest, FolderAndNameOfTheSettings) {
  log.Open({"QELM", kDebugWriteLog, "/logs", "", 10});
  log.Open({"QELM", kDebugWriteLog, "", "run.log", 10});
  EXPECT_EQ(platform.files["/logs/QELM_debug_log.txt"], kHeader);
  EXPECT_EQ(platform.files["/plugin/run.log"], kHeader);
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

TEST_F(DebugLogTest, TheModeIsShown) {
  for (const std::int32_t mode : {kDebugOff, kDebugPrompts, kDebugWriteLog, kDebugOff}) {
    OpenLog(mode);
    log.ShowMode();
  }
  EXPECT_EQ(user.notes, (std::vector<std::string>{"Debug mode is off.", "Prompting debug mode is ON.",
                                                  "Write log debug mode is ON.", "Debug mode is off."}));
}

}  // namespace
}  // namespace qelm::messages
