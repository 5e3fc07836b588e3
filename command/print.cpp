#include "app/editor.h"

#include <cstdlib>
#include <stdlib.h>
#include <unistd.h>

#include "files/block_writer.h"
#include "text/bytes.h"

namespace {

// A file of its owner's only, which goes with the object.
class TemporaryPrintFile {
 public:
  TemporaryPrintFile() : descriptor_(mkstemp(path_)) {}
  ~TemporaryPrintFile() {
    if (descriptor_ >= 0) ::close(descriptor_);
    if (exists_) ::unlink(path_);
  }
  TemporaryPrintFile(const TemporaryPrintFile&) = delete;
  TemporaryPrintFile& operator=(const TemporaryPrintFile&) = delete;

  bool exists() const { return exists_; }
  std::string path() const { return path_; }

  // The lines, if any, each with a line feed, as stored. The file is closed then.
  bool write(const std::optional<zan::LineStore>& lines) {
    const bool written = !lines || write_lines(*lines);
    const bool closed = ::close(descriptor_) == 0;
    descriptor_ = -1;
    return written && closed;
  }

 private:
  bool write_lines(const zan::LineStore& lines) const {
    zan::PieceWalker walker(lines, 0, lines.byte_count());
    bool written = true;
    for (zan::Chunk chunk; written && walker.next(chunk);)
      written = zan::write_fully(descriptor_, chunk.bytes);
    return written && zan::write_fully(descriptor_, "\n");
  }

  char path_[24] = "/tmp/zan_print_XXXXXX";
  int descriptor_;
  bool exists_ = descriptor_ >= 0;
};

} // namespace

void Editor::print_command(const std::string& arg, bool verbose) {
  TemporaryPrintFile file;
  if (!file.exists()) {
    say(verbose, "?Cannot create temp file\n");
    return;
  }
  const std::string range_text = trim(arg);
  LineRange range{0, current.line_count() - 1};
  if (!range_text.empty()) {
    const auto named = parse_line_range(range_text);
    if (!named) {
      say(verbose, "?Invalid range: ", range_text, "\n");
      return;
    }
    range = *named;
  }
  const auto lines = current.lines_in_range(range.first, range.last);
  if (!file.write(lines)) {
    say(verbose, "?Cannot open temp file for print\n");
    return;
  }
  console.flush();
  console.release_input();
  const std::string path = file.path();
  const std::string command = "lpr " + path + " 2>/dev/null || lp " + path + " 2>/dev/null";
  say(verbose, std::system(command.c_str()) == 0 ? "Sent to printer\n" : "?Print failed\n");
}
