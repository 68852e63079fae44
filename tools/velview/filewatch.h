#pragma once

#include <QtCore/QFileSystemWatcher>
#include <QtCore/QHash>
#include <QtCore/QObject>
#include <QtCore/QStringList>
#include <QtCore/QTimer>

namespace Atelier::Vel::Viewer {

/// Watches files, and reports when one of them has changed and all of them were quiet for 300 ms. Files that
/// are replaced by renaming another file, and files that are deleted and made again, are watched further.
class FileWatch : public QObject {
    Q_OBJECT
public:
    /// Programs write a file in several steps; a save is over when nothing happened for this time.
    static constexpr int kQuietMilliseconds = 300;

    explicit FileWatch(QObject* parent = nullptr);

    /// Watches these files only. They need not exist. An empty list ends the watch.
    void setFiles(const QStringList& paths);

Q_SIGNALS:
    void changed();

private:
    // Notices which files differ from what is known.
    void compare();
    void follow(const QStringList& paths);

    QFileSystemWatcher _watcher;
    QTimer _quiet;
    QHash<QString, QByteArray> _known; // what identifies the content of each file
};

} // namespace Atelier::Vel::Viewer
