#include "processage.h"

#include <ctime>

#include <unistd.h>

#include <QtCore/QByteArray>
#include <QtCore/QFile>
#include <QtCore/QList>

namespace Atelier::Vel::Viewer {

double processAge() {
    constexpr int kStartTime = 19; // the field 22 of proc(5), counted from the one behind the name
    QFile file(QStringLiteral("/proc/self/stat"));
    if (!file.open(QIODevice::ReadOnly))
        return -1;
    const QByteArray line = file.readAll();
    const QList<QByteArray> fields = line.mid(line.lastIndexOf(')') + 2).split(' ');
    timespec now = {};
    if (fields.size() <= kStartTime || clock_gettime(CLOCK_BOOTTIME, &now) != 0)
        return -1;
    const double start = fields[kStartTime].toDouble() / double(sysconf(_SC_CLK_TCK));
    return (double(now.tv_sec) + double(now.tv_nsec) * 1e-9 - start) * 1e3;
}

} // namespace Atelier::Vel::Viewer
