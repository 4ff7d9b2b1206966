// outline/host_value_token.h — folder-private: 32-bit tokens for host values.
//
// The outline request stores the host's glyph context and callback in 32-bit
// slots. When a pointer is wider than that, each distinct value is given a
// token (its position in a process-wide table, plus one; 0 stands for 0) and
// the table answers the value back. Tokens are never retired: the table
// grows with the number of distinct contexts and callbacks the host uses
// (fonts times callbacks), not with the number of characters.
#pragma once

#include <cstdint>

namespace tr {

std::uint32_t HostValueToken(uintptr_t value);
uintptr_t HostValueFromToken(std::uint32_t token);

}  // namespace tr
