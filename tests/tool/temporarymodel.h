#pragma once

#include <QtCore/QByteArray>
#include <QtCore/QString>
#include <QtCore/QTemporaryDir>

namespace Atelier::Vel::Testing {

/// A folder for the files of one test.
class TemporaryFolder {
public:
    /// Writes a file and returns its path.
    QString write(const QString& name, const QByteArray& content) const;
    QString path(const QString& name) const { return _folder.filePath(name); }

private:
    QTemporaryDir _folder;
};

/// A triangle that faces the front.
QByteArray triangleText();

} // namespace Atelier::Vel::Testing
