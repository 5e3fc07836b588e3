#include "text/block.h"

#include <array>
#include <cstdlib>
#include <new>

#include <sys/mman.h>

namespace zan {

namespace {

constexpr std::size_t kStride = 1024;         // bytes per entry of the index
constexpr std::size_t kMapFrom = 1024 * 1024; // smaller blocks come from the allocator

} // namespace

// Counts in lanes of one byte each, which are added up before they can overflow. The inner loop has a fixed
// length, so that compilers vectorise it at any optimisation level.
std::uint64_t count_breaks(std::string_view bytes) {
  constexpr std::size_t kLanes = 32;
  std::uint64_t total = 0;
  while (bytes.size() >= kLanes) {
    std::array<unsigned char, kLanes> lanes{};
    const std::size_t rounds = std::min<std::size_t>(bytes.size() / kLanes, 255);
    const char* at = bytes.data();
    for (std::size_t round = 0; round < rounds; ++round, at += kLanes) {
      for (std::size_t i = 0; i < kLanes; ++i)
        lanes[i] = static_cast<unsigned char>(lanes[i] + (at[i] == '\n' ? 1 : 0));
    }
    for (const unsigned char lane : lanes) total += lane;
    bytes.remove_prefix(rounds * kLanes);
  }
  for (const char c : bytes) total += c == '\n' ? 1 : 0;
  return total;
}

Ref<Block> Block::make(std::size_t capacity) { return Ref<Block>(std::make_unique<Block>(capacity)); }

Block::Block(std::size_t capacity)
    : storage_(allocate(std::max<std::size_t>(capacity, 1))), capacity_(std::max<std::size_t>(capacity, 1)) {}

// Mapped pages take no memory until they are written, so the unused end of a large block is free.
std::unique_ptr<char, Block::Free> Block::allocate(std::size_t capacity) {
  if (capacity < kMapFrom) {
    void* memory = std::malloc(capacity);
    if (memory == nullptr) throw std::bad_alloc();
    return {static_cast<char*>(memory), Free{0}};
  }
  void* memory = mmap(nullptr, capacity, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANON, -1, 0);
  if (memory == MAP_FAILED) throw std::bad_alloc();
#ifdef MADV_HUGEPAGE
  constexpr std::size_t kHugePageFrom = 2 * 1024 * 1024;
  if (capacity >= kHugePageFrom)
    madvise(memory, capacity, MADV_HUGEPAGE); // only a hint: when refused, slower
#endif
  return {static_cast<char*>(memory), Free{capacity}};
}

void Block::Free::operator()(char* storage) const {
  if (mapped > 0) {
    munmap(storage, mapped);
  } else {
    std::free(storage);
  }
}

void Block::extend_index() const {
  index_.reserve(capacity_ / kStride);
  while (index_.size() < used_ / kStride) {
    const std::uint64_t before = index_.empty() ? 0 : index_.back();
    index_.push_back(before + count_breaks(view(index_.size() * kStride, kStride)));
  }
}

std::uint64_t Block::breaks_before(std::size_t offset) const {
  const std::size_t strides = offset / kStride;
  if (strides > index_.size()) extend_index();
  const std::uint64_t before = strides == 0 ? 0 : index_[strides - 1];
  return before + count_breaks(view(strides * kStride, offset % kStride));
}

std::uint64_t Block::breaks_in(std::size_t begin, std::size_t end) const {
  if (end - begin <= 2 * kStride) return count_breaks(view(begin, end - begin));
  return breaks_before(end) - breaks_before(begin);
}

std::size_t Block::find_break(std::size_t begin, std::uint64_t nth) const {
  constexpr std::size_t kStep = 128; // counting is vectorised: count down to this size, then look at bytes
  if (used_ / kStride > index_.size()) extend_index();
  const std::uint64_t wanted = breaks_before(begin) + nth; // line feeds of the block before the one sought
  const auto stride = std::ranges::upper_bound(index_, wanted) - index_.begin();
  std::size_t at = static_cast<std::size_t>(stride) * kStride;
  std::uint64_t left = wanted - (stride == 0 ? 0 : index_[static_cast<std::size_t>(stride) - 1]);
  while (at + kStep <= used_) {
    const std::uint64_t here = count_breaks(view(at, kStep));
    if (here > left) break;
    left -= here;
    at += kStep;
  }
  for (;; ++at) {
    if (storage_.get()[at] == '\n' && left-- == 0) return at;
  }
}

} // namespace zan
