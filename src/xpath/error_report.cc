#include "xpath/error_report.h"

#include "common/utf8.h"

namespace qelm::xpath {
namespace {

constexpr std::size_t kLineCharacters = 60;

constexpr std::string_view kHeading = "XPathErrorHeading";
constexpr std::string_view kExpressionLine = "XPath";
constexpr std::string_view kMarkerLine = "ErrorPosition";
constexpr std::string_view kMessage = "ErrorMessage";

constexpr std::string_view kNoReport = "XPATH_GEN_ERR_1";
constexpr std::string_view kNoHeading = "XPATH_GEN_ERR_2";
constexpr std::string_view kNoTemplate = "XPATH_GEN_ERR_3";

constexpr std::size_t kHeadingCharacters = 1000;

// These ids do not begin as those that an alert resolves by itself.
void AlertById(Engine::State& state, std::string_view id) {
  const std::string text = state.messenger.Get(id);
  state.messenger.AlertFormatted(id, text);
}

host::Id OpenTemplate(Engine::State& state) {
  host::Documents& documents = state.host.documents;
  host::OpenOptions options;
  options.suppress_alerts = true;
  options.as_new = true;
  host::OpenStatus status = host::OpenStatus::kNotFound;
  const host::Id document = documents.Open(state.report_template_path, options, &status);
  if (document == host::kNone) {
    const std::string text = state.messenger.Format(kNoTemplate, state.report_template_path);
    state.messenger.AlertFormatted(kNoTemplate, text);
    return host::kNone;
  }
  documents.SetSwitch(document, host::DocumentSwitch::kModified, false);
  if (documents.SetPath(document, state.report_path)) return document;
  documents.Close(document, true);
  return host::kNone;
}

// One entry of the report, written element by element.
class Entry {
 public:
  Entry(host::Host& host, host::Id document) : host_(host), document_(document) {}

  bool FindPlace();
  bool Write(const std::vector<MarkedLine>& lines, const std::string& message);

 private:
  host::Id FirstNamed(std::string_view name);
  bool Is(host::Id element, std::string_view name);
  bool Add(std::string_view name, std::string_view text);
  host::Id NextEmpty(host::Id element, std::string_view name);

  host::Host& host_;
  host::Id document_;
  host::Id heading_ = host::kNone;
  host::Id parent_ = host::kNone;
  // The template's own elements behind its heading, which the first entry fills; 0 for later entries.
  host::Id expression_ = host::kNone;
  host::Id marker_ = host::kNone;
  host::Id message_ = host::kNone;
};

bool Entry::Is(host::Id element, std::string_view name) {
  const host::Id definition = host_.elements.Definition(document_, element);
  return definition != host::kNone && host_.definitions.DefinitionName(document_, definition) == name;
}

host::Id Entry::FirstNamed(std::string_view name) {
  host::Elements& elements = host_.elements;
  const host::Id root = elements.Root(document_, elements.MainFlow(document_));
  host::Id at = root;
  while (at != host::kNone && !Is(at, name)) {
    if (const host::Id child = elements.FirstChild(document_, at); child != host::kNone) {
      at = child;
      continue;
    }
    while (at != root && at != host::kNone && elements.NextSibling(document_, at) == host::kNone) {
      at = elements.Parent(document_, at);
    }
    at = at == root ? host::kNone : elements.NextSibling(document_, at);
  }
  return at;
}

host::Id Entry::NextEmpty(host::Id element, std::string_view name) {
  const host::Id next = element == host::kNone ? host::kNone : host_.elements.NextSibling(document_, element);
  const bool is = Is(next, name) && host_.elements.FirstChild(document_, next) == host::kNone;
  return is ? next : host::kNone;
}

bool Entry::FindPlace() {
  heading_ = FirstNamed(kHeading);
  parent_ = host_.elements.Parent(document_, heading_);
  if (heading_ == host::kNone || parent_ == host::kNone) return false;
  expression_ = NextEmpty(heading_, kExpressionLine);
  marker_ = NextEmpty(expression_, kMarkerLine);
  message_ = NextEmpty(marker_, kMessage);
  if (message_ == host::kNone) expression_ = marker_ = host::kNone;
  return true;
}

// Adds an element, in the first entry before the message that is there already.
bool Entry::Add(std::string_view name, std::string_view text) {
  const host::Id definition = host_.definitions.FindDefinition(document_, name);
  if (definition == host::kNone) return false;
  const host::Id element = host_.editing.InsertElement(document_, parent_, message_, definition);
  return element != host::kNone && (text.empty() || host_.editing.SetText(document_, element, text));
}

bool Entry::Write(const std::vector<MarkedLine>& lines, const std::string& message) {
  bool first = message_ != host::kNone;
  if (!first) {
    // A heading like the first one separates this entry from those before it.
    std::string buffer;
    const std::string heading(host_.text.ElementText(document_, heading_, kHeadingCharacters, &buffer));
    if (!Add(kHeading, heading)) return false;
  }
  for (const MarkedLine& line : lines) {
    const bool written =
        first ? host_.editing.SetText(document_, expression_, line.text) &&
                    (line.marker.empty() || host_.editing.SetText(document_, marker_, line.marker))
              : Add(kExpressionLine, line.text) && Add(kMarkerLine, line.marker);
    if (!written) return false;
    first = false;
  }
  return message_ != host::kNone ? host_.editing.SetText(document_, message_, message)
                                 : Add(kMessage, message);
}

}  // namespace

std::vector<MarkedLine> MarkPosition(std::string_view expression, std::int32_t position) {
  std::vector<MarkedLine> lines;
  std::int64_t distance = position;
  while (!expression.empty() || lines.empty()) {
    const std::string_view text = common::FirstCharacters(expression, kLineCharacters);
    expression.remove_prefix(text.size());
    std::string marker;
    for (std::size_t left = common::CountCharacters(text); left > 0 && distance >= 0; --left, --distance) {
      marker.push_back(distance > 0 ? '.' : '^');
    }
    lines.push_back({std::string(text), marker});
  }
  return lines;
}

host::Id OpenErrorReport(const Engine::State& state) {
  host::Documents& documents = state.host.documents;
  for (host::Id id = documents.FirstOpenDocument(); id != host::kNone; id = documents.NextOpenDocument(id)) {
    if (documents.Path(id) == state.report_path) return id;
  }
  return host::kNone;
}

void bw_ReportXPathError(Engine::State& state, std::string_view expression, const ParseError& error) {
  host::Documents& documents = state.host.documents;
  host::Id document = OpenErrorReport(state);
  if (document == host::kNone) document = OpenTemplate(state);
  if (document == host::kNone) {
    AlertById(state, kNoReport);
    return;
  }
  documents.SetSwitch(document, host::DocumentSwitch::kOnScreen, true);
  Entry entry(state.host, document);
  if (!entry.FindPlace()) {
    AlertById(state, kNoHeading);
    return;
  }
  const std::string message = state.messenger.Get(error.id);
  if (!entry.Write(MarkPosition(expression, error.position), message)) AlertById(state, kNoReport);
  documents.Activate(document);
  state.host.session.Redisplay(document);
}

}  // namespace qelm::xpath
