# konsole: the profile that uses konsole.keytab, which says where both go. Verified as told there.
[General]
Name=zan
Parent=FALLBACK/

[Keyboard]
KeyBindings=zan
