#include "text/buffer_registry.h"

#include <gtest/gtest.h>

namespace {

std::string contents(const zan::BufferRegistry& registry) {
  std::string told;
  for (const auto& [name, buffer] : registry.entries()) {
    told += std::string(name) + "=" + buffer.lines().to_string() + " ";
    EXPECT_EQ(registry.find(name), &buffer);
  }
  return told;
}

} // namespace

// Every copy goes its own way, as the registries of undo snapshots do.
TEST(BufferRegistry, IsAMapWhoseCopiesAreIndependent) {
  zan::BufferRegistry first;
  first.entry("B").set_text("b");
  first.entry("A").set_text("a");
  zan::BufferRegistry second = first, third = first;
  second.entry("B").set_text("other");
  second.entry("C").set_text("c");
  third.erase("A");
  third.erase("NONE");
  EXPECT_EQ(contents(first), "A=a B=b ");
  EXPECT_EQ(contents(second), "A=a B=other C=c ");
  EXPECT_EQ(contents(third), "B=b ");
  first = second;
  first.erase("C");
  EXPECT_EQ(contents(first) + contents(second), "A=a B=other A=a B=other C=c ");
  EXPECT_EQ(first.find("C"), nullptr);
}
