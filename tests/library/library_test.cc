// The C library through its header, and the examples that use it.
#include <gtest/gtest.h>
#include <qelm/qelm.h>

#include <cstdlib>
#include <fstream>
#include <sstream>
#include <thread>

#include "support/temp_folder.h"

namespace qelm::testing {
namespace {

constexpr char kChapter[] = QELM_SOURCE_DIR "/examples/pump/reference.mif";
constexpr char kOther[] = QELM_SOURCE_DIR "/examples/pump/operation.mif";

std::string ReadFile(const std::string& path) {
  std::ostringstream text;
  text << std::ifstream(path).rdbuf();
  return text.str();
}

// Filters in place by the shipped scheme, and saves under another name. The last message when something
// fails.
std::string Filter(const std::string& profile, const std::string& document, const std::string& output) {
  qelm_session* session = nullptr;
  const auto call = [&](const std::string& text) {
    int result = 0;
    return qelm_call(session, text.c_str(), &result, nullptr) == 1 && result == 1;
  };
  const bool done =
      qelm_start(profile.c_str(), &session) == 1 && call("SetScheme---filter---Audience---Beginner") &&
      call("SetParm---Filter_Type---Source") && qelm_open(session, document.c_str()) == 1 &&
      call("FilterFile---" + document) && qelm_save(session, document.c_str(), output.c_str()) == 1;
  const std::string message = done ? "" : std::string("failed: ") + qelm_last_message(session);
  qelm_end(session);
  return message;
}

int Shell(const std::string& command) { return std::system(command.c_str()); }

TEST(Library, FailuresAreToldAndTheSessionGoesOn) {
  TempFolder folder;
  qelm_session* session = nullptr;
  ASSERT_EQ(qelm_start(folder.File("profile").c_str(), &session), 1) << qelm_last_message(session);
  int result = 0;
  const char* from = nullptr;
  EXPECT_EQ(qelm_call(session, "FilterFile---nowhere.mif", &result, &from), 1);
  EXPECT_EQ(result, 104);
  EXPECT_STREQ(from, "call");
  EXPECT_EQ(qelm_call(session, "GetParm---QELMVersionMajor", nullptr, nullptr), 1);
  EXPECT_EQ(qelm_open(session, "nowhere.mif"), 0);
  EXPECT_NE(std::string(qelm_last_message(session)).find("nowhere.mif"), std::string::npos);
  EXPECT_EQ(qelm_save(session, "nowhere.mif", nullptr), 0);
  EXPECT_EQ(qelm_close(session, "nowhere.mif"), 0);
  EXPECT_EQ(qelm_call(session, nullptr, &result, nullptr), 0);
  EXPECT_EQ(qelm_open(nullptr, "x"), 0);
  EXPECT_EQ(qelm_open(session, kChapter), 1) << qelm_last_message(session);
  EXPECT_EQ(qelm_close(session, kChapter), 1) << qelm_last_message(session);
  qelm_end(session);
  qelm_end(nullptr);

  qelm_options options{};
  options.main_settings = "/nowhere.xml";
  EXPECT_EQ(qelm_start_with(&options, &session), 0);
  EXPECT_NE(std::string(qelm_last_message(session)).find("/nowhere.xml"), std::string::npos);
  EXPECT_EQ(qelm_call(session, "Hello", &result, nullptr), 0);
  qelm_end(session);
}

// A handler that calls back and takes the document away is answered, and does no harm.
TEST(Library, AHandlerMayAskAndNotInterfere) {
  TempFolder folder;
  struct Seen {
    qelm_session* session = nullptr;
    std::vector<std::string> events;
    int interfered = 0;
    int answered = 0;
  } seen;
  ASSERT_EQ(qelm_start(folder.File("profile").c_str(), &seen.session), 1);
  const auto handler = [](void* data, const char* client, const char* text) {
    Seen& told = *static_cast<Seen*>(data);
    told.events.push_back(std::string(client) + ":" + text);
    int result = 1;
    told.interfered += qelm_close(told.session, kChapter);
    qelm_call(told.session, (std::string("RestoreFile---") + kChapter).c_str(), &result, nullptr);
    told.interfered += result;
    qelm_call(told.session, "GetParm---QELMVersionMajor", &result, nullptr);
    told.answered += result;
  };
  EXPECT_EQ(qelm_on_notification(seen.session, handler, &seen), 1);
  EXPECT_EQ(qelm_open(seen.session, kChapter), 1);
  int result = 0;
  for (const std::string& text :
       {std::string("SetNotificationClient---me"), std::string("SetNotificationStatus---1"),
        std::string("RestoreFile---") + kChapter}) {
    EXPECT_EQ(qelm_call(seen.session, text.c_str(), &result, nullptr), 1);
    EXPECT_EQ(result, 1);
  }
  EXPECT_EQ(seen.events, (std::vector<std::string>{"me:QELM_Filter_RestoreDoc_Start",
                                                   "me:QELM_Filter_RestoreDoc_Complete"}));
  EXPECT_EQ(seen.interfered, 0);
  EXPECT_EQ(seen.answered, 2);
  qelm_end(seen.session);
}

TEST(Library, SessionsOnTwoThreadsDoWhatEachDoesAlone) {
  TempFolder folder;
  const auto filter = [&folder](const std::string& profile, const char* document, const std::string& output) {
    EXPECT_EQ(Filter(folder.File(profile), document, folder.File(output)), "");
  };
  filter("a", kChapter, "a1.mif");
  filter("b", kOther, "b1.mif");
  std::thread first(filter, "a", kChapter, "a2.mif");
  std::thread second(filter, "b", kOther, "b2.mif");
  first.join();
  second.join();
  EXPECT_EQ(folder.Read("a1.mif"), folder.Read("a2.mif"));
  EXPECT_EQ(folder.Read("b1.mif"), folder.Read("b2.mif"));
  EXPECT_NE(folder.Read("a1.mif"), ReadFile(kChapter));
}

TEST(Examples, FilterAsTheLibraryDoes) {
  TempFolder folder;
  ASSERT_EQ(Filter(folder.File("profile"), kChapter, folder.File("wanted.mif")), "");
  const std::string arguments =
      folder.File("profile") + " " + kChapter + " Audience Beginner " + folder.File("out.mif");
  const std::string log = " >" + folder.File("log") + " 2>&1";
  ASSERT_EQ(Shell(QELM_BINARY_DIR "/example_filter " + arguments + log), 0) << folder.Read("log");
  EXPECT_EQ(folder.Read("out.mif"), folder.Read("wanted.mif"));
  EXPECT_NE(folder.Read("log").find("example is told: QELM_Filter_Complete"), std::string::npos);
  std::filesystem::remove(folder.File("out.mif"));
  // A sanitizer's runtime has to be the first library of a process, and looks after its own memory only.
  const std::string preload =
      QELM_PRELOAD[0] == 0 ? "" : "LD_PRELOAD=" QELM_PRELOAD " ASAN_OPTIONS=detect_leaks=0 ";
  const std::string python =
      "python3 " QELM_SOURCE_DIR "/examples/python/filter.py " QELM_BINARY_DIR "/libqelm.so ";
  ASSERT_EQ(Shell(preload + python + arguments + log), 0) << folder.Read("log");
  EXPECT_EQ(folder.Read("out.mif"), folder.Read("wanted.mif"));
  EXPECT_NE(folder.Read("log").find("example is told: QELM_Filter_Complete"), std::string::npos);
}

}  // namespace
}  // namespace qelm::testing
