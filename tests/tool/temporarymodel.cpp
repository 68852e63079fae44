#include "temporarymodel.h"

#include <QtCore/QFile>

#include <gmock/gmock.h>

namespace Atelier::Vel::Testing {

QString TemporaryFolder::write(const QString& name, const QByteArray& content) const {
    QFile file(path(name));
    EXPECT_TRUE(file.open(QIODevice::WriteOnly) && file.write(content) == content.size());
    return path(name);
}

QByteArray triangleText() {
    return "v 0 0 0\nv 1 0 0\nv 0 1 0\nf 1 2 3\n";
}

} // namespace Atelier::Vel::Testing
