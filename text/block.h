#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <new>
#include <string_view>
#include <utility>
#include <vector>

namespace zan {

// A pointer that counts references in the member `refs` of its target. The counts are plain integers, not
// atomic: texts belong to one thread.
template <typename T> class Ref {
 public:
  Ref() = default;
  explicit Ref(std::unique_ptr<T> owned) : target_(owned.release()) { retain(); }
  Ref(const Ref& other) : target_(other.target_) { retain(); }
  Ref(Ref&& other) noexcept : target_(std::exchange(other.target_, nullptr)) {}
  Ref& operator=(Ref other) noexcept {
    std::swap(target_, other.target_);
    return *this;
  }
  ~Ref() {
    if (target_ != nullptr && --target_->refs == 0) std::unique_ptr<T>(target_).reset();
  }

  T* get() const { return target_; }
  T* operator->() const { return target_; }
  T& operator*() const { return *target_; }
  explicit operator bool() const { return target_ != nullptr; }
  friend bool operator==(const Ref&, const Ref&) = default;

 private:
  void retain() {
    if (target_ != nullptr) ++target_->refs;
  }
  T* target_ = nullptr;
};

// A length or a place in a text as one in memory. With 32 bits a text can be too long for that: its pieces
// share blocks.
inline std::size_t in_memory(std::uint64_t count) {
  if (!std::in_range<std::size_t>(count)) throw std::bad_alloc();
  return static_cast<std::size_t>(count);
}

std::uint64_t count_breaks(std::string_view bytes); // line feeds; far faster than reading the file

// An append-only buffer at a fixed address: views into it are valid as long as the block lives. Several texts
// may append to one block, since each refers only to what it wrote itself.
class Block {
 public:
  static Ref<Block> make(std::size_t capacity);
  explicit Block(std::size_t capacity);

  std::string_view view(std::size_t start, std::size_t length) const {
    return {storage_.get() + start, length};
  }
  std::size_t capacity() const { return capacity_; }
  std::size_t used() const { return used_; }
  std::size_t free_space() const { return capacity_ - used_; }

  // At most free_space() bytes.
  void append(std::string_view bytes) {
    std::copy_n(bytes.data(), bytes.size(), storage_.get() + used_);
    used_ += bytes.size();
  }
  // To fill a block that no text refers to yet: write to data(), then set_used().
  char* data() { return storage_.get(); }
  void set_used(std::size_t used) { used_ = used; }

  std::uint64_t breaks_in(std::size_t begin, std::size_t end) const;
  // Offset of line feed number `nth`, counted from 0, at or after `begin`. It must exist.
  std::size_t find_break(std::size_t begin, std::uint64_t nth) const;
  // Extends the index of line feeds to used(). Queries do so themselves; before, while the bytes are still in
  // the cache, it is cheaper.
  void extend_index() const;

  std::uint64_t refs = 0;
  mutable std::uint32_t number = 0; // whoever records texts gives it one

 private:
  struct Free {
    std::size_t mapped = 0; // bytes mapped, or 0: allocated
    void operator()(char* storage) const;
  };

  static std::unique_ptr<char, Free> allocate(std::size_t capacity);
  std::uint64_t breaks_before(std::size_t offset) const;

  std::unique_ptr<char, Free> storage_;
  std::size_t capacity_;
  std::size_t used_ = 0;
  mutable std::vector<std::uint64_t> index_; // line feeds before the end of each stride; 1/128 of the bytes
};

using BlockRef = Ref<Block>;

} // namespace zan
