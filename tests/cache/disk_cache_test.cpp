// Tests of the disk cache: the block file and its life (written at the last
// release, read back, charged, deleted at eviction), the no-cache flag,
// files damaged or removed behind the cache's back, a cache directory that
// cannot be written, and the client contract shared with the memory cache.
#include "cache/disk_cache.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <random>
#include <string>

#include "allocation_probe.h"
#include "host/file.h"
#include "cache_level_contract.h"

namespace tr::test {
namespace {

namespace fs = std::filesystem;

INSTANTIATE_TYPED_TEST_SUITE_P(Disk, CacheLevelContract, DiskLevel);

std::uint32_t U32At(const std::vector<std::uint8_t>& bytes, std::size_t at) {
    return std::uint32_t{bytes[at]} | std::uint32_t{bytes[at + 1]} << 8 |
           std::uint32_t{bytes[at + 2]} << 16 | std::uint32_t{bytes[at + 3]} << 24;
}

// The number in "17Character_<n>".
long NumberOf(const std::string& name) {
    const std::string prefix = "17Character_";
    if (name.rfind(prefix, 0) != 0) return -1;
    return std::strtol(name.c_str() + prefix.size(), nullptr, 10);
}

class DiskCacheTest : public ::testing::Test {
protected:
    // Files a crashed earlier run may have left would stand where the tests
    // expect none (names restart at 0 in every process).
    void SetUp() override {
        if (CacheDirectoryIsPrivate() && fs::is_directory(DiskCacheDirectory())) {
            for (const auto& entry : fs::directory_iterator(DiskCacheDirectory())) fs::remove_all(entry);
        }
        ASSERT_TRUE(CreateDiskCache());
    }
    void TearDown() override { DestroyDiskCache(); }

    static CharacterDiskCache& Cache() { return *GetDiskCache(); }
    static OMFactory& FactoryOf(const OutlineRequest& ticket) {
        auto* box = LiveBox(Cache(), ticket);
        EXPECT_NE(box, nullptr);
        EXPECT_NE(box->factory, nullptr);
        return *box->factory;
    }
    // Gets and gives back the block of `ticket`, leaving its file written.
    std::string Store(const OutlineRequest& ticket) {
        OMData handle = DiskCacheGet(ticket);
        EXPECT_NE(handle.pointer, nullptr);
        EXPECT_EQ(DiskCacheRelease(handle), 1);
        EXPECT_TRUE(FactoryOf(ticket).onDisk);
        return FileOf(FactoryOf(ticket));
    }
};

TEST_F(DiskCacheTest, TheLastReleaseWritesSizeAndBlockToANamedFile) {
    SquareHost host;
    const OutlineRequest ticket = Ticket(host, 'A');
    OMData first = DiskCacheGet(ticket);
    OMData second = DiskCacheGet(ticket);
    ASSERT_NE(first.pointer, nullptr);
    const std::vector<std::uint8_t> block = BytesOf(first);
    OMFactory& factory = FactoryOf(ticket);
    EXPECT_GE(NumberOf(factory.name), 0) << factory.name;
    const std::string path = FileOf(factory);
    EXPECT_EQ(DiskCacheDirectory(),
              Talc::PathUtils::AddTrailingSlash(Talc::PathUtils::GetTempDirectory()) + "CG Cache/");
    EXPECT_EQ(path, DiskCacheDirectory() + factory.name);
    EXPECT_FALSE(fs::exists(path)) << "nothing is written while the block is in use";
    EXPECT_EQ(LiveBox(Cache(), ticket)->cost, 0) << "a block in use before its first write costs nothing";

    EXPECT_EQ(DiskCacheRelease(first), 1);
    EXPECT_FALSE(fs::exists(path)) << "one holder remains";
    EXPECT_EQ(DiskCacheRelease(second), 1);
    const auto file = FileBytes(path);
    ASSERT_TRUE(file.has_value());
    ASSERT_EQ(file->size(), 4 + block.size());
    EXPECT_EQ(U32At(*file, 0), block.size());
    EXPECT_TRUE(std::equal(block.begin(), block.end(), file->begin() + 4));
    EXPECT_EQ(LiveBox(Cache(), ticket)->cost, static_cast<std::int32_t>(block.size()));
    EXPECT_EQ(factory.block.pointer, nullptr) << "the stored block leaves memory";
    EXPECT_EQ(host.Builds(), 1);
    ExpectBudgetInvariants(Cache(), "stored");
}

TEST_F(DiskCacheTest, ASecondRequestReadsTheFileBackAndItsReleaseChargesNothing) {
    SquareHost host;
    const OutlineRequest ticket = Ticket(host, 'B');
    const std::string path = Store(ticket);
    const auto fileBefore = FileBytes(path);
    const std::uint32_t size = static_cast<std::uint32_t>(fileBefore->size() - 4);

    for (int round = 0; round < 2; ++round) {
        OMData handle = DiskCacheGet(ticket);
        ASSERT_NE(handle.pointer, nullptr) << round;
        EXPECT_EQ(BytesOf(handle), ReferenceBlock(ticket)) << round;
        EXPECT_EQ(LiveBox(Cache(), ticket)->cost, static_cast<std::int32_t>(size)) << round;
        EXPECT_EQ(DiskCacheRelease(handle), 1) << round;
        EXPECT_EQ(LiveBox(Cache(), ticket)->cost, 0) << "read back: charged 0 after the release";
        EXPECT_EQ(FileBytes(path), fileBefore) << "the file stays as it was";
        EXPECT_TRUE(FactoryOf(ticket).onDisk);
    }
    EXPECT_EQ(host.Builds(), 1) << "read back, never rebuilt";
    ExpectBudgetInvariants(Cache(), "after read-backs");
}

TEST_F(DiskCacheTest, TheNoCacheFlagWritesNothingAndTheReleaseFreesTheBlock) {
    SquareHost host;
    const OutlineRequest ticket = Ticket(host, 'C', 8, OUTLINE_NO_CACHE);
    const auto filesBefore = std::distance(fs::directory_iterator(DiskCacheDirectory()), {});
    for (int round = 1; round <= 2; ++round) {
        OMData handle = DiskCacheGet(ticket);
        ASSERT_NE(handle.pointer, nullptr);
        EXPECT_EQ(BytesOf(handle), ReferenceBlock(ticket));
        EXPECT_TRUE(FactoryOf(ticket).name.empty());
        EXPECT_EQ(FactoryOf(ticket).block.pointer, nullptr) << "the block is the caller's";
        EXPECT_EQ(DiskCacheRelease(handle), 1);  // frees it (a leak shows under ASan)
        EXPECT_EQ(host.Builds(), round) << "nothing is kept, so each request builds";
    }
    EXPECT_EQ(std::distance(fs::directory_iterator(DiskCacheDirectory()), {}), filesBefore);
    EXPECT_EQ(LiveBox(Cache(), ticket)->cost, 0);
}

TEST_F(DiskCacheTest, AFileDeletedBehindTheCacheIsRebuiltUnderTheNextNumber) {
    SquareHost host;
    const OutlineRequest ticket = Ticket(host, 'D');
    const std::string oldPath = Store(ticket);
    const long oldNumber = NumberOf(FactoryOf(ticket).name);
    ASSERT_TRUE(fs::remove(oldPath));

    OMData handle = DiskCacheGet(ticket);
    ASSERT_NE(handle.pointer, nullptr);
    EXPECT_EQ(BytesOf(handle), ReferenceBlock(ticket));
    EXPECT_EQ(host.Builds(), 2);
    EXPECT_EQ(NumberOf(FactoryOf(ticket).name), oldNumber + 1);
    EXPECT_EQ(DiskCacheRelease(handle), 1);
    const std::string newPath = FileOf(FactoryOf(ticket));
    EXPECT_TRUE(fs::exists(newPath));
    EXPECT_FALSE(fs::exists(oldPath));
    ExpectBudgetInvariants(Cache(), "rebuilt");
}

TEST_F(DiskCacheTest, EvictionDeletesTheFilesAndTheNextRequestBuildsAgain) {
    SquareHost host;
    const OutlineRequest a = Ticket(host, 'E');
    const OutlineRequest b = Ticket(host, 'F');
    const std::string pathA = Store(a);
    const std::string pathB = Store(b);
    ASSERT_TRUE(fs::exists(pathA) && fs::exists(pathB));

    EvictUnreferenced(Cache());
    EXPECT_FALSE(fs::exists(pathA));
    EXPECT_FALSE(fs::exists(pathB));
    for (const auto* ticket : {&a, &b}) {
        auto* box = LiveBox(Cache(), *ticket);
        ASSERT_NE(box, nullptr) << "the box keeps its statistics";
        EXPECT_EQ(box->factory, nullptr);
        EXPECT_EQ(box->swapOutCount, 1);
    }
    ExpectBudgetInvariants(Cache(), "evicted");

    OMData handle = DiskCacheGet(a);
    ASSERT_NE(handle.pointer, nullptr);
    EXPECT_EQ(host.Builds(), 3);
    EXPECT_NE(FileOf(FactoryOf(a)), pathA) << "a new factory takes a new name";
    EXPECT_EQ(DiskCacheRelease(handle), 1);
}

// A damaged file is never handed out: the block is built again and is the
// one a direct build makes. No case may make the reader allocate more than
// the file holds.
TEST_F(DiskCacheTest, DamagedFilesLeadToARebuild) {
    struct Case {
        const char* name;
        std::vector<std::uint8_t> (*damage)(std::vector<std::uint8_t> file);
    };
    const Case cases[] = {
        {"empty file", [](std::vector<std::uint8_t>) { return std::vector<std::uint8_t>{}; }},
        {"only part of the size word", [](std::vector<std::uint8_t> f) { f.resize(3); return f; }},
        {"truncated block", [](std::vector<std::uint8_t> f) { f.resize(4 + (f.size() - 4) / 2); return f; }},
        {"size word 0", [](std::vector<std::uint8_t> f) { std::fill_n(f.begin(), 4, 0); return f; }},
        {"size word one short", [](std::vector<std::uint8_t> f) { f[0] -= 1; return f; }},
        {"huge size word", [](std::vector<std::uint8_t> f) { std::fill_n(f.begin(), 4, 0xF0); return f; }},
        {"garbage of the right length",
         [](std::vector<std::uint8_t> f) {
             std::mt19937 random(7);
             for (std::size_t i = 4; i < f.size(); ++i) f[i] = static_cast<std::uint8_t>(random());
             return f;
         }},
        {"one byte changed", [](std::vector<std::uint8_t> f) { f[f.size() / 2] ^= 0x10; return f; }},
    };
    std::uint16_t code = 'a';
    for (const Case& c : cases) {
        SquareHost host;
        const OutlineRequest ticket = Ticket(host, code++);
        const std::string path = Store(ticket);
        const auto stored = FileBytes(path);
        ASSERT_TRUE(stored.has_value()) << c.name;
        WriteFileBytes(path, c.damage(*stored));

        ResetLargestNothrowArray();
        OMData handle = DiskCacheGet(ticket);
        EXPECT_LE(LargestNothrowArray(), stored->size()) << c.name;
        ASSERT_NE(handle.pointer, nullptr) << c.name;
        EXPECT_EQ(BytesOf(handle), ReferenceBlock(ticket)) << c.name;
        EXPECT_EQ(host.Builds(), 2) << c.name;
        EXPECT_FALSE(FactoryOf(ticket).onDisk) << c.name;
        EXPECT_EQ(DiskCacheRelease(handle), 1) << c.name;
        EXPECT_EQ(FileBytes(FileOf(FactoryOf(ticket))), stored) << c.name << ": written anew";
        fs::remove(path);  // the damaged file is no entry's any more
        ExpectBudgetInvariants(Cache(), c.name);
    }
}

// Replaces the cache directory for one test and puts it back afterwards.
class CacheDirectoryTest : public DiskCacheTest {
protected:
    void SetUp() override {
        if (!CacheDirectoryIsPrivate()) {
            GTEST_SKIP() << "replaces the cache directory: runs only in CTest's private TMPDIR";
        }
        directory_ = DiskCacheDirectory();
        directory_.pop_back();  // no trailing separator
        aside_ = directory_ + ".aside";
        fs::remove_all(aside_);
        if (fs::exists(directory_)) fs::rename(directory_, aside_);
        DiskCacheTest::SetUp();
    }
    void TearDown() override {
        DiskCacheTest::TearDown();
        if (aside_.empty()) return;
        fs::remove_all(directory_);
        if (fs::exists(aside_)) fs::rename(aside_, directory_);
    }

    std::string directory_;
    std::string aside_;
};

TEST_F(CacheDirectoryTest, AMissingDirectoryIsCreatedAtTheFirstWrite) {
    ASSERT_FALSE(fs::exists(directory_));
    SquareHost host;
    const std::string path = Store(Ticket(host, 'H'));
    EXPECT_TRUE(fs::is_directory(directory_));
    EXPECT_TRUE(fs::exists(path));
}

TEST_F(CacheDirectoryTest, AnUnwritableDirectoryDropsBlocksAtTheirLastRelease) {
    WriteFileBytes(directory_, {1, 2, 3});  // a plain file where the directory should be
    SquareHost host;
    const OutlineRequest ticket = Ticket(host, 'I');
    for (int round = 1; round <= 2; ++round) {
        OMData handle = DiskCacheGet(ticket);
        ASSERT_NE(handle.pointer, nullptr);
        EXPECT_EQ(BytesOf(handle), ReferenceBlock(ticket));
        EXPECT_EQ(DiskCacheRelease(handle), 1);
        const OMFactory& factory = FactoryOf(ticket);
        EXPECT_FALSE(factory.onDisk);
        EXPECT_EQ(factory.block.pointer, nullptr);
        EXPECT_EQ(LiveBox(Cache(), ticket)->cost, 0);
        EXPECT_EQ(host.Builds(), round) << "nothing could be kept";
    }
    EXPECT_TRUE(fs::is_regular_file(directory_));
}

}  // namespace
}  // namespace tr::test
