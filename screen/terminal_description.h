#pragma once

namespace zan {

// Whether the terminal that TERM names has a description and can place the cursor. For use while ncurses
// runs: its state does not change.
bool described_for_a_screen();

} // namespace zan
