#pragma once

#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "tests/files/scratch_directory.h"

struct RunResult {
  int status = -1; // exit status, or 128 and the signal that ended it
  bool timed_out = false;
  std::string output;
  std::string errors;
};

// Runs `program` in the folder `work` of `home` with nothing in its environment but `environment` and its own
// number as PID, `input` in a pipe as its standard input; the other two streams go to files in `home`. Killed
// after 30 seconds.
RunResult run_program(const std::string& program, const std::vector<std::string>& arguments,
                      const std::map<std::string, std::string>& environment, const std::string& home,
                      std::string_view input);
