#pragma once

#include "fuzz/input.h"

// What is loaded from a file and what is saved, line by line.
namespace zan::fuzz {

inline std::vector<std::string> lines_of_file(std::string bytes) {
  if (bytes.ends_with('\n')) bytes.pop_back();
  std::vector<std::string> lines = split_lines(bytes);
  for (std::string& line : lines)
    if (line.ends_with('\r')) line.pop_back();
  return lines;
}

inline std::string file_of(const std::vector<std::string>& lines, std::size_t record_length) {
  std::string bytes;
  for (std::string line : lines) {
    if (record_length == 0) {
      bytes += line + '\n';
      continue;
    }
    do {
      std::string record = line.substr(0, record_length);
      line.erase(0, record.size());
      record.resize(record_length, ' ');
      bytes += record + '\n';
    } while (!line.empty());
  }
  return bytes == "\n" ? "" : bytes;
}

} // namespace zan::fuzz
