#pragma once

#include <map>
#include <memory>
#include <string>
#include <string_view>

#include "text/text_buffer.h"

namespace zan {

// The named buffers in name order. Copies share the whole map until one of them changes it, so an undo
// snapshot costs the same with a hundred buffers as with two.
class BufferRegistry {
 public:
  using Map = std::map<std::string, TextBuffer, std::less<>>;

  const TextBuffer* find(std::string_view name) const; // null when there is none
  TextBuffer& entry(const std::string& name); // created empty when there is none; valid until the next change
  void erase(std::string_view name);
  Map::const_iterator begin() const { return map_->begin(); }
  Map::const_iterator end() const { return map_->end(); }

 private:
  Map& own(); // the map, copied first when it is shared

  std::shared_ptr<Map> map_ = std::make_shared<Map>();
};

// The normal form of a buffer name: trimmed, without one leading "=" and one pair of quotes, trimmed, upper
// case.
std::string normalize_buffer_name(std::string_view name);

} // namespace zan
