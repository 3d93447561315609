// Reports: documents into which long operations write what they did, a paragraph a line.
//
// A report is made from a template of the plug-in's folder and is a document like any other: it can be looked
// at, saved and printed. Each line has a format index that chooses its paragraph format and how its three
// texts become one; a line may be a link to a document or to one element of it.
//
//   filtering::Report report;
//   if (filtering::OpenReport(messenger, roles, "/out/Report.mif", &report)) {
//     filtering::AddReportLine(messenger, roles, &report, {.format = 11, .texts = {"Result"}});
//     filtering::SaveReport(messenger, roles, report);
//   }
#pragma once

#include <string>
#include <string_view>

#include "host/interface/host.h"
#include "messages/messenger.h"

namespace qelm::filtering {

// The host's roles that reports use.
struct ReportRoles {
  host::Session& session;
  host::Documents& documents;
  host::Elements& elements;
  host::Definitions& definitions;
  host::Editing& editing;
  host::Platform& platform;
};
ReportRoles RolesForReports(host::Host& host);

// The report that is being written.
struct Report {
  host::Id document = 0;       // 0: none
  bool failure_shown = false;  // a line that cannot be added is told once
  std::size_t lines = 0;       // that were added
};

// The lines of a report. `texts` that are message ids stand for the message's text. `document` and `element`
// are what the line is about; with `link` the paragraph is a link to it (without a document: to the file
// whose path is the third text).
struct ReportLine {
  std::int32_t format = 1;  // 1 to 27; any other is an empty line
  host::Id document = 0;
  host::Id element = 0;
  bool link = false;
  std::string_view texts[3] = {};
};

// Nobody reads more lines than these; further ones are dropped, which is told once.
inline constexpr std::size_t kMostReportLines = 250'000;

inline constexpr std::string_view kReportTemplate = "QELM_Plugin_Report_Template.fm";

// Opens the plug-in's report template as a new document called `path` (empty: without a name, SaveReport then
// needs one) and makes it the current report; nothing is written yet. A report that is open already is
// forgotten, not closed. False, with an alert that names the template, when it cannot be opened.
bool OpenReport(messages::Messenger& messenger, const ReportRoles& roles, const std::string& path,
                Report* report);

// Adds a line at the end of the report and brings the report on screen. Without a report an alert says so and
// the line is dropped; a line that cannot be added is dropped with an alert, the first time.
bool AddReportLine(messages::Messenger& messenger, const ReportRoles& roles, Report* report,
                   const ReportLine& line);

// Writes the report to `path` (empty: to the path that it has). False, with an alert that says why, when it
// cannot be written.
bool SaveReport(messages::Messenger& messenger, const ReportRoles& roles, const Report& report,
                const std::string& path = {});

// Brings the report to the front.
void ShowReport(const ReportRoles& roles, const Report& report);

// Closes the report, with what was not saved, and forgets it.
void CloseReport(const ReportRoles& roles, Report* report);

}  // namespace qelm::filtering
