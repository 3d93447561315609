// The report of the maker's common library: a document with a title, a heading and the date, to which its
// user adds what it has to tell.
#pragma once

#include "filtering/report/report.h"

namespace qelm::filtering {

inline constexpr std::string_view kCommonReportTemplate = "_Report_Template.fm";

struct CommonReport {
  std::string folder;   // where the template lies
  std::string prefix;   // what the plug-in puts before "Report" in title and name ("QELM ")
  std::string heading;  // a text, or a message id
};

// Makes the report, or returns the one in `report` when it is still open. 0, with an alert that names the
// template, when it cannot be made. Adds lines by AddReportLine.
host::Id CreateCommonReport(messages::Messenger& messenger, const ReportRoles& roles,
                            const CommonReport& request, Report* report);

}  // namespace qelm::filtering
