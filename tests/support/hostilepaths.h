#pragma once

#include <vector>

#include <QtCore/QString>
#include <QtCore/QTemporaryDir>

namespace Atelier::Vel::Testing {

/// A path without a readable file, and the reason.
struct HostilePath {
    const char* kind;
    QString path;
};

/// Paths of every hostile kind and their targets, in a separate folder.
class HostilePaths {
public:
    HostilePaths();
    ~HostilePaths();
    HostilePaths(const HostilePaths&) = delete;
    HostilePaths& operator=(const HostilePaths&) = delete;

    const std::vector<HostilePath>& paths() const { return _paths; }

private:
    QString in(const QString& name) const { return _folder.filePath(name); }
    void addFilesOfOtherKinds();
    void addLinks();
    void addNames();

    QTemporaryDir _folder;
    int _socket = -1;
    int _pipe[2] = {-1, -1};
    std::vector<HostilePath> _paths;
};

} // namespace Atelier::Vel::Testing
