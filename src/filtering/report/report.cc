#include "filtering/report/report.h"

#include <algorithm>
#include <array>

#include "common/paths.h"
#include "filtering/report/template_file.h"

namespace qelm::filtering {
namespace {

// How a line's text comes about.
enum class Wording : std::uint8_t {
  kNone,
  kJoined,   // the three texts, one behind the other
  kMessage,  // a message as it stands
  kFilled,   // a message filled with some of text 1, text 2 and the element's tag
};

// What fills a message, in the order of its placeholders.
enum class Part : std::uint8_t { kNothing, kText1, kText2, kTag };

struct LineFormat {
  std::string_view paragraph_format;
  Wording wording = Wording::kJoined;
  std::string_view message;
  std::array<Part, 3> parts{};
  std::string_view variable;  // the date that stands in the paragraph
};

// By format index. The messages of the first ten serve validation.
constexpr std::array<LineFormat, 28> kFormats = {{
    {"SingleLine", Wording::kNone, {}, {}, {}},
    {"SingleLine", Wording::kNone, {}, {}, {}},
    {"Heading2", Wording::kMessage, "QELM_MSG_VAL_REP_3", {}, {}},
    {"NormalMessage", Wording::kFilled, "QELM_MSG_VAL_REP_7", {Part::kText2, Part::kText1, Part::kTag}, {}},
    {"Heading2", Wording::kMessage, "QELM_MSG_VAL_REP_4", {}, {}},
    {"NormalMessage", Wording::kFilled, "QELM_MSG_VAL_REP_8", {Part::kText1, Part::kTag, Part::kText2}, {}},
    {"Heading2", Wording::kMessage, "QELM_MSG_VAL_REP_5", {}, {}},
    {"NormalMessage", Wording::kFilled, "QELM_MSG_VAL_REP_9", {Part::kTag, Part::kText1}, {}},
    {"Heading2", Wording::kMessage, "QELM_MSG_VAL_REP_6", {}, {}},
    {"NormalMessage", Wording::kFilled, "QELM_MSG_VAL_REP_10", {Part::kText1, Part::kTag}, {}},
    {"HyperlinkMessage", Wording::kMessage, "QELM_MSG_VAL_REP_11", {}, {}},
    {"Heading1", Wording::kJoined, {}, {}, {}},
    {"Heading1Hyperlink", Wording::kJoined, {}, {}, {}},
    {"Heading2", Wording::kJoined, {}, {}, {}},
    {"Heading2Hyperlink", Wording::kJoined, {}, {}, {}},
    {"NormalMessage", Wording::kJoined, {}, {}, {}},
    {"HyperlinkMessage", Wording::kJoined, {}, {}, {}},
    {"ShortDate", Wording::kNone, {}, {}, "Current Date (Short)"},
    {"LongDate", Wording::kNone, {}, {}, "Current Date (Long)"},
    {"LongDateAndTime", Wording::kNone, {}, {}, "Modification Date (Long)"},
    {"NormalMessageIndent", Wording::kJoined, {}, {}, {}},
    {"BoldMessage", Wording::kJoined, {}, {}, {}},
    {"BoldMessageIndent", Wording::kJoined, {}, {}, {}},
    {"BoldRedMessage", Wording::kJoined, {}, {}, {}},
    {"BoldRedMessageIndent", Wording::kJoined, {}, {}, {}},
    {"HyperlinkMessageIndent", Wording::kJoined, {}, {}, {}},
    {"HyperlinkMessageSmall", Wording::kJoined, {}, {}, {}},
    {"HyperlinkMessageSmallIndent", Wording::kJoined, {}, {}, {}},
}};

const LineFormat& FormatOf(std::int32_t index) {
  const bool known = index > 0 && static_cast<std::size_t>(index) < kFormats.size();
  return kFormats[known ? static_cast<std::size_t>(index) : 0];
}

using Texts = std::array<std::string, 3>;

Texts ResolvedTexts(messages::Messenger& messenger, const ReportRoles& roles, const ReportLine& line) {
  Texts texts;
  bool any = false;
  for (std::size_t i = 0; i < texts.size(); ++i) {
    texts[i] = messages::IsMessageId(line.texts[i]) ? messenger.Get(line.texts[i]) : line.texts[i];
    any = any || !texts[i].empty();
  }
  if (!any && line.document != host::kNone) texts[0] = roles.documents.Path(line.document);
  return texts;
}

std::string TextOf(messages::Messenger& messenger, const ReportRoles& roles, const ReportLine& line,
                   const LineFormat& format) {
  if (format.wording == Wording::kNone) return {};
  if (format.wording == Wording::kMessage) return messenger.Get(format.message);
  const Texts texts = ResolvedTexts(messenger, roles, line);
  if (format.wording == Wording::kJoined) return texts[0] + texts[1] + texts[2];
  std::string tag;
  if (line.document != host::kNone && line.element != host::kNone) {
    tag = roles.definitions.DefinitionName(line.document,
                                           roles.elements.Definition(line.document, line.element));
  }
  const auto part = [&](std::size_t i) -> const std::string& {
    static const std::string nothing;
    switch (format.parts[i]) {
      case Part::kText1:
        return texts[0];
      case Part::kText2:
        return texts[1];
      case Part::kTag:
        return tag;
      case Part::kNothing:
        break;
    }
    return nothing;
  };
  return messages::Messenger::FormatText(messenger.Get(format.message), part(0), part(1), part(2));
}

// The hypertext command behind a line. An element without an id of its own (in an XML document) cannot be
// jumped to; its document can.
std::string LinkCommand(const ReportRoles& roles, const ReportLine& line) {
  const std::string_view path =
      line.document != host::kNone ? roles.documents.Path(line.document) : line.texts[2];
  const std::int64_t unique_id = line.document != host::kNone && line.element != host::kNone
                                     ? roles.elements.UniqueId(line.document, line.element)
                                     : 0;
  if (unique_id == 0) return "openlink " + std::string(path) + ":firstpage";
  return "openObjectId " + std::string(path) + ":5 " + std::to_string(unique_id);
}

}  // namespace

ReportRoles RolesForReports(host::Host& host) {
  return {host.session, host.documents, host.elements, host.definitions, host.editing, host.platform};
}

bool OpenReport(messages::Messenger& messenger, const ReportRoles& roles, const std::string& path,
                Report* report) {
  *report = Report();
  const host::Id document =
      OpenTemplate(messenger, roles.documents,
                   common::JoinPath(roles.session.PluginFolder(), kReportTemplate), /*visible=*/true);
  if (document == host::kNone) return false;
  if (!path.empty() && !roles.documents.SetPath(document, path)) {
    messenger.Alert(std::string(roles.documents.LastError()));
    roles.documents.Close(document, true);
    return false;
  }
  roles.documents.SetSwitch(document, host::DocumentSwitch::kModified, false);
  report->document = document;
  return true;
}

bool AddReportLine(messages::Messenger& messenger, const ReportRoles& roles, Report* report,
                   const ReportLine& line) {
  const host::Id root =
      report->document == host::kNone
          ? host::kNone
          : roles.elements.Root(report->document, roles.elements.MainFlow(report->document));
  // A report that was closed meanwhile is no report any more.
  if (report->document == host::kNone || !roles.documents.Activate(report->document)) {
    messenger.Alert("QELM_MSG_GEN_17");
    report->document = host::kNone;
    return false;
  }
  if (report->lines >= kMostReportLines) {
    const std::string_view id = "QELM_MSG_GEN_42";
    if (!report->failure_shown) messenger.AlertFormatted(id, messenger.Format(id, kMostReportLines));
    report->failure_shown = true;
    return false;
  }
  ++report->lines;
  roles.documents.SetSwitch(report->document, host::DocumentSwitch::kOnScreen, true);
  const LineFormat& format = FormatOf(line.format);
  const std::string text = TextOf(messenger, roles, line, format);
  const std::string link = line.link ? LinkCommand(roles, line) : std::string();
  host::NewParagraph paragraph;
  paragraph.format = format.paragraph_format;
  paragraph.text = text;
  paragraph.variable = format.variable;
  if (line.link) paragraph.marker_type = "Hypertext";
  paragraph.marker_text = link;
  if (root != host::kNone && roles.editing.AppendParagraph(report->document, root, paragraph)) return true;
  if (!report->failure_shown) messenger.Alert("QELM_MSG_GEN_18");
  report->failure_shown = true;
  return false;
}

bool SaveReport(messages::Messenger& messenger, const ReportRoles& roles, const Report& report,
                const std::string& path) {
  if (report.document == host::kNone) {
    messenger.Alert("QELM_MSG_GEN_17");
    return false;
  }
  host::SaveOptions options;
  options.path = path;
  if (roles.documents.Save(report.document, options)) return true;
  messenger.Alert(std::string(roles.documents.LastError()));
  return false;
}

void ShowReport(const ReportRoles& roles, const Report& report) {
  if (!roles.documents.Activate(report.document)) return;
  roles.documents.SetSwitch(report.document, host::DocumentSwitch::kOnScreen, true);
  roles.session.Redisplay(report.document);
}

void CloseReport(const ReportRoles& roles, Report* report) {
  if (report->document != host::kNone) roles.documents.Close(report->document, true);
  *report = Report();
}

}  // namespace qelm::filtering
