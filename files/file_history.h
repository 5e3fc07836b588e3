#pragma once

#include <map>

#include "text/file_state.h"

namespace zan {

// The states of files that this session has read or written, each with the origin of the text it belongs to.
// A text may take the place of a file in a state of its own origin: whoever undoes a change knows what was
// saved before. Any other state is a text that a save would destroy.
class FileHistory {
 public:
  // The origin for a text that has just been loaded: the one given, or that of an earlier text of the same
  // file, by whatever name, when it is still as this session read or left it.
  OriginRef loaded(const OriginRef& fresh);
  void wrote(const FileState& state, const OriginRef& origin);
  bool belongs_to(const FileState& state, const OriginRef& origin) const;

 private:
  std::map<FileState, OriginRef> origins_;
};

} // namespace zan
