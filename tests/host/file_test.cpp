// Tests of the foundation library's files and paths.
#include "host/file.h"

#include <gtest/gtest.h>

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <optional>
#include <string>
#include <thread>
#include <vector>

namespace {

using Talc::File;
using Talc::FileAccessFlags;
namespace fs = std::filesystem;

// A fresh directory under the temporary directory, removed afterwards.
class FileTest : public ::testing::Test {
protected:
    void SetUp() override {
        std::string pattern = Talc::PathUtils::GetTempDirectory() + "/tr_file_test_XXXXXX";
        ASSERT_NE(::mkdtemp(pattern.data()), nullptr);
        root_ = pattern;
    }
    void TearDown() override {
        std::error_code ignored;
        fs::remove_all(root_, ignored);
    }

    std::string root_;
};

std::vector<uint8_t> Pattern(size_t size) {
    std::vector<uint8_t> bytes(size);
    for (size_t i = 0; i < size; ++i) {
        bytes[i] = static_cast<uint8_t>((i * 131) ^ (i >> 8));
    }
    return bytes;
}

TEST_F(FileTest, WriteCreatesMissingDirectoriesThenReadDeleteRoundTrip) {
    const std::string path = root_ + "/a/b/c/17Character_0";
    const std::vector<uint8_t> data = Pattern(300000);
    {
        File file;
        ASSERT_EQ(File::Open(path, FileAccessFlags::Write, file), 0);
        EXPECT_TRUE(file.IsOpen());
        uint32_t done = 1;
        ASSERT_EQ(file.Write(data.data(), static_cast<uint32_t>(data.size()), done), 0);
        EXPECT_EQ(done, data.size());
    }  // closed by the destructor
    EXPECT_EQ(fs::file_size(path), data.size());

    File file;
    ASSERT_EQ(File::Open(path, FileAccessFlags::Read, file), 0);
    std::vector<uint8_t> back(data.size());
    uint32_t done = 0;
    ASSERT_EQ(file.Read(back.data(), static_cast<uint32_t>(back.size()), done), 0);
    EXPECT_EQ(done, data.size());
    EXPECT_EQ(back, data);
    // At the end of the file a read succeeds with nothing transferred.
    uint8_t extra = 0;
    EXPECT_EQ(file.Read(&extra, 1, done), 0);
    EXPECT_EQ(done, 0u);
    file.Close();
    EXPECT_FALSE(file.IsOpen());

    EXPECT_EQ(File::Delete(path), 0);
    EXPECT_FALSE(fs::exists(path));
    EXPECT_EQ(File::Delete(path), -ENOENT);
    EXPECT_EQ(File::Open(path, FileAccessFlags::Read, file), -ENOENT);
    EXPECT_FALSE(file.IsOpen());
}

TEST_F(FileTest, WriteTruncatesAnExistingFileAndShortReadReportsWhatExists) {
    const std::string path = root_ + "/truncated";
    const std::vector<uint8_t> data = Pattern(100);
    File file;
    uint32_t done = 0;
    ASSERT_EQ(File::Open(path, FileAccessFlags::Write, file), 0);
    ASSERT_EQ(file.Write(data.data(), 100, done), 0);
    ASSERT_EQ(File::Open(path, FileAccessFlags::Write, file), 0);  // closes the first
    ASSERT_EQ(file.Write(data.data(), 10, done), 0);
    file.Close();

    ASSERT_EQ(File::Open(path, FileAccessFlags::Read, file), 0);
    std::vector<uint8_t> back(100, 0xEE);
    EXPECT_EQ(file.Read(back.data(), 100, done), 0);
    EXPECT_EQ(done, 10u);
    EXPECT_TRUE(std::equal(data.begin(), data.begin() + 10, back.begin()));
    EXPECT_EQ(back[10], 0xEE);
}

// Data arriving in pieces (a pipe fed slowly) is gathered into one read.
TEST_F(FileTest, ReadGathersPartialTransfers) {
    const std::string path = root_ + "/fifo";
    ASSERT_EQ(::mkfifo(path.c_str(), 0600), 0);
    constexpr uint32_t kChunk = 1000;
    constexpr int kChunks = 8;
    const std::vector<uint8_t> data = Pattern(kChunk * kChunks);
    std::thread writer([&] {
        File out;
        ASSERT_EQ(File::Open(path, FileAccessFlags::Write, out), 0);
        for (int i = 0; i < kChunks; ++i) {
            uint32_t done = 0;
            ASSERT_EQ(out.Write(data.data() + i * kChunk, kChunk, done), 0);
            std::this_thread::sleep_for(std::chrono::milliseconds(2));
        }
    });
    File in;
    ASSERT_EQ(File::Open(path, FileAccessFlags::Read, in), 0);
    std::vector<uint8_t> back(data.size());
    uint32_t done = 0;
    EXPECT_EQ(in.Read(back.data(), static_cast<uint32_t>(back.size()), done), 0);
    writer.join();
    EXPECT_EQ(done, data.size());
    EXPECT_EQ(back, data);
}

TEST_F(FileTest, FailuresAreNegative) {
    File file;
    uint8_t byte = 0;
    uint32_t done = 7;
    EXPECT_EQ(file.Read(&byte, 1, done), -EBADF);
    EXPECT_EQ(done, 0u);
    EXPECT_EQ(file.Write(&byte, 1, done), -EBADF);

    const std::string path = root_ + "/plain";
    EXPECT_EQ(File::Open(path, static_cast<FileAccessFlags::Type>(3), file), -EINVAL);
    EXPECT_FALSE(fs::exists(path));

    ASSERT_EQ(File::Open(path, FileAccessFlags::Write, file), 0);
    EXPECT_LT(file.Read(&byte, 1, done), 0);  // opened for writing only
    file.Close();
    ASSERT_EQ(File::Open(path, FileAccessFlags::Read, file), 0);
    EXPECT_LT(file.Write(&byte, 1, done), 0);  // opened for reading only
    file.Close();

    // A directory cannot be made below a regular file.
    EXPECT_LT(File::Open(path + "/below/file", FileAccessFlags::Write, file), 0);
    EXPECT_FALSE(file.IsOpen());
}

// The length follows what was written, not what was asked for; a file that
// is not open has none.
TEST_F(FileTest, GetSizeReportsTheBytesInTheFile) {
    const std::string path = root_ + "/sized";
    File file;
    uint64_t size = 99;
    EXPECT_EQ(file.GetSize(size), -EBADF);
    EXPECT_EQ(size, 0u);

    ASSERT_EQ(File::Open(path, FileAccessFlags::Write, file), 0);
    ASSERT_EQ(file.GetSize(size), 0);
    EXPECT_EQ(size, 0u);
    const std::vector<uint8_t> data = Pattern(5000);
    uint32_t done = 0;
    ASSERT_EQ(file.Write(data.data(), 4321, done), 0);
    ASSERT_EQ(file.GetSize(size), 0);
    EXPECT_EQ(size, 4321u);
    file.Close();

    ASSERT_EQ(File::Open(path, FileAccessFlags::Read, file), 0);
    std::vector<uint8_t> back(10);
    ASSERT_EQ(file.Read(back.data(), 10, done), 0);
    ASSERT_EQ(file.GetSize(size), 0);  // independent of the read position
    EXPECT_EQ(size, fs::file_size(path));
}

// Sets or clears an environment variable for one scope.
class ScopedEnvironment {
public:
    ScopedEnvironment(const char* name, const char* value) : name_(name) {
        if (const char* old = std::getenv(name)) {
            old_ = old;
        }
        if (value != nullptr) {
            ::setenv(name, value, 1);
        } else {
            ::unsetenv(name);
        }
    }
    ~ScopedEnvironment() {
        if (old_) {
            ::setenv(name_, old_->c_str(), 1);
        } else {
            ::unsetenv(name_);
        }
    }

private:
    const char* name_;
    std::optional<std::string> old_;
};

TEST(PathUtilsTest, TempDirectoryComesFromTmpdirOrDefaultsToTmp) {
    struct Case {
        const char* tmpdir;
        const char* expected;
    };
    for (const Case c : {Case{"/var/scratch", "/var/scratch"}, Case{"", "/tmp"}, Case{nullptr, "/tmp"}}) {
        const ScopedEnvironment environment("TMPDIR", c.tmpdir);
        EXPECT_EQ(Talc::PathUtils::GetTempDirectory(), c.expected) << (c.tmpdir ? c.tmpdir : "(unset)");
    }
}

TEST(PathUtilsTest, AddTrailingSlash) {
    struct Case {
        const char* path;
        const char* expected;
    };
    for (const Case c : {Case{"/tmp", "/tmp/"}, Case{"/tmp/", "/tmp/"}, Case{"/", "/"}, Case{"", ""},
                         Case{"relative/dir", "relative/dir/"}}) {
        EXPECT_EQ(Talc::PathUtils::AddTrailingSlash(c.path), c.expected) << '"' << c.path << '"';
    }
}

}  // namespace
