// outline/host_value_token.cpp — interning of host values into 32-bit
// tokens, identity where pointers are 32 bits wide.
#include "outline/host_value_token.h"

#include <unordered_map>
#include <vector>

#include "host/recursive_mutex.h"

namespace tr {

#if UINTPTR_MAX == 0xFFFFFFFFu

std::uint32_t HostValueToken(uintptr_t value) { return value; }
uintptr_t HostValueFromToken(std::uint32_t token) { return token; }

#else

namespace {

struct TokenTable {
    vantor::threads::RecursiveMutex mutex;
    std::unordered_map<uintptr_t, std::uint32_t> tokens;
    std::vector<uintptr_t> values;
};

TokenTable& Table() {
    static TokenTable table;
    return table;
}

}  // namespace

std::uint32_t HostValueToken(uintptr_t value) {
    if (value == 0) return 0;
    TokenTable& table = Table();
    vantor::threads::ScopedLock lock(table.mutex, "host value tokens");
    auto [it, inserted] = table.tokens.try_emplace(value, 0);
    if (inserted) {
        table.values.push_back(value);
        it->second = static_cast<std::uint32_t>(table.values.size());
    }
    return it->second;
}

uintptr_t HostValueFromToken(std::uint32_t token) {
    if (token == 0) return 0;
    TokenTable& table = Table();
    vantor::threads::ScopedLock lock(table.mutex, "host value tokens");
    return token <= table.values.size() ? table.values[token - 1] : 0;
}

#endif

}  // namespace tr
