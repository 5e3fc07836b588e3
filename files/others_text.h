#pragma once

#include <functional>
#include <string>
#include <sys/stat.h>
#include <vector>

#include "files/place.h"
#include "text/file_state.h"

// What a save does to a text that it would destroy although nobody asked for that.
namespace zan {

struct Guard {
  std::function<bool(const FileState&)> may_replace; // a file in that state; none: in any
  std::string copy_name;                // what else is there is kept under this name, or name.1 ...
  std::vector<std::string> directories; // in the first of these where that can be done; first: the file's own
};

// The second name or the copy of a file that is about to be replaced or overwritten. It goes again with this
// object, unless it is told to stay.
class OthersText {
 public:
  OthersText() = default;
  OthersText(const OthersText&) = delete;
  OthersText& operator=(const OthersText&) = delete;
  ~OthersText();

  // For the file that `place` holds, which a rename is to replace: a hard link, or else a private copy. False
  // when it has to be kept and cannot be.
  bool keep_entry(const Place& place, const Guard& guard);
  // For the file open as `target` by the name `path`, which is to be overwritten: a private copy.
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
