#include "text/buffer_registry.h"

#include <gtest/gtest.h>
#include <map>
#include <random>

namespace {

using TextsByName = std::map<std::string, std::string>;

TextsByName contents(const zan::BufferRegistry& registry) {
  TextsByName result;
  std::string before;
  for (const auto& [name, buffer] : registry.entries()) {
    EXPECT_LT(before, name);
    before = name;
    result.emplace(name, buffer.lines().to_string());
    EXPECT_EQ(registry.find(name), &buffer);
  }
  return result;
}

} // namespace

// Every copy goes its own way, as the registries of undo snapshots do.
TEST(BufferRegistry, IsAMapWhoseCopiesAreIndependent) {
  std::mt19937 random(7);
  std::vector<std::pair<zan::BufferRegistry, TextsByName>> copies(1);
  for (int step = 0; step < 3000; ++step) {
    auto& [registry, model] = copies[random() % copies.size()];
    const std::string name = "B" + std::to_string(random() % 60);
    const std::string text = std::to_string(step);
    switch (random() % 8) {
    case 0:
      if (copies.size() < 12) copies.push_back(copies[random() % copies.size()]);
      else copies[random() % copies.size()] = copies[random() % copies.size()];
      break;
    case 1:
    case 2:
      registry.erase(name);
      model.erase(name);
      break;
    default:
      registry.entry(name).set_text(text);
      model[name] = text;
    }
    if (step % 50 != 0) continue;
    for (const auto& copy : copies) ASSERT_EQ(contents(copy.first), copy.second);
  }
  EXPECT_EQ(copies.front().first.find("NONE"), nullptr);
}
