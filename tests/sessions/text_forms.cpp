#include "tests/sessions/text_forms.h"

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <map>
#include <stdexcept>

namespace {

// Quotes are bytes like any other.
std::string unescape_all(std::string_view text) {
  std::size_t used = 0;
  const std::string bytes = unescape(text, &used);
  return used == text.size() ? bytes : bytes + '"' + unescape_all(text.substr(used + 1));
}

std::string bytes_of_field(const std::string& field) {
  return field.starts_with('"') ? unescape(std::string_view(field).substr(1)) : unescape_all(field);
}

} // namespace

std::string unescape(std::string_view text, std::size_t* used) {
  static const std::map<char, char> kEscapes{
      {'n', '\n'}, {'r', '\r'}, {'t', '\t'}, {'0', '\0'}, {'e', '\x1b'}};
  std::string bytes;
  std::size_t i = 0;
  for (; i < text.size() && text[i] != '"'; ++i) {
    if (text[i] != '\\' || i + 1 == text.size()) {
      bytes += text[i];
    } else if (text[++i] == 'x' && i + 2 < text.size()) {
      bytes += static_cast<char>(std::stoi(std::string(text.substr(i + 1, 2)), nullptr, 16));
      i += 2;
    } else {
      const auto found = kEscapes.find(text[i]);
      bytes += found != kEscapes.end() ? found->second : text[i];
    }
  }
  if (used != nullptr) *used = i;
  return bytes;
}

std::vector<std::string> split_arguments(std::string_view text) {
  std::vector<std::string> words;
  while (!text.empty()) {
    if (text.front() == ' ') {
      text.remove_prefix(1);
    } else if (text.front() == '"') {
      std::size_t used = 0;
      words.push_back(unescape(text.substr(1), &used));
      text.remove_prefix(std::min(text.size(), used + 2));
    } else {
      words.emplace_back(text.substr(0, text.find(' ')));
      text.remove_prefix(words.back().size());
    }
  }
  return words;
}

std::vector<std::string> lines_of_file(const std::string& name) {
  std::vector<std::string> lines;
  std::ifstream file(ZAN_TESTS "/" + name);
  for (std::string line; std::getline(file, line);)
    if (!line.empty() && !line.starts_with("# ")) lines.push_back(line);
  if (lines.empty()) throw std::runtime_error("cannot read " + name);
  return lines;
}

std::vector<std::string> split_fields(const std::string& row) {
  std::vector<std::string> fields;
  for (std::size_t begin = 0, end = 0; end != std::string::npos; begin = end + 2) {
    end = row.find(" | ", begin);
    const std::string field = row.substr(begin, end - begin);
    const std::size_t first = std::min(field.find_first_not_of(' '), field.size());
    fields.push_back(field.substr(first, field.find_last_not_of(' ') + 1 - first));
  }
  return fields;
}

Fields bytes_of_row(const std::string& row) {
  Fields fields = split_fields(row);
  for (std::string& field : fields) field = bytes_of_field(field);
  return fields;
}

void expect_rows(const std::string& table, const std::function<std::string(const Fields&)>& answer) {
  for (const std::string& row : lines_of_file(table + ".table")) {
    Fields fields = bytes_of_row(row);
    const std::string wanted = fields.back();
    fields.pop_back();
    EXPECT_EQ(answer(fields), wanted) << table << ".table: " << row;
  }
}

std::pair<std::string, std::string> split_word(const std::string& text) {
  const auto space = text.find(' ');
  if (space == std::string::npos) return {text, ""};
  return {text.substr(0, space), text.substr(space + 1)};
}

std::string Transcript::block(std::size_t& next) const {
  std::string text;
  for (; next < lines.size() && lines[next].text.starts_with('|'); ++next)
    text += lines[next].text.substr(1) + '\n';
  return text;
}

void PrintTo(const Transcript& transcript, std::ostream* out) { *out << transcript.name; }

std::vector<Transcript> read_transcripts(const std::string& folder, const std::string& extension) {
  std::vector<std::filesystem::path> paths;
  for (const auto& entry : std::filesystem::directory_iterator(ZAN_TESTS "/" + folder))
    if (entry.path().extension() == extension) paths.push_back(entry.path());
  std::ranges::sort(paths);
  std::vector<Transcript> found;
  for (const auto& path : paths) {
    std::ifstream file(path, std::ios::binary);
    int number = 0;
    for (std::string text; std::getline(file, text);) {
      const std::string place = path.filename().string() + ":" + std::to_string(++number);
      if (!text.starts_with("== ")) {
        if (!found.empty()) found.back().lines.push_back({place, text});
        continue;
      }
      std::string name = path.stem().string();
      for (const char c : text.substr(2)) {
        const bool plain = std::isalnum(static_cast<unsigned char>(c)) != 0;
        if (plain || !name.ends_with('_')) name += plain ? c : '_';
      }
      found.push_back({name.substr(0, name.find_last_not_of('_') + 1), {}});
    }
  }
  return found;
}
