#include "search/substring.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstring>

#include "text/bytes.h"

namespace zan {

namespace {

// Longer needles may fall back to a border table (Knuth-Morris-Pratt); shorter ones are cheap to compare.
constexpr std::size_t kLongNeedle = 32;

constexpr std::size_t kPlaces = 64; // compared at once

// How common a byte is in prose and source text, 0 for the rare ones.
constexpr auto kFrequency = [] {
  std::array<unsigned char, 256> table{};
  constexpr std::string_view common = " etaoinsrlhdcumpfgybwvk\n0.,_1()-;=\"x2/";
  for (std::size_t i = 0; i < common.size(); ++i)
    table[static_cast<unsigned char>(common[i])] = static_cast<unsigned char>(common.size() - i);
  return table;
}();

using Bytes16 = unsigned char __attribute__((vector_size(16)));
using Words2 = std::uint64_t __attribute__((vector_size(16)));

Bytes16 load(const char* from) {
  Bytes16 bytes;
  std::memcpy(&bytes, from, sizeof bytes);
  return bytes;
}

bool any(Bytes16 lanes) {
  Words2 words;
  std::memcpy(&words, &lanes, sizeof words);
  return (words[0] | words[1]) != 0;
}

// Bit i of the result is set when lane i is 0xff; the other lanes are 0.
std::uint64_t bits_of(Bytes16 lanes) {
  constexpr bool little = std::endian::native == std::endian::little;
  constexpr std::uint64_t weights = little ? 0x8040201008040201 : 0x0102040810204080;
  Words2 words;
  std::memcpy(&words, &lanes, sizeof words);
  const auto pack = [](std::uint64_t word) { return (word & weights) * 0x0101010101010101 >> 56; };
  return pack(words[0]) | pack(words[1]) << 8;
}

// For each prefix, the length of its longest proper border: a prefix of it that is also a suffix.
template <typename ByteAt> std::vector<std::size_t> borders(std::size_t size, ByteAt byte_at) {
  std::vector<std::size_t> table(size);
  for (std::size_t i = 1, length = 0; i < size; ++i) {
    while (length > 0 && byte_at(i) != byte_at(length)) length = table[length - 1];
    if (byte_at(i) == byte_at(length)) ++length;
    table[i] = length;
  }
  return table;
}

// Knuth-Morris-Pratt: reads up to `count` text bytes until the whole needle has matched; returns how many.
template <typename TextAt, typename ByteAt>
std::size_t kmp(std::size_t count, TextAt text_at, ByteAt byte_at, const std::vector<std::size_t>& table) {
  for (std::size_t i = 0, length = 0; i < count; ++i) {
    const char c = text_at(i);
    while (length > 0 && c != byte_at(length)) length = table[length - 1];
    if (c == byte_at(length)) ++length;
    if (length == table.size()) return i + 1;
  }
  return Substring::npos;
}

} // namespace

Substring::Substring(std::string_view needle, bool exact) : bytes_(needle), exact_(exact) {
  if (!exact) std::ranges::transform(bytes_, bytes_.begin(), folded);
  if (bytes_.empty()) return;
  const auto commoner = [&](std::size_t a, std::size_t b) {
    return kFrequency[to_byte(bytes_[a])] > kFrequency[to_byte(bytes_[b])];
  };
  // Two different places, the second as far back as it can be: equal neighbours filter little.
  std::size_t first = 0;
  for (std::size_t i = 1; i < size(); ++i)
    if (commoner(first, i)) first = i;
  std::size_t second = first == 0 ? size() - 1 : 0;
  for (std::size_t i = 0; i < size(); ++i)
    if (i != first && !commoner(i, second)) second = i;
  first_ = probe_at(first);
  second_ = probe_at(second);
  if (size() <= kLongNeedle) return;
  forward_ = borders(size(), [&](std::size_t i) { return bytes_[i]; });
  backward_ = borders(size(), [&](std::size_t i) { return bytes_[size() - 1 - i]; });
}

Substring Substring::either(char a, char b, bool exact) {
  Substring choice({&a, 1}, exact);
  choice.second_ = Substring({&b, 1}, exact).first_;
  choice.either_ = true;
  return choice;
}

unsigned Substring::commonness() const {
  const unsigned first = kFrequency[first_.byte];
  if (either_) return std::max<unsigned>(first, kFrequency[second_.byte]);
  return first / static_cast<unsigned>(std::clamp<std::size_t>(size(), 1, 4));
}

Substring::Probe Substring::probe_at(std::size_t at) const {
  const unsigned char byte = to_byte(bytes_[at]);
  // OR with 0x20 maps only A to Z to letters.
  const bool letter = !exact_ && byte >= 'a' && byte <= 'z';
  return {at, byte, static_cast<unsigned char>(letter ? 0x20 : 0)};
}

// Counts the bytes it compares in `work`.
bool Substring::matches(const char* text, std::size_t& work) const {
  if (either_) return true; // the probes have compared all of it
  std::size_t i = 0;
  if (exact_) {
    while (i < size() && text[i] == bytes_[i]) ++i;
  } else {
    while (i < size() && folded(text[i]) == bytes_[i]) ++i;
  }
  work += i + 1;
  return i == size();
}

bool Substring::worth_fallback(std::size_t work, std::size_t passed) const {
  return !forward_.empty() && work > 8 * passed + 4 * size();
}

// Bit i is set when an occurrence may start at text + i: the two probes match, or either. At most 64 places,
// after each of which the whole needle has room.
std::uint64_t Substring::places(const char* text, std::size_t count) const {
  const Bytes16 byte1 = Bytes16{} + first_.byte, fold1 = Bytes16{} + first_.fold;
  const Bytes16 byte2 = Bytes16{} + second_.byte, fold2 = Bytes16{} + second_.fold;
  const auto lanes = [&](std::size_t i) __attribute__((always_inline)) { // -O2 would call it
    const Bytes16 text1 = load(text + i + first_.at) | fold1, text2 = load(text + i + second_.at) | fold2;
    return reinterpret_cast<Bytes16>(either_ ? (text1 == byte1) | (text2 == byte2)
                                             : (text1 == byte1) & (text2 == byte2));
  };
  if (count == kPlaces) {
    const Bytes16 a = lanes(0), b = lanes(16), c = lanes(32), d = lanes(48);
    if (!any(a | b | c | d)) return 0;
    return bits_of(a) | bits_of(b) << 16 | bits_of(c) << 32 | bits_of(d) << 48;
  }
  std::uint64_t found = 0;
  std::size_t i = 0;
  for (; i + 16 <= count; i += 16) found |= bits_of(lanes(i)) << i;
  for (; i < count; ++i) {
    const bool fits1 = (to_byte(text[i + first_.at]) | first_.fold) == first_.byte;
    const bool fits2 = (to_byte(text[i + second_.at]) | second_.fold) == second_.byte;
    found |= std::uint64_t{either_ ? fits1 || fits2 : fits1 && fits2} << i;
  }
  return found;
}

std::size_t Substring::find(std::string_view text, std::size_t from) const {
  if (from > text.size() || text.size() - from < size()) return npos;
  if (empty()) return from;
  std::size_t work = 0;
  const std::size_t stop = text.size() - size() + 1; // after the last place
  for (std::size_t at = from; at < stop; at += kPlaces) {
    std::uint64_t found = places(text.data() + at, std::min(kPlaces, stop - at));
    for (; found != 0; found &= found - 1) {
      const std::size_t place = at + static_cast<std::size_t>(std::countr_zero(found));
      if (matches(text.data() + place, work)) return place;
      if (worth_fallback(work, place - from)) return kmp_forward(text, place + 1);
    }
  }
  return npos;
}

std::size_t Substring::find_last(std::string_view text, std::size_t limit) const {
  limit = std::min(limit, text.size());
  if (limit < size()) return npos;
  if (empty()) return limit;
  std::size_t work = 0;
  const std::size_t last = limit - size();
  for (std::size_t stop = last + 1; stop > 0;) {
    const std::size_t count = std::min(kPlaces, stop);
    stop -= count;
    std::uint64_t found = places(text.data() + stop, count);
    while (found != 0) {
      const auto bit = static_cast<std::size_t>(std::bit_width(found)) - 1;
      found &= ~(std::uint64_t{1} << bit);
      const std::size_t place = stop + bit;
      if (matches(text.data() + place, work)) return place;
      if (worth_fallback(work, last - place)) return kmp_backward(text, place + size() - 1);
    }
  }
  return npos;
}

std::size_t Substring::kmp_forward(std::string_view text, std::size_t from) const {
  const auto text_at = [&](std::size_t i) { return exact_ ? text[from + i] : folded(text[from + i]); };
  const auto byte_at = [&](std::size_t i) { return bytes_[i]; };
  const std::size_t taken = kmp(text.size() - from, text_at, byte_at, forward_);
  return taken == npos ? npos : from + taken - size();
}

std::size_t Substring::kmp_backward(std::string_view text, std::size_t limit) const {
  const auto text_at = [&](std::size_t i) {
    return exact_ ? text[limit - 1 - i] : folded(text[limit - 1 - i]);
  };
  const auto byte_at = [&](std::size_t i) { return bytes_[size() - 1 - i]; };
  const std::size_t taken = kmp(limit, text_at, byte_at, backward_);
  return taken == npos ? npos : limit - taken;
}

} // namespace zan
