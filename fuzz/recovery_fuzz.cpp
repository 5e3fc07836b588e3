// The entries of a session's file, whatever they say, give texts or nothing: as they are, and behind those of
// a session that was recorded.

#include <cstdlib>

#include "fuzz/input.h"
#include "recovery/entries.h"
#include "recovery/restore.h"
#include "recovery/text_recorder.h"

namespace {

void read(std::string_view before, std::string_view entries) {
  const std::string file =
      std::string(zan::kRecoveryFileStart) + std::string(before) + zan::record_of(entries);
  const auto session = zan::read_session(file);
  if (!session) return;
  for (const auto& text : session->texts) {
    zan::PieceWalker walker(text.text, 0, 100'000);
    std::uint64_t bytes = 0;
    for (zan::Chunk chunk; bytes < 100'000 && walker.next(chunk);) bytes += chunk.bytes.size();
    if (bytes > text.text.byte_count()) std::abort();
  }
}

std::string recorded() {
  zan::LineStore text = zan::LineStore::from_text("one\ntwo\n");
  text.insert_text(4, "x");
  zan::EntryWriter entries;
  zan::TextRecorder recorder({});
  while (!recorder.record(text, 4096, entries)) continue;
  return zan::record_of(entries.bytes());
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view entries(reinterpret_cast<const char*>(data), size);
  static const std::string before = recorded();
  read({}, entries);
  read(before, entries);
  return 0;
}
