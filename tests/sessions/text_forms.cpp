#include "tests/sessions/text_forms.h"

#include <algorithm>
#include <map>

std::string unescape(std::string_view text, std::size_t* used) {
  static const std::map<char, char> kEscapes{{'n', '\n'}, {'r', '\r'}, {'t', '\t'}, {'0', '\0'}};
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

std::string shown(std::string_view bytes) {
  std::string text;
  for (const char c : bytes) {
    const auto value = static_cast<unsigned char>(c);
    if (value >= ' ' && value < 127) {
      text += c;
    } else {
      const std::string_view digits = "0123456789abcdef";
      text += c == '\n' ? std::string("\n") : std::string("\\x") + digits[value / 16] + digits[value % 16];
    }
  }
  return text;
}

std::string difference(const std::string& expected, const std::string& actual) {
  const auto ends = std::mismatch(expected.begin(), expected.end(), actual.begin(), actual.end());
  const std::string same(expected.begin(), ends.first);
  const std::size_t line_start = same.rfind('\n') + 1; // npos + 1 is 0
  std::string picture;
  const auto add = [&picture](char sign, std::string_view text) {
    picture += "\n" + std::string{sign} + " ";
    for (const char c : shown(text)) picture += c == '\n' ? "\n" + std::string{sign} + " " : std::string{c};
  };
  if (line_start > 0) add(' ', std::string_view(same).substr(0, line_start - 1));
  add('-', std::string_view(expected).substr(line_start));
  picture +=
      "\n  " + std::string(shown(same.substr(line_start)).size(), ' ') + "^ expected above, actual below";
  add('+', std::string_view(actual).substr(line_start));
  return picture;
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
