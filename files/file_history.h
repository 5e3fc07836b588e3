#pragma once

#include <map>

#include "text/file_state.h"

namespace zan {

// The states of files that this session has read or written, each with the origin of the text in it. A text
// may replace a file whose state has the same origin: the user has had that text in the editor. A file in any
// other state holds a text that a save would destroy.
class FileHistory {
 public:
  // The origin for a text that has just been loaded: `fresh`, or that of an earlier text of the same file, by
  // whatever name, when it is still as this session read or wrote it.
  OriginRef loaded(const OriginRef& fresh);
  void wrote(const FileState& state, const OriginRef& origin);
  bool belongs_to(const FileState& state, const OriginRef& origin) const;

 private:
  std::map<FileState, OriginRef> origins_;
};

} // namespace zan
