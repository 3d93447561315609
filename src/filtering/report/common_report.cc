#include "filtering/report/common_report.h"

#include <fmt/printf.h>

#include "common/paths.h"
#include "filtering/report/template_file.h"

namespace qelm::filtering {
namespace {

constexpr std::string_view kDateLine = "%04d-%02d-%02d, %02d:%02d:%02d";
constexpr std::string_view kTitleText = "Report _____";
constexpr std::string_view kName = "Report";

// The title paragraph stands in the template; what it says goes before whatever it holds.
bool SetTitle(const ReportRoles& roles, host::Id document, const std::string& title) {
  const host::TextRange found =
      roles.editing.FindParagraph(document, roles.elements.MainFlow(document), "Title");
  return !found.Empty() && roles.editing.InsertText(document, found.begin, title);
}

bool AddParagraph(const ReportRoles& roles, host::Id document, std::string_view format,
                  std::string_view text) {
  const host::Id root = roles.elements.Root(document, roles.elements.MainFlow(document));
  host::NewParagraph paragraph;
  paragraph.format = format;
  paragraph.text = text;
  return root != host::kNone && roles.editing.AppendParagraph(document, root, paragraph);
}

bool FillIn(messages::Messenger& messenger, const ReportRoles& roles, const CommonReport& request,
            host::Id document) {
  const std::string heading =
      messages::IsMessageId(request.heading) ? messenger.Get(request.heading) : request.heading;
  const host::LocalTime now = roles.platform.Now();
  const std::string date =
      fmt::sprintf(kDateLine, now.year, now.month, now.day, now.hour, now.minute, now.second);
  return SetTitle(roles, document, request.prefix + std::string(kTitleText)) &&
         AddParagraph(roles, document, "SingleLine", {}) && AddParagraph(roles, document, "Body", {}) &&
         AddParagraph(roles, document, "Heading1", heading) && AddParagraph(roles, document, "Body", {}) &&
         AddParagraph(roles, document, "Body", date) && AddParagraph(roles, document, "Body", {});
}

}  // namespace

host::Id CreateCommonReport(messages::Messenger& messenger, const ReportRoles& roles,
                            const CommonReport& request, Report* report) {
  if (report->document != host::kNone && roles.documents.Activate(report->document)) return report->document;
  *report = Report();
  const host::Id document =
      OpenTemplate(messenger, roles.documents, common::JoinPath(request.folder, kCommonReportTemplate),
                   /*visible=*/false);
  if (document == host::kNone) return host::kNone;
  // A new report shows its text and nothing else.
  roles.documents.SetView(document, host::ViewMode::kWysiwyg);
  roles.documents.SetSwitch(document, host::DocumentSwitch::kShowAllConditions, false);
  roles.documents.SetSwitch(document, host::DocumentSwitch::kElementBoundaries, false);
  const std::string name = common::JoinPath(request.folder, request.prefix + std::string(kName));
  if (!FillIn(messenger, roles, request, document) || !roles.documents.SetPath(document, name)) {
    messenger.Alert(std::string(roles.documents.LastError()));
    roles.documents.Close(document, true);
    return host::kNone;
  }
  roles.documents.SetSwitch(document, host::DocumentSwitch::kIconified, false);
  roles.documents.SetSwitch(document, host::DocumentSwitch::kOnScreen, true);
  report->document = document;
  return document;
}

}  // namespace qelm::filtering
