#include "tests/faults/fault_driver.h"

#include <cstdio>
#include <regex>
#if defined(__linux__) || defined(__APPLE__)
#include <sys/xattr.h>
#endif

#include <gtest/gtest.h>

#include "tests/sessions/text_forms.h"

namespace zan::test {

namespace {

constexpr bool kHasShim = !std::string_view(ZAN_FAULT_SHIM).empty();

// Copies that every user may run, wherever the program was built.
class Programs {
 public:
  Programs() {
    const auto public_directory = std::filesystem::perms(0755);
    std::filesystem::permissions(directory_.path(), public_directory);
    std::filesystem::copy_file(ZAN_PROGRAM, editor());
    if (kHasShim) std::filesystem::copy_file(ZAN_FAULT_SHIM, shim());
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

#if defined(__APPLE__)
ssize_t list_attributes(const char* path, std::string& names) {
  return ::listxattr(path, names.data(), names.size(), XATTR_NOFOLLOW);
}
ssize_t get_attribute(const char* path, const char* name, std::string& value) {
  return ::getxattr(path, name, value.data(), value.size(), 0, XATTR_NOFOLLOW);
}
#elif defined(__linux__)
ssize_t list_attributes(const char* path, std::string& names) {
  return ::llistxattr(path, names.data(), names.size());
}
ssize_t get_attribute(const char* path, const char* name, std::string& value) {
  return ::lgetxattr(path, name, value.data(), value.size());
}
#else
ssize_t list_attributes(const char*, std::string&) { return 0; }
ssize_t get_attribute(const char*, const char*, std::string&) { return 0; }
#endif

std::string attributes_of(const std::string& path) {
  std::string names(1000, '\0');
  const ssize_t size = list_attributes(path.c_str(), names);
  names.resize(size > 0 ? static_cast<std::size_t>(size) : 0);
  std::string text;
  for (std::size_t at = 0; at < names.size(); at = names.find('\0', at) + 1) {
    std::string value(1000, '\0');
    const ssize_t length = get_attribute(path.c_str(), names.c_str() + at, value);
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

std::vector<std::string> Row::words(const std::string& word, const std::string& usual) const {
  return split_arguments(get(word, usual));
}

std::string Row::shell() const {
  const std::string user = get("user", "");
  return user == "nobody" || user == "visitor" ? as_nobody() : get("shell", "");
}

void set_attribute(const std::string& path, const std::string& name, std::string_view value) {
#if defined(__APPLE__)
  ::setxattr(path.c_str(), name.c_str(), value.data(), value.size(), 0, 0);
#elif defined(__linux__)
  ::setxattr(path.c_str(), name.c_str(), value.data(), value.size(), 0);
#endif
}

std::vector<Row> read_rows(const std::string& table) {
  std::vector<Row> rows;
  for (const std::string& line : lines_of_file("faults/" + table + ".table")) {
    static const std::regex kLongest("\\{255\\}");
    const auto fields = split_fields(std::regex_replace(line, kLongest, std::string(255, 'q')));
    Row row{fields[0], fields.size() > 1 ? fields[1] : "", {}};
    for (std::size_t i = 2; i < fields.size(); ++i)
      row.with[fields[i].substr(0, fields[i].find('='))] = fields[i].substr(fields[i].find('=') + 1);
    static const bool kChangesUser = is_root() && std::filesystem::exists("/usr/bin/setpriv");
    const std::string user = row.get("user", "");
    const bool is_played = user.empty() || kChangesUser || (user == "nobody" && !is_root());
    if (is_played && (kHasShim || !row.is("full"))) rows.push_back(row);
  }
  return rows;
}

std::string changes(const Files& before, const Files& after, const PathTest& may_come,
                    const PathTest& may_change) {
  std::string found;
  for (const auto& [path, bytes] : before) {
    const auto now = after.find(path);
    if (now != after.end() && now->second == bytes) continue;
    if (may_change(path)) continue;
    found +=
        now == after.end() ? " gone: " + path : " changed: " + path + " is " + now->second.substr(0, 100);
  }
  for (const auto& [path, bytes] : after)
    if (!before.contains(path) && !may_come(path)) found += " left behind: " + path;
  return found;
}

Stage::Stage() {
  std::filesystem::permissions(home_.path(), std::filesystem::perms(0755));
  for (const char* directory : {"work", "spare"}) {
    std::filesystem::create_directory(home(directory));
    std::filesystem::permissions(home(directory), std::filesystem::perms(0777));
  }
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

Files Stage::contents() const {
  Files found;
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
