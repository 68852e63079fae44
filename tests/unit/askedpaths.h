#pragma once

#include <QtCore/QString>
#include <QtCore/QStringList>

namespace Atelier::Vel::Testing {

/// Records the absolute paths that this process opens, examines, lists or reads as links, during its
/// lifetime. Only one may exist at a time.
class AskedPaths {
public:
    AskedPaths();
    ~AskedPaths();
    AskedPaths(const AskedPaths&) = delete;
    AskedPaths& operator=(const AskedPaths&) = delete;

    /// Those that begin with `start`, in the order of the calls.
    QStringList below(const QString& start) const;
    /// How many times the folder at `path` was opened to be listed.
    int listings(const QString& path) const;

    struct Call {
        QString path;
        bool lists = false;
    };
};

} // namespace Atelier::Vel::Testing
