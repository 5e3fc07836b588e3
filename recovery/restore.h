#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "recovery/named_text.h"

namespace zan {

// What the file of a session says.
struct RecordedSession {
  std::uint64_t started = 0; // seconds since 1970
  std::vector<NamedText> texts;
  std::vector<std::string> lost_files; // not as they were: what stood in them is missing in the texts
  bool failed = false;                 // some text cannot be made of what the file says
};

// The texts as they were recorded last in a file that holds `bytes`. Nothing where no state is whole: the
// file is torn, damaged, or something else.
// `loaded` is a file's text, by its absolute path, that need not be loaded again.
std::optional<RecordedSession> read_session(std::string_view bytes, const NamedText& loaded = {});

struct SessionReport {
  std::string process;             // in digits, as the file's name tells it
  bool lives = false;              // the session edits the file now; nothing else is known of it
  std::uint64_t started = 0;       // seconds since 1970
  std::vector<std::string> copies; // paths, of what was restored
  std::vector<std::string> lost_files;
  bool failed = false;  // some copy could not be written: the session's file stays
  bool damaged = false; // some text cannot be made of what the file says
};

// Restores the sessions on the file `path` that have ended early, and removes their files. `write_copy`
// writes a text and returns its path; nothing when it cannot. A buffer MAIN that is `on_disk` needs none.
// Sessions of which nothing is restored are not reported.
using CopyText = std::function<std::optional<std::string>(std::string_view buffer, const LineStore& text)>;
std::vector<SessionReport> restore_sessions(const std::string& path, const LineStore& on_disk,
                                            const CopyText& write_copy);

} // namespace zan
