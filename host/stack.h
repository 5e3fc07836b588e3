#pragma once

namespace zan {

// Command files and macros may run each other thousands deep, a few stack frames a level. Asks the system for
// a stack that holds that; called once, first thing in main.
void raise_stack_limit();

// How deep command files and macros may nest (counted together): 12,000, or less where the stack is small.
int nesting_limit();

} // namespace zan
