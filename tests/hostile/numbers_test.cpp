// Numbers of every size in every place that reads one.
#include <gtest/gtest.h>

#include "tests/hostile/sandbox.h"

namespace {

constexpr std::string_view kNumbers[] = {
    "0",
    "-1",
    "2147483647",
    "2147483648",
    "4294967296",
    "9223372036854775808",
    "18446744073709551616",
    "123456789012345678901234567890",
};

// Every place; "#" is the number. Lines that follow use what was set.
constexpr std::string_view kPlaces[] = {
    "#",
    ".+#",
    ".-#",
    "GOTO-LINE #",
    "TYPE #",
    "TYPE # THRU #",
    "TYPE 1:#",
    "TYPE 2-#",
    "TYPE .-#:.+#",
    "TYPE/BRIEF:# WHOLE",
    "TYPE/BRIEF:# 1:#",
    "DELETE #",
    "DELETE # THRU 2",
    "RANGE #:#\nTYPE\nDELETE",
    "COPY # TO =A\nCOPY 1:# TO =A\nFIND =A\nTYPE WHOLE",
    "MOVE 1 THRU # TO =A",
    "RANGE 2:#\nRETAIN =A",
    "WRITE out #",
    "WRITE out 1:# BUFFER PASTE",
    "WRITE out;#",
    "PRINT #",
    "FILL #\nFILL 1:#",
    "TAB ADJUST #\nTAB ADJUST #:1",
    "XLATE a b #\nXLATE a b 1:#",
    "CHGU #\nCHGL # THRU 1",
    "RESEQUENCE/SEQUENCE=#\nTYPE WHOLE",
    "RESEQUENCE/SEQUENCE=#:#\nTYPE WHOLE",
    "RESEQUENCE/SEQUENCE=1:#/DUPLICATE\nTYPE WHOLE",
    "SUBSTITUTE/a/b/#",
    "SUBSTITUTE/*/-/#/STAY",
    "SET TAB #\nSHOW TAB\nTAB",
    "SET SCREEN #\nSHOW SCREEN\nFILL 1:3",
    "SET LINES #\nSHOW LINES",
    "SET CURSOR # #\nSHOW CURSOR",
    "SET CURSOR 1 #\nSHOW CURSOR",
    "SET RMS FIXED #\nSHOW RMS\nWRITE out 1",
    "SET RMS FIXED #\nWRITE/SAVE out",
    "CHANGE ;#W#L#C",
    "CHANGE ;#V#DC",
    "CHANGE ;B#W#DW",
    "CHANGE ;#DL",
    "CHANGE ;#CHGC",
    "CHANGE ;SEL#LCUT#PASTE",
    "CHANGE ;#FIND a #IINSERT",
    "HELP #",
    "DEFINE KEY # AS TOP\nDEFINE KEY GOLD F# AS TOP\nDEFINE KEY KP# AS TOP\nSHOW KEY",
    "DEFINE MACRO # AS \"TYPE\"\n#\nSHOW MACRO #",
    "INCLUDE #",
};

const std::string kText = "one\talpha\n\ttwo a a\n\nfour " + std::string(100, 'a') + "\nfive six seven\n";

// Files larger than this are refused by the system.
constexpr std::string_view kSmallFiles = "ulimit -f 2000";

} // namespace

TEST(Hostile, NumbersOfEverySize) {
  Promise promise(14);
  const Sandbox box;
  for (const std::string_view place : kPlaces) {
    for (const std::string_view number : kNumbers) {
      const std::string commands = replaced(std::string(place), "#", number) + "\nQUIT\n";
      box.clear();
      box.write("a.txt", kText);
      expect_answer(promise, box.run({"a.txt"}, commands, std::string(kSmallFiles)), commands);
    }
  }
}

TEST(Hostile, TwoBillion) {
  constexpr std::string_view kCases[] = {
      "SET RMS FIXED 2000000000\nSHOW RMS\nWRITE out\nEXIT",
      "SET RMS FIXED 2000000000\nTYPE/SAVE\nQUIT",
      "SET TAB 2000000000\nTAB\nTAB\nSHOW BUFFER\nUNDO\nUNDO\nQUIT",
      "SET TAB 2000000000\nTAB ADJUST 1\nSHOW BUFFER\nQUIT",
      "SET TAB 2000000000\nTAB ADJUST WHOLE\nSHOW BUFFER\nQUIT",
      "SET TAB 2000000000\nTAB\nTYPE/BRIEF WHOLE\nQUIT",
      "SET SCREEN 2000000000\nFILL WHOLE\nSET WRAP\nINSERT x\nTYPE WHOLE\nQUIT",
      "SET LINES 2000000000\nSET CURSOR 2000000000 -2000000000\nSHOW CURSOR\nQUIT",
      "RESEQUENCE/SEQUENCE=2147483647:2147483647\nTYPE WHOLE\nQUIT",
      "RESEQUENCE/SEQUENCE=-2147483648:-2147483648\nTYPE WHOLE\nQUIT",
      "RESEQUENCE/SEQUENCE=1:2000000000\nRESEQUENCE/SEQUENCE=2000000000:1/DUPLICATE\nTYPE WHOLE\nQUIT",
      "CHANGE ;2000000000DC\nUNDO\nCHANGE ;2000000000W2000000000CHGC\nTYPE WHOLE\nQUIT",
  };
  Promise promise(18);
  const Sandbox box;
  for (const std::string_view commands : kCases) {
    box.clear();
    box.write("a.txt", kText);
    expect_answer(
        promise,
        box.run({"a.txt"}, std::string(commands) + "\n", std::string(kSmallFiles) + "; " + limited_memory()),
        std::string(commands));
  }
}
