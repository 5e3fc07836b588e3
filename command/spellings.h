#pragma once

#include <algorithm>
#include <cstddef>
#include <span>
#include <string_view>

// The spellings that do not follow from the key of a command or setting. A line is compared, in any case of
// letters, with the exact forms and then with the prefix forms.
namespace zan {

// A whole line, upper case, with one blank between words.
struct ExactForm {
  std::string_view line;
  std::string_view key;
  std::string_view arg = {};
};

// The beginning of a line; the argument is what follows it, trimmed.
struct PrefixForm {
  std::string_view prefix;
  std::string_view key;
};

// The words of a key itself, which are the key with blanks for its dashes, and what may follow them on a
// line. A key of one word needs no form: the first word of a line is a key, whatever follows it.
enum class KeyForm {
  unspelled, // the words do not stand for the key; other spellings do
  alone,     // nothing: "DEL L"
  argument,  // an argument, behind two words: "SET TAB 4"
  either,    // an argument or nothing: "SHOW KEY"
};

// An argument can only follow the words of a key of two words.
constexpr bool suits(std::string_view key, KeyForm form) {
  return form == KeyForm::unspelled || form == KeyForm::alone || std::ranges::count(key, '-') == 1;
}

// The form of a key in upper case; `unspelled` for what is no key.
using KeyFormLookup = KeyForm (*)(std::string_view key);

// No form, nor key in its own words, is longer: the rest of a long line is not looked at.
inline constexpr std::size_t kLongestForm = 64;

// Abbreviations, aliases and lines that imply an argument. Sorted by line.
std::span<const ExactForm> exact_forms();
// The first that fits decides.
std::span<const PrefixForm> prefix_forms();

} // namespace zan
