// Saving where there is no room: what was there stays, byte for byte.
#include <algorithm>
#include <fcntl.h>
#include <sys/mount.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include "tests/faults/fault_driver.h"

namespace {

using namespace zan::test;

// A file system of 64 KiB in the place of a directory.
class SmallDisk {
 public:
  explicit SmallDisk(std::string path) : path_(std::move(path)) {
    mounted_ = ::mount("none", path_.c_str(), "tmpfs", 0, "size=64k,mode=777") == 0;
  }
  ~SmallDisk() {
    if (mounted_) ::umount2(path_.c_str(), MNT_DETACH);
  }
  SmallDisk(const SmallDisk&) = delete;
  SmallDisk& operator=(const SmallDisk&) = delete;

  explicit operator bool() const { return mounted_; }
  void fill() const {
    const int file = ::open((path_ + "/filler").c_str(), O_WRONLY | O_CREAT, 0600);
    const std::string page(4096, 'f');
    while (::write(file, page.data(), page.size()) > 0) {}
    ::close(file);
  }

 private:
  std::string path_;
  bool mounted_ = false;
};

struct Way {
  const char* name;
  std::vector<std::string> arguments;
  const char* before;
  const char* line;
  const char* failed; // what it says
};

const Way kWays[] = {
    {"EXIT", {"f"}, "", "EXIT", "?Unable to write f\n"},
    {"WRITE", {"f"}, "", "WRITE f", "?Unable to write f\n"},
    {"/SAVE", {"f"}, "", "TYPE/SAVE", "?Unable to save f\n"},
    {"NEXT", {"f", "../first"}, "", "NEXT", "?Unable to write f\n"},
    {"PREVIOUS", {"../first", "f"}, "NEXT\n", "PREVIOUS", "?Unable to write f\n"},
};

std::string text_of_size(std::size_t size) {
  return size < 2 ? std::string(size, 'x') : std::string(size - 1, 'x') + "\n";
}

std::string more_text(std::size_t size, bool twice) {
  if (size == 0) return twice ? "xxx\n" : "x\n"; // a text has no shorter file
  return text_of_size(twice ? size : 0) + (twice && size > 1 ? "" : "\n");
}

// A save that fails on a small disk, when that can be had, or where the shim says that there is no room.
void expect_old_text(Promise& promise, const Way& way, const std::string& old_text, const std::string& more,
                     bool linked, bool on_disk) {
  const Stage stage;
  const SmallDisk disk(on_disk ? stage / "" : "");
  if (on_disk && !disk) return;
  write_file(stage / "f", old_text);
  write_file(stage.home("first"), "first\n");
  write_file(stage.home("more"), more);
  if (linked) std::filesystem::create_hard_link(stage / "f", stage / "g");
  if (on_disk) disk.fill();
  const Files before = stage.contents();
  const std::string typed = std::string(way.before) + "INCLUDE ../more\n";
  const Start start{way.arguments, typed + way.line + "\nQUIT\n"};
  const RunResult run =
      on_disk ? stage.run(start) : stage.run(start, std::ranges::count(typed, '\n') + 1, {"full", 1});

  const bool exits = std::string(way.line) == "EXIT";
  const bool failed = contains(run.output + run.errors, way.failed);
  const auto may_come = [&](const std::string& path) {
    return path.ends_with(".jou") || (exits && failed && is_rescue_copy(path));
  };
  std::string wrong = changes(before, stage.contents(), may_come, [&](const auto&) { return !failed; });
  // In place, a text may have room where the old one ends.
  if (!failed && !linked) wrong += "it says: " + run.output.substr(0, 200) + run.errors;
  if (run.status != (exits && failed ? 2 : 0)) wrong += " status " + std::to_string(run.status);
  if (failed && !exits && !contains(run.output, "Changes discarded")) wrong += " no longer modified";
  promise.ran(std::string(way.name) + " of " + std::to_string(old_text.size()) + " bytes and " +
                  std::to_string(more.size()) + (linked ? ", hard link" : "") +
                  (on_disk ? ", disk" : ", shim"),
              wrong);
}

TEST(FullDisk, TheOldFileStays) {
  Promise promise(Promised::full_disk);
  for (const Way& way : kWays)
    for (const std::size_t size : {0U, 1U, 4096U, 28672U})
      for (const bool twice : {false, true})
        for (const bool linked : {false, true})
          for (const bool on_disk : {false, true})
            expect_old_text(promise, way, text_of_size(size), more_text(size, twice), linked, on_disk);
}

} // namespace
