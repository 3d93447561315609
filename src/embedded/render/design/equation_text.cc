#include "embedded/render/design/equation_text.h"

#include <algorithm>
#include <charconv>
#include <utility>
#include <vector>

namespace qelm::embedded::render {
namespace {

constexpr std::size_t kLongestForm = 4000;

struct Symbol {
  std::string_view name;
  std::string_view text;
};

// Characters with names of more than one letter.
constexpr Symbol kCharacters[] = {
    {"alpha", "α"},   {"beta", "β"},  {"gamma", "γ"},  {"delta", "δ"}, {"epsilon", "ε"}, {"zeta", "ζ"},
    {"eta", "η"},     {"theta", "θ"}, {"iota", "ι"},   {"kappa", "κ"}, {"lambda", "λ"},  {"mu", "μ"},
    {"nu", "ν"},      {"xi", "ξ"},    {"pi", "π"},     {"rho", "ρ"},   {"sigma", "σ"},   {"tau", "τ"},
    {"upsilon", "υ"}, {"phi", "φ"},   {"chi", "χ"},    {"psi", "ψ"},   {"omega", "ω"},   {"Gamma", "Γ"},
    {"Delta", "Δ"},   {"Theta", "Θ"}, {"Lambda", "Λ"}, {"Xi", "Ξ"},    {"Pi", "Π"},      {"Sigma", "Σ"},
    {"Phi", "Φ"},     {"Psi", "Ψ"},   {"Omega", "Ω"},  {"infty", "∞"}, {"degree", "°"},  {"hbar", "ℏ"},
    {"partial", "∂"}, {"nabla", "∇"},
};

// Operators that stand between their arguments.
constexpr Symbol kBetween[] = {
    {"equal", " = "},      {"plus", " + "},   {"minus", " − "},      {"plusminus", " ± "},
    {"cross", " × "},      {"dot", " · "},    {"over", "/"},         {"fract", "/"},
    {"power", "^"},        {"comma", ", "},   {"lessthan", " < "},   {"greaterthan", " > "},
    {"leq", " ≤ "},        {"geq", " ≥ "},    {"notequal", " ≠ "},   {"approx", " ≈ "},
    {"equivalent", " ≡ "}, {"propto", " ∝ "}, {"rightarrow", " → "},
};

// Operators with limits: of what, from where, to where.
constexpr Symbol kWithLimits[] = {{"sum", "∑"}, {"prod", "∏"}, {"int", "∫"}};

template <std::size_t kSize>
std::string_view Find(const Symbol (&symbols)[kSize], std::string_view name) {
  const auto* const found = std::find_if(std::begin(symbols), std::end(symbols),
                                         [&](const Symbol& one) { return one.name == name; });
  return found == std::end(symbols) ? std::string_view() : found->text;
}

struct Call {
  std::string name;
  std::vector<std::string> arguments;
};

std::string Join(const std::vector<std::string>& parts, std::string_view between) {
  std::string text;
  for (const std::string& part : parts) text.append(text.empty() ? "" : between).append(part);
  return text;
}

// An argument of an operator that binds closely.
std::string Closed(const std::string& text) {
  const bool whole = text.find_first_of(" /") == std::string::npos || text.starts_with('(');
  return whole ? text : "(" + text + ")";
}

// "2, 1, base, ...": how many superscripts and subscripts follow the base.
std::string Indexes(const std::vector<std::string>& arguments) {
  if (arguments.size() < 3) return Join(arguments, ", ");
  std::size_t above = 0;
  std::from_chars(arguments[0].data(), arguments[0].data() + arguments[0].size(), above);
  std::string text = Closed(arguments[2]);
  for (std::size_t i = 3; i < arguments.size(); ++i) {
    text += (i - 3 < above ? "^" : "_") + Closed(arguments[i]);
  }
  return text;
}

// Letters that follow each other are mostly one name.
std::string Times(const std::vector<std::string>& factors) {
  std::string text;
  bool letters = true;
  for (const std::string& factor : factors) {
    const bool letter = factor.size() == 1;
    if (!text.empty() && !(letters && letter)) text += ' ';
    letters = letter;
    text += factor;
  }
  return text;
}

std::string Composed(Call&& call) {
  const std::vector<std::string>& arguments = call.arguments;
  if (call.name == "char" || call.name == "string" || call.name == "diacritical") {
    const std::string text = arguments.empty() ? std::string() : arguments.back();
    const std::string_view symbol = call.name == "char" ? Find(kCharacters, text) : std::string_view();
    return symbol.empty() ? text : std::string(symbol);
  }
  if (call.name == "num") return arguments.empty() ? std::string() : arguments.back();
  if (call.name == "prompt") return {};
  if (call.name == "id") return "(" + Join(arguments, ", ") + ")";
  if (call.name == "times") return Times(arguments);
  if (call.name == "indexes") return Indexes(arguments);
  if (call.name == "minus" && arguments.size() == 1) return "−" + Closed(arguments[0]);
  if (call.name == "sqrt" && arguments.size() == 1) return "√(" + arguments[0] + ")";
  if (const std::string_view sign = Find(kWithLimits, call.name); !sign.empty() && !arguments.empty()) {
    std::string limits = Join({arguments.begin() + 1, arguments.end()}, " … ");
    if (!limits.empty()) limits = "[" + limits + "]";
    return std::string(sign) + limits + " " + arguments[0];
  }
  if (const std::string_view between = Find(kBetween, call.name); !between.empty()) {
    if (between.front() == ' ' || between == ", ") return Join(arguments, between);
    std::vector<std::string> closed;
    for (const std::string& argument : arguments) closed.push_back(Closed(argument));
    return Join(closed, between);
  }
  return call.name + "(" + Join(arguments, ", ") + ")";
}

// Takes a string in quotation marks, a remark in `(*` and `*)`, or a word off the front.
std::string TakeWord(std::string_view* rest) {
  std::size_t end = 0;
  std::string word;
  if (rest->starts_with('"')) {
    end = std::min(rest->find('"', 1), rest->size());
    word = rest->substr(1, end - 1);
    end = std::min(end + 1, rest->size());
  } else if (rest->starts_with("(*")) {
    end = std::min(rest->find("*)"), rest->size() - 2) + 2;
  } else {
    end = std::max<std::size_t>(std::min(rest->find_first_of("[],\"( \t\r\n"), rest->size()), 1);
    word = rest->substr(0, end);
  }
  rest->remove_prefix(end);
  return word;
}

}  // namespace

std::string EquationText(std::string_view rest) {
  if (rest.size() > kLongestForm) return {};
  std::vector<Call> open(1);
  std::string word;  // that is not known to be a name or an argument yet
  const auto end_argument = [&] {
    if (!word.empty()) open.back().arguments.push_back(std::exchange(word, {}));
  };
  while (!rest.empty()) {
    const char c = rest.front();
    if (std::string_view("[], \t\r\n").find(c) == std::string_view::npos) {
      word += TakeWord(&rest);
      continue;
    }
    rest.remove_prefix(1);
    if (c == '[') {
      open.push_back({std::exchange(word, {}), {}});
    } else if (c == ',') {
      end_argument();
    } else if (c == ']') {
      end_argument();
      if (open.size() == 1) return {};
      std::string text = Composed(std::move(open.back()));
      open.pop_back();
      open.back().arguments.push_back(std::move(text));
    }
  }
  end_argument();
  return open.size() == 1 ? Join(open.front().arguments, " ") : std::string();
}

}  // namespace qelm::embedded::render
