#pragma once

#include <sys/types.h>

namespace zan {

// Gives the file `to` the owner, group, access lists and extended attributes of the file `from`, and none
// besides. False when that is not allowed or not possible; `to` may then have some of them.
bool copy_owner_and_attributes(int from, int to);

// Gives `file` the permission bits of `mode`, set-user-id and the like included. To be called last, because a
// change of owner or a write clears some of them. False when the file does not have exactly these bits then.
bool set_mode_bits(int file, mode_t mode);

} // namespace zan
