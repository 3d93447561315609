// xpath_qelm FILE SECONDS: evaluates expressions with QELM's engine, over the embedded host and its host
// interface; see xpath_worker.h.
#include <cstdio>
#include <iostream>
#include <limits>
#include <vector>

#include "embedded/adapter/clients.h"
#include "embedded/adapter/dialogs.h"
#include "embedded/adapter/embedded_host.h"
#include "embedded/adapter/events.h"
#include "embedded/adapter/platform.h"
#include "embedded/adapter/user_interface.h"
#include "messages/messenger.h"
#include "xpath/engine.h"
#include "xpath_worker.h"

namespace {

namespace adapter = qelm::embedded::adapter;
namespace host = qelm::host;
namespace xpath = qelm::xpath;

class QelmWorker : public qelm::bench::XPathWorker {
 public:
  bool Load(const char* path) override {
    host::OpenStatus status{};
    document_ = host_.roles().documents.Open(path, {}, &status);
    if (document_ == host::kNone) {
      std::cerr << "xpath_qelm: " << host_.roles().documents.LastError() << '\n';
    }
    xpath::bw_XPathEngineInit(engine_, 0, 0, std::numeric_limits<std::int32_t>::max());
    return document_ != host::kNone;
  }

  // Ids are in document order, and text nodes have one too.
  void Number() override {
    host::Elements& elements = host_.roles().elements;
    numbers_.resize(elements.IdLimit(document_));
    std::uint64_t number = 0;
    for (host::Id id = 1; id < numbers_.size(); ++id) {
      if (elements.Definition(document_, id) != host::kNone) numbers_[id] = ++number;
    }
  }

  bool Evaluate(const std::string& expression) override {
    bool complete = false;
    result_ = xpath::MatchAllFromText(engine_, document_, host::kNone, expression, 0, 0, &complete);
    return complete && xpath::LastParseError(engine_).code == 0;
  }

  std::uint64_t Count() override { return result_.size(); }
  std::uint64_t Nodes() override {
    std::uint64_t sum = 0;
    host::AttributeBuffer buffer;
    for (const xpath::Match& match : result_) {
      std::string_view attribute;
      if (match.attribute >= 0) {
        host_.roles().definitions.ReadAttributes(document_, match.element, &buffer);
        attribute = buffer.attributes[static_cast<std::size_t>(match.attribute)].name;
      }
      sum += qelm::bench::NodeKey(numbers_[match.element], attribute);
    }
    return sum;
  }

 private:
  adapter::EventLog events_;
  adapter::ScriptedUserInterface user_{{.in = std::cin, .messages = std::cerr, .events = events_}};
  adapter::NoDialogs dialogs_{events_};
  adapter::RecordedClients clients_{events_};
  adapter::PosixPlatform platform_;
  adapter::EmbeddedHost host_{{}, user_, dialogs_, clients_, platform_};
  qelm::messages::Messenger messenger_{user_, platform_};
  xpath::Engine engine_{host_.roles(), messenger_};
  host::Id document_ = host::kNone;
  std::vector<std::uint64_t> numbers_;  // of elements, by id
  xpath::MatchList result_;
};

}  // namespace

int main(int argc, char** argv) {
  QelmWorker worker;
  return qelm::bench::Serve(worker, argc, argv);
}
