#include "files/modelfolder.h"

#include <algorithm>
#include <array>

#include <fcntl.h>
#include <limits.h>
#include <sys/stat.h>
#include <unistd.h>

#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QFileInfo>

namespace Atelier::Vel {

namespace {

// The number of links that the system itself follows before it reports a loop.
constexpr int kMaxLinks = 40;

constexpr int kFolderFlags = O_PATH | O_DIRECTORY | O_CLOEXEC;

// The names of a path, without empty names and ".".
QByteArrayList namesIn(const QByteArray& path) {
    QByteArrayList names = path.split('/');
    names.erase(std::remove_if(names.begin(), names.end(),
                               [](const QByteArray& name) { return name.isEmpty() || name == "."; }),
                names.end());
    return names;
}

QByteArray absolutePath(const QString& path) {
    const bool isRelative = QDir::isRelativePath(path);
    return QFile::encodeName(isRelative ? QDir::currentPath() + QLatin1Char('/') + path : path);
}

bool startsWith(const QByteArrayList& names, const QByteArrayList& start) {
    return names.size() >= start.size() && std::equal(start.cbegin(), start.cend(), names.cbegin());
}

} // namespace

ModelFolder::ModelFolder(const QString& path)
    : _path(QDir(path).absolutePath()),
      _isNative(QFileInfo(path).isNativePath()),
      _folder(_isNative ? ::open(QFile::encodeName(_path).constData(), kFolderFlags) : -1),
      _names(namesIn(QFile::encodeName(_path))),
      _realNames(namesIn(QFile::encodeName(QDir(path).canonicalPath()))) {}

// Removes the folder from the front of an absolute path. Returns: false if the path does not start with the
// folder.
bool ModelFolder::takeFolder(QByteArrayList& names) const {
    for (const QByteArrayList* folder : {&_names, &_realNames})
        if (startsWith(names, *folder)) {
            names.erase(names.begin(), names.begin() + folder->size());
            return true;
        }
    return false;
}

// The target of a symbolic link. Null if there is no link.
QByteArray ModelFolder::linkTarget(const QByteArrayList& way) const {
    std::array<char, PATH_MAX> target{};
    const ssize_t size = readlinkat(_folder.value(), way.join('/').constData(), target.data(), target.size());
    return size > 0 ? QByteArray(target.data(), static_cast<int>(size)) : QByteArray();
}

bool ModelFolder::isFolder(const QByteArrayList& way) const {
    struct stat status {};
    return fstatat(_folder.value(), way.join('/').constData(), &status, AT_SYMLINK_NOFOLLOW) == 0 &&
           S_ISDIR(status.st_mode);
}

std::optional<QByteArrayList> ModelFolder::resolve(const QString& path) const {
    QByteArrayList left = namesIn(absolutePath(path));
    // For the system, a name ends at its first null character.
    if (path.contains(QChar(QChar::Null)) || QFileInfo(path).isNativePath() != _isNative || !takeFolder(left))
        return std::nullopt;
    QByteArrayList way;
    int links = 0;
    while (!left.isEmpty()) {
        const QByteArray name = left.takeFirst();
        if (name == "..") {
            if (way.isEmpty() || !isFolder(way))
                return std::nullopt;
            way.removeLast();
            continue;
        }
        way.append(name);
        const QByteArray target = linkTarget(way);
        if (target.isNull() || ++links > kMaxLinks)
            continue;
        QByteArrayList ahead = namesIn(target);
        way.removeLast();
        if (target.startsWith('/')) {
            way.clear();
            if (!takeFolder(ahead))
                return std::nullopt;
        }
        left = ahead + left;
    }
    return way;
}

// Enters the folders of a way, and calls `use` with the last of them and the last name of the way.
// Returns: the result of `use`; a default one if a folder cannot be entered.
template<typename Use>
auto ModelFolder::atEndOf(const QByteArrayList& way, const Use& use) const {
    int folder = _folder.value();
    Descriptor reached;
    for (int i = 0; i + 1 < way.size(); ++i) {
        reached = Descriptor(openat(folder, way[i].constData(), kFolderFlags | O_NOFOLLOW));
        if (!reached.isOpen())
            return decltype(use(folder, ""))();
        folder = reached.value();
    }
    return use(folder, way.isEmpty() ? "." : way.last().constData());
}

Descriptor ModelFolder::open(const QByteArrayList& way) const {
    return atEndOf(
        way, [](int folder, const char* name) { return openRegularFile(folder, name, LastLink::Refuse); });
}

Descriptor ModelFolder::openFolder(const QByteArrayList& way) const {
    return atEndOf(way, [](int folder, const char* name) {
        return Descriptor(openat(folder, name, O_RDONLY | O_DIRECTORY | O_CLOEXEC | O_NOFOLLOW));
    });
}

bool ModelFolder::hasFile(const QByteArrayList& way) const {
    return atEndOf(way, [](int folder, const char* name) {
        struct stat status {};
        return fstatat(folder, name, &status, AT_SYMLINK_NOFOLLOW) == 0 && S_ISREG(status.st_mode);
    });
}

} // namespace Atelier::Vel
