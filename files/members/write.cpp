#include "app/editor.h"

#include <cerrno>

#include "command/write_arguments.h"
#include "files/output_file.h"
#include "files/records.h"
#include "files/rescue_copy.h"
#include "files/stat.h"
#include "files/version_name.h"

namespace {

zan::RowStretch stretch_of(const Editor::LineRange& range) {
  return {range.first, range.last >= range.first ? range.last - range.first + 1 : 0};
}

// Do both names lead to one file?
bool is_same_file(const std::string& a, const std::string& b) {
  struct stat of_a {};
  struct stat of_b {};
  return zan::is_usable_path(a) && zan::is_usable_path(b) && zan_stat(a.c_str(), &of_a) == 0 &&
         zan_stat(b.c_str(), &of_b) == 0 && zan::same_file(of_a, of_b);
}

zan::LineStore rows_of(const zan::LineStore& text, const zan::RowStretch& rows) {
  if (rows.count == 0) return {};
  if (rows.first == 0 && rows.count >= text.line_count()) return text;
  return text.substore(text.line_start(rows.first), text.line_end(rows.first + rows.count - 1));
}

} // namespace

void Editor::write_command(const std::string& arg, bool verbose) {
  const zan::WriteArguments wanted = zan::parse_write_arguments(arg);
  if (wanted.file.empty()) {
    report(verbose, "?WRITE requires a file name");
    return;
  }
  const bool other = !wanted.buffer.empty();
  // The current buffer, written by its name, stays modified: the flag of its entry is cleared.
  if (other) save_current_buffer_state();
  TextBuffer& source = other ? named_buffer(normalize_buffer_name(wanted.buffer)) : current;
  std::optional<LineRange> range;
  if (!wanted.range.empty()) {
    range = named_range(wanted.range, verbose, other ? &source : nullptr);
    if (!range) return;
  } else if (!other) {
    range = sticky_range;
  }
  std::string path = resolve_write_path(wanted.file);
  const AbortGuard guard;
  const bool written = range ? write_lines_file(path, source.lines(), stretch_of(*range))
                             : save_buffer_to_path(source, path, verbose);
  if (written) {
    tell(verbose, path, " written");
  } else if (!unsaved_copy.empty() || !check_abort(verbose)) {
    report_failed_save("?Unable to write " + path, verbose);
  }
}

std::string Editor::resolve_write_path(const std::string& name) const {
  return zan::resolve_write_path(name, vms_versions, zan::file_exists);
}

std::string Editor::strip_vms_version(const std::string& path) {
  return std::string(zan::strip_vms_version(path));
}

int Editor::highest_vms_version(const std::string& base) {
  return zan::highest_vms_version(base, zan::file_exists);
}

std::vector<std::string> Editor::apply_rms_lines(const std::vector<std::string>& lines) const {
  const std::size_t length = zan::effective_record_length(rms_fixed, rms_record_length);
  if (length == 0) return lines;
  std::vector<std::string> records;
  for (const std::string& line : lines) {
    std::string bytes; // of its records, each with a line feed
    const auto collect = [&bytes](std::string_view piece) { return !bytes.append(piece).empty(); };
    zan::FixedRecords cutter(length);
    cutter.add(line, collect);
    cutter.end_line(collect);
    for (std::size_t at = 0; at < bytes.size(); at += length + 1) records.push_back(bytes.substr(at, length));
  }
  return records;
}

bool Editor::write_lines_file(std::string& path, const Text& text, const zan::RowStretch& rows,
                              const zan::OriginRef& own) {
  const zan::ByteSource source =
      zan::record_source(text, rows, zan::effective_record_length(rms_fixed, rms_record_length));
  errno = 0;
  zan::Saved saved = zan::save_output(path, source, guard_of(path, own));
  if (!saved && errno == ENOSPC && session_log.has_file()) { // which takes room
    end_recovery();
    saved = zan::save_output(path, source, guard_of(path, own));
  }
  // Also after a failure: the file may hold the new text, or part of it.
  file_history.wrote(saved.state, own != nullptr ? own : origin_of_written(saved.state));
  report_kept_text(path, saved.kept);
  unsaved_copy = saved.unsaved;
  kept_copy = saved ? "" : saved.kept;
  const bool is_mains = own != nullptr || (zan::file_exists(path) && is_same_file(path, input_file));
  if (saved && is_mains) {
    main_on_disk = rows_of(text, rows);
    note_saved_text(path, saved.state);
  }
  if (!saved && is_mains && saved.state.kind != zan::FileState::Kind::missing) main_on_disk.reset();
  if (saved) last_written_path = path;
  if (saved) hurry_recovery();
  return static_cast<bool>(saved);
}

bool Editor::save_buffer_to_path(TextBuffer& buffer, std::string& path, bool) {
  if (path.empty() || !write_lines_file(path, buffer.lines(), {0, buffer.line_count()})) return false;
  if (zan::strip_vms_version(path) == zan::strip_vms_version(buffer.filename())) {
    buffer.clear_modified();
    main_on_disk = buffer.lines(); // no other buffer has a file name
  }
  return true;
}

bool Editor::save_to_own_file(TextBuffer& buffer, std::string& path) {
  if (path.empty() || stands_for_unread_file(buffer, path)) return false;
  if (!write_lines_file(path, buffer.lines(), {0, buffer.line_count()}, buffer.origin())) return false;
  buffer.clear_modified();
  main_on_disk = buffer.lines(); // no other buffer has a file name
  return true;
}

bool Editor::stands_for_unread_file(const TextBuffer& buffer, const std::string& path) {
  const zan::OriginRef& origin = buffer.origin();
  return origin != nullptr && origin->state.kind == zan::FileState::Kind::unreadable &&
         (origin->path == path || is_same_file(origin->path, path));
}

zan::Guard Editor::guard_of(const std::string& path, const zan::OriginRef& own) const {
  if (own == nullptr) return {};
  const auto may_replace = [this, own](const zan::FileState& state) {
    return file_history.belongs_to(state, own);
  };
  return {may_replace, zan::rescue_name(path, ""), zan::and_spare_directories({zan::directory_of(path)})};
}

// What WRITE puts into MAIN's file, by whatever name, belongs to MAIN: the user knows that it is there.
zan::OriginRef Editor::origin_of_written(const zan::FileState& state) const {
  struct stat file {};
  if (zan_stat(input_file.c_str(), &file) != 0 || zan::state_of(file) != state) return nullptr;
  const TextBuffer* main = find_live_buffer("MAIN");
  return main != nullptr ? main->origin() : nullptr;
}
