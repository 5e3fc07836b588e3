#include "text/buffer_registry.h"

#include "text/bytes.h"

namespace zan {

const TextBuffer* BufferRegistry::find(std::string_view name) const {
  const auto found = map_->find(name);
  return found == map_->end() ? nullptr : &found->second;
}

TextBuffer& BufferRegistry::entry(const std::string& name) { return own()[name]; }

void BufferRegistry::erase(std::string_view name) {
  Map& map = own();
  if (const auto found = map.find(name); found != map.end()) map.erase(found);
}

BufferRegistry::Map& BufferRegistry::own() {
  if (map_.use_count() > 1) map_ = std::make_shared<Map>(*map_);
  return *map_;
}

std::string normalize_buffer_name(std::string_view name) {
  std::string_view rest = trim(name);
  if (rest.starts_with('=')) rest.remove_prefix(1);
  return upper(trim(strip_optional_quotes(rest)));
}

} // namespace zan
