#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "files/place.h"

// The files in which sessions record their texts. Their owner alone may read them; as long as a session lives
// it holds a lock on its own.
namespace zan {

// The names of a session's file: beside the edited file, and where that cannot be, at home, where a digest
// stands for the whole path. Any number of sessions may edit one file.
std::string absolute_path(const std::string& path); // by its real directory; as it is where there is none
std::string session_name_beside(const std::string& path, long process);
std::string session_name_at_home(const std::string& path, long process);

// A file that is being written. It is removed with this object, unless it has taken its name; then remove()
// does that.
class SessionFile {
 public:
  // An empty, locked file in the directory under a temporary name; nothing when that cannot be.
  static std::optional<SessionFile> create(const std::string& directory, const std::string& name);

  bool append(std::string_view bytes);
  std::uint64_t size() const { return size_; } // bytes
  bool take_name();                            // which must be free, or a number is added
  bool take_place_of(SessionFile& older);      // whose name it takes if it can; then that file is gone
  bool sync() const;                           // the bytes and the name; may be called by another thread
  void remove();

 private:
  SessionFile(UniqueFd directory, TemporaryFile file, std::string name)
      : directory_(std::move(directory)), file_(std::move(file)), name_(std::move(name)) {}

  UniqueFd directory_;
  TemporaryFile file_;
  std::string name_;
  bool named_ = false;
  std::uint64_t size_ = 0;
};

// A file that another session has left, or is writing.
struct FoundSession {
  UniqueFd directory;
  std::string name;
  UniqueFd file;       // locked; none: the session that writes it lives
  std::string process; // in digits
};

// Those on the file `path`, beside it and at home. Files that are not the user's own are not looked at.
std::vector<FoundSession> find_sessions(const std::string& path);

} // namespace zan
