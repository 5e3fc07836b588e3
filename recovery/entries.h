#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

// The bytes of a recovery file: records, each with its length and a checksum, made of entries.
namespace zan {

// Puts the parts of entries one behind the other.
class EntryWriter {
 public:
  void tag(char tag) { bytes_ += tag; }
  void number(std::uint64_t value);  // seven bits a byte, the lowest first
  void text(std::string_view bytes); // its length before it
  void raw(std::string_view parts) { bytes_ += parts; }
  const std::string& bytes() const { return bytes_; }

 private:
  std::string bytes_;
};

// Takes them apart. After the first part that is not there, every part is 0 or empty, and failed() is true.
class EntryReader {
 public:
  explicit EntryReader(std::string_view bytes) : rest_(bytes) {}
  char tag();
  std::uint64_t number();
  std::string_view text();
  bool at_end() const { return rest_.empty(); }
  bool failed() const { return failed_; }

 private:
  std::string_view take(std::uint64_t count);

  std::string_view rest_;
  bool failed_ = false;
};

std::uint64_t checksum(std::string_view bytes, std::uint64_t seed = 0); // not for secrets

inline constexpr std::string_view kRecoveryFileStart = "ZAN recovery 1\n";
std::string record_of(std::string_view entries); // as it stands in the file

// The records of a file that holds `bytes`, in their order.
class RecordStream {
 public:
  explicit RecordStream(std::string_view bytes);
  // The entries of the next one. Nothing at the end, and from a record on that is cut off or damaged.
  std::optional<std::string_view> next();

 private:
  std::string_view rest_;
};

} // namespace zan
