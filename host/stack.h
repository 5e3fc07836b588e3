#pragma once

namespace zan {

// Raises the limit of the stack, because command files and macros may nest thousands deep, a few stack frames
// a level. To be called once, first in main.
void raise_stack_limit();

// How deep command files and macros may nest (counted together): 12,000, or less where the stack is small.
int nesting_limit();

} // namespace zan
