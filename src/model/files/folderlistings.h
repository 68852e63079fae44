#pragma once

#include <unordered_map>
#include <vector>

#include <QtCore/QString>

#include <velmodel/modelfiles.h>

#include "files/regularfile.h"

namespace Atelier::Vel {

/// Finds names in folders, in any case. Each folder is read once.
class FolderListings {
public:
    /// Reads folders among `files` until it has read `maxNames` names in all of them. A folder counts as a
    /// name.
    FolderListings(ModelFiles files, int maxNames) : _files(std::move(files)), _namesLeft(maxNames) {}

    /// The name in `folder` that is equal to `name`, or else the first by bytes of those that differ from it
    /// by case alone.
    /// Returns: null if there is none; `name` if that is not known, because not all names could be read.
    QString find(const QString& folder, const QString& name);

private:
    struct Entry {
        QString folded;
        QString name;
    };
    struct Listing {
        std::vector<Entry> entries; ///< sorted by folded names, then by the bytes of names
        bool isComplete = true;
    };

    const Listing& listingOf(const QString& folder);
    Listing read(const QString& folder);
    Descriptor open(const QString& folder) const;
    void readNative(const QString& folder, Listing& listing);
    void readResources(const QString& folder, Listing& listing);
    bool add(const QString& name, Listing& listing);

    ModelFiles _files;
    int _namesLeft;
    std::unordered_map<QString, Listing> _listings;
};

} // namespace Atelier::Vel
