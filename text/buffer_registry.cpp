#include "text/buffer_registry.h"

#include <algorithm>
#include <memory>
#include <utility>

#include "text/bytes.h"

namespace zan {

namespace {

// The target, for writing: made when there is none, copied when others refer to it too.
template <typename T> T& writable(Ref<T>& ref) {
  if (ref && ref->refs == 1) return *ref;
  auto own = ref ? std::make_unique<T>(*ref) : std::make_unique<T>();
  own->refs = 0;
  ref = Ref<T>(std::move(own));
  return *ref;
}

template <typename Rows> auto lower_bound(Rows& rows, std::string_view name) {
  return std::ranges::lower_bound(rows, name, {},
                                  [](const auto& row) { return std::string_view(row->name); });
}

} // namespace

const TextBuffer* BufferRegistry::find(std::string_view name) const {
  if (!table_) return nullptr;
  const auto row = lower_bound(table_->rows, name);
  return row != table_->rows.end() && (*row)->name == name ? &(*row)->buffer : nullptr;
}

TextBuffer& BufferRegistry::entry(std::string_view name) {
  const bool exists = find(name) != nullptr;
  auto& rows = writable(table_).rows;
  auto row = lower_bound(rows, name);
  if (!exists) {
    auto added = std::make_unique<NamedBuffer>();
    added->name = name;
    row = rows.insert(row, Ref<NamedBuffer>(std::move(added)));
  }
  return writable(*row).buffer;
}

void BufferRegistry::erase(std::string_view name) {
  if (find(name) == nullptr) return;
  auto& rows = writable(table_).rows;
  rows.erase(lower_bound(rows, name));
}

std::vector<BufferRegistry::Entry> BufferRegistry::entries() const {
  std::vector<Entry> result;
  if (!table_) return result;
  for (const auto& row : table_->rows) result.push_back({row->name, row->buffer});
  return result;
}

std::string normalize_buffer_name(std::string_view name) {
  std::string_view rest = trim(name);
  if (rest.starts_with('=')) rest.remove_prefix(1);
  return upper(trim(strip_optional_quotes(rest)));
}

} // namespace zan
