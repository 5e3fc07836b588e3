// Stands in for libFuzzer where it is not wanted: runs a target on every file of a directory and on inputs
// made of them, the same ones every time. Arguments: how many are made of each file, the directory.
#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <string>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace {

void run(const std::string& input) {
  LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(input.data()), input.size());
}

// Some stretches of the input replaced by stretches of the others.
std::string changed(std::string input, const std::vector<std::string>& all, std::mt19937& random) {
  for (auto changes = 1 + random() % 4; changes > 0; --changes) {
    const std::string& other = all[random() % all.size()];
    const std::string stretch = other.substr(random() % (other.size() + 1), random() % 8);
    input.replace(random() % (input.size() + 1), random() % 8, stretch);
  }
  return input;
}

} // namespace

int main(int argc, char** argv) {
  if (argc != 3) return 2;
  std::vector<std::filesystem::path> paths;
  for (const auto& entry : std::filesystem::directory_iterator(argv[2])) paths.push_back(entry.path());
  std::ranges::sort(paths);
  std::vector<std::string> inputs;
  for (const auto& path : paths) {
    std::ifstream in(path, std::ios::binary);
    inputs.emplace_back(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
  }
  std::mt19937 random;
  for (std::size_t i = 0; i < inputs.size(); ++i) {
    // Said first: a finding ends the program.
    std::fprintf(stderr, "%s\n", paths[i].c_str());
    run(inputs[i]);
    for (int made = std::stoi(argv[1]); made > 0; --made) run(changed(inputs[i], inputs, random));
  }
  return inputs.empty() ? 1 : 0;
}
