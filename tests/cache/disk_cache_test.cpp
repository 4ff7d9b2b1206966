// Tests of the disk cache: the life of a block file, files damaged or removed
// behind its back, an unwritable cache directory, and the shared contract.
#include "cache/disk_cache.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <filesystem>
#include <new>
#include <string>

#include "cache_level_contract.h"
#include "host/file.h"

// The largest request made through the non-throwing array new (the file
// reader's) since the last reset: how much the reader dared to allocate.
namespace {
std::atomic<std::size_t> gLargestNothrowArray{0};
}  // namespace

void* operator new[](std::size_t size, const std::nothrow_t&) noexcept {
    std::size_t seen = gLargestNothrowArray;
    while (size > seen && !gLargestNothrowArray.compare_exchange_weak(seen, size)) {
    }
    try {
        return ::operator new[](size);
    } catch (...) {
        return nullptr;
    }
}

namespace tr::test {
namespace {

namespace fs = std::filesystem;

INSTANTIATE_TYPED_TEST_SUITE_P(Disk, CacheLevelContract, DiskLevel);

// The number in "17Character_<n>".
long NumberOf(const std::string& name) {
    return name.rfind("17Character_", 0) == 0 ? std::strtol(name.c_str() + 12, nullptr, 10) : -1;
}

class DiskCacheTest : public ::testing::Test {
protected:
    // Names restart at 0 in every process: clear the files of an earlier run.
    void SetUp() override {
        if (CacheDirectoryIsPrivate() && fs::is_directory(DiskCacheDirectory())) {
            for (const auto& entry : fs::directory_iterator(DiskCacheDirectory())) {
                fs::remove_all(entry);
            }
        }
        ASSERT_TRUE(CreateDiskCache());
    }
    void TearDown() override { DestroyDiskCache(); }

    static CharacterDiskCache& Cache() { return *GetDiskCache(); }
    static OMFactory& FactoryOf(const OutlineRequest& t) { return *LiveBox(Cache(), t)->factory; }
    static std::int32_t CostOf(const OutlineRequest& t) { return LiveBox(Cache(), t)->cost; }
    // Gets and gives back the block of `ticket`, leaving its file written.
    static std::string Store(const OutlineRequest& ticket) {
        OMData handle = DiskCacheGet(ticket);
        EXPECT_EQ(DiskCacheRelease(handle), 1);
        EXPECT_TRUE(FactoryOf(ticket).onDisk);
        return FileOf(FactoryOf(ticket));
    }
};

// In use: no file, no charge. Last release: the block file (its layout is
// pinned by the block file tests) in "<TMPDIR>/CG Cache/17Character_<n>",
// charged its size. Read back: charged while in use, 0 after, never rebuilt.
TEST_F(DiskCacheTest, TheLifeOfABlockFile) {
    SquareHost host;
    const OutlineRequest ticket = Ticket(host, 'A');
    OMData first = DiskCacheGet(ticket);
    OMData second = DiskCacheGet(ticket);
    const std::vector<std::uint8_t> block = BytesOf(first);
    const std::string path = FileOf(FactoryOf(ticket));
    EXPECT_EQ(path, Talc::PathUtils::AddTrailingSlash(Talc::PathUtils::GetTempDirectory()) +
                        "CG Cache/" + FactoryOf(ticket).name);
    EXPECT_GE(NumberOf(FactoryOf(ticket).name), 0);
    EXPECT_EQ(DiskCacheRelease(first), 1);
    EXPECT_FALSE(fs::exists(path));
    EXPECT_EQ(CostOf(ticket), 0);
    EXPECT_EQ(DiskCacheRelease(second), 1);
    const auto file = FileBytes(path);
    ASSERT_TRUE(file.has_value());
    EXPECT_EQ(file->size(), 4 + block.size());
    EXPECT_EQ(CostOf(ticket), static_cast<std::int32_t>(block.size()));
    EXPECT_EQ(FactoryOf(ticket).block.pointer, nullptr) << "the stored block leaves memory";

    for (int round = 0; round < 2; ++round) {
        OMData handle = DiskCacheGet(ticket);
        EXPECT_EQ(BytesOf(handle), block) << round;
        EXPECT_EQ(CostOf(ticket), static_cast<std::int32_t>(block.size())) << round;
        EXPECT_EQ(DiskCacheRelease(handle), 1);
        EXPECT_EQ(CostOf(ticket), 0) << round;
        EXPECT_EQ(FileBytes(path), file) << round;
    }
    EXPECT_EQ(host.Builds(), 1);
    ExpectBudgetInvariants(Cache(), "after read-backs");
}

// A file removed or damaged is never handed out: the block is built again
// under the next name, and the reader never allocates more than the file holds.
TEST_F(DiskCacheTest, RemovedOrDamagedFilesLeadToARebuild) {
    using File = std::vector<std::uint8_t>;
    const struct {
        const char* name;
        File (*damage)(File);  // null: the file is removed
    } cases[] = {
        {"removed", nullptr},
        {"part of the size word", [](File f) { f.resize(3); return f; }},
        {"truncated block", [](File f) { f.resize(4 + (f.size() - 4) / 2); return f; }},
        {"size word 0", [](File f) { std::fill_n(f.begin(), 4, 0); return f; }},
        {"size word one short", [](File f) { f[0] -= 1; return f; }},
        {"huge size word", [](File f) { std::fill_n(f.begin(), 4, 0xF0); return f; }},
        {"one byte changed", [](File f) { f[f.size() / 2] ^= 0x10; return f; }},
    };
    std::uint16_t code = 'a';
    for (const auto& c : cases) {
        SquareHost host;
        const OutlineRequest ticket = Ticket(host, code++);
        const std::string path = Store(ticket);
        const long number = NumberOf(FactoryOf(ticket).name);
        const auto stored = FileBytes(path);
        ASSERT_TRUE(stored.has_value()) << c.name;
        if (c.damage == nullptr) {
            fs::remove(path);
        } else {
            WriteFileBytes(path, c.damage(*stored));
        }
        gLargestNothrowArray = 0;
        OMData handle = DiskCacheGet(ticket);
        EXPECT_LE(gLargestNothrowArray.load(), stored->size()) << c.name;
        EXPECT_EQ(BytesOf(handle), ReferenceBlock(ticket)) << c.name;
        EXPECT_EQ(host.Builds(), 2) << c.name;
        EXPECT_EQ(NumberOf(FactoryOf(ticket).name), number + 1) << c.name;
        EXPECT_EQ(DiskCacheRelease(handle), 1) << c.name;
        EXPECT_EQ(FileBytes(FileOf(FactoryOf(ticket))), stored) << c.name << ": rewritten";
        fs::remove(path);  // no entry's file any more
        ExpectBudgetInvariants(Cache(), c.name);
    }
}

// A plain file where the cache directory should be: blocks are dropped at
// their last release and built again at the next request.
TEST_F(DiskCacheTest, AnUnwritableDirectoryDropsBlocksAtTheirLastRelease) {
    if (!CacheDirectoryIsPrivate()) GTEST_SKIP() << "replaces the cache directory";
    std::string directory = DiskCacheDirectory();
    directory.pop_back();  // no trailing separator
    fs::remove_all(directory);
    WriteFileBytes(directory, {1, 2, 3});
    SquareHost host;
    const OutlineRequest ticket = Ticket(host, 'I');
    for (int round = 1; round <= 2; ++round) {
        OMData handle = DiskCacheGet(ticket);
        EXPECT_EQ(BytesOf(handle), ReferenceBlock(ticket));
        EXPECT_EQ(DiskCacheRelease(handle), 1);
        EXPECT_FALSE(FactoryOf(ticket).onDisk);
        EXPECT_EQ(FactoryOf(ticket).block.pointer, nullptr);
        EXPECT_EQ(CostOf(ticket), 0);
        EXPECT_EQ(host.Builds(), round);
    }
    fs::remove(directory);  // the next write makes the directory again
    EXPECT_TRUE(fs::exists(Store(Ticket(host, 'J'))));
}

}  // namespace
}  // namespace tr::test
