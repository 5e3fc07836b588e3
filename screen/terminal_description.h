#pragma once

namespace zan {

// The description of the terminal that TERM names exists and can place the cursor, as a screen needs it. For
// when the screen library runs already, whose state stays what it was.
bool described_for_a_screen();

} // namespace zan
