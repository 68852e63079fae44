#include "terminal.h"

#include <cstdio>
#include <cstdlib>

#include <fcntl.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <gtest/gtest.h>

namespace Atelier::Vel::Testing {

Terminal::Terminal() : _master(posix_openpt(O_RDWR | O_NOCTTY)), _standardError(dup(STDERR_FILENO)) {
    EXPECT_TRUE(_master >= 0 && grantpt(_master) == 0 && unlockpt(_master) == 0);
    _name = QString::fromLocal8Bit(ptsname(_master));
    const int device = open(qPrintable(_name), O_RDWR | O_NOCTTY);
    EXPECT_EQ(dup2(device, STDERR_FILENO), STDERR_FILENO);
    close(device);
}

Terminal::~Terminal() {
    std::fflush(stderr);
    dup2(_standardError, STDERR_FILENO);
    close(_standardError);
    close(_master);
}

void Terminal::setColumns(int columns) {
    winsize window = {};
    window.ws_row = 24;
    window.ws_col = static_cast<unsigned short>(columns);
    EXPECT_EQ(ioctl(_master, TIOCSWINSZ, &window), 0);
}

// Output arrives asynchronously: it is read up to a mark that is written after it.
QByteArray Terminal::text() {
    constexpr char kMark = '\x1e';
    std::fflush(stderr);
    EXPECT_EQ(write(STDERR_FILENO, &kMark, 1), 1);
    QByteArray result;
    while (!result.endsWith(kMark)) {
        char part[4096];
        const ssize_t count = read(_master, part, sizeof part);
        if (count <= 0) {
            ADD_FAILURE() << "the terminal is closed";
            return result;
        }
        result.append(part, static_cast<int>(count));
    }
    result.chop(1);
    return result;
}

} // namespace Atelier::Vel::Testing
