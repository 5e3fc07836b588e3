#include "recovery/entries.h"

#include <array>
#include <cstring>

namespace zan {

namespace {

constexpr std::size_t kHead =
    12; // bytes before a record's entries: their length in four, the checksum in eight

std::uint64_t little_endian(std::string_view bytes) {
  std::uint64_t value = 0;
  for (std::size_t i = bytes.size(); i-- > 0;) value = value << 8 | static_cast<unsigned char>(bytes[i]);
  return value;
}

void put_little_endian(std::string& to, std::uint64_t value, int size) {
  for (int i = 0; i < size; ++i) to += static_cast<char>(value >> (8 * i) & 0xFF);
}

} // namespace

void EntryWriter::number(std::uint64_t value) {
  for (; value >= 0x80; value >>= 7) bytes_ += static_cast<char>(value | 0x80);
  bytes_ += static_cast<char>(value);
}

void EntryWriter::text(std::string_view bytes) {
  number(bytes.size());
  bytes_ += bytes;
}

char EntryReader::tag() {
  const std::string_view taken = take(1);
  return taken.empty() ? '\0' : taken.front();
}

std::uint64_t EntryReader::number() {
  std::uint64_t value = 0;
  for (unsigned shift = 0; shift < 64; shift += 7) {
    const auto byte = static_cast<unsigned char>(tag());
    value |= static_cast<std::uint64_t>(byte & 0x7F) << shift;
    if (byte < 0x80) return failed_ ? 0 : value;
  }
  failed_ = true;
  return 0;
}

std::string_view EntryReader::text() { return take(number()); }

std::string_view EntryReader::take(std::uint64_t count) {
  if (failed_ || count > rest_.size()) {
    failed_ = true;
    rest_ = {};
    return {};
  }
  const std::string_view taken = rest_.substr(0, static_cast<std::size_t>(count));
  rest_.remove_prefix(taken.size());
  return taken;
}

// Eight bytes at a time: a record may hold megabytes.
std::uint64_t checksum(std::string_view bytes, std::uint64_t seed) {
  constexpr std::uint64_t kFactor = 0x9E3779B97F4A7C15;
  std::uint64_t sum = seed ^ (bytes.size() * kFactor);
  const auto mix = [&](std::string_view word) {
    sum = (sum ^ little_endian(word)) * kFactor;
    sum ^= sum >> 29;
  };
  for (; bytes.size() >= 8; bytes.remove_prefix(8)) mix(bytes.substr(0, 8));
  mix(bytes);
  return sum;
}

std::string record_of(std::string_view entries) {
  std::string record;
  record.reserve(kHead + entries.size());
  put_little_endian(record, entries.size(), 4);
  put_little_endian(record, checksum(entries), 8);
  record += entries;
  return record;
}

RecordStream::RecordStream(std::string_view bytes) {
  if (bytes.starts_with(kRecoveryFileStart)) rest_ = bytes.substr(kRecoveryFileStart.size());
}

std::optional<std::string_view> RecordStream::next() {
  if (rest_.size() < kHead) return std::nullopt;
  const auto size = static_cast<std::size_t>(little_endian(rest_.substr(0, 4)));
  const std::uint64_t sum = little_endian(rest_.substr(4, 8));
  const std::string_view entries = rest_.substr(kHead, size);
  if (entries.size() < size || checksum(entries) != sum) {
    rest_ = {};
    return std::nullopt;
  }
  rest_.remove_prefix(kHead + size);
  return entries;
}

} // namespace zan
