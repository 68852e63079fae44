#include "files/filesource.h"

#include <QtCore/QDir>
#include <QtCore/QFileInfo>
#include <QtCore/QStringBuilder>

namespace Atelier::Vel {

ModelSource::~ModelSource() = default;

namespace {

constexpr QLatin1Char kSlash('/');

// The length of the folder in an absolute path that has no parts to be cleaned; otherwise 0.
int cleanFolderLength(const QString& path) {
    const QChar* characters = path.constData(); // with a null character at the end
    int length = 0;
    for (int i = 0; i < path.size(); ++i) {
        if (characters[i] != kSlash)
            continue;
        if (characters[i + 1] == kSlash || characters[i + 1] == QLatin1Char('.'))
            return 0;
        length = i;
    }
    return path.startsWith(kSlash) ? length : 0;
}

} // namespace

QString FileSource::resolve(const QString& base, const QString& name) {
    if (!QDir::isRelativePath(name))
        return name;
    // The same as below, in a fraction of the time.
    const int folderLength = cleanFolderLength(base);
    if (folderLength > 0 && !name.isEmpty())
        return base.leftRef(folderLength) % kSlash % name;
    return QFileInfo(base).dir().absoluteFilePath(name);
}

} // namespace Atelier::Vel
