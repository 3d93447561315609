// The program, with a host of which one operation fails:
//
//   QELM_FAULT_CALL="Documents::Save 2"   the second call of it fails
//   QELM_FAULT_CALLS=FILE                 at the end a line "OPERATION COUNT" is written there for each
//                                         operation that was called
#include "support/failing_host.h"

#include <cstdlib>
#include <fstream>
#include <optional>

#include "cli/cli.h"

namespace {

std::string Variable(const char* name) {
  const char* value = std::getenv(name);
  return value == nullptr ? std::string() : value;
}

}  // namespace

int main(int argc, char** argv) {
  std::optional<qelm::testing::FailingHost> failing;
  qelm::cli::Environment environment = qelm::cli::ProcessEnvironment();
  environment.version = QELM_VERSION;
  environment.around_host = [&failing](qelm::host::Host& host) -> qelm::host::Host& {
    failing.emplace(host);
    const std::string wanted = Variable("QELM_FAULT_CALL");
    const std::size_t blank = wanted.find(' ');
    if (blank != std::string::npos) {
      failing->FailAt(wanted.substr(0, blank), std::strtoll(wanted.c_str() + blank, nullptr, 10));
    }
    return failing->roles();
  };
  const int status = qelm::cli::Main({argv + 1, argv + argc}, environment);
  if (const std::string path = Variable("QELM_FAULT_CALLS"); failing && !path.empty()) {
    std::ofstream file(path);
    for (const auto& [operation, count] : failing->calls()) file << operation << ' ' << count << '\n';
  }
  return status;
}
