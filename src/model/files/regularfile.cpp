#include "files/regularfile.h"

#include <algorithm>
#include <iterator>

#include <fcntl.h>
#include <linux/magic.h>
#include <sys/stat.h>
#include <sys/vfs.h>
#include <unistd.h>

namespace Atelier::Vel {

namespace {

// Whether a file is in a file system of the kernel. Files there are reported as regular, but reading them may
// block or never end.
bool isOfTheKernel(int file) {
    constexpr decltype(statfs::f_type) kFileSystems[] = {PROC_SUPER_MAGIC, SYSFS_MAGIC, DEBUGFS_MAGIC,
                                                         TRACEFS_MAGIC};
    struct statfs system {};
    return fstatfs(file, &system) == 0 && std::find(std::begin(kFileSystems), std::end(kFileSystems),
                                                    system.f_type) != std::end(kFileSystems);
}

bool isRegular(int file) {
    struct stat status {};
    return fstat(file, &status) == 0 && S_ISREG(status.st_mode) && !isOfTheKernel(file);
}

} // namespace

Descriptor& Descriptor::operator=(Descriptor&& other) noexcept {
    if (this != &other) {
        close();
        _value = other.release();
    }
    return *this;
}

void Descriptor::close() const {
    if (isOpen())
        ::close(_value);
}

Descriptor openRegularFile(int folder, const char* path, LastLink link) {
    const bool follows = link == LastLink::Follow;
    // Opening a file already has effects on some devices, and on a process that waits at the other end of a
    // pipe.
    struct stat status {};
    if (fstatat(folder, path, &status, follows ? 0 : AT_SYMLINK_NOFOLLOW) != 0 || !S_ISREG(status.st_mode))
        return {};
    // The path may refer to another file by now. So it is opened without waiting and checked again.
    constexpr int kWithoutWaiting = O_RDONLY | O_CLOEXEC | O_NOCTTY | O_NONBLOCK;
    Descriptor file(openat(folder, path, follows ? kWithoutWaiting : kWithoutWaiting | O_NOFOLLOW));
    return file.isOpen() && isRegular(file.value()) ? std::move(file) : Descriptor();
}

} // namespace Atelier::Vel
