#include "embedded/model/format_context.h"

#include <algorithm>
#include <array>
#include <charconv>

namespace qelm::embedded::model {
namespace {

constexpr std::string_view kTextName = "<TEXT>";

bool IsBlank(char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\n'; }

// Whether text stands before or after the element among its siblings; else the sibling's definition.
bool IsNamed(const Document& document, Id element, const std::vector<std::string>& names) {
  if (element == 0) return false;
  const Id definition = document.elements[element].definition;
  const std::string_view name =
      definition == 0 ? kTextName : std::string_view(document.definitions[definition].name);
  return std::find(names.begin(), names.end(), name) != names.end();
}

std::optional<double> Number(std::string_view text) {
  double number = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (error != std::errc() || end != text.data() + text.size() || text.empty()) return std::nullopt;
  return number;
}

// The values of the element's attribute, else the ones that its definition declares for it.
std::vector<std::string_view> ValuesOf(const Document& document, const Element& element,
                                       std::string_view name) {
  for (std::uint32_t i = 0; i < element.attribute_count; ++i) {
    const Attribute& attribute = document.attributes[element.first_attribute + i];
    if (document.names[attribute.name] != name) continue;
    const auto values = document.values.Run(attribute.first_value, attribute.value_count);
    return {values.begin(), values.end()};
  }
  for (const AttributeDefinition& attribute : document.definitions[element.definition].attributes) {
    if (document.names[attribute.name] == name) return attribute.defaults;
  }
  return {};
}

}  // namespace

class FormatContext::Parser {
 public:
  explicit Parser(std::string_view text) : text_(text) {}

  bool Run(FormatContext* context) {
    for (bool first = true; !AtEnd(); first = false) {
      if (!first && !Take("<")) return false;
      Step step;
      if (!ReadStep(&step)) return false;
      const bool about_itself = first && !step.any_number && step.names.empty();
      context->about_itself_ = context->about_itself_ || about_itself;
      context->steps_.push_back(std::move(step));
    }
    return true;
  }

 private:
  bool AtEnd() {
    while (at_ < text_.size() && IsBlank(text_[at_])) ++at_;
    return at_ == text_.size();
  }
  bool Take(std::string_view word) {
    if (AtEnd() || !text_.substr(at_).starts_with(word)) return false;
    at_ += word.size();
    return true;
  }
  bool ReadName(std::string* name) {
    if (Take(kTextName)) return name->assign(kTextName), true;
    AtEnd();
    const std::size_t begin = at_;
    while (at_ < text_.size() && !IsBlank(text_[at_]) &&
           std::string_view("<>()|&{}[],=!\"*").find(text_[at_]) == std::string_view::npos) {
      ++at_;
    }
    name->assign(text_.substr(begin, at_ - begin));
    return !name->empty();
  }
  bool ReadNames(std::vector<std::string>* names) {
    const bool grouped = Take("(");
    do {
      if (!ReadName(&names->emplace_back())) return false;
    } while (grouped && (Take("|") || Take(",")));
    return !grouped || Take(")");
  }
  bool ReadStep(Step* step) {
    if (Take("*")) {
      step->any_number = true;
      return true;
    }
    if (!AtEnd() && text_[at_] != '[' && text_[at_] != '{' && !ReadNames(&step->names)) return false;
    bool any = !step->names.empty();
    while (true) {
      if (Take("{")) {
        if (!ReadSibling(step)) return false;
      } else if (Take("[")) {
        if (!ReadTests(step)) return false;
      } else {
        return any;
      }
      any = true;
    }
  }
  bool ReadSibling(Step* step) {
    struct Word {
      std::string_view text;
      Sibling sibling;
    };
    static constexpr std::array<Word, 9> kWords = {{{"any", Sibling::kAny},
                                                    {"first", Sibling::kFirst},
                                                    {"last", Sibling::kLast},
                                                    {"only", Sibling::kOnly},
                                                    {"middle", Sibling::kMiddle},
                                                    {"notfirst", Sibling::kNotFirst},
                                                    {"notlast", Sibling::kNotLast},
                                                    {"before", Sibling::kBefore},
                                                    {"after", Sibling::kAfter}}};
    std::string name;
    if (!ReadName(&name)) return false;
    const auto word =
        std::find_if(kWords.begin(), kWords.end(), [&](const Word& known) { return known.text == name; });
    if (word == kWords.end()) return false;
    step->sibling = word->sibling;
    const bool has_neighbors = step->sibling == Sibling::kBefore || step->sibling == Sibling::kAfter;
    return (!has_neighbors || ReadNames(&step->neighbors)) && Take("}");
  }
  bool ReadTests(Step* step) {
    step->tests.emplace_back();
    do {
      AttributeTest& test = step->tests.back().emplace_back();
      if (!ReadTest(&test)) return false;
      if (Take("|")) {
        step->tests.emplace_back();
      } else if (!Take("&") && !Take(",")) {
        return Take("]");
      }
    } while (true);
  }
  bool ReadTest(AttributeTest* test) {
    static constexpr std::array<std::string_view, 6> kOperations = {"!=", "<=", ">=", "=", "<", ">"};
    if (!ReadName(&test->name)) return false;
    const auto operation = std::find_if(kOperations.begin(), kOperations.end(),
                                        [&](std::string_view known) { return Take(known); });
    if (operation == kOperations.end() || !Take("\"")) return false;
    test->operation = *operation;
    const std::size_t end = text_.find('"', at_);
    if (end == std::string_view::npos) return false;
    test->value.assign(text_.substr(at_, end - at_));
    at_ = end + 1;
    return true;
  }

  std::string_view text_;
  std::size_t at_ = 0;
};

std::optional<FormatContext> FormatContext::Parse(std::string_view text) {
  FormatContext context;
  if (!Parser(text).Run(&context)) return std::nullopt;
  return context;
}

bool FormatContext::Passes(const Document& document, Id id, const AttributeTest& test) {
  const std::vector<std::string_view> values = ValuesOf(document, document.elements[id], test.name);
  if (test.operation == "=") {
    return values.empty() ? test.value.empty()
                          : std::find(values.begin(), values.end(), test.value) != values.end();
  }
  if (test.operation == "!=") {
    return values.empty() ? !test.value.empty()
                          : std::find(values.begin(), values.end(), test.value) == values.end();
  }
  const std::optional<double> wanted = Number(test.value);
  return wanted && std::any_of(values.begin(), values.end(), [&](std::string_view text) {
           const std::optional<double> value = Number(text);
           if (!value) return false;
           if (test.operation == "<") return *value < *wanted;
           if (test.operation == "<=") return *value <= *wanted;
           return test.operation == ">" ? *value > *wanted : *value >= *wanted;
         });
}

bool FormatContext::StandsSo(const Document& document, Id id, const Step& step) {
  const Element& element = document.elements[id];
  const bool first = element.previous == 0;
  const bool last = element.next == 0;
  switch (step.sibling) {
    case Sibling::kAny:
      return true;
    case Sibling::kFirst:
      return first;
    case Sibling::kLast:
      return last;
    case Sibling::kOnly:
      return first && last;
    case Sibling::kMiddle:
      return !first && !last;
    case Sibling::kNotFirst:
      return !first;
    case Sibling::kNotLast:
      return !last;
    case Sibling::kBefore:
      return IsNamed(document, element.next, step.neighbors);
    case Sibling::kAfter:
      return IsNamed(document, element.previous, step.neighbors);
  }
  return false;
}

bool FormatContext::HoldsOf(const Document& document, Id id, const Step& step) {
  if (!step.names.empty() && !IsNamed(document, id, step.names)) return false;
  if (!StandsSo(document, id, step)) return false;
  if (step.tests.empty()) return true;
  return std::any_of(step.tests.begin(), step.tests.end(), [&](const std::vector<AttributeTest>& all) {
    return std::all_of(all.begin(), all.end(),
                       [&](const AttributeTest& test) { return Passes(document, id, test); });
  });
}

bool FormatContext::Holds(const Document& document, Id element) const {
  Id at = about_itself_ ? element : document.elements[element].parent;
  std::size_t step = 0;
  while (step < steps_.size()) {
    const bool floating = steps_[step].any_number;
    if (floating) ++step;
    std::size_t end = step;
    while (end < steps_.size() && !steps_[end].any_number) ++end;
    if (end == step) continue;  // a "*" at the end
    while (true) {
      Id above = at;
      std::size_t next = step;
      while (next < end && above != 0 && HoldsOf(document, above, steps_[next])) {
        above = document.elements[above].parent;
        ++next;
      }
      if (next == end) {
        at = above;
        break;
      }
      if (!floating || at == 0) return false;
      at = document.elements[at].parent;
    }
    step = end;
  }
  return true;
}

}  // namespace qelm::embedded::model
