#include "files/filefinder.h"

#include <algorithm>

#include <limits.h>

#include <QtCore/QDir>

namespace Atelier::Vel {

namespace {

// Longer ones are no paths, but text that was taken for one.
bool isPath(const QString& name) {
    return !name.isEmpty() && name.size() < PATH_MAX;
}

QString withoutDrive(const QString& path) {
    const bool hasDrive = path.size() > 1 && path[0].isLetter() && path[1] == QLatin1Char(':');
    return hasDrive ? path.mid(2) : path;
}

QString joined(const QString& folder, const QString& name) {
    return folder.endsWith(QLatin1Char('/')) ? folder + name : folder + QLatin1Char('/') + name;
}

QString pathIn(const QString& folder, const QString& name) {
    return QDir::isRelativePath(name) ? joined(folder, name) : name;
}

// The last names of a path that any system may have written.
QStringList namesIn(QString path) {
    path.replace(QLatin1Char('\\'), QLatin1Char('/'));
    QStringList names = withoutDrive(path).split(QLatin1Char('/'), Qt::SkipEmptyParts);
    names.removeAll(QStringLiteral("."));
    return names.mid(std::max(0, names.size() - FileFinder::kMaxEnds));
}

} // namespace

FileFinder::FileFinder(const ModelFiles& files, const QStringList& searchPaths, int maxNames)
    : _files(files), _listings(files, maxNames) {
    for (const QString& path : searchPaths)
        _searchPaths.append(QDir(path).absolutePath());
}

std::optional<FileFinder::Found> FileFinder::find(const QStringList& folders, const QStringList& names) {
    if (std::optional<Found> found = findAsNamed(folders.first(), names))
        return found;
    const QStringList places = placesFrom(folders);
    for (const QString& name : names) {
        if (!isPath(name))
            continue;
        for (QStringList end = namesIn(name); !end.isEmpty(); end.removeFirst()) {
            const QString path = findEnd(places, end);
            if (!path.isNull())
                return Found{path, name, false};
        }
    }
    return std::nullopt;
}

QStringList FileFinder::placesFrom(const QStringList& folders) const {
    QStringList places = folders + _searchPaths;
    places.removeDuplicates();
    return places;
}

QStringList FileFinder::candidates(const QStringList& folders, const QStringList& names) const {
    const QStringList places = placesFrom(folders);
    QStringList paths;
    for (const QString& name : names)
        if (isPath(name))
            paths.append(pathIn(folders.first(), name));
    for (const QString& name : names)
        for (QStringList end = isPath(name) ? namesIn(name) : QStringList(); !end.isEmpty();
             end.removeFirst())
            for (const QString& place : places)
                paths.append(joined(place, end.join(QLatin1Char('/'))));
    paths.removeDuplicates();
    return paths;
}

std::optional<FileFinder::Found> FileFinder::findAsNamed(const QString& folder,
                                                         const QStringList& names) const {
    for (const QString& name : names) {
        const QString path = pathIn(folder, name);
        if (isPath(name) && _files.contains(path))
            return Found{path, name, true};
    }
    return std::nullopt;
}

QString FileFinder::findEnd(const QStringList& folders, const QStringList& end) {
    for (const QString& folder : folders) {
        QString path = findIn(folder, end);
        if (!path.isNull())
            return path;
    }
    return {};
}

// The file at the end of `names`, each in the folder before it. Null if there is none.
QString FileFinder::findIn(const QString& folder, const QStringList& names) {
    QString path = folder;
    for (const QString& name : names) {
        const QString actual = name == QLatin1String("..") ? name : _listings.find(path, name);
        if (actual.isNull())
            return {};
        path = joined(path, actual);
    }
    return _files.contains(path) ? path : QString();
}

} // namespace Atelier::Vel
