#include "app/editor.h"

#include <cstdlib>
#include <utility>

Editor::Editor(std::vector<std::string> file_names, std::optional<std::string> commands,
               std::optional<std::string> output, bool is_read_only, bool do_recover,
               std::optional<std::string> journal) {
  command_file = std::move(commands);
  output_file = std::move(output);
  read_only = is_read_only;
  recover = do_recover;
  journal_file = std::move(journal);
  files = std::move(file_names);
  if (!files.empty()) input_file = files.front();
  const char* versions = std::getenv("ZAN_VMS_VERSIONS");
  vms_versions = versions != nullptr && *versions != '\0' && std::string_view(versions) != "0";
}

void Editor::set_debug_keys(bool on) { debug_keys = on; }

void Editor::reset_state() {
  direction = Direction::Advance;
  count_pending = false;
  repeat_count = 0;
  clear_select();
  status_message = "RESET";
}
