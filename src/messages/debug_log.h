// The debug log: a text file in which a support person can follow what a filter run did to a document.
//
// It is written in one of the debug modes only. Each entry is put at the end of the file in one piece, and
// the file is closed again, so that after a crash the last entry is the last thing that was begun. An entry
// looks like this (every line end is CR LF):
//
//
//   ** EVENT/ACTION: Preparing to delete
//   TIMESTAMP: 1735689600
//
//   DOC: 2
//   FILEPATH: /manuals/pump/operation.fm
//
//   OBJECT TYPE: Element
//   ELEMENT TAG: Section
//   ELEMENT UID: 999321
//   ELEMENT TEXT: Before you start the pump
//
//   ----------------------------------------
//
// The log is a help and never a hindrance: what cannot be written is left out in silence.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "host/interface/host.h"

namespace qelm::messages {

// As the local settings number them.
enum DebugMode : std::int32_t {
  kDebugOff = 0,
  kDebugPrompts = 1,
  kDebugWriteLog = 3,
};

class DebugLog {
 public:
  // When the entries are longer than this in bytes, a last one says so and no more are written.
  static constexpr std::size_t kLongest = std::size_t{64} << 20U;

  struct Options {
    std::string product;
    std::int32_t mode = kDebugOff;
    std::string folder;      // empty: the plug-in's
    std::string file_name;   // empty: the product's name and "_debug_log.txt"
    std::int32_t limit = 0;  // kept with the rest; nothing is limited by it
  };

  // The host outlives the log.
  explicit DebugLog(host::Host& host) : host_(host) {}

  // Opens the log, in place of the one that was open; the first call does nothing when its mode is off. In
  // the mode that writes, a file of before is deleted and a header begins the new one.
  void Open(const Options& options);

  // Whether events are written.
  bool Writes() const { return open_ && options_.mode == kDebugWriteLog && written_ <= kLongest; }

  // Writes an entry about an event, the document that it happened in (0: none) and the object that it is
  // about (0: none). Nothing when the log does not write.
  void Event(host::Id document, host::Id object, std::string_view event);

  // Tells the user by the host's own alert which debug mode is on.
  void ShowMode() const;

  // Where the log is; empty before the first opening.
  const std::string& Path() const { return path_; }
  const Options& options() const { return options_; }

 private:
  void AppendDocument(host::Id document, std::string* entry);
  void AppendObject(host::Id document, host::Id object, std::string* entry);

  host::Host& host_;
  Options options_;
  std::string path_;
  bool open_ = false;
  std::size_t written_ = 0;  // bytes of entries
};

}  // namespace qelm::messages
