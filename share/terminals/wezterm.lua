-- wezterm: add these to config.keys in wezterm.lua. Each key of the pad, with Num Lock on, sends what a VT220 sends, in
-- every program, but for Enter; GOLD is F1. Shift and + is the pad's minus.
--
-- Not verified.
local send = require("wezterm").action.SendString
return {
  keys = {
    { key = "Divide", mods = "NONE", action = send("\x1bOQ") },
    { key = "Multiply", mods = "NONE", action = send("\x1bOR") },
    { key = "Subtract", mods = "NONE", action = send("\x1bOS") },
    { key = "Add", mods = "NONE", action = send("\x1bOl") },
    { key = "Add", mods = "SHIFT", action = send("\x1bOm") },
    { key = "Decimal", mods = "NONE", action = send("\x1bOn") },
    { key = "Numpad0", mods = "NONE", action = send("\x1bOp") },
    { key = "Numpad1", mods = "NONE", action = send("\x1bOq") },
    { key = "Numpad2", mods = "NONE", action = send("\x1bOr") },
    { key = "Numpad3", mods = "NONE", action = send("\x1bOs") },
    { key = "Numpad4", mods = "NONE", action = send("\x1bOt") },
    { key = "Numpad5", mods = "NONE", action = send("\x1bOu") },
    { key = "Numpad6", mods = "NONE", action = send("\x1bOv") },
    { key = "Numpad7", mods = "NONE", action = send("\x1bOw") },
    { key = "Numpad8", mods = "NONE", action = send("\x1bOx") },
    { key = "Numpad9", mods = "NONE", action = send("\x1bOy") },
  },
}
