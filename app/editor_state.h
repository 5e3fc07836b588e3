#pragma once

#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "command/line_range.h"
#include "files/file_history.h"
#include "host/console.h"
#include "recovery/record_pace.h"
#include "recovery/session_log.h"
#include "text/buffer_registry.h"
#include "text/bytes.h"
#include "text/text_buffer.h"

// Everything the editor knows while it runs. What only reads it takes it as `const EditorState&`.
//
// Rows and columns are zero-based bytes; numbers the user sees are one-based.
struct EditorState {
  enum class Direction : std::uint32_t { Advance = 0, Backup = 1 };
  using LineRange = zan::LineRange;
  using Text = zan::LineStore; // a piece of text that shares its bytes with the buffer it came from

  // The text between the mark and the cursor, start before end; the end is excluded.
  struct SelSpan {
    std::uint64_t start_row = 0;
    std::uint64_t start_col = 0;
    std::uint64_t end_row = 0;
    std::uint64_t end_col = 0;
    bool operator==(const SelSpan&) const = default;
  };

  // One entry of the undo or redo history. The registry's entry of the current buffer may be stale in it, as
  // it may be in the editor: `buffer` holds that text.
  struct UndoSnapshot {
    TextBuffer buffer;
    zan::BufferRegistry buffers;
    std::string buffer_name;
    std::uint64_t row = 0;
    std::uint64_t col = 0;
    std::uint64_t top = 0;
    Direction direction = Direction::Advance;
    std::string search;
    Text deleted_char;
    Text deleted_line;
    Text deleted_word;
    bool overstrike = false;
  };

  // The lines of an INSERT or a DEFINE MACRO that has not ended.
  struct Typing {
    std::string macro; // that they will be; "": they go where the cursor is
    std::function<Text()> so_far;
    std::function<std::size_t()> count;
  };

  // What a session's file holds, or will when it is complete: enough to see that something has changed.
  struct RecordedState {
    Text text;
    zan::BufferRegistry buffers;
    std::string name;
    std::size_t typed = 0; // lines
    friend bool operator==(const RecordedState& a, const RecordedState& b) {
      return a.text.tree() == b.text.tree() && a.buffers == b.buffers && a.name == b.name &&
             a.typed == b.typed;
    }
  };

  // ---- what follows from the fields
  std::string journal_path() const;
  std::optional<SelSpan> active_select_span() const;
  Text with_typed_lines() const; // the current text as if the lines being typed were in it
  bool select_active() const { return current.has_mark(); }

  // ---- fields: the command line
  std::string input_file;                  // MAIN's file, shown in the banner
  std::optional<std::string> command_file; // run after the startup file
  std::optional<std::string> output_file;  // EXIT writes MAIN here instead
  bool read_only = false;                  // refuse commands that change text
  bool recover = false;                    // replay the journal at start
  std::optional<std::string> journal_file; // explicit journal path
  bool journal_unsynced = false;           // lines are not known to be on the disk
  bool journal_failure_said = false;

  // ---- fields: writing files
  std::string last_written_path; // versions included
  zan::FileHistory file_history; // what this session has read and written
  std::string unsaved_copy;      // the only whole text of a save that failed halfway; "": there is none
  std::string kept_copy;         // the text of another program that such a save has overwritten; "": none
  bool vms_versions = false;     // every save makes the next ";n" version
  bool rms_fixed = false;        // fixed-length records
  int rms_record_length = 80;    // bytes of a fixed record

  // ---- fields: ranges and translation
  std::optional<LineRange> sticky_range; // used by TYPE, DELETE, WRITE and RETAIN when they are given none
  std::map<char, char, zan::SignedByteOrder> xlate_map;

  // ---- fields: buffers
  bool input_found = false;         // the last load of MAIN found its file
  std::optional<Text> main_on_disk; // MAIN's file as last read or written, over UNDO too; not known: none
  TextBuffer current;               // working copy of the current buffer; every edit is made here
  zan::BufferRegistry buffers;      // all named buffers; stale for the current one until it is saved
  std::string current_buffer_name = "MAIN"; // the buffer that `current` stands for

  // ---- fields: place in the text
  std::uint64_t cursor_row = 0; // line, zero-based
  std::uint64_t cursor_col = 0; // byte in that line; its length is a legal value
  std::uint64_t top_row = 0;    // first line on the screen
  std::uint64_t left_col = 0;   // first column on the screen

  // ---- fields: how keys act
  bool overstrike = false; // typing replaces instead of inserting
  Direction direction = Direction::Advance;
  bool count_pending = false; // GOLD has been pressed
  int repeat_count = 0;       // count typed after GOLD
  bool line_numbers = false;  // shown on the screen

  // ---- fields: search
  bool search_exact = true;
  bool search_begin = false; // never together with search_end
  bool search_end = false;
  bool search_wild = true; // shown only; the pattern decides
  bool search_word = false;
  std::string search_string;
  std::uint64_t match_length = 0; // of the last match found

  // ---- fields: registers, messages, keys, macros
  Text deleted_char;
  Text deleted_line;
  Text deleted_word;
  std::string status_message;           // bottom row of the screen
  std::optional<std::string> row_error; // on that row, the last one; nothing: no command reports there
  bool debug_keys = false;              // show the last key on the status line
  std::string last_key_name;
  std::map<std::string, std::string> key_definitions;
  std::map<std::string, bool> macros;                   // names of buffers that are macros
  std::map<std::string, Text, std::less<>> macro_texts; // what DEFINE MACRO has last put into them
  std::vector<std::string> macro_stack;                 // macros now running, innermost last
  std::set<std::string> running_macros;                 // the same names, for the recursion guard

  // ---- fields: history, newest last
  static constexpr int kHistoryLength = 100; // snapshots of either kind; the oldest go
  std::deque<UndoSnapshot> undo_stack;
  std::deque<UndoSnapshot> redo_stack;

  // ---- fields: settings
  int tab_width = 8;
  bool quiet = false;
  bool verify = false; // echo macro commands
  bool wrap = false;
  bool autorepeat = true; // with repeat: digits after GOLD form a count
  bool repeat = true;
  std::string case_mode = "NONE"; // NONE, LOWER, UPPER
  std::string command_setting;    // the file of the last SET COMMAND
  int cursor_top_margin = 0;
  int cursor_bottom_margin = 0;
  bool fnf = true; // report a missing input file at start
  std::string help_file = "ZANHELP";
  std::string keypad = "ZAN"; // ZAN, NOKEYPAD, WPS, PC
  int screen_lines = 0;       // 0: the terminal's height
  std::string paragraph = "NOWPS";
  std::string pasting = "KEYS"; // EXACT: a paste at the terminal is text, whatever its bytes would be as keys
  int screen_width = 0;         // 0: the terminal's width
  bool summary = true;          // EXIT prints path and line count
  std::string terminal = "vt100";
  std::string text_formfeed = "^L"; // shown for a form feed
  std::string text_end = "[EOB]";
  bool truncate = false;          // never scroll sideways
  bool word_delimiters_on = true; // off: only white space ends a word
  std::string prompt = "*";
  std::string mode = "Line";
  std::string word_delimiters = " \t.,;:!?()[]{}\"'+-*/=<>|\\&#@^%~`";

  // ---- fields: the file list
  std::vector<std::string> files;
  std::size_t file_index = 0; // of the file in MAIN

  // ---- fields: what is recorded for recovery
  bool recovery = true;
  bool recovery_failed = false; // the file could not be written, which has turned it off
  zan::SessionLog session_log;
  zan::RecordPace record_pace;
  RecordedState recorded;
  RecordedState seen;                // when a wait last began
  zan::BufferRegistry buffers_found; // after the startup file: what it has made need not be recovered
  std::optional<Typing> typing;

  // ---- fields: nesting, the line-mode terminal
  int nesting_depth = 0;        // command files and macros now running, one inside the other
  bool nest_aborted = false;    // Ctrl/C ends all of them
  mutable zan::Console console; // what is printed is no part of the state
};
