#pragma once

#include <cstdint>
#include <functional>

#include <QtCore/QMap>
#include <QtCore/QString>

#include <velmodel/objloader.h>

namespace Atelier::Vel::Testing {

/// A summary of the result of a load, for comparing two loads.
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

/// Loads a model with a context that discards its uploads; `load` takes the path and an error.
SummedLoad summedLoad(
    const QString& path,
    const std::function<GPUModel*(const QString&, QString&)>& load = [](const QString& file, QString& error) {
        return loadModelFromOBJFile(file, error);
    });

} // namespace Atelier::Vel::Testing
