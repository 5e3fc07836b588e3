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

class FullDisk {
 public:
  FullDisk(const Way& way, std::size_t size, bool twice, bool linked)
      : way_(way), old_text_(text_of_size(size)), more_(more_text(size, twice)), linked_(linked) {}

  // On a small disk that is full, when that can be had.
  bool on_a_disk(Promise& promise) {
    const SmallDisk disk(stage_ / "");
    if (!disk) return false;
    prepare();
    disk.fill();
    before_ = stage_.contents();
    promise.ran(name() + ", disk", wrong(stage_.run(start())));
    return true;
  }

  void on_the_shim(Promise& promise) {
    prepare();
    const std::string before = way_.before;
    const long line = std::count(before.begin(), before.end(), '\n') + 2;
    promise.ran(name() + ", shim", wrong(stage_.run(start(), line, {"full", 1})));
  }

 private:
  std::string name() const {
    return std::string(way_.name) + " of " + std::to_string(old_text_.size()) + " bytes and " +
           std::to_string(more_.size()) + (linked_ ? ", hard link" : "");
  }

  Start start() const {
    return {way_.arguments, std::string(way_.before) + "INCLUDE ../more\n" + way_.line + "\nQUIT\n"};
  }

  void prepare() {
    write_file(stage_ / "f", old_text_);
    write_file(stage_.home("first"), "first\n");
    write_file(stage_.home("more"), more_);
    if (linked_) std::filesystem::create_hard_link(stage_ / "f", stage_ / "g");
    before_ = stage_.contents();
  }

  std::string wrong(const RunResult& run) const {
    std::string wrong;
    auto after = stage_.contents();
    const bool exits = std::string(way_.line) == "EXIT";
    const bool failed = contains(run.output + run.errors, way_.failed);
    // In place, a text may have room where the old one ends.
    if (!failed && !linked_) wrong += "it says: " + run.output.substr(0, 200) + run.errors;
    if (failed && after["work/f"] != old_text_) wrong += " the old text is lost";
    if (run.status != (exits && failed ? 2 : 0)) wrong += " status " + std::to_string(run.status);
    if (failed && !exits && !contains(run.output, "Changes discarded")) wrong += " no longer modified";
    for (const auto& [path, bytes] : after) {
      const bool allowed = path.ends_with(".jou") || (exits && failed && is_rescue_copy(path));
      if (!before_.contains(path) && !allowed) wrong += " left behind: " + path;
    }
    return wrong;
  }

  const Way& way_;
  std::string old_text_;
  std::string more_;
  bool linked_;
  Stage stage_;
  std::map<std::string, std::string> before_;
};

TEST(FullDisk, TheOldFileStays) {
  Promise promise(3);
  for (const Way& way : kWays) {
    for (const std::size_t size : {0U, 1U, 4096U, 28672U}) {
      for (const bool twice : {false, true}) {
        for (const bool linked : {false, true}) {
          FullDisk(way, size, twice, linked).on_a_disk(promise);
          FullDisk(way, size, twice, linked).on_the_shim(promise);
        }
      }
    }
  }
}

} // namespace
