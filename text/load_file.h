#pragma once

#include <optional>
#include <string>

#include "host/abort.h"
#include "text/file_state.h"
#include "text/line_store.h"

namespace zan {

struct LoadedText {
  LineStore lines;
  bool final_newline = true; // the file was empty or ended with a line feed
  bool empty_file = false;

  // Lines of the file: an empty one has none, although a text has at least one.
  std::uint64_t line_count() const { return empty_file ? 0 : lines.line_count(); }
};

// The file's lines: a line feed at the very end starts no further line, and one carriage return is removed
// from the end of each line, also of a last one without line feed. Nothing when the file cannot be opened, is
// a directory, cannot be read to its end or does not fit into memory: part of a file never passes for the
// whole. Also nothing once `abort` is set, even while a FIFO waits for its writer. A single pass: the bytes
// are read to where they stay. `found`, unless it is null, becomes the state of the file before it was read.
std::optional<LoadedText> load_file(const std::string& path, FileState* found = nullptr,
                                    Abort& abort = kNeverAborted);

// The file's bytes as they are. Nothing as above.
std::optional<std::string> read_whole_file(const std::string& path, Abort& abort = kNeverAborted);

} // namespace zan
