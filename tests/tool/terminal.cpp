#include "terminal.h"

#include <cstdio>
#include <cstdlib>

#include <fcntl.h>
#include <unistd.h>

#include <gtest/gtest.h>

namespace Atelier::Vel::Testing {

Terminal::Terminal()
    : _master(posix_openpt(O_RDWR | O_NOCTTY | O_NONBLOCK)), _standardError(dup(STDERR_FILENO)) {
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

QByteArray Terminal::text() {
    std::fflush(stderr);
    QByteArray result(65536, '\0');
    const ssize_t count = read(_master, result.data(), static_cast<std::size_t>(result.size()));
    result.truncate(count > 0 ? int(count) : 0);
    return result;
}

} // namespace Atelier::Vel::Testing
