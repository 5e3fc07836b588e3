#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <set>
#include <sys/resource.h>
#include <sys/wait.h>

#include "tests/promise.h"
#include "tests/screen/terminal_driver.h"

// Signals, stops, new sizes and lost terminals, wherever the program waits for something.
namespace {

constexpr double kLittle = 0.5; // seconds of the processor, for a program that only has to end

double children_seconds() {
  rusage usage{};
  getrusage(RUSAGE_CHILDREN, &usage);
  const auto seconds = [](const timeval& time) { return double(time.tv_sec) + 1e-6 * double(time.tv_usec); };
  return seconds(usage.ru_utime) + seconds(usage.ru_stime);
}

// What a place is reached by: keys, and what is shown then.
struct Step {
  const char* keys;
  const char* shown;
};

const Step kVisit{"CHANGE\n", "EDIT[MAIN]"};

// A place where the program waits. Half of an input is typed before the event, the rest after it; when the
// program goes on, `proof` is shown, unless one of the keys was lost.
struct Place {
  const char* name;
  std::vector<Step> way;
  Step half;
  const char *rest, *proof;
  std::set<int> survives = {}; // signals that end the program elsewhere
  bool on_screen = true;
  std::size_t visits = 1; // of the screen, so far
  const char* startup = "";
  const char* rescued = "(none)"; // the text that is modified here, if it is
};

const std::vector<Place> kPlaces{
    {"prompt", {}, {"TY", "*TY"}, "PE 2\n", "2 two", {}, false, 0},
    {"prompt after a visit",
     {kVisit, {"\032", "*CHANGE"}, {"TYPE 3\n", "3 three"}},
     {"TY", "*TY"},
     "PE 2\n",
     "2 two",
     {},
     false},
    {"question",
     {{"SUBSTITUTE/two/2/ /QUERY\n", "[Y/N]:"}},
     {"y", "[Y/N]: y"},
     "\nTYPE 3\n",
     "3 three",
     {SIGINT},
     false,
     0},
    // Who waits for a child lets these two be the child's.
    {"print", {{"PRINT\n", "printing"}}, {"TY", "TY"}, "PE 2\n", "2 two", {SIGINT, SIGQUIT}, false, 0},
    // A narrow screen has scrolled to the side.
    {"screen", {kVisit}, {"x", "xone"}, "y\002", "xyone", {}, true, 1, "", "xone\ntwo\nthree\n"},
    {"command prompt", {kVisit, {"\033OP\033Ow", "Command:"}}, {"FIND tw", ": FIND tw"}, "o\r", "Found: two"},
    {"search prompt", {kVisit, {"\033OP\033OR", "Search for:"}}, {"tw", ": tw"}, "o\r", "Found: two"},
    {"code prompt", {kVisit, {"\033OP\033Os", "ASCII:"}}, {"6", ": 6"}, "5\r", "Aone"},
    {"key to define",
     {kVisit, {"\013", "Press key"}},
     {"\033OP", "press key"},
     "qTOP\r",
     "Key defined: GOLD+Q"},
    {"definition", {kVisit, {"\013\033OPq", "Definition:"}}, {"TO", ": TO"}, "P\r", "Key defined: GOLD+Q"},
    {"help page", {kVisit, {"\033OQ", "screen help"}}, {"", ""}, "zx", "xone"},
    {"nokeypad",
     {{"CHANGE\n", "Nokeypad:"}},
     {"Ix", ": Ix"},
     "y\r",
     "xyone",
     {},
     true,
     1,
     "SET KEYPAD NOKEYPAD\n"},
};

enum class Happens { signal, stop, resize, hang_up, hang_up_under_nohup };

enum class Fate {
  goes_on,
  ends,       // by the user's wish
  is_torn_off // no less, but nobody asked the user about unsaved text
};

struct Event {
  const char* name;
  Happens happens;
  int signal;
  Fate fate;
};

const std::vector<Event> kEvents{
    {"SIGHUP", Happens::signal, SIGHUP, Fate::is_torn_off},
    {"SIGTERM", Happens::signal, SIGTERM, Fate::is_torn_off},
    {"SIGINT", Happens::signal, SIGINT, Fate::ends},
    {"SIGQUIT", Happens::signal, SIGQUIT, Fate::ends},
    {"SIGTSTP", Happens::stop, SIGTSTP, Fate::goes_on},
    {"SIGWINCH", Happens::resize, SIGWINCH, Fate::goes_on},
    {"SIGPIPE", Happens::signal, SIGPIPE, Fate::goes_on},
    {"SIGXFSZ", Happens::signal, SIGXFSZ, Fate::goes_on},
    {"TerminalGone", Happens::hang_up, SIGHUP, Fate::is_torn_off},
    {"TerminalGoneUnderNohup", Happens::hang_up_under_nohup, 0, Fate::is_torn_off},
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
  switch (event.happens) {
  case Happens::signal:
    kill(terminal.program(), event.signal);
    return;
  case Happens::stop:
    stop_and_continue(terminal, place);
    return;
  case Happens::resize:
    for (const auto& [rows, columns] : {std::pair(1, 1), {200, 500}, {3, 2}, {9, 64}})
      terminal.resize(rows, columns);
    return;
  case Happens::hang_up:
  case Happens::hang_up_under_nohup:
    terminal.hang_up();
    return;
  }
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
  options.startup = place.startup;
  options.spooler = kSpooler;
  options.job = event.happens == Happens::stop;
  options.ignores_hangup = event.happens == Happens::hang_up_under_nohup;
  TerminalDriver terminal(options);
  go_to(terminal, place);
  const bool goes_on = event.fate == Fate::goes_on || place.survives.contains(event.signal);
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
  EXPECT_LT(terminal.processor_seconds(), kLittle);
  const std::string rescued = zan::test::read_file(terminal.home() / "notes.txt.save");
  EXPECT_TRUE(event.fate != Fate::is_torn_off || rescued == place.rescued) << rescued;
  if (terminal.is_gone()) return;
  EXPECT_TRUE(terminal.has_its_modes());
  EXPECT_TRUE(!place.on_screen || terminal.output().ends_with("\033>")) << terminal.output();
  EXPECT_TRUE(event.happens == Happens::stop || terminal.times_sent("\033>") == place.visits);
}

} // namespace

// Each ends as at the end of its input, wherever that is.
TEST(EndOfInput, EndsTheProgram) {
  const std::vector<std::string> inputs{
      "printf 'TYPE 1' |",
      "printf 'CHANGE\\nx' |",
      "printf 'CHANGE\\n\\033' |",
      "printf 'CHANGE\\n\\033OP' |",
      "printf 'CHANGE\\n\\033OP\\033OwINSERT\\ra' |",
      "printf 'CHANGE\\n\\033OP\\033OR' |",
      "printf 'CHANGE\\n\\013' |",
      "printf 'CHANGE\\n\\013k' |",
      "printf 'CHANGE\\n\\033OQ' |",
      "printf 'CHANGE\\n\\033OP2000000000\\033OP' |",
      "printf 'SET KEYPAD NOKEYPAD\\nCHANGE\\nI' |",
      "printf 'DEFINE KEY CTRL Z AS \"TOP\"\\nCHANGE\\n' |",
      "</dev/null",
      "<&-",
  };
  zan::test::Promise promise(10);
  for (const std::string& input : inputs) {
    SCOPED_TRACE(input);
    const zan::test::ScratchDirectory home;
    const std::string program = " TERM=xterm HOME=. timeout 20 " ZAN_PROGRAM " notes.txt >screen.out";
    const std::string line = input.ends_with('|') ? input + program : program + " " + input;
    const double before = children_seconds();
    promise.expect(std::system(("cd " + home.path() + " && " + line).c_str()) == 0, input);
    EXPECT_LT(children_seconds() - before, kLittle);
  }
}

class Signals : public testing::TestWithParam<Event> {};

TEST_P(Signals, AtEveryPlace) {
  const bool loses_terminal = GetParam().happens >= Happens::hang_up;
  zan::test::Promise promise(loses_terminal ? 10 : 9);
  for (const Place& place : kPlaces) {
    expect_event_at(GetParam(), place);
    promise.expect(!HasFailure(), place.name);
  }
}

INSTANTIATE_TEST_SUITE_P(All, Signals, testing::ValuesIn(kEvents),
                         [](const auto& event) { return event.param.name; });
