#include "platform/file.h"

#include <fcntl.h>
#include <io.h>
#include <sys/stat.h>
#define WIN32_LEAN_AND_MEAN
#include <windows.h>

#include <cerrno>
#include <climits>

namespace platform {

PathKind ProbePath(const std::string& path) {
    std::uint64_t bytes = 0;
    return ProbePath(path, bytes);
}

PathKind ProbePath(const std::string& path, std::uint64_t& bytes) {
    struct _stat64 status = {};
    bytes = 0;
    if (_stat64(path.c_str(), &status) != 0) {
        return errno == ENOENT ? PathKind::kMissing : PathKind::kUnknown;
    }
    if ((status.st_mode & _S_IFMT) != _S_IFREG) return PathKind::kOther;
    bytes = static_cast<std::uint64_t>(status.st_size);
    return PathKind::kFile;
}

int OpenForWriting(const std::string& path, OpenMode mode) {
    int flags = _O_WRONLY | _O_BINARY | _O_NOINHERIT;
    switch (mode) {
        case OpenMode::kCreate: flags |= _O_CREAT | _O_EXCL; break;
        case OpenMode::kReplace: flags |= _O_CREAT | _O_TRUNC; break;
        case OpenMode::kAppend: flags |= _O_CREAT | _O_APPEND; break;
        case OpenMode::kExisting: break;
    }
    return _open(path.c_str(), flags, _S_IREAD | _S_IWRITE);
}

long WriteBytes(int descriptor, const char* bytes, std::size_t length) {
    const auto most = static_cast<unsigned>(length < INT_MAX ? length : INT_MAX);
    return _write(descriptor, bytes, most);
}

int SyncFile(int descriptor) {
    const auto handle = reinterpret_cast<HANDLE>(_get_osfhandle(descriptor));
    if (GetFileType(handle) != FILE_TYPE_DISK) return 0;
    return _commit(descriptor);
}

// No one can rename or delete an open file.
bool IsFileAt(int descriptor, const std::string& /*path*/, std::uint64_t bytes) {
    errno = 0;
    return _filelengthi64(descriptor) == static_cast<long long>(bytes);
}

int CloseDescriptor(int descriptor) {
    return _close(descriptor);
}

bool MoveStreamTo(std::FILE* stream, std::uint64_t offset) {
    return _fseeki64(stream, static_cast<long long>(offset), SEEK_SET) == 0;
}

}  // namespace platform
