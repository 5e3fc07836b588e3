#include "files/records.h"

namespace zan {

ByteSource record_source(const LineStore& text, RowStretch rows, std::size_t record_length) {
  return [text, rows, record_length](BlockWriter& out) {
    return each_file_piece(text, rows, record_length,
                           [&out](std::string_view piece) { return out.put(piece); });
  };
}

} // namespace zan
