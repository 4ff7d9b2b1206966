// Checks the ordinal table against the public header, the module-definition
// file and the symbols the built shared library exports.
#include "surface/ordinal_table.h"

#include <dlfcn.h>
#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <map>
#include <set>
#include <sstream>
#include <string>

#include "titlerender.h"

namespace {

std::istringstream SourceFile(const std::string& relative) {
    const char* root = std::getenv("TR_TEST_SOURCE_DIR");
    std::stringstream s;
    s << std::ifstream(std::string(root ? root : ".") + "/" + relative).rdbuf();
    return std::istringstream(s.str());
}

// Declarations start a line with TR_API; the name is the word before '('.
std::set<std::string> HeaderEntryPoints() {
    std::istringstream header = SourceFile("include/titlerender.h");
    std::set<std::string> names;
    for (std::string line; std::getline(header, line);) {
        const std::size_t open = line.find('(');
        if (line.rfind("TR_API ", 0) != 0 || open == std::string::npos) continue;
        const std::size_t begin = line.find_last_of(" *", open) + 1;
        names.insert(line.substr(begin, open - begin));
    }
    return names;
}

// The table is sorted and covers the header; the module definition exports
// ordinal 12 by name as well, all others by number only.
TEST(OrdinalTable, MatchesHeaderAndModuleDefinition) {
    std::set<std::string> header = HeaderEntryPoints(), table;
    ASSERT_EQ(header.erase("titlerender_entry_point"), 1u);
    std::map<std::string, std::string> listed;  // name -> ordinal, "N" when NONAME
    std::istringstream def = SourceFile("titlerender.def");
    for (std::string line; std::getline(def, line);) {
        std::istringstream fields(line);
        std::string name, ordinal, flag;
        fields >> name >> ordinal >> flag;
        if (ordinal.size() >= 2 && ordinal[0] == '@') listed[name] = ordinal.substr(1) + (flag == "NONAME" ? "N" : "");
    }
    EXPECT_EQ(listed.size(), tr::GetOrdinalTable().size());
    uint32_t previous = 0;
    for (const tr::OrdinalEntry& entry : tr::GetOrdinalTable()) {
        EXPECT_GT(entry.ordinal, previous);
        previous = entry.ordinal;
        EXPECT_TRUE(table.insert(entry.name).second && entry.function != nullptr) << entry.name;
        EXPECT_EQ(titlerender_entry_point(entry.ordinal), entry.function) << entry.ordinal;
        EXPECT_EQ(listed[entry.name], std::to_string(entry.ordinal) + (entry.ordinal == 12 ? "" : "N")) << entry.name;
    }
    EXPECT_EQ(table, header);
    for (uint32_t unassigned : {0u, 13u, 89u, 132u, 134u, 254u, 301u, 0xFFFFFFFFu}) {
        EXPECT_EQ(titlerender_entry_point(unassigned), nullptr) << unassigned;
    }
}

TEST(OrdinalTable, SharedLibraryExportsExactlyTheEntryPoints) {
    const char* build = std::getenv("TR_TEST_BINARY_DIR");
    ASSERT_NE(build, nullptr);
    const std::string library = std::string(build) + "/libtitlerender.so";
    void* handle = dlopen(library.c_str(), RTLD_NOW | RTLD_LOCAL);
    ASSERT_NE(handle, nullptr) << dlerror();
    auto lookup = reinterpret_cast<const void* (*)(uint32_t)>(dlsym(handle, "titlerender_entry_point"));
    ASSERT_NE(lookup, nullptr);
    for (const tr::OrdinalEntry& entry : tr::GetOrdinalTable()) {
        EXPECT_EQ(lookup(entry.ordinal), dlsym(handle, entry.name)) << entry.name;
    }
    dlclose(handle);
    FILE* pipe = popen(("nm -D --defined-only " + library + " 2>/dev/null").c_str(), "r");
    ASSERT_NE(pipe, nullptr);
    std::set<std::string> exported;
    char buffer[512];
    while (std::fgets(buffer, sizeof buffer, pipe)) {
        std::istringstream fields(buffer);
        std::string address, type, name;
        if (fields >> address >> type >> name) exported.insert(name);
    }
    pclose(pipe);
    exported.erase("TITLERENDER");  // version node of the export map, if any
    EXPECT_EQ(exported, HeaderEntryPoints());
}

}  // namespace
