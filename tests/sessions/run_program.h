#pragma once

#include <map>
#include <string>
#include <string_view>
#include <vector>

// A fresh directory, removed with all that is in it at the end.
class TemporaryDirectory {
 public:
  TemporaryDirectory();
  ~TemporaryDirectory();
  TemporaryDirectory(const TemporaryDirectory&) = delete;
  TemporaryDirectory& operator=(const TemporaryDirectory&) = delete;

  const std::string& path() const { return path_; } // absolute, without symbolic links

 private:
  std::string path_;
};

struct RunResult {
  int status = -1; // exit status, or 128 and the signal that ended it
  bool timed_out = false;
  std::string output;
  std::string errors;
};

// Runs `program` in the folder `work` of `home` with nothing in its environment but `environment`, `input` in
// a pipe as its standard input; the other two streams go to files in `home`. Killed after 30 seconds.
RunResult run_program(const std::string& program, const std::vector<std::string>& arguments,
                      const std::map<std::string, std::string>& environment, const std::string& home,
                      std::string_view input);

std::string read_whole_file(const std::string& path);
