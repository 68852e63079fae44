#include "filewatch.h"

#include <QtCore/QDateTime>
#include <QtCore/QFileInfo>

namespace Atelier::Vel::Viewer {

namespace {

// Empty for a file that does not exist.
QByteArray identityOf(const QString& path) {
    const QFileInfo file(path);
    if (!file.exists())
        return {};
    return QByteArray::number(file.size()) + '/' +
           QByteArray::number(file.lastModified().toMSecsSinceEpoch()) + '/' +
           QByteArray::number(file.metadataChangeTime().toMSecsSinceEpoch());
}

} // namespace

FileWatch::FileWatch(QObject* parent) : QObject(parent) {
    _quiet.setTimerType(Qt::PreciseTimer);
    _quiet.setSingleShot(true);
    _quiet.setInterval(kQuietMilliseconds);
    connect(&_quiet, &QTimer::timeout, this, &FileWatch::changed);
    connect(&_watcher, &QFileSystemWatcher::fileChanged, this, &FileWatch::compare);
    connect(&_watcher, &QFileSystemWatcher::directoryChanged, this, &FileWatch::compare);
}

void FileWatch::setFiles(const QStringList& paths) {
    _quiet.stop();
    const QStringList watched = _watcher.files() + _watcher.directories();
    if (!watched.isEmpty())
        _watcher.removePaths(watched);
    _known.clear();
    for (const QString& path : paths)
        _known.insert(path, identityOf(path));
    follow(_known.keys());
}

void FileWatch::compare() {
    bool isChanged = false;
    for (auto file = _known.begin(); file != _known.end(); ++file) {
        const QByteArray identity = identityOf(file.key());
        isChanged = isChanged || identity != file.value();
        file.value() = identity;
    }
    follow(_known.keys());
    if (isChanged)
        _quiet.start();
}

// The watcher forgets a file that is deleted or replaced. Its folder reports when a file of that name is
// back.
void FileWatch::follow(const QStringList& paths) {
    for (const QString& path : paths) {
        const QString folder = QFileInfo(path).path();
        for (const QString& watched : {path, folder})
            if (QFileInfo::exists(watched))
                _watcher.addPath(watched);
    }
}

} // namespace Atelier::Vel::Viewer
