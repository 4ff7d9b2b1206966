// host/file.h — files and paths of the foundation library.
//
// `File` is a thin owner of a POSIX file descriptor with the foundation
// library's calling convention: operations return 0 on success and a negative
// value (the negated errno) on failure, and report the bytes transferred
// through an out parameter. Paths are UTF-8 byte strings.
//
// Opening for writing creates the missing directories of the path and then
// creates the file, or truncates an existing one to zero length. Read and
// Write retry interrupted and partial transfers, so a short read means the
// end of the file was reached: `Read` then succeeds with `bytesDone` below the
// count, and it is for the caller to treat that as a failure if it must.
#pragma once

#include <cstdint>
#include <string>

namespace Talc {

struct FileAccessFlags {
    enum Type : uint32_t {
        Read = 1,
        Write = 2,
    };
};

class File {
public:
    File() = default;
    ~File();
    File(const File&) = delete;
    File& operator=(const File&) = delete;

    // Opens `path` into `file` (closing whatever `file` had open). Access
    // types other than Read and Write fail with -EINVAL.
    static int Open(const std::string& path, FileAccessFlags::Type type, File& file);

    // `bytesDone` is set in every case, also on failure (bytes moved before
    // the error). A file that is not open fails with -EBADF.
    int Read(void* buffer, uint32_t count, uint32_t& bytesDone);
    int Write(const void* buffer, uint32_t count, uint32_t& bytesDone);

    // The file's length in bytes; 0 or a negative value as the other
    // operations. Lets a reader check a length it was told against what
    // the file holds before it allocates.
    int GetSize(uint64_t& size) const;

    void Close();
    [[nodiscard]] bool IsOpen() const { return descriptor_ >= 0; }

    // Removes the file at `path`.
    static int Delete(const std::string& path);

private:
    int descriptor_ = -1;
};

namespace PathUtils {

// $TMPDIR when it is set and not empty, otherwise "/tmp"; no trailing slash
// is added.
std::string GetTempDirectory();

// `path` with a '/' appended unless it already ends in one. An empty path
// stays empty, so it never turns into the root directory.
std::string AddTrailingSlash(const std::string& path);

}  // namespace PathUtils

}  // namespace Talc
