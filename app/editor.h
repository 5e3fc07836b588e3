#pragma once

#include <csignal>
#include <cstdint>
#include <initializer_list>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "app/editor_state.h"
#include "command/parser.h"
#include "files/records.h"
#include "files/safe_save.h"
#include "host/abort.h"
#include "screen/members/screen_prompt.h"
#include "search/text_search.h"
#include "text/byte_scan.h"

// The one editor: every operation on its state. Members stand under the folder that defines them; all are
// public, because the tables of commands, settings and keys point at them.
//
// `verbose` allows output on standard output; without it the same work is done silently and the outcome is
// left in status_message.
class Editor : public EditorState {
 public:
  // What a command asks of the loop that ran it. Error: it failed or was refused; the loop goes on, without
  // /SAVE.
  enum class CommandResult : std::uint32_t { Continue = 0, EnterScreen = 1, Exit = 2, Quit = 3, Error = 4 };

  using ParsedCommand = zan::ParsedCommand;
  using Qualifiers = zan::Qualifiers;

  // While it lives, Ctrl/C interrupts a read and sets g_zan_abort_requested instead of ending the program.
  class AbortGuard {
   public:
    AbortGuard();
    ~AbortGuard();
    AbortGuard(const AbortGuard&) = delete;
    AbortGuard& operator=(const AbortGuard&) = delete;

   private:
    struct sigaction previous_ {};
  };

  // While it lives, what silent commands report goes to the message row, or nowhere when `on` is false. It is
  // on for a command of the screen's "Command:" and of a user's key, off for the keys of a screen that such a
  // command enters.
  class RowReports {
   public:
    RowReports(Editor& editor, bool on);
    ~RowReports();
    RowReports(const RowReports&) = delete;
    RowReports& operator=(const RowReports&) = delete;

   private:
    Editor& editor_;
    std::optional<std::string> outer_;
  };

  // Makes the lines of a multi-line answer known while it is typed.
  class TypingGuard {
   public:
    TypingGuard(Editor& editor, Typing typing) : editor_(editor) { editor_.typing = std::move(typing); }
    ~TypingGuard() { editor_.typing.reset(); }
    TypingGuard(const TypingGuard&) = delete;
    TypingGuard& operator=(const TypingGuard&) = delete;

   private:
    Editor& editor_;
  };

  Editor(std::vector<std::string> files, std::optional<std::string> command_file,
         std::optional<std::string> output_file, bool read_only, bool recover,
         std::optional<std::string> journal_file);
  ~Editor() = default;
  Editor(const Editor&) = delete;
  Editor& operator=(const Editor&) = delete;

  // ---- app/: state
  void set_debug_keys(bool on);
  void reset_state();

  // ---- app/: the line-mode loop and command files
  int run();
  int line_mode();
  CommandResult execute_command(const std::string& line, bool verbose);
  void handle_command_result(CommandResult result, bool allow_exit);
  void run_command_file(const std::string& path, bool verbose);
  void run_command_lines(std::string_view content, bool verbose);
  void leave_nest(); // after a command file or macro
  static bool is_comment_or_blank(std::string_view line);
  std::optional<std::string> find_startup_file() const;
  void load_startup_file();
  static std::string join_path(const std::string& dir, const std::string& name);
  static bool file_exists(const std::string& path);

  // ---- app/: undo and redo
  void begin_undo_unit();
  bool undo_last(bool verbose);
  bool redo_last(bool verbose);
  UndoSnapshot capture_snapshot();
  void restore_snapshot(UndoSnapshot snapshot);
  void clamp_cursor();
  bool command_changes_text_or_buffers(std::string_view key) const;

  // ---- app/: journal and recovery
  void append_journal_line(const std::string& line);
  void sync_journal(); // when lines have been appended and the prompt waits
  void try_recover_journal();
  void delete_journal_file();

  // ---- app/: the session's file, from which it is recovered
  void begin_recovery();   // when MAIN's file has been loaded; at a terminal only
  void restore_sessions(); // what other sessions on the file have left
  void note_recovery_base(const std::string& path, const zan::FileState& state, const Text& text);
  int record_while_waiting(); // for StandardInput::set_idle
  int record_a_step();
  std::vector<zan::NamedText> texts_to_record() const;
  void stop_recovery(); // for this session, with a message
  void end_recovery();  // nothing is left to recover
  void hurry_recovery();
  void note_saved_text(const std::string& path, const zan::FileState& state); // of MAIN

  // ---- app/: Ctrl/C, EXIT and QUIT
  bool check_abort(bool verbose);
  [[noreturn]] void save_and_exit_now();
  [[noreturn]] void quit_without_saving_now();
  void do_save(bool verbose);
  void report_kept_text(const std::string& path, const std::string& copy);
  void report_failed_save(const std::string& error, bool verbose); // and where the texts are
  void report_unsaved_copy(); // in line mode, after the message of a save that has failed

  // ---- app/: output and input of commands
  // Writes the parts to standard output, when verbose.
  template <typename... Parts> void say(bool verbose, const Parts&... parts) const {
    if (verbose) (console.write(parts), ...);
  }
  // The same for a whole line, which the message row shows where commands report there.
  template <typename... Parts> void tell(bool verbose, const Parts&... parts) {
    say(verbose, parts..., "\n");
    if (!verbose) show_on_row({parts...}, false);
  }
  // An error of a command that sets no status_message for it.
  template <typename... Parts> void report(bool verbose, const Parts&... parts) {
    say(verbose, parts..., "\n");
    if (!verbose) show_on_row({parts...}, true);
  }
  // What the user must know, silent or not: on the message row while the screen is up, else on standard error
  // where that is a terminal.
  void notify(const std::string& line);
  void show_on_row(std::initializer_list<std::string_view> line, bool error);
  // One more line for a command that reads text: from standard input, after `prompt` when verbose; or, while
  // the screen is up, at its prompt "_", which stands behind `how_to_end` until something is typed.
  zan::TypedLine read_text_line(std::string_view prompt, bool verbose, std::string_view how_to_end = "");

  // ---- text/: the buffer registry and PASTE
  static std::string normalize_buffer_name(std::string_view name);
  // The buffer of that name with its latest text, made when there is none; "" is MAIN. The reference holds
  // until another buffer becomes current or the registry changes.
  TextBuffer& live_buffer(std::string_view name);
  const TextBuffer* find_live_buffer(std::string_view normal_name) const; // null when there is none
  // Its entry in the registry, which is stale for the current buffer until save_current_buffer_state. For
  // what looks at the whole registry, or makes another buffer current.
  TextBuffer& named_buffer(std::string_view name);
  void save_current_buffer_state();
  void find_buffer(std::string_view name, bool verbose);
  Text paste_text_content();
  void set_paste_text(const Text& text);
  void append_paste_text(const Text& text);
  void show_buffers(bool verbose);

  // ---- command/: parser, ranges, dispatcher
  static std::string trim(std::string_view text);
  static std::string upper(std::string_view text);
  static bool starts_with_ci(std::string_view text, std::string_view prefix);
  static std::string strip_optional_quotes(std::string_view text);
  static Qualifiers extract_qualifiers(std::string& line);
  ParsedCommand parse_command(const std::string& line) const;
  static zan::KeyForm key_form(std::string_view key);     // of a command or setting
  static zan::KeyForm setting_form(std::string_view key); // of a setting
  zan::LineContext line_context() const;                  // what line references count from
  std::optional<std::uint64_t> parse_line_ref(std::string_view text) const;
  std::optional<LineRange> parse_line_range(std::string_view text) const;
  static std::string strip_qualifiers_for_range(std::string_view text);
  void range_command(const std::string& arg, bool verbose);
  CommandResult dispatch_command(const std::string& line, const Qualifiers& quals, bool verbose);
  // The lines that `text` names in the current buffer, or in `other`, which has no cursor here. An invalid
  // range is reported, and the result is empty.
  std::optional<LineRange> named_range(std::string_view text, bool verbose,
                                       const TextBuffer* other = nullptr);
  // The same, or the cursor line for a blank text; last clamped.
  std::optional<LineRange> range_or_cursor_line(const std::string& arg, bool verbose);

  // ---- command/: SET, SHOW and HELP
  std::optional<CommandResult> run_setting(const ParsedCommand& command, bool verbose);
  void print_line_help(const std::string& topic) const;

  // ---- command/: core line commands
  CommandResult goto_line(const std::string& arg, bool verbose);
  CommandResult change_command(const std::string& arg, bool verbose);
  void type_command(const ParsedCommand& command, bool verbose);
  CommandResult delete_command(const std::string& arg, bool verbose);
  CommandResult insert_command(const std::string& arg, bool verbose);
  void find_command(const ParsedCommand& command, bool verbose);
  void find_next_command(bool verbose);
  void type_current_line(bool brief = false, int width = 40) const;
  void type_range(const LineRange& range, bool brief, int width) const;
  void delete_range(const LineRange& range);
  CommandResult insert_multiline(bool verbose);
  void cancel_lines();
  void find_next(Direction direction);
  void go_top();
  void go_bottom();
  void set_direction(Direction direction, bool verbose);
  void ring_bell();
  void date_command(bool verbose);
  static std::string current_date_string();
  void show_files(bool verbose);

  // ---- command/: text and buffer commands
  void copy_move_command(const std::string& arg, bool move, bool verbose);
  void clear_buffer_command(const std::string& arg, bool verbose);
  void include_file_command(const std::string& arg, bool verbose);
  void retain_command(const std::string& arg, bool verbose);
  void fill_command(const std::string& arg, bool verbose);
  void fill_select(const SelSpan& span, bool verbose);
  void tab_adjust_command(const std::string& arg, bool verbose);
  void resequence_command(const std::string& arg, const Qualifiers& quals, bool verbose);
  void xlate_command(const std::string& arg, bool verbose);
  void chg_case_command(const std::string& arg, bool to_upper, bool verbose);
  void print_command(const std::string& arg, bool verbose);
  CommandResult next_file_command(bool verbose);
  CommandResult previous_file_command(bool verbose);
  CommandResult change_file(std::size_t index, bool verbose);
  bool load_main_text(TextBuffer& main, const std::string& path); // false as TextBuffer::load

  // ---- command/: macros
  CommandResult define_macro_command(const std::string& arg, bool verbose);
  void define_macro(const std::string& name, const std::vector<std::string>& commands);
  // Nothing when Ctrl/C has cancelled it.
  std::optional<std::vector<std::string>> read_macro_lines(const std::string& name, bool verbose);
  void show_macros(const std::string& arg, bool verbose);
  bool try_execute_macro(const std::string& key, bool verbose);
  CommandResult run_macro_lines(const std::string& name, const Text& commands, bool verbose);
  static std::vector<std::string> split_macro_commands(const std::string& text);
  static std::string join_lines_as_text(const std::vector<std::string>& lines);

  // ---- search/: search and substitute
  bool match_constraints_ok(std::uint64_t row, std::uint64_t col, std::uint64_t length) const;
  std::optional<zan::Position> search_forward(std::uint64_t row, std::uint64_t col) const;
  std::optional<zan::Position> search_backward(std::uint64_t row, std::uint64_t col) const;
  zan::SearchConstraints search_constraints() const;
  enum class Answer { yes, no, stop };
  void substitute_command(const std::string& arg, const Qualifiers& quals, bool verbose);
  void substitute_global(const std::string& text, bool query, bool verbose);
  void substitute_one(const std::string& replacement, const Qualifiers& quals, bool verbose);
  void substitute_many(zan::Position start, std::uint64_t limit, bool wraps, const std::string& replacement,
                       bool query, bool verbose);
  std::uint64_t substitute_at_once(zan::Position start, std::uint64_t limit, bool wraps,
                                   const std::string& replacement); // returns the number of replacements
  std::uint64_t substitute_asking(zan::Position at, std::uint64_t limit, bool wraps,
                                  const std::string& replacement);
  Answer ask_to_substitute(bool verbose);

  // ---- files/: output paths, versions, records
  void write_command(const std::string& arg, bool verbose);
  std::string resolve_write_path(const std::string& name) const; // adds ";n" when versions apply
  static std::string strip_vms_version(const std::string& path);
  static int highest_vms_version(const std::string& base);
  std::vector<std::string> apply_rms_lines(const std::vector<std::string>& lines) const; // as records
  // Writes `rows` of the text as records. A path with a version is a new file; when the name has been taken
  // since it was chosen, `path` becomes the next free one. False: not written. `own`: the text's origin when
  // the text goes to its own file and not to one that the user has named. Another text that is found in that
  // file is then kept first.
  bool write_lines_file(std::string& path, const Text& text, const zan::RowStretch& rows,
                        const zan::OriginRef& own = nullptr);
  bool save_buffer_to_path(TextBuffer& buffer, std::string& path, bool verbose);
  bool save_to_own_file(TextBuffer& buffer, std::string& path); // as EXIT, NEXT and /SAVE do
  static bool stands_for_unread_file(const TextBuffer& buffer, const std::string& path);
  zan::Guard guard_of(const std::string& path, const zan::OriginRef& own) const;
  zan::OriginRef origin_of_written(const zan::FileState& state) const;

  // ---- screen/: the screen loop, rendering, prompts
  void screen_mode();
  void handle_screen_keys(); // until one leaves the screen
  void draw_screen();
  void adjust_view();
  std::string prompt_line(const std::string& prompt);
  void command_prompt();
  void run_screen_command(const std::string& line); // of "Command:" or a user's key
  std::string expand_formfeed_display(const std::string& line) const;

  // ---- screen/: keys
  bool handle_screen_key(int key);
  bool handle_keypad_or_text(int key);
  bool handle_gold_key(int key);
  bool handle_gold_keypad(int key);
  std::string key_id_from_input(int key, bool gold) const;
  std::string key_debug_name(int key) const;
  const char* gold_function_name(int key) const;
  void show_help_screen();

  // ---- screen/: movement
  void move_left();
  void move_right();
  void move_up();
  void move_down();
  void move_char(Direction direction);
  void move_word(Direction direction);
  void line_move(Direction direction);
  void page_down();
  void page_up();
  void section_move(Direction direction);
  bool is_delim(char c) const;
  zan::ByteSet delimiter_set() const; // the bytes for which is_delim is true

  // ---- screen/: entity editing, select, cut and paste
  void delete_char_at_cursor();
  void delete_char_left();
  void delete_word();
  void delete_word_left();
  void delete_line();
  void delete_eol();
  void undelete_line();
  void undelete_char();
  void undelete_word();
  void paste_text(const Text& text);
  void paste();
  void insert_exactly(std::string_view pasted); // what the terminal sent, as one undo unit
  void start_select();
  void clear_select();
  void select_error(const std::string& message);
  void take_selected(void (Editor::*use)(const Text&));
  void cut_select();
  void append_select();
  void replace_select_with_paste();
  void change_case_char();
  Text apply_case_mode(const Text& text) const;
  void maybe_wrap_line();
  void insert_tab_stop(); // blanks up to the next tab stop
  void insert_tab_at_cursor();
  void open_line();
  void shift_left_line();
  void shift_right_line();
  void toggle_line_numbers();
  void prompt_insert_literal();
  void prompt_find();

  // ---- screen/: user-defined keys
  void define_key_command(const std::string& arg, bool verbose);
  void show_key_command(const std::string& arg, bool verbose);
  std::string normalize_key_spec(const std::string& text) const;
  bool try_defined_key(int key, bool gold);
  void interactive_define_key();

  // ---- screen/: nokeypad mode
  bool execute_nokeypad_string(const std::string& commands, bool verbose);
  void nokeypad_mode();
};
