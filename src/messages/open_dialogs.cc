#include "messages/open_dialogs.h"

namespace qelm::messages {
namespace {

// Takes the entry of a dialog away on every way out.
class Entry {
 public:
  Entry(std::vector<std::pair<std::int32_t, DialogHandler>>& open, std::int32_t number, DialogHandler handler)
      : open_(open) {
    open_.emplace_back(number, std::move(handler));
  }
  ~Entry() { open_.pop_back(); }
  Entry(const Entry&) = delete;
  Entry& operator=(const Entry&) = delete;

 private:
  std::vector<std::pair<std::int32_t, DialogHandler>>& open_;
};

}  // namespace

std::int32_t OpenDialogs::Run(host::Dialogs& dialogs, host::Id dialog, std::int32_t number,
                              DialogHandler handler) {
  const Entry entry(open_, number, std::move(handler));
  return dialogs.RunDialog(dialog, number);
}

std::int32_t OpenDialogs::Route(std::int32_t number, std::int32_t item) const {
  for (auto entry = open_.rbegin(); entry != open_.rend(); ++entry) {
    if (entry->first != number) continue;
    // The handler may open a dialog of its own, which moves the entries.
    const DialogHandler handler = entry->second;
    return handler ? handler(item) : 0;
  }
  return 0;
}

}  // namespace qelm::messages
