#include "recovery/session_log.h"

#include <algorithm>
#include <cstdlib>
#include <ctime>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

#include "files/private_copy.h"
#include "files/stat.h"

namespace zan {

namespace {

constexpr std::size_t kStep = 256 * 1024;        // bytes that are written at once
constexpr std::uint64_t kLongText = 1024 * 1024; // bytes from which on a file is referred to
constexpr std::uint64_t kSmallFile = 64 * 1024;  // bytes up to which a file may hold anything out of date
constexpr std::uint64_t kSamples = 64;
constexpr std::uint64_t kSample = 4096; // bytes

std::uint64_t now() { return static_cast<std::uint64_t>(std::time(nullptr)); }

bool is_in_state(const std::string& path, const FileState& state) {
  struct stat file {};
  return zan_stat(path.c_str(), &file) == 0 && state_of(file) == state;
}

std::optional<SessionFile> create_file_for(const std::string& path, bool at_home) {
  const long process = ::getpid();
  if (!at_home) return SessionFile::create(directory_of(path), session_name_beside(path, process));
  const char* home = std::getenv("HOME");
  return home != nullptr ? SessionFile::create(home, session_name_at_home(path, process)) : std::nullopt;
}

bool same_text(const LineStore& a, const LineStore& b) { return a.tree() == b.tree(); }

} // namespace

std::uint64_t digest_of(const LineStore& text) {
  const std::uint64_t size = text.byte_count();
  const std::uint64_t length = std::min(size, kSample);
  std::uint64_t digest = size;
  for (std::uint64_t i = 0; i < kSamples; ++i) {
    const std::uint64_t at = (size - length) / (kSamples - 1) * i;
    const TextView sample = text.slice(at, at + length);
    digest = checksum(sample, digest);
  }
  return digest;
}

void SessionLog::set_path(std::string edited) {
  path_ = std::move(edited);
  at_home_ = false;
  bases_.clear();
  started_ = now();
  anew_ = true;
}

void SessionLog::add_base(RecordBase base) {
  if (base.text.byte_count() <= kLongText || base.state.kind != FileState::Kind::present) return;
  base.path = absolute_path(base.path);
  const auto same_path = [&](const RecordBase& other) { return other.path == base.path; };
  if (std::erase_if(bases_, same_path) > 0) anew_ = true; // the bases in the file are counted
  bases_.push_back(std::move(base));
}

bool SessionLog::bases_hold() const {
  return std::ranges::all_of(bases_,
                             [](const RecordBase& base) { return is_in_state(base.path, base.state); });
}

bool SessionLog::needs_record() const {
  if (texts_.size() != recorded_.size()) return true;
  return !std::ranges::all_of(texts_, [this](const NamedText& text) {
    const auto known = recorded_.find(text.name);
    return known != recorded_.end() && same_text(known->second, text.text);
  });
}

void SessionLog::record(std::vector<NamedText> texts) {
  texts_ = std::move(texts);
  next_text_ = 0;
  anew_ = anew_ || !file_ || file_->size() > 2 * first_size_ + kSmallFile || !bases_hold();
  if (anew_ || needs_record()) stage_ = Stage::writing;
}

bool SessionLog::go_on() {
  if (advance()) return true;
  sync_.finish();
  drop_incomplete_file();
  anew_ = true;
  if (std::exchange(at_home_, true)) {
    stage_ = Stage::complete;
    return false;
  }
  next_text_ = 0;
  stage_ = Stage::writing;
  return true;
}

// A file without a whole state is of no use, and the one that it was to replace comes back.
void SessionLog::drop_incomplete_file() {
  if (!file_ || first_size_ > 0) return;
  file_->remove();
  file_.reset();
  if (!older_) return;
  file_.emplace(std::move(*older_));
  older_.reset();
  first_size_ = file_->size();
}

bool SessionLog::advance() {
  if (stage_ == Stage::syncing) return !sync_.done() || settle();
  if (stage_ == Stage::complete) return true;
  EntryWriter entries;
  if (anew_ && !open_file(entries)) return false;
  put_bases(entries);
  for (; next_text_ < texts_.size(); ++next_text_)
    if (!recorder_->record(texts_[next_text_].text, kStep, entries))
      return recorder_->has_numbers_left() && write(entries);
  put_state(entries);
  if (!write(entries)) return false;
  stage_ = Stage::syncing;
  sync_.start([this] { return file_->sync(); });
  return true;
}

bool SessionLog::open_file(EntryWriter& entries) {
  drop_incomplete_file();
  if (file_) older_.emplace(std::move(*file_));
  file_.reset();
  first_size_ = 0;
  auto fresh = create_file_for(path_, at_home_);
  if (!fresh) return false;
  file_.emplace(std::move(*fresh));
  if (!older_ && !file_->take_name()) return false;
  if (recorder_) numbers_ = recorder_->next();
  recorder_.emplace(numbers_);
  recorded_.clear();
  next_text_ = 0;
  std::erase_if(bases_, [](const RecordBase& base) { return !is_in_state(base.path, base.state); });
  bases_put_ = 0;
  anew_ = false;
  entries.tag('h');
  entries.number(static_cast<std::uint64_t>(::getpid()));
  entries.number(started_);
  entries.text(absolute_path(path_));
  return file_->append(kRecoveryFileStart);
}

void SessionLog::put_bases(EntryWriter& entries) {
  for (; bases_put_ < bases_.size(); ++bases_put_) {
    const RecordBase& base = bases_[bases_put_];
    recorder_->add_base(static_cast<std::uint32_t>(bases_put_), base.text);
    entries.tag('f');
    entries.text(base.path);
    for (const std::uint64_t number :
         {base.state.inode, base.state.device, static_cast<std::uint64_t>(base.state.size),
          static_cast<std::uint64_t>(base.state.seconds), static_cast<std::uint64_t>(base.state.nanoseconds),
          base.text.byte_count(), base.text.line_count(), digest_of(base.text)})
      entries.number(number);
  }
}

void SessionLog::put_state(EntryWriter& entries) {
  EntryWriter changes;
  std::uint64_t count = 0;
  std::map<std::string, LineStore> now_recorded;
  for (const NamedText& text : texts_) {
    now_recorded[text.name] = text.text;
    const auto known = recorded_.find(text.name);
    if (known != recorded_.end() && same_text(known->second, text.text)) continue;
    changes.text(text.name);
    changes.number(1);
    recorder_->refer_to(text.text, changes);
    ++count;
  }
  for (const auto& [name, text] : recorded_) {
    if (now_recorded.contains(name)) continue;
    changes.text(name);
    changes.number(0);
    ++count;
  }
  recorded_ = std::move(now_recorded);
  entries.tag('s');
  entries.number(now());
  entries.number(count);
  entries.raw(changes.bytes());
}

bool SessionLog::write(const EntryWriter& entries) { return file_->append(record_of(entries.bytes())); }

// What was written is on the disk.
bool SessionLog::settle() {
  if (!sync_.finish()) return false;
  if (older_ && !file_->take_place_of(*older_)) return false;
  older_.reset();
  if (first_size_ == 0) first_size_ = file_->size();
  stage_ = Stage::complete;
  texts_.clear();
  return true;
}

void SessionLog::remove() {
  sync_.finish();
  if (file_) file_->remove();
  if (older_) older_->remove();
  file_.reset();
  older_.reset();
  recorded_.clear();
  texts_.clear();
  stage_ = Stage::complete;
  anew_ = true;
}

} // namespace zan
