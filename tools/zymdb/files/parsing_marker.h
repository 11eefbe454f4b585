// The marker file that keeps readers away from the settings while they are being rewritten.
#ifndef ZYMDB_TOOL_FILES_PARSING_MARKER_H
#define ZYMDB_TOOL_FILES_PARSING_MARKER_H

#include <csignal>

#include "records/pci_settings.h"

namespace zymdb::tool {

using records::kParsingMarker;

// Stands while the object lives. The signals that end a program from outside (SIGINT, SIGTERM, SIGHUP) take
// the marker away first; SIGKILL cannot. One at a time.
class ParsingMarker {
 public:
  // Throws Failure when the marker stands already, or cannot be set.
  ParsingMarker();
  ~ParsingMarker();
  ParsingMarker(const ParsingMarker&) = delete;
  ParsingMarker& operator=(const ParsingMarker&) = delete;

 private:
  static constexpr int kSignals[] = {SIGINT, SIGTERM, SIGHUP};

  void handle_signals();

  struct sigaction previous_[3] = {};
};

}  // namespace zymdb::tool

#endif
