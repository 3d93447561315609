// The validation as a report document. A document is a section of it: its heading, its name, the name of the
// scheme; then three lines for each violation, the element's linked to it; and a line that says so when there
// were none.
#pragma once

#include <string>

#include "coloring/validation_sink.h"
#include "filtering/report/report.h"
#include "schemes/scheme.h"

namespace qelm::coloring {

class ValidationReport : public ViolationSink {
 public:
  // Adds to the current report, which is open already.
  ValidationReport(messages::Messenger& messenger, host::Host& host, const schemes::Scheme& scheme,
                   filtering::Report* report)
      : messenger_(messenger), roles_(filtering::RolesForReports(host)), scheme_(scheme), report_(report) {}

  void BeginDocument(host::Id document, bool by_command) override;
  void Add(const Violation& violation) override;
  void EndDocument(host::Id document, std::uint64_t violations, bool finished) override;

 private:
  void Line(const filtering::ReportLine& line);

  messages::Messenger& messenger_;
  filtering::ReportRoles roles_;
  const schemes::Scheme& scheme_;
  filtering::Report* report_;
};

}  // namespace qelm::coloring
