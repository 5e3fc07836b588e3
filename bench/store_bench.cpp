// How the text store behaves on a large file. ZAN_BENCH_MB sets the file's size (100 by default).
#include <benchmark/benchmark.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <random>
#include <string>
#include <vector>

#include <fcntl.h>
#include <unistd.h>

#include "recovery/text_recorder.h"
#include "text/line_store.h"
#include "text/load_file.h"

namespace {

using zan::LineStore;
using zan::LineStoreBuilder;

// Lines of 0 to 79 bytes in a file that goes when the program ends.
class SampleFile {
 public:
  SampleFile() {
    const char* megabytes = std::getenv("ZAN_BENCH_MB");
    size_ = (megabytes == nullptr ? 100u : std::strtoull(megabytes, nullptr, 10)) * 1024 * 1024;
    path_ = std::filesystem::temp_directory_path() / ("store_bench." + std::to_string(getpid()));
    std::string part;
    std::mt19937 random(1);
    while (part.size() < 1024 * 1024) part += std::string(random() % 80, 'x') + '\n';
    part.resize(1024 * 1024, '\n');
    std::ofstream out(path_, std::ios::binary);
    for (std::uint64_t done = 0; done < size_; done += part.size()) out << part;
  }
  SampleFile(const SampleFile&) = delete;
  SampleFile& operator=(const SampleFile&) = delete;
  ~SampleFile() { std::filesystem::remove(path_); }

  std::string path() const { return path_.string(); }
  std::int64_t size() const { return static_cast<std::int64_t>(size_); }

 private:
  std::filesystem::path path_;
  std::uint64_t size_;
};

const SampleFile& sample() {
  static const SampleFile file;
  return file;
}

const LineStore& sample_store() {
  static const LineStore store = zan::load_file(sample().path())->lines;
  return store;
}

LineStore scattered(std::uint64_t edits) {
  LineStore store = sample_store();
  std::mt19937_64 random(2);
  for (std::uint64_t i = 0; i < edits; ++i) store.insert_bytes(random() % store.byte_count(), "e");
  return store;
}

// The floor for a load: the bytes read into fresh memory, then one pass that looks for line feeds.
void read_and_scan(benchmark::State& state) {
  const auto size = static_cast<std::size_t>(sample().size());
  for (auto _ : state) {
    const int file = open(sample().path().c_str(), O_RDONLY | O_CLOEXEC);
    const zan::BlockRef block = zan::Block::make(size);
    std::size_t done = 0;
    for (ssize_t count = 1; count > 0; done += static_cast<std::size_t>(count))
      count = read(file, block->data() + done, size - done);
    close(file);
    benchmark::DoNotOptimize(zan::count_breaks(block->view(0, done)));
  }
  state.SetBytesProcessed(state.iterations() * sample().size());
}
BENCHMARK(read_and_scan)->Unit(benchmark::kMillisecond);

void load(benchmark::State& state) {
  const std::string path = sample().path();
  for (auto _ : state) benchmark::DoNotOptimize(zan::load_file(path));
  state.SetBytesProcessed(state.iterations() * sample().size());
}
BENCHMARK(load)->Unit(benchmark::kMillisecond);

void copy(benchmark::State& state) {
  for (auto _ : state) benchmark::DoNotOptimize(LineStore(sample_store()));
}
BENCHMARK(copy);

// One byte in, one byte out, at 0, 50 or 100 % of the text.
void insert_and_erase(benchmark::State& state) {
  LineStore store = sample_store();
  const std::uint64_t at = store.byte_count() / 100 * static_cast<std::uint64_t>(state.range(0));
  for (auto _ : state) {
    store.insert_text(at, "\n");
    store.erase(at, at + 1);
  }
}
BENCHMARK(insert_and_erase)->Arg(0)->Arg(50)->Arg(100);

void type(benchmark::State& state) {
  LineStore store = scattered(1000);
  std::uint64_t at = store.byte_count() / 3;
  for (auto _ : state) store.insert_bytes(at++, "t");
}
BENCHMARK(type);

// An edit at a random place of a text of many pieces, and a copy kept before each as undo does.
void scattered_edit_and_snapshot(benchmark::State& state) {
  LineStore store = scattered(static_cast<std::uint64_t>(state.range(0)));
  std::vector<LineStore> snapshots(100);
  std::mt19937_64 random(3);
  for (std::size_t i = 0; auto _ : state) {
    snapshots[i++ % snapshots.size()] = store;
    store.insert_bytes(random() % store.byte_count(), "s");
  }
  state.counters["pieces"] = static_cast<double>(store.piece_count());
}
BENCHMARK(scattered_edit_and_snapshot)->Arg(0)->Arg(1000)->Arg(1000000);

void erase_scattered(benchmark::State& state) {
  LineStore store = scattered(1000000);
  std::mt19937_64 random(4);
  for (auto _ : state) {
    const std::uint64_t at = random() % store.byte_count();
    store.erase(at, at + 3);
  }
}
BENCHMARK(erase_scattered);

// What a session's file gets for each character typed far apart, without the wait for the disk.
void record_a_key(benchmark::State& state) {
  LineStore store = sample_store();
  zan::TextRecorder recorder({});
  recorder.add_base(0, store);
  std::mt19937_64 random(4);
  std::uint64_t bytes = 0;
  for (auto _ : state) {
    store.insert_bytes(random() % store.byte_count(), "x");
    zan::EntryWriter entries;
    while (!recorder.record(store, 256 * 1024, entries)) continue;
    recorder.refer_to(store, entries);
    bytes += entries.bytes().size();
  }
  state.counters["bytes"] = static_cast<double>(bytes) / static_cast<double>(state.iterations());
}
BENCHMARK(record_a_key)->Iterations(1000);

void find_row(benchmark::State& state) {
  const LineStore store = scattered(static_cast<std::uint64_t>(state.range(0)));
  std::mt19937_64 random(5);
  for (auto _ : state) benchmark::DoNotOptimize(store.line_start(random() % store.line_count()));
}
BENCHMARK(find_row)->Arg(0)->Arg(1000000);

void find_position(benchmark::State& state) {
  std::mt19937_64 random(6);
  for (auto _ : state)
    benchmark::DoNotOptimize(sample_store().position_of(random() % sample_store().byte_count()));
}
BENCHMARK(find_position);

void walk_lines(benchmark::State& state) {
  const LineStore store = scattered(static_cast<std::uint64_t>(state.range(0)));
  for (auto _ : state) {
    zan::LineWalker walker(store, 0);
    for (std::string_view line; walker.next(line);) benchmark::DoNotOptimize(line);
  }
  state.SetBytesProcessed(state.iterations() * sample().size());
}
BENCHMARK(walk_lines)->Arg(0)->Arg(1000000)->Unit(benchmark::kMillisecond);

// What walk_lines cannot beat: finding each line feed of text that lies in one stretch.
void find_line_feeds(benchmark::State& state) {
  const zan::TextView text = sample_store().slice(0, sample_store().byte_count());
  for (auto _ : state) {
    std::string_view rest = text;
    for (std::size_t at = 0; (at = rest.find('\n')) != std::string_view::npos;) {
      benchmark::DoNotOptimize(at);
      rest.remove_prefix(at + 1);
    }
  }
  state.SetBytesProcessed(state.iterations() * sample().size());
}
BENCHMARK(find_line_feeds)->Unit(benchmark::kMillisecond);

// A replacement of some bytes in each line: the whole text is written anew from short strings.
void rewrite_lines(benchmark::State& state) {
  for (auto _ : state) {
    LineStoreBuilder builder;
    zan::LineWalker walker(sample_store(), 0);
    for (std::string_view line; walker.next(line);) {
      builder.append_bytes(line.substr(0, line.size() / 2));
      builder.append_bytes("new");
      builder.append_bytes(line.substr(line.size() / 2));
      builder.append_break();
    }
    benchmark::DoNotOptimize(builder.finish());
  }
  state.SetBytesProcessed(state.iterations() * sample().size());
}
BENCHMARK(rewrite_lines)->Unit(benchmark::kMillisecond);

// A replacement every range(0) bytes, what lies between taken from the old text.
void replace_every(benchmark::State& state) {
  const LineStore& store = sample_store();
  const auto step = static_cast<std::uint64_t>(state.range(0));
  for (auto _ : state) {
    LineStoreBuilder builder;
    for (std::uint64_t at = 0; at < store.byte_count(); at += step) {
      builder.append_bytes("new");
      builder.append(store, at + 3, at + step);
    }
    benchmark::DoNotOptimize(builder.finish());
  }
  state.SetBytesProcessed(state.iterations() * sample().size());
}
BENCHMARK(replace_every)->Arg(50)->Arg(500)->Arg(1000)->Arg(1100)->Arg(4000)->Unit(benchmark::kMillisecond);

} // namespace
