#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "host/background_sync.h"
#include "recovery/named_text.h"
#include "recovery/session_file.h"
#include "recovery/text_recorder.h"
#include "text/file_state.h"
#include "text/line_store.h"

namespace zan {

// A text that a file on the disk holds, so that it need not be recorded: whoever restores loads it from
// there.
struct RecordBase {
  std::string path;
  FileState state; // of the file that has the text
  LineStore text;  // as loading the file gives it
};

std::uint64_t digest_of(const LineStore& text); // of samples, spread over a long text

// Records the texts of a session, so that they outlive it. What is recorded at last is on the disk once it
// has been synced; each call takes a moment at most, whatever there is to write.
//
// docs/recovery.md describes the file.
class SessionLog {
 public:
  SessionLog() = default;
  SessionLog(const SessionLog&) = delete;
  SessionLog& operator=(const SessionLog&) = delete;

  // Files are named for it, and its session is said to begin now. There are no bases yet.
  void set_path(std::string edited);
  // A file was read or written; what it was before is no base any more. Short texts are no bases: they are
  // recorded, and need nothing to be restored.
  void add_base(RecordBase base);
  // Everything begins anew, in another file that takes the place of the one there is, if any: the bases may
  // have changed.
  void begin_anew() { anew_ = true; }

  // Begins to record a state of the texts, which is one step after the other done by go_on(). Not before the
  // last one is_complete().
  void record(std::vector<NamedText> texts);
  bool is_complete() const { return stage_ == Stage::complete; } // and on the disk
  bool waits_for_disk() const { return stage_ == Stage::syncing && !sync_.done(); }
  // False when neither beside the edited file nor at home a file can be written. The last complete one stays.
  bool go_on();

  bool has_file() const { return file_.has_value(); }
  void remove(); // waits for the disk

 private:
  enum class Stage { complete, writing, syncing };

  bool needs_record() const;
  bool advance();
  bool open_file(EntryWriter& entries);
  bool bases_hold() const;
  void put_bases(EntryWriter& entries);
  void put_state(EntryWriter& entries);
  bool write(const EntryWriter& entries);
  bool settle();
  void drop_incomplete_file();

  std::string path_;
  std::uint64_t started_ = 0; // seconds since 1970
  std::vector<RecordBase> bases_;
  std::size_t bases_put_ = 0; // in the file
  bool anew_ = true;
  bool at_home_ = false; // there was no writing beside the edited file
  Stage stage_ = Stage::complete;
  std::vector<NamedText> texts_; // to be recorded
  std::size_t next_text_ = 0;
  std::map<std::string, LineStore> recorded_; // what the file says

  TextRecorder::Numbers numbers_;
  std::optional<TextRecorder> recorder_;
  std::optional<SessionFile> file_;
  std::optional<SessionFile> older_; // goes when `file_` is complete
  std::uint64_t first_size_ = 0;     // of the file with its first state, in bytes
  BackgroundSync sync_;
};

} // namespace zan
