// surface/ordinal_table.h — the table of exported entry points by ordinal.
#pragma once

#include <cstdint>
#include <span>

namespace tr {

struct OrdinalEntry {
    uint32_t ordinal;
    const char* name;
    const void* function;
};

// Every assigned ordinal, ascending.
std::span<const OrdinalEntry> GetOrdinalTable();

}  // namespace tr
