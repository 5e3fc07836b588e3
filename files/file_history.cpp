#include "files/file_history.h"

namespace zan {

OriginRef FileHistory::loaded(const OriginRef& fresh) {
  if (fresh->state.kind != FileState::Kind::present) return fresh;
  OriginRef& known = origins_[fresh->state];
  if (known == nullptr) known = fresh;
  return known;
}

void FileHistory::wrote(const FileState& state, const OriginRef& origin) {
  if (state.kind == FileState::Kind::present) origins_[state] = origin;
}

bool FileHistory::belongs_to(const FileState& state, const OriginRef& origin) const {
  const auto known = origins_.find(state);
  return known != origins_.end() && known->second == origin;
}

} // namespace zan
