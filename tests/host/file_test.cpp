// Tests of the foundation library's files and paths.
#include "host/file.h"

#include <gtest/gtest.h>

#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <string>
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
    void TearDown() override { fs::remove_all(root_); }
    std::string root_;
};

// Writing creates the missing directories and truncates an existing file; a
// read past the end succeeds short; the size follows what was written.
TEST_F(FileTest, WriteReadTruncateAndDelete) {
    const std::string path = root_ + "/a/b/17Character_0";
    std::vector<uint8_t> data(300000);
    for (size_t i = 0; i < data.size(); ++i) data[i] = static_cast<uint8_t>((i * 131) ^ (i >> 8));
    File file;
    uint32_t done = 1;
    uint64_t size = 99;
    ASSERT_EQ(File::Open(path, FileAccessFlags::Write, file), 0);
    ASSERT_EQ(file.Write(data.data(), static_cast<uint32_t>(data.size()), done), 0);
    EXPECT_EQ(done, data.size());
    ASSERT_EQ(File::Open(path, FileAccessFlags::Read, file), 0);  // closes the writer
    std::vector<uint8_t> back(data.size() + 10, 0xEE);
    ASSERT_EQ(file.Read(back.data(), static_cast<uint32_t>(back.size()), done), 0);
    EXPECT_EQ(done, data.size());
    EXPECT_TRUE(std::equal(data.begin(), data.end(), back.begin()));
    ASSERT_EQ(file.GetSize(size), 0);  // independent of the read position
    EXPECT_EQ(size, data.size());

    ASSERT_EQ(File::Open(path, FileAccessFlags::Write, file), 0);
    ASSERT_EQ(file.Write(data.data(), 10, done), 0);
    ASSERT_EQ(file.GetSize(size), 0);
    EXPECT_EQ(size, 10u) << "opening for writing truncates";
    file.Close();
    EXPECT_FALSE(file.IsOpen());

    EXPECT_EQ(File::Delete(path), 0);
    EXPECT_EQ(File::Delete(path), -ENOENT);
    EXPECT_EQ(File::Open(path, FileAccessFlags::Read, file), -ENOENT);
    EXPECT_FALSE(file.IsOpen());
}

TEST_F(FileTest, FailuresAreNegative) {
    File file;
    uint8_t byte = 0;
    uint32_t done = 7;
    uint64_t size = 99;
    EXPECT_EQ(file.Read(&byte, 1, done), -EBADF);
    EXPECT_EQ(done, 0u);
    EXPECT_EQ(file.Write(&byte, 1, done), -EBADF);
    EXPECT_EQ(file.GetSize(size), -EBADF);
    EXPECT_EQ(size, 0u);

    const std::string path = root_ + "/plain";
    EXPECT_EQ(File::Open(path, static_cast<FileAccessFlags::Type>(3), file), -EINVAL);
    EXPECT_FALSE(fs::exists(path));
    ASSERT_EQ(File::Open(path, FileAccessFlags::Write, file), 0);
    EXPECT_LT(file.Read(&byte, 1, done), 0);
    ASSERT_EQ(File::Open(path, FileAccessFlags::Read, file), 0);
    EXPECT_LT(file.Write(&byte, 1, done), 0);
    EXPECT_LT(File::Open(path + "/below/file", FileAccessFlags::Write, file), 0)
        << "no directory below a regular file";
    EXPECT_FALSE(file.IsOpen());
}

TEST(PathUtilsTest, TempDirectoryAndTrailingSlash) {
    const char* saved = std::getenv("TMPDIR");
    const std::string restore = saved != nullptr ? saved : "";
    ::setenv("TMPDIR", "/var/scratch", 1);
    EXPECT_EQ(Talc::PathUtils::GetTempDirectory(), "/var/scratch");
    ::setenv("TMPDIR", "", 1);
    EXPECT_EQ(Talc::PathUtils::GetTempDirectory(), "/tmp");
    ::unsetenv("TMPDIR");
    EXPECT_EQ(Talc::PathUtils::GetTempDirectory(), "/tmp");
    if (saved != nullptr) ::setenv("TMPDIR", restore.c_str(), 1);

    const std::pair<const char*, const char*> cases[] = {
        {"/tmp", "/tmp/"}, {"/tmp/", "/tmp/"}, {"/", "/"}, {"", ""}, {"relative/dir", "relative/dir/"}};
    for (const auto& [path, expected] : cases) {
        EXPECT_EQ(Talc::PathUtils::AddTrailingSlash(path), expected) << '"' << path << '"';
    }
}

}  // namespace
