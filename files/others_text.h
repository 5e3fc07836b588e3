#pragma once

#include <functional>
#include <string>
#include <sys/stat.h>
#include <vector>

#include "files/place.h"
#include "text/file_state.h"

// Keeps a text of another program that a save would destroy.
namespace zan {

struct Guard {
  std::function<bool(const FileState&)> may_replace; // a file in that state; empty: in any state
  std::string copy_name;                // the text of any other file is kept as this name, or name.1 ...
  std::vector<std::string> directories; // in the first of these where that succeeds; first: the file's own
};

// A hard link to, or a copy of, a file that is about to be replaced or overwritten. It is removed with this
// object unless it is to stay.
class OthersText {
 public:
  OthersText() = default;
  OthersText(const OthersText&) = delete;
  OthersText& operator=(const OthersText&) = delete;
  ~OthersText();

  // Makes a hard link to the file at `place`, which a rename will replace, or else a private copy. False when
  // the file must be kept and cannot be.
  bool keep_entry(const Place& place, const Guard& guard);
  // Makes a private copy of the file open as `target` by the name `path`, which will be overwritten.
  bool keep_bytes(int target, const std::string& path, const Guard& guard);

  void stay(bool stays) { stays_ = stays; }
  std::string path() const { return stays_ ? path_ : std::string(); } // of what stays; "": nothing

 private:
  bool link_into(const std::string& directory, const std::string& name, const Place& from,
                 const struct stat& file);
  bool copy_into(const std::string& directory, const std::string& name, UniqueFd from,
                 const struct stat& file);

  std::string path_; // empty: there is nothing to keep
  bool stays_ = false;
};

} // namespace zan
