#pragma once

#include <optional>

#include <QtCore/QString>
#include <QtCore/QStringList>

#include "files/folderlistings.h"

namespace Atelier::Vel {

/// Finds the files that models name, also by the paths of other systems and machines.
///
/// Only files that `files` contain are found, and nothing outside of them is asked about. Each folder is read
/// at most once.
class FileFinder {
public:
    /// More shorter ends of a path are not looked for.
    static constexpr int kMaxEnds = 16;
    /// The number of names kept of all folders. Beyond, cases must match.
    static constexpr int kMaxNames = 100'000;

    struct Found {
        QString path;
        QString name;           ///< the one that was found
        bool isAsNamed = false; ///< `path` is `name`, from the first folder
    };

    /// `searchPaths` are the folders to look in after those of each search. Nothing is found in
    /// those outside of `files`.
    FileFinder(const ModelFiles& files, const QStringList& searchPaths, int maxNames = kMaxNames);

    /// Finds a file that has one of `names`, of which the first that exists is taken. First, all of them are
    /// looked up unchanged, relative to the first folder. Then each is divided at slashes and backslashes,
    /// and its ends are looked for in any case, the longest first, each in `folders` and in the search paths.
    /// Of names that differ by case alone, the equal one is taken, or else the first by bytes.
    /// Requires: `folders` are not empty, and absolute.
    /// Cost:     for each name, at most kMaxEnds look-ups per folder; one listing per folder that is reached.
    std::optional<Found> find(const QStringList& folders, const QStringList& names);
    /// The paths that find() looks for, in its order and without repetitions.
    QStringList candidates(const QStringList& folders, const QStringList& names) const;
    /// The first step of find() alone.
    std::optional<Found> findAsNamed(const QString& folder, const QStringList& names) const;

private:
    QStringList placesFrom(const QStringList& folders) const;
    QString findEnd(const QStringList& folders, const QStringList& end);
    QString findIn(const QString& folder, const QStringList& names);

    ModelFiles _files;
    FolderListings _listings;
    QStringList _searchPaths;
};

} // namespace Atelier::Vel
