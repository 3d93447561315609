// The plug-in's four entry points, as its host calls them.
//
// Each catches everything and reports it; the status dialog is then gone and the screen is updated again.
// What the host tells of while a command or another notification is under way is the plug-in's own doing and
// is passed over: a command knows which documents it opens, and an offer to restore each of them would only
// be in its way. Calls from other clients and the request to let go of the main settings are heard at any
// time.
#pragma once

#include "host/interface/entry_points.h"
#include "host/plugin.h"

namespace qelm {

class Entries : public host::EntryPoints {
 public:
  // The plug-in outlives this.
  explicit Entries(Plugin& plugin, StartOptions options = {})
      : plugin_(plugin), options_(std::move(options)) {}

  void Initialize(std::int32_t kind) override;
  void Command(std::int32_t number) override;
  void Notify(std::int32_t notification, host::Id document_or_book, std::string_view text,
              std::int32_t value) override;
  std::int32_t DialogEvent(std::int32_t dialog, std::int32_t item, std::int32_t modifiers) override;

  // Whether the start succeeded, and what the last command came to (as RunCommand returns it), for whoever
  // runs the host.
  bool started() const { return started_; }
  std::int32_t last_result() const { return last_result_; }
  // Whether a command or a notification is under way.
  bool busy() const { return busy_; }

 private:
  template <typename Work>
  void Guard(Work work);

  Plugin& plugin_;
  StartOptions options_;
  bool started_ = false;
  bool busy_ = false;
  std::int32_t last_result_ = 0;
};

}  // namespace qelm
