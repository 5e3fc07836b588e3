#include <algorithm>
#include <csignal>
#include <fcntl.h>
#include <fstream>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include "tests/promise.h"
#include "tests/screen/terminal_driver.h"
#include "tests/sessions/text_forms.h"

// Signals, stops, new sizes and lost terminals, wherever the program waits for something.
namespace {

constexpr double kLittle = 0.5; // seconds of the processor, for a program that only has to end

std::string lines(int count, std::size_t length) {
  std::string text;
  while (count-- > 0) text += std::string(length, 'a') + "\n";
  return text;
}

bool contains(const std::string& text, const char* part) { return text.find(part) != std::string::npos; }

// Every place of a line of "a" nearly matches, and no byte of it tells that none does.
std::string long_search() {
  std::string command = "FIND ";
  for (int i = 0; i < 120; ++i) command += "[^b]";
  return command + "[b-d]\n";
}

// What a place is reached by: keys, and what is shown then.
struct Step {
  std::string keys, shown;
};

// A place where the program waits, a row of the table. Half of an input is typed before the event, the rest
// after it; when the program goes on, `proof` is shown, unless one of the keys was lost.
struct Place {
  std::string name;
  bool on_screen = false;
  std::vector<Step> way;
  Step half;
  std::string rest, proof;
  std::string survives; // signals that end the program elsewhere
  std::string rescued;  // the text that is modified here, if it is
  std::string text = "one\ntwo\nthree\n";

  bool survives_signal(int signal) const {
    return (signal == SIGINT && contains(survives, "INT")) ||
           (signal == SIGQUIT && contains(survives, "QUIT"));
  }
  std::size_t visits() const { // of the screen, so far
    return static_cast<std::size_t>(std::ranges::count(way, "CHANGE\n", &Step::keys));
  }
};

std::vector<Step> way_of(std::string_view text) {
  std::vector<Step> way;
  const auto next = [&] {
    const std::string part(text.substr(0, text.find(" > ")));
    text.remove_prefix(std::min(text.size(), part.size() + 3));
    return part;
  };
  while (!text.empty()) {
    std::string keys = next();
    way.push_back({std::move(keys), next()});
  }
  return way;
}

std::vector<Place> read_places() {
  std::vector<Place> places;
  for (const std::string& line : lines_of_file("screen/places.table")) {
    const Fields row = bytes_of_row(line);
    places.push_back(
        {row[0], row[1] == "screen", way_of(row[2]), {row[3], row[4]}, row[5], row[6], row[7], row[8]});
  }
  return places;
}

const std::vector<Place> kPlaces = read_places();

// Where the program is busy; it has modified a text.
std::vector<Place> busy_places() {
  const std::vector<Step> change{{"SUBSTITUTE/one/1/\n", "1 1"}};
  const std::string large = "one\ntwo\n" + lines(250, 20000);
  const std::string changed = std::string(large).replace(0, 3, "1");
  // The inserted lines begin where the last line ends.
  const std::string with_lines = changed.substr(0, changed.size() - 1) + "!\n?\n";
  return {
      {"inserted lines", false, change, {"BOTTOM\nINSERT\n!\n?\n", "__"}, "", "", "", with_lines, large},
      {"output", false, change, {"TYPE WHOLE\n", "aaaa"}, "", "", "INT", changed, large},
      {"search", false, change, {long_search(), "[b-d]"}, "", "", "INT", changed, large},
  };
}

enum class Happens { signal, stop, resize, hang_up, hang_up_under_nohup };

enum class Fate {
  goes_on,
  ends,
  crashes // with its text
};

struct Event {
  const char* name;
  Happens happens;
  int signal;
  Fate fate;
};

const std::vector<Event> kEvents{
    {"SIGHUP", Happens::signal, SIGHUP, Fate::ends},
    {"SIGTERM", Happens::signal, SIGTERM, Fate::ends},
    {"SIGINT", Happens::signal, SIGINT, Fate::ends},
    {"SIGQUIT", Happens::signal, SIGQUIT, Fate::ends},
    {"SIGTSTP", Happens::stop, SIGTSTP, Fate::goes_on},
    {"SIGWINCH", Happens::resize, SIGWINCH, Fate::goes_on},
    {"SIGPIPE", Happens::signal, SIGPIPE, Fate::goes_on},
    {"SIGXFSZ", Happens::signal, SIGXFSZ, Fate::goes_on},
    {"TerminalGone", Happens::hang_up, SIGHUP, Fate::ends},
    {"TerminalGoneUnderNohup", Happens::hang_up_under_nohup, 0, Fate::ends},
};

void go_to(TerminalDriver& terminal, const Place& place) {
  terminal.shows_text("1 one");
  for (const auto& [keys, shown] : place.way) {
    terminal.type(keys);
    terminal.shows_text(shown);
  }
  EXPECT_EQ(terminal.has_its_modes(), !place.on_screen);
}

// The library does not hear a stop while it draws, and what is typed before it draws again is lost.
void stop_and_continue(TerminalDriver& terminal, const Place& place) {
  bool stopped = false;
  for (int times = 0; times < 100 && !stopped; ++times)
    stopped = kill(terminal.program(), SIGTSTP) == 0 && terminal.stops();
  ASSERT_TRUE(stopped);
  EXPECT_TRUE(terminal.has_its_modes());
  const auto gave_back = [&](const Shown&) { return terminal.output().ends_with("\033>"); };
  if (place.on_screen) terminal.wait_until(gave_back, "  ESC >\n");
  const std::size_t application_modes = terminal.times_sent("\033=");
  terminal.go_on();
  const auto is_back = [&](const Shown&) { return terminal.times_sent("\033=") > application_modes; };
  if (place.on_screen) terminal.wait_until(is_back, "  ESC =\n");
}

void let_happen(TerminalDriver& terminal, const Event& event, const Place& place) {
  if (event.happens == Happens::signal) kill(terminal.program(), event.signal);
  else if (event.happens == Happens::stop) stop_and_continue(terminal, place);
  else if (event.happens != Happens::resize) terminal.hang_up();
  else
    for (const auto& [rows, columns] : {std::pair(1, 1), {200, 500}, {3, 2}, {9, 64}})
      terminal.resize(rows, columns);
}

const char* const kSpooler =
    "mkfifo fifo && exec 3<>fifo && rm \"$1\" && echo printing >/dev/tty && read line <&3";

void release_spooler(const TerminalDriver& terminal) {
  const int fifo = open((terminal.home() / "fifo").c_str(), O_WRONLY | O_NONBLOCK);
  if (fifo < 0) return;
  EXPECT_EQ(write(fifo, "\n", 1), 1);
  close(fifo);
}

void expect_event_at(const Event& event, const Place& place) {
  SCOPED_TRACE(std::string(event.name) + ", " + place.name);
  TerminalOptions options;
  options.text = place.text;
  options.spooler = kSpooler;
  options.job = event.happens == Happens::stop;
  options.ignores = event.happens == Happens::hang_up_under_nohup ? SIGHUP : 0;
  TerminalDriver terminal(options);
  go_to(terminal, place);
  const bool goes_on = event.fate == Fate::goes_on || place.survives_signal(event.signal);
  terminal.type(place.half.keys);
  // What is not read by then is shown by line mode, and a stop throws it away.
  if (!goes_on || event.happens == Happens::stop) terminal.shows_text(place.half.shown);
  let_happen(terminal, event, place);
  release_spooler(terminal);

  int ends_by = event.signal;
  if (goes_on) {
    terminal.type(place.rest);
    terminal.shows_text(place.proof);
    ends_by = SIGTERM;
    kill(terminal.program(), ends_by);
  }
  const int status = terminal.exit_status();
  // The end of a terminal may be noticed before its signal comes.
  const bool noticed_first = event.happens == Happens::hang_up && status == 0;
  EXPECT_TRUE(noticed_first || status == (ends_by == 0 ? 0 : 128 + ends_by)) << status;
  EXPECT_TRUE(terminal.processor_seconds() < kLittle || place.text.size() > 1000);
  const std::string rescued = zan::test::read_file(terminal.home() / "notes.txt.save");
  EXPECT_TRUE(event.fate != Fate::ends || rescued == place.rescued) << rescued.substr(0, 1000);
  if (terminal.is_gone()) return;
  EXPECT_TRUE(terminal.has_its_modes());
  const std::string said = rescued != "(none)" ? "\r\n?Your text is in notes.txt.save\r\n" : "";
  EXPECT_TRUE(terminal.output().ends_with((place.on_screen ? "\033>" : "") + said)) << terminal.output();
  EXPECT_TRUE(event.happens == Happens::stop || terminal.times_sent("\033>") == place.visits());
}

} // namespace

class Signals : public testing::TestWithParam<Event> {};

TEST_P(Signals, AtEveryPlace) {
  const bool loses_terminal = GetParam().happens >= Happens::hang_up;
  zan::test::Promise promise(loses_terminal ? zan::test::Promised::end_of_input
                                            : zan::test::Promised::signals);
  for (const Place& place : kPlaces) {
    expect_event_at(GetParam(), place);
    promise.expect(!HasFailure(), place.name);
  }
}

INSTANTIATE_TEST_SUITE_P(All, Signals, testing::ValuesIn(kEvents),
                         [](const auto& event) { return event.param.name; });

TEST(Signals, WhereTheProgramIsBusy) {
  for (const Place& place : busy_places())
    for (const Event& event : kEvents)
      if (event.fate == Fate::ends && !place.survives_signal(event.signal)) expect_event_at(event, place);
}

TEST(Signals, ACrashGivesTheTerminalBack) {
  const auto screen = std::ranges::find(kPlaces, std::string("screen"), &Place::name);
  for (const int signal : {SIGSEGV, SIGBUS, SIGFPE, SIGABRT, SIGILL})
    expect_event_at({"crash", Happens::signal, signal, Fate::crashes}, *screen);
}

void interrupt_until(TerminalDriver& terminal, const std::string& sent) {
  const auto is_sent = [&](const Shown&) {
    kill(terminal.program(), SIGINT);
    return terminal.times_sent(sent) == 1;
  };
  terminal.wait_until(is_sent, "  " + sent + "\n");
}

// A reader that has stopped reading.
TEST(Signals, EndAWriteThatNobodyReads) {
  for (const int signal : {SIGTERM, SIGHUP, SIGINT}) {
    SCOPED_TRACE(signal);
    TerminalOptions options;
    options.text = lines(20000, 60); // more than a FIFO takes
    if (signal == SIGINT) options.ignores = SIGINT;
    TerminalDriver terminal(options);
    const std::string fifo = terminal.home() / "fifo";
    ASSERT_EQ(mkfifo(fifo.c_str(), 0600), 0);
    terminal.type("INSERT x\nTYPE 1\nWRITE fifo\n");
    const int reader = open(fifo.c_str(), O_RDONLY); // waits for the writer
    if (signal == SIGINT) {
      interrupt_until(terminal, "*Abort*");
    } else {
      kill(terminal.program(), signal);
      EXPECT_EQ(terminal.exit_status(), 128 + signal);
    }
    const std::string rescued = zan::test::read_file(terminal.home() / "notes.txt.save");
    EXPECT_EQ(rescued, signal == SIGINT ? "(none)" : "x" + options.text);
    close(reader);
  }
}

// Commands that wait for somebody else, or read without end.
constexpr const char* kEndless[] = {"INCLUDE fifo\n", "WRITE fifo\n", "NEXT\n", "INCLUDE /dev/zero\n"};

// Waits for another program, in the file that is next, until `end` ends that.
void end_every_wait(TerminalOptions options,
                    const std::function<void(TerminalDriver&, const std::string&)>& end) {
  options.arguments = {"fifo"};
  for (const char* command : kEndless) {
    SCOPED_TRACE(command);
    TerminalDriver terminal(options);
    ASSERT_EQ(mkfifo((terminal.home() / "fifo").c_str(), 0600), 0);
    terminal.shows_text("1 one");
    end(terminal, command);
  }
}

TEST(Signals, OneEndsTheWaitForAnotherProgram) {
  end_every_wait({}, [](TerminalDriver& terminal, const std::string& command) {
    terminal.type("INSERT x\nTYPE 1\n");
    terminal.wait_until([&](const Shown&) { return terminal.output().ends_with("1 xone\r\n*"); }, "  *\n");
    terminal.type(command);
    terminal.shows_text("*" + command.substr(0, command.size() - 1));
    kill(terminal.program(), SIGTERM);
    EXPECT_EQ(terminal.exit_status(), 128 + SIGTERM);
    const bool saved = terminal.file() == "xone\ntwo\nthree\n";
    EXPECT_NE(saved, std::filesystem::exists(terminal.home() / "notes.txt.save"));
  });
}

// The interrupt is ignored but where a command looks for it: so it may be sent before the command has begun.
TEST(Interrupt, EndsTheWaitForAnotherProgram) {
  end_every_wait({.ignores = SIGINT}, [](TerminalDriver& terminal, const std::string& command) {
    terminal.type(command);
    interrupt_until(terminal, "*Abort*");
    terminal.type("TYPE 1\nSHOW FILES\nQUIT\n");
    terminal.shows_text("Files: *notes.txt fifo");
    EXPECT_EQ(terminal.times_sent("\n1 one"), 2U);
    EXPECT_EQ(terminal.exit_status(), 0);
  });
}

// There Ctrl/C is a key, but not while a command waits for something else. Every one is handled as a key too.
TEST(Interrupt, EndsTheWaitOnTheScreen) {
  const TerminalOptions options{.startup = "DEFINE KEY CTRL C AS \"INSERT b\"\n"};
  end_every_wait(options, [](TerminalDriver& terminal, const std::string& command) {
    terminal.enter_screen();
    terminal.type("{GOLD}{KP7}" + command.substr(0, command.size() - 1) + "\r");
    const auto inserted = [&](const Shown& shown) {
      terminal.type("{CTRL+C}");
      return shown.row(0).starts_with("b");
    };
    terminal.wait_until(inserted, "  the b of Ctrl/C\n");
    kill(terminal.program(), SIGTERM);
    EXPECT_EQ(terminal.exit_status(), 128 + SIGTERM);
  });
}

// It is ignored but while a file is read.
TEST(Interrupt, EndsCommandFilesOnAllLevels) {
  TerminalOptions options;
  options.ignores = SIGINT;
  TerminalDriver terminal(options);
  zan::test::write_file(terminal.home() / "c", "SET COMMAND c\nSET COMMAND c\n");
  terminal.shows_text("1 one");
  terminal.type("SET COMMAND c/NOTYPE\n");
  interrupt_until(terminal, "NOTYPE\r\n*");
  terminal.type("TYPE 2\nQUIT\n");
  EXPECT_EQ(terminal.exit_status(), 0);
  EXPECT_EQ(terminal.times_sent("\n2 two"), 1U);
}

// A terminal whose other end nobody reads any more.
TEST(Signals, EndAProgramThatIsHeldUpByItsTerminal) {
  for (const bool on_screen : {false, true}) {
    for (const int signal : {SIGHUP, SIGTERM, SIGINT, SIGQUIT}) {
      if (signal == SIGINT && !on_screen) continue; // stops the command
      SCOPED_TRACE(signal);
      TerminalOptions options;
      options.text = lines(20000, 60);
      options.rows = 200;
      options.columns = 500;
      TerminalDriver terminal(options);
      if (on_screen) terminal.enter_screen();
      terminal.type(on_screen ? "x" : "INSERT x\nTYPE 1\n");
      terminal.shows_text("xaaa");
      const pid_t program = terminal.program();
      terminal.type_unread(on_screen ? std::string(100, '\027') : "TYPE WHOLE\n");
      kill(program, signal);
      EXPECT_EQ(terminal.exit_status_unread(), 128 + signal);
      EXPECT_EQ(zan::test::read_file(terminal.home() / "notes.txt.save"), "x" + options.text);
    }
  }
}

TEST(Signals, EndOfInputRescuesToo) {
  TerminalDriver terminal({});
  terminal.type("INSERT x\nFIND =PASTE\nINSERT y\n{CTRL+D}");
  EXPECT_EQ(terminal.exit_status(), 0);
  const std::string said = "*\r\n?Your text is in notes.txt.PASTE.save, notes.txt.save\r\n";
  EXPECT_TRUE(terminal.output().ends_with(said)) << terminal.output();
  EXPECT_EQ(zan::test::read_file(terminal.home() / "notes.txt.save"), "xone\ntwo\nthree\n");
}

TEST(Interrupt, StopsTypingAndTheNextCommandRuns) {
  TerminalOptions options;
  options.text = lines(500000, 60);
  TerminalDriver terminal(options);
  terminal.type("TYPE WHOLE\n");
  const auto at_1000 = [&](const Shown&) { return terminal.times_sent("\n1000 aaa") > 0; };
  terminal.wait_until(at_1000, "  1000 aaa\n");
  terminal.type("{CTRL+C}");
  terminal.shows_text("*Abort*");
  terminal.type("FIND a\n");
  terminal.wait_until([](const Shown& now) { return now.rows.back() == "*"; }, "  *\n");
  terminal.type("QUIT\n");
  EXPECT_EQ(terminal.exit_status(), 0);
}

TEST(Interrupt, StopsASearchAndAnUnguardedProgramEnds) {
#ifndef __linux__
  GTEST_SKIP() << "cannot tell when the command has begun";
#endif
  TerminalOptions options;
  options.text = "a\n" + lines(1, 60'000'000);
  TerminalDriver terminal(options);
  terminal.shows_text("*");
  terminal.type(long_search());
  const auto ticks = [&] { // that the program has used of the processor
    std::ifstream stat("/proc/" + std::to_string(terminal.program()) + "/stat");
    std::string field;
    for (int number = 1; number <= 14; ++number) stat >> field;
    return std::atol(field.c_str());
  };
  const long before = ticks();
  while (ticks() < before + 5) ASSERT_EQ(kill(terminal.program(), 0), 0);
  terminal.type("{CTRL+C}");
  terminal.shows_text("*Abort*");
  terminal.type("TYPE/BRIEF:1\n");
  terminal.shows_text("1 a");
  terminal.type("{CTRL+C}");
  EXPECT_EQ(terminal.exit_status(), 128 + SIGINT);
}
