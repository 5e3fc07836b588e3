#pragma once

#include <string>

#include "text/line_store.h"

namespace zan {

struct NamedText {
  std::string name; // of the buffer
  LineStore text;
};

} // namespace zan
