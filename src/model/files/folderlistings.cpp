#include "files/folderlistings.h"

#include <algorithm>
#include <cerrno>
#include <memory>

#include <dirent.h>
#include <fcntl.h>

#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QFileInfo>

#include "files/modelfolder.h"

namespace Atelier::Vel {

namespace {

struct CloseFolder {
    void operator()(DIR* folder) const { closedir(folder); }
};
using OpenedFolder = std::unique_ptr<DIR, CloseFolder>;

OpenedFolder openedFolder(Descriptor descriptor) {
    if (!descriptor.isOpen())
        return nullptr;
    OpenedFolder folder(fdopendir(descriptor.value()));
    if (folder)
        descriptor.release(); // `folder` closes it
    return folder;
}

} // namespace

QString FolderListings::find(const QString& folder, const QString& name) {
    const Listing& listing = listingOf(folder);
    const QString folded = name.toCaseFolded();
    const auto isBefore = [](const Entry& entry, const QString& sought) { return entry.folded < sought; };
    const auto first = std::lower_bound(listing.entries.begin(), listing.entries.end(), folded, isBefore);
    auto entry = first;
    for (; entry != listing.entries.end() && entry->folded == folded; ++entry)
        if (entry->name == name)
            return name;
    if (entry != first)
        return first->name;
    return listing.isComplete ? QString() : name;
}

const FolderListings::Listing& FolderListings::listingOf(const QString& folder) {
    static const Listing kUnknown{{}, false};
    const auto known = _listings.find(folder);
    if (known != _listings.end())
        return known->second;
    if (_namesLeft <= 0)
        return kUnknown;
    --_namesLeft;
    return _listings.emplace(folder, read(folder)).first->second;
}

FolderListings::Listing FolderListings::read(const QString& folder) {
    Listing listing;
    if (QFileInfo(folder).isNativePath())
        readNative(folder, listing);
    else
        readResources(folder, listing);
    std::sort(listing.entries.begin(), listing.entries.end(), [](const Entry& left, const Entry& right) {
        if (left.folded != right.folded)
            return left.folded < right.folded;
        // The order of code units is that of bytes: no case of a letter needs a surrogate if another does
        // not.
        return left.name < right.name;
    });
    listing.entries.shrink_to_fit();
    return listing;
}

Descriptor FolderListings::open(const QString& folder) const {
    if (!_files._folder)
        return Descriptor(
            ::open(QFile::encodeName(folder).constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC | O_NONBLOCK));
    const auto way = _files._folder->resolve(folder);
    return way ? _files._folder->openFolder(*way) : Descriptor();
}

void FolderListings::readNative(const QString& folder, Listing& listing) {
    const OpenedFolder opened = openedFolder(open(folder));
    if (!opened) {
        // Such a folder may be entered. In all other cases there is none.
        listing.isComplete = errno != EACCES;
        return;
    }
    errno = 0;
    while (const dirent* entry = readdir(opened.get())) {
        if (!add(QFile::decodeName(entry->d_name), listing))
            return;
        errno = 0;
    }
    listing.isComplete = errno == 0;
}

void FolderListings::readResources(const QString& folder, Listing& listing) {
    constexpr QDir::Filters kAll = QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot;
    for (const QString& name : QDir(folder).entryList(kAll))
        if (!add(name, listing))
            return;
}

// Returns: false if no more names may be read.
bool FolderListings::add(const QString& name, Listing& listing) {
    listing.isComplete = _namesLeft > 0;
    if (_namesLeft-- > 0)
        listing.entries.push_back({name.toCaseFolded(), name});
    return listing.isComplete;
}

} // namespace Atelier::Vel
