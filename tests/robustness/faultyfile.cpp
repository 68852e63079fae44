#include "faultyfile.h"

#include <algorithm>
#include <cerrno>
#include <utility>

#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <QtCore/QFile>

#include <gmock/gmock.h>

namespace Atelier::Vel::Testing {

namespace {

FileFault::Answer answer;
struct stat faulty = {};
std::size_t readCount = 0;

bool isFaulty(int file) {
    struct stat information = {};
    return answer && fstat(file, &information) == 0 && information.st_dev == faulty.st_dev &&
           information.st_ino == faulty.st_ino;
}

} // namespace

FileFault::FileFault(const QString& path, Answer given) {
    EXPECT_EQ(stat(QFile::encodeName(path).constData(), &faulty), 0) << path.toStdString();
    answer = std::move(given);
    readCount = 0;
}

FileFault::~FileFault() {
    answer = nullptr;
}

std::size_t FileFault::reads() {
    return readCount;
}

} // namespace Atelier::Vel::Testing

// Qt uses this function to read files, although the project hides its symbols.
#pragma GCC visibility push(default)
extern "C" ssize_t read(int file, void* bytes, size_t count) { // NOLINT
    using namespace Atelier::Vel::Testing;
    if (isFaulty(file)) {
        ++readCount;
        const long taken = answer(lseek(file, 0, SEEK_CUR), count);
        if (taken < 0) {
            errno = static_cast<int>(-taken);
            return -1;
        }
        count = std::min(count, static_cast<size_t>(taken));
    }
    return syscall(SYS_read, file, bytes, count);
}
#pragma GCC visibility pop
