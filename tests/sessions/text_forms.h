#pragma once

#include <string>
#include <string_view>
#include <vector>

// The bytes that a text with the escapes \n \r \t \0 \x1b \" \\ stands for. A quote that is not escaped ends
// it; `used`, when given, becomes the place of that quote, or the length of the text.
std::string unescape(std::string_view text, std::size_t* used = nullptr);

// The words between spaces; a word may be quoted, and then holds escapes.
std::vector<std::string> split_arguments(std::string_view text);

// Bytes as a failure can show them: \x1b for what is not printable, line feeds kept.
std::string shown(std::string_view bytes);

// Both texts in one picture: what they share, then the rest of each, a caret under the first difference.
std::string difference(const std::string& expected, const std::string& actual);
