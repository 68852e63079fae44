#include "askedpaths.h"

#include <cstdarg>
#include <vector>

#include <fcntl.h>
#include <limits.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <QtCore/QDir>
#include <QtCore/QFile>

namespace Atelier::Vel::Testing {

namespace {

bool isRecording = false;
std::vector<AskedPaths::Call> calls;

// The path of an open folder.
QString pathOf(int folder) {
    char target[PATH_MAX];
    const QByteArray link = "/proc/self/fd/" + QByteArray::number(folder);
    const long size = syscall(SYS_readlink, link.constData(), target, sizeof target);
    return size < 0 ? QString() : QFile::decodeName(QByteArray(target, static_cast<int>(size)));
}

void record(int folder, const char* name, bool lists = false) {
    if (!isRecording)
        return;
    isRecording = false; // while this function asks
    const QString path = QFile::decodeName(name);
    const bool isRelative = folder != AT_FDCWD && !path.startsWith('/');
    calls.push_back({QDir::cleanPath(isRelative ? pathOf(folder) + '/' + path : path), lists});
    isRecording = true;
}

int openRecorded(int folder, const char* name, int flags, int mode) {
    record(folder, name, (flags & O_DIRECTORY) != 0 && (flags & O_PATH) == 0);
    return static_cast<int>(syscall(SYS_openat, folder, name, flags, mode));
}

int statRecorded(int folder, const char* name, void* status, int flags) {
    record(folder, name);
    return static_cast<int>(syscall(SYS_newfstatat, folder, name, status, flags));
}

} // namespace

AskedPaths::AskedPaths() {
    calls.clear();
    isRecording = true;
}

AskedPaths::~AskedPaths() {
    isRecording = false;
}

QStringList AskedPaths::below(const QString& start) const {
    QStringList paths;
    for (const Call& call : calls)
        if (call.path.startsWith(start))
            paths.append(call.path);
    return paths;
}

int AskedPaths::listings(const QString& path) const {
    int count = 0;
    for (const Call& call : calls)
        count += call.lists && call.path == path ? 1 : 0;
    return count;
}

} // namespace Atelier::Vel::Testing

// These replace the C library's functions, also for the calls of Qt.
// NOLINTBEGIN
#pragma GCC visibility push(default)
extern "C" {
using namespace Atelier::Vel::Testing;

int open(const char* name, int flags, ...) {
    va_list more;
    va_start(more, flags);
    const int mode = va_arg(more, int);
    va_end(more);
    return openRecorded(AT_FDCWD, name, flags, mode);
}
int openat(int folder, const char* name, int flags, ...) {
    va_list more;
    va_start(more, flags);
    const int mode = va_arg(more, int);
    va_end(more);
    return openRecorded(folder, name, flags, mode);
}
int stat(const char* name, struct stat* status) {
    return statRecorded(AT_FDCWD, name, status, 0);
}
int lstat(const char* name, struct stat* status) {
    return statRecorded(AT_FDCWD, name, status, AT_SYMLINK_NOFOLLOW);
}
int fstatat(int folder, const char* name, struct stat* status, int flags) {
    return statRecorded(folder, name, status, flags);
}
int statx(int folder, const char* name, int flags, unsigned int mask, struct statx* status) {
    record(folder, name);
    return static_cast<int>(syscall(SYS_statx, folder, name, flags, mask, status));
}
int access(const char* name, int mode) {
    record(AT_FDCWD, name);
    return static_cast<int>(syscall(SYS_access, name, mode));
}
ssize_t readlink(const char* name, char* target, size_t size) {
    record(AT_FDCWD, name);
    return syscall(SYS_readlink, name, target, size);
}
ssize_t readlinkat(int folder, const char* name, char* target, size_t size) {
    record(folder, name);
    return syscall(SYS_readlinkat, folder, name, target, size);
}
int open64(const char* name, int flags, ...) __attribute__((alias("open")));
int openat64(int folder, const char* name, int flags, ...) __attribute__((alias("openat")));
int stat64(const char* name, struct stat64* status) __attribute__((alias("stat")));
int lstat64(const char* name, struct stat64* status) __attribute__((alias("lstat")));
int fstatat64(int folder, const char* name, struct stat64* status, int flags)
    __attribute__((alias("fstatat")));
}
#pragma GCC visibility pop
// NOLINTEND
