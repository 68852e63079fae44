#include "support/hostilepaths.h"

#include <algorithm>

#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <QtCore/QFile>

#include <gtest/gtest.h>

namespace Atelier::Vel::Testing {

namespace {

int listenAt(const QString& path) {
    const QByteArray name = QFile::encodeName(path);
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    EXPECT_LT(std::size_t(name.size()), sizeof address.sun_path);
    std::copy_n(name.constData(), std::min<std::size_t>(name.size(), sizeof address.sun_path - 1),
                address.sun_path);
    const int listener = socket(AF_UNIX, SOCK_STREAM, 0);
    EXPECT_EQ(bind(listener, reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
    return listener;
}

void link(const QString& target, const QString& path) {
    EXPECT_EQ(symlink(qPrintable(target), qPrintable(path)), 0);
}

} // namespace

HostilePaths::HostilePaths() {
    addFilesOfOtherKinds();
    addLinks();
    addNames();
}

HostilePaths::~HostilePaths() {
    for (const int descriptor : {_socket, _pipe[0], _pipe[1]})
        close(descriptor);
}

void HostilePaths::addFilesOfOtherKinds() {
    EXPECT_EQ(mkfifo(qPrintable(in("pipe")), 0600), 0);
    EXPECT_EQ(pipe(_pipe), 0);
    _socket = listenAt(in("socket"));
    QFile closed(in("closed"));
    EXPECT_TRUE(closed.open(QIODevice::WriteOnly) && closed.setPermissions({}));
    EXPECT_EQ(chmod(qPrintable(_folder.path()), 0755), 0);
    _paths.insert(_paths.end(), {{"folder", _folder.path()},
                                 {"pipe without a writer", in("pipe")},
                                 {"pipe of this process", QStringLiteral("/proc/self/fd/%1").arg(_pipe[0])},
                                 {"endless device", "/dev/zero"},
                                 {"terminal", "/dev/tty"},
                                 {"socket", in("socket")},
                                 {"file of somebody else", in("closed")},
                                 {"own memory", "/proc/self/mem"},
                                 {"text of the kernel", "/proc/version"},
                                 {"log of the kernel, which waits", "/proc/kmsg"},
                                 {"file of sysfs", "/sys/kernel/notes"}});
}

void HostilePaths::addLinks() {
    link("loop", in("loop"));
    link("nowhere", in("dangling"));
    link("pipe", in("link to a pipe"));
    link("/dev/zero", in("link-to-a-device"));
    _paths.insert(_paths.end(), {{"link to itself", in("loop")},
                                 {"file below a link to itself", in("loop/x")},
                                 {"dangling link", in("dangling")},
                                 {"link to a pipe", in("link to a pipe")},
                                 {"link to a device", in("link-to-a-device")}});
}

void HostilePaths::addNames() {
    _paths.insert(_paths.end(), {{"folder above", in("..")},
                                 {"far above", "/" + QString("../").repeated(1000)},
                                 {"root", "/"},
                                 {"missing resource", ":/no/such/resource"},
                                 {"folder of resources", ":/"},
                                 {"resource URL", "qrc:/model"},
                                 {"file URL", "file:///etc/hostname"},
                                 {"web URL", "https://localhost:1/model"},
                                 {"UNC name", R"(\\localhost\share\model)"},
                                 {"UNC name with slashes", "//localhost/share/model"},
                                 {"long name", in(QString(4096, 'x'))},
                                 {"long path", in(QString("x/").repeated(2048))},
                                 {"line break", in("no\nsuch")},
                                 {"nothing but a line break", "\n"},
                                 {"zero", in(QString("closed") + QChar(QChar::Null) + "x")},
                                 {"zero alone", QString(1, QChar(QChar::Null))},
                                 {"escape sequence", in("\x1b[2J")}});
}

} // namespace Atelier::Vel::Testing
