// What a journal brings back after the program was killed, and what a damaged one does.
#include <algorithm>

#include <gtest/gtest.h>

#include "tests/hostile/sandbox.h"

namespace {

// Commands that the buffers alone decide about: none that saves the input, reads a line or the clock. "#" is
// a small number, "@" a word, "&" a buffer.
const std::vector<std::string> kCommands = lines_of_file("hostile/commands.txt");
// Those of which a part, the line cut off, would read a line or enter the screen.
const std::vector<std::string> kWholeCommands = lines_of_file("hostile/whole_commands.txt");
constexpr std::string_view kWords[] = {"alpha",        "Beta", "a",   "x*a",
                                       "gamma, delta", "b",    "\t.", "caf\xc3\xa9"};
constexpr std::string_view kBuffers[] = {"MAIN", "PASTE", "A", "B", "M"};
constexpr std::string_view kText =
    "one alpha a\ntwo\tBeta\n\n  three gamma, delta\nfour a b a b\nfive\nsix\nseven alpha\n";

std::string filled_in(std::string_view form, Random& random) {
  std::string line;
  for (const char c : form) {
    if (c == '#') line += std::to_string(random.below(12));
    else if (c == '@') line += random.one_of(kWords);
    else if (c == '&') line += random.one_of(kBuffers);
    else line += c;
  }
  return line;
}

std::string random_command(Random& random) {
  const auto& forms = random.below(3) == 0 ? kWholeCommands : kCommands;
  return filled_in(unescape(random.one_of(forms)), random);
}

// Commands that write every buffer, and where the cursor is, to files.
std::string dump_commands() {
  std::string commands = "INSERT <cursor>\nRANGE WHOLE\nWRITE out.current WHOLE\n";
  for (const std::string_view name : kBuffers)
    commands += "WRITE out." + std::string(name) + " BUFFER " + std::string(name) + "\n";
  return commands;
}

std::string dumped(const Sandbox& box) {
  std::string all = "current:\n" + box.read("out.current");
  for (const std::string_view name : kBuffers)
    all += std::string(name) + ":\n" + box.read("out." + std::string(name));
  return all;
}

void set_up(const Sandbox& box) {
  box.clear();
  box.write("a.txt", kText);
  box.write("more.txt", "more a\r\nand more\n");
}

// The buffers after `input` was typed, or replayed and nothing typed; "" when the program did not live on.
std::string buffers_after(const Sandbox& box, const std::string& input, bool recover = false) {
  std::vector<std::string> arguments{"a.txt"};
  if (recover) arguments.emplace_back("-recover");
  return answered(box.run(arguments, input + dump_commands())) ? dumped(box) : "";
}

// PRINT starts a spooler that kills the program and removes its file. False when that failed.
bool kill_after(const Sandbox& box, const std::string& input) {
  box.write("lpr", "#!/bin/sh\nrm \"$1\"\nkill -9 $PID\n");
  const RunResult killed = box.run({"a.txt"}, input + "PRINT\n", "chmod +x lpr");
  box.write("lpr", "");
  return killed.status == 128 + 9;
}

} // namespace

TEST(Hostile, KilledSessionsComeBack) {
  constexpr std::size_t kLength = 200;
  Promise promise(Promised::killed_sessions);
  const Sandbox box;
  const std::size_t sessions = long_or_short(1000, 40);
  for (std::size_t i = 0; i < sessions; ++i) {
    // Five sessions of 200 commands, killed after the first, second, ... command; the short form leaves
    // most out.
    const std::size_t number = i * 1000 / sessions;
    Random random(static_cast<std::uint32_t>(number / kLength));
    std::string input;
    for (std::size_t left = number % kLength + 1; left > 0; --left) input += random_command(random) + "\n";
    set_up(box);
    const std::string expected = buffers_after(box, input);
    set_up(box);
    const bool killed = kill_after(box, input);
    promise.expect(killed && !expected.empty() && buffers_after(box, "", true) == expected,
                   killed ? "lost or changed after:\n" + input : "not killed");
  }
}

TEST(Hostile, CutJournalLineIsNotJoinedToTheNext) {
  Promise promise(Promised::hostile_journals);
  const Sandbox box;
  Random random(8);
  const std::string before = "FIND alpha\nCOPY 1:3 TO =A\n";
  const std::string next = "2\n";
  for (std::size_t i = 0, lines = long_or_short(50, 5); i < lines; ++i) {
    const std::string line = filled_in(kCommands[(i * 17 + 1) % std::size(kCommands)], random);
    for (std::size_t length = 0; length <= line.size(); ++length) {
      const std::string cut = line.substr(0, length);
      const std::string whole = before + cut + (cut.empty() ? "" : "\n") + next;
      set_up(box);
      const std::string expected = buffers_after(box, whole);
      set_up(box);
      box.write("a.txt.jou", before + cut);
      const bool went_on = answered(box.run({"a.txt"}, next));
      const std::string journal = box.read("a.txt.jou");
      promise.expect(went_on && journal == whole && !expected.empty() &&
                         buffers_after(box, "", true) == expected,
                     "\"" + cut + "\" replayed otherwise; journal:\n" + journal);
    }
  }
}

TEST(Hostile, HostileJournals) {
  Promise promise(Promised::hostile_journals);
  const Sandbox box;
  for (std::size_t i = 0, journals = long_or_short(10000, 100); i < journals; ++i) {
    Random random(static_cast<std::uint32_t>(i));
    std::string journal;
    for (std::size_t lines = random.below(40); lines > 0; --lines) journal += random_command(random) + "\n";
    // Bytes changed, and now and then a line of any bytes, a long one, one without its end.
    for (std::size_t changes = random.below(20); changes > 0 && !journal.empty(); --changes)
      journal[random.below(journal.size())] = static_cast<char>(random.below(256));
    if (random.below(4) == 0)
      std::generate_n(std::back_inserter(journal), 200, [&] { return static_cast<char>(random.below(256)); });
    if (random.below(20) == 0) journal.append(1000000, static_cast<char>(random.below(256)));
    set_up(box);
    box.write("a.txt.jou", journal);
    const bool lived = answered(box.run({"a.txt", "-recover"}, "TYPE WHOLE\n"));
    promise.expect(lived && box.read("a.txt") == kText, "journal of seed " + std::to_string(i));
  }
}
