// host/file.cpp — POSIX implementation of the foundation library's files.
#include "host/file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <system_error>

namespace Talc {
namespace {

constexpr mode_t kNewFileMode = 0666;  // narrowed by the process umask

// Creates the directories leading to `path`; 0 or a negative errno.
int CreateParentDirectories(const std::string& path) {
    const std::filesystem::path parent = std::filesystem::path(path).parent_path();
    if (parent.empty()) {
        return 0;
    }
    std::error_code error;
    std::filesystem::create_directories(parent, error);
    return error ? -error.value() : 0;
}

}  // namespace

File::~File() { Close(); }

int File::Open(const std::string& path, FileAccessFlags::Type type, File& file) {
    file.Close();
    int flags = O_CLOEXEC;
    switch (type) {
        case FileAccessFlags::Read:
            flags |= O_RDONLY;
            break;
        case FileAccessFlags::Write: {
            flags |= O_WRONLY | O_CREAT | O_TRUNC;
            if (const int status = CreateParentDirectories(path); status < 0) {
                return status;
            }
            break;
        }
        default:
            return -EINVAL;
    }
    int descriptor;
    do {
        descriptor = ::open(path.c_str(), flags, kNewFileMode);
    } while (descriptor < 0 && errno == EINTR);
    if (descriptor < 0) {
        return -errno;
    }
    file.descriptor_ = descriptor;
    return 0;
}

int File::Read(void* buffer, uint32_t count, uint32_t& bytesDone) {
    bytesDone = 0;
    if (descriptor_ < 0) {
        return -EBADF;
    }
    auto* bytes = static_cast<char*>(buffer);
    while (bytesDone < count) {
        const ssize_t got = ::read(descriptor_, bytes + bytesDone, count - bytesDone);
        if (got < 0) {
            if (errno == EINTR) {
                continue;
            }
            return -errno;
        }
        if (got == 0) {
            break;  // end of file
        }
        bytesDone += static_cast<uint32_t>(got);
    }
    return 0;
}

int File::Write(const void* buffer, uint32_t count, uint32_t& bytesDone) {
    bytesDone = 0;
    if (descriptor_ < 0) {
        return -EBADF;
    }
    const auto* bytes = static_cast<const char*>(buffer);
    while (bytesDone < count) {
        const ssize_t put = ::write(descriptor_, bytes + bytesDone, count - bytesDone);
        if (put < 0) {
            if (errno == EINTR) {
                continue;
            }
            return -errno;
        }
        bytesDone += static_cast<uint32_t>(put);
    }
    return 0;
}

int File::GetSize(uint64_t& size) const {
    size = 0;
    if (descriptor_ < 0) {
        return -EBADF;
    }
    struct stat status {};
    if (::fstat(descriptor_, &status) != 0) {
        return -errno;
    }
    size = static_cast<uint64_t>(status.st_size);
    return 0;
}

void File::Close() {
    if (descriptor_ >= 0) {
        // The descriptor is released even when close reports an error, and
        // retrying after EINTR could close a descriptor reused meanwhile.
        ::close(descriptor_);
        descriptor_ = -1;
    }
}

int File::Delete(const std::string& path) { return ::unlink(path.c_str()) == 0 ? 0 : -errno; }

namespace PathUtils {

std::string GetTempDirectory() {
    const char* fromEnvironment = std::getenv("TMPDIR");
    if (fromEnvironment != nullptr && fromEnvironment[0] != '\0') {
        return fromEnvironment;
    }
    return "/tmp";
}

std::string AddTrailingSlash(const std::string& path) {
    if (path.empty() || path.back() == '/') {
        return path;
    }
    return path + '/';
}

}  // namespace PathUtils

}  // namespace Talc
