#include "tests/faults/fault_driver.h"

#include <cstdio>
#include <sys/xattr.h>

#include <gtest/gtest.h>

namespace zan::test {

namespace {

// Copies that every user may run, wherever the program was built.
class Programs {
 public:
  Programs() {
    const auto public_directory = std::filesystem::perms(0755);
    std::filesystem::permissions(directory_.path(), public_directory);
    std::filesystem::copy_file(ZAN_PROGRAM, editor());
    std::filesystem::copy_file(ZAN_FAULT_SHIM, shim());
  }
  std::string editor() const { return directory_ / "zan"; }
  std::string shim() const { return directory_ / "shim.so"; }

 private:
  ScratchDirectory directory_;
};

const Programs& programs() {
  static const Programs instance;
  return instance;
}

std::string attributes_of(const std::string& path) {
  std::string names(1000, '\0');
  const ssize_t size = ::llistxattr(path.c_str(), names.data(), names.size());
  names.resize(size > 0 ? static_cast<std::size_t>(size) : 0);
  std::string text;
  for (std::size_t at = 0; at < names.size(); at = names.find('\0', at) + 1) {
    std::string value(1000, '\0');
    const ssize_t length = ::lgetxattr(path.c_str(), names.c_str() + at, value.data(), value.size());
    value.resize(length > 0 ? static_cast<std::size_t>(length) : 0);
    text += std::string(" ") + (names.c_str() + at) + "=" + value;
  }
  return text;
}

std::string bytes_at(const std::filesystem::directory_entry& entry) {
  if (entry.is_symlink()) return "-> " + std::filesystem::read_symlink(entry).string();
  return entry.is_regular_file() ? read_file(entry.path().string()) : "(no file)";
}

} // namespace

Stage::Stage() {
  std::filesystem::permissions(home_.path(), std::filesystem::perms(0755));
  std::filesystem::create_directory(home("work"));
  std::filesystem::create_directory(home("spare"));
  std::filesystem::permissions(home("work"), std::filesystem::perms(0777));
  std::filesystem::permissions(home("spare"), std::filesystem::perms(0777));
}

Stage::~Stage() { // a directory that may not be written could not be emptied
  std::error_code ignored;
  std::filesystem::permissions(home("work"), std::filesystem::perms(0755), ignored);
}

void Stage::prepare(const std::string& script) const {
  if (script.empty()) return;
  const RunResult result =
      run_program("/bin/sh", {"-ec", script}, {{"PATH", "/usr/sbin:/usr/bin:/sbin:/bin"}}, home_.path(), "");
  ASSERT_EQ(result.status, 0) << script << "\n" << result.errors;
}

RunResult Stage::run(const Start& start) const {
  std::map<std::string, std::string> environment = {
      {"TERM", "xterm"}, {"HOME", home("spare")}, {"PATH", "/usr/bin:/bin"}, {"TMPDIR", home("spare")}};
  for (const auto& [name, value] : start.environment) environment[name] = value;
  if (start.shell.empty()) {
    return run_program(programs().editor(), start.arguments, environment, home_.path(), start.input);
  }
  std::vector<std::string> words = {"-c", start.shell, programs().editor()};
  words.insert(words.end(), start.arguments.begin(), start.arguments.end());
  return run_program("/bin/sh", words, environment, home_.path(), start.input);
}

RunResult Stage::run(Start start, long line, const Fault& fault) const {
  start.environment["LD_PRELOAD"] = programs().shim();
  start.environment["ZAN_FAULT_LINE"] = std::to_string(line);
  start.environment["ZAN_FAULT_CALL"] = std::to_string(fault.call);
  start.environment["ZAN_FAULT_LOG"] = home("log");
  if (!fault.how.empty()) start.environment["ZAN_FAULT"] = fault.how;
  write_file(home("log"), "");
  std::filesystem::permissions(home("log"), std::filesystem::perms(0666));
  return run(start);
}

std::vector<std::string> Stage::calls() const {
  std::vector<std::string> calls;
  std::ifstream log(home("log"));
  for (std::string line; std::getline(log, line);) calls.push_back(line);
  return calls;
}

std::map<std::string, std::string> Stage::contents() const {
  std::map<std::string, std::string> found;
  for (const char* directory : {"work", "spare"}) {
    for (const auto& entry : std::filesystem::recursive_directory_iterator(home(directory))) {
      found[entry.path().string().substr(home_.path().size() + 1)] = bytes_at(entry);
    }
  }
  return found;
}

std::string identity(const std::string& path) {
  const struct stat status = stat_of(path);
  char text[100];
  std::snprintf(text, sizeof text, "mode %o owner %u:%u links %lu", status.st_mode, status.st_uid,
                status.st_gid, static_cast<unsigned long>(status.st_nlink));
  std::error_code ignored;
  return text + attributes_of(path) + " " + std::filesystem::read_symlink(path, ignored).string();
}

bool is_root() { return ::geteuid() == 0; }

std::string as_nobody() {
  return is_root() ? "exec setpriv --reuid=65534 --regid=65534 --clear-groups \"$0\" \"$@\"" : "";
}

bool is_temporary(std::string_view path) { return contains(path, ".zan-"); }

bool is_rescue_copy(std::string_view path) { return contains(path, ".save"); }

} // namespace zan::test
