#include "recovery/restore.h"

#include <algorithm>
#include <csignal>
#include <map>
#include <unistd.h>
#include <utility>

#include "files/stat.h"
#include "recovery/entries.h"
#include "recovery/session_file.h"
#include "recovery/session_log.h"
#include "recovery/text_reader.h"
#include "text/load_file.h"

namespace zan {

namespace {

// A base as a session's file describes it.
struct Base {
  std::string path;
  FileState state;
  std::uint64_t bytes = 0;
  std::uint64_t lines = 0;
  std::uint64_t digest = 0;
  std::optional<LineStore> text; // once loaded; nothing: it is not what it was
};

using References = std::map<std::string, TextReader::Reference>; // by the buffers' names

class SessionReader {
 public:
  // Reads as far as the entries make sense; a state that is not read whole is not taken.
  void read(std::string_view bytes) {
    RecordStream records(bytes);
    while (const auto record = records.next()) {
      EntryReader entry(*record);
      while (!entry.at_end())
        if (!read_entry(entry)) return;
    }
  }

  std::optional<RecordedSession> session(const NamedText& loaded) {
    if (!state_) return std::nullopt;
    RecordedSession session;
    session.started = started_;
    std::vector<const LineStore*> texts;
    for (Base& base : bases_) {
      if (is_there(base)) base.text = text_of(base, loaded);
      texts.push_back(base.text ? &*base.text : nullptr);
    }
    TextBuilder builder(reader_, texts);
    for (const auto& [name, reference] : *state_) {
      auto text = builder.text_of(reference);
      session.failed = session.failed || !text;
      if (text) session.texts.push_back({name, std::move(*text)});
    }
    for (const std::uint64_t base : builder.missing_bases())
      session.lost_files.push_back(bases_[static_cast<std::size_t>(base)].path);
    return session;
  }

 private:
  bool read_entry(EntryReader& entry) {
    switch (const char tag = entry.tag()) {
    case 'h':
      return read_head(entry);
    case 'f':
      return read_base(entry);
    case 's':
      return read_state(entry);
    default:
      return reader_.read(tag, entry);
    }
  }

  bool read_head(EntryReader& entry) {
    entry.number();
    started_ = entry.number();
    entry.text();
    return !entry.failed();
  }

  bool read_base(EntryReader& entry) {
    Base base;
    base.path = entry.text();
    base.state.kind = FileState::Kind::present;
    base.state.inode = entry.number();
    base.state.device = entry.number();
    base.state.size = static_cast<std::int64_t>(entry.number());
    base.state.seconds = static_cast<std::int64_t>(entry.number());
    base.state.nanoseconds = static_cast<std::int64_t>(entry.number());
    base.bytes = entry.number();
    base.lines = entry.number();
    base.digest = entry.number();
    bases_.push_back(std::move(base));
    return !entry.failed();
  }

  bool read_state(EntryReader& entry) {
    entry.number();
    References changed = state_.value_or(References());
    for (std::uint64_t count = entry.number(); count > 0 && !entry.failed(); --count) {
      const std::string name(entry.text());
      if (entry.number() == 0) changed.erase(name);
      else changed[name] = reader_.read_reference(entry);
    }
    if (!entry.failed()) state_ = std::move(changed);
    return !entry.failed();
  }

  // The device's number may be another one after the machine has started again.
  static bool is_there(const Base& base) {
    struct stat file {};
    if (!is_usable_path(base.path) || zan_stat(base.path.c_str(), &file) != 0 || !S_ISREG(file.st_mode))
      return false;
    FileState found = state_of(file);
    found.device = base.state.device;
    return found == base.state;
  }

  static bool is_text_of(const Base& base, const LineStore& text) {
    return text.byte_count() == base.bytes && text.line_count() == base.lines &&
           digest_of(text) == base.digest;
  }

  static std::optional<LineStore> text_of(const Base& base, const NamedText& loaded) {
    if (base.path == loaded.name && is_text_of(base, loaded.text)) return loaded.text;
    auto found = load_file(base.path);
    return found && is_text_of(base, found->lines) ? std::optional(std::move(found->lines)) : std::nullopt;
  }

  std::uint64_t started_ = 0;
  std::vector<Base> bases_;
  TextReader reader_;
  std::optional<References> state_;
};

// Nothing when it cannot be read.
std::optional<std::string> read_all(int descriptor) {
  struct stat file {};
  std::string bytes;
  if (::fstat(descriptor, &file) != 0 || !std::in_range<std::size_t>(file.st_size)) return std::nullopt;
  bytes.resize(static_cast<std::size_t>(file.st_size));
  std::size_t used = 0;
  while (used < bytes.size()) {
    const ssize_t count = retry([&] {
      return ::pread(descriptor, bytes.data() + used, bytes.size() - used, static_cast<off_t>(used));
    });
    if (count < 0) return std::nullopt;
    if (count == 0) break;
    used += static_cast<std::size_t>(count);
  }
  bytes.resize(used);
  return bytes;
}

SessionReport restore(const FoundSession& found, const NamedText& on_disk, const CopyText& write_copy) {
  SessionReport report;
  report.process = found.process;
  const auto bytes = read_all(found.file.get());
  const bool understood =
      bytes && kRecoveryFileStart.starts_with(bytes->substr(0, kRecoveryFileStart.size()));
  if (!understood) return report; // of another version, or nobody's: it stays
  if (const auto session = read_session(*bytes, on_disk)) {
    report.started = session->started;
    report.lost_files = session->lost_files;
    report.damaged = session->failed;
    for (const auto& text : session->texts) {
      if (text.text.empty() || (text.name == "MAIN" && text.text == on_disk.text)) continue;
      auto copy = write_copy(text.name, text.text);
      if (copy) report.copies.push_back(std::move(*copy));
      else report.failed = true;
    }
  }
  if (!report.failed) {
    ::unlinkat(found.directory.get(), found.name.c_str(), 0);
    sync_directory(found.directory.get());
  }
  return report;
}

// The lock may be this session's, on a file of the text that it edited before; or somebody's who restores a
// dead session's file just now.
bool is_another_session(const std::string& process) {
  const long number = std::strtol(process.c_str(), nullptr, 10);
  return number > 0 && number != ::getpid() && (::kill(static_cast<pid_t>(number), 0) == 0 || errno != ESRCH);
}

} // namespace

std::optional<RecordedSession> read_session(std::string_view bytes, const NamedText& loaded) {
  SessionReader reader;
  reader.read(bytes);
  return reader.session(loaded);
}

std::vector<SessionReport> restore_sessions(const std::string& path, const LineStore& on_disk,
                                            const CopyText& write_copy) {
  std::vector<SessionReport> reports;
  for (const FoundSession& found : find_sessions(path)) {
    SessionReport report;
    report.process = found.process;
    report.lives = !found.file;
    if (found.file) report = restore(found, {absolute_path(path), on_disk}, write_copy);
    else if (!is_another_session(found.process)) continue;
    if (report.lives || report.failed || !report.copies.empty() || report.damaged ||
        !report.lost_files.empty())
      reports.push_back(std::move(report));
  }
  return reports;
}

} // namespace zan
