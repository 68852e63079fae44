#pragma once

#include <cstdint>

#include <QtCore/QMap>
#include <QtCore/QString>

namespace Atelier::Vel::Testing {

/// What a load gave, in few words, so that two loads can be compared.
struct SummedLoad {
    bool isLoaded = false;
    QString error;
    QMap<QString, std::uint64_t> streams; ///< checksum of each vertex stream and its layout
    std::uint64_t indices = 0;            ///< checksum of the index buffer
    int commands = 0;

    friend bool operator==(const SummedLoad& a, const SummedLoad& b) {
        return a.isLoaded == b.isLoaded && a.error == b.error && a.streams == b.streams &&
               a.indices == b.indices && a.commands == b.commands;
    }
};

/// Loads a model with a context that keeps nothing of what it is given.
SummedLoad summedLoad(const QString& path);

} // namespace Atelier::Vel::Testing
