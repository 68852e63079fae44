#pragma once

#include <cstdint>

#include <QtCore/QMap>
#include <QtCore/QSharedPointer>

#include <velgl/opengldevicecontext.h>

namespace Atelier::Vel::Bench {

/// Checksums of what was uploaded to such a context.
struct UploadLog {
    QMap<QString, std::uint64_t>
        streams;               ///< checksum of each vertex stream and its layout, by attribute name
    std::uint64_t indices = 0; ///< checksum of the index buffer and its type
};

/// A context that accepts every upload and keeps nothing, so that no OpenGL driver is measured.
/// With a log, it adds the checksum of every upload to the log, which takes time.
QSharedPointer<OpenGLDeviceContext> makeAcceptingContext(UploadLog* log = nullptr);

} // namespace Atelier::Vel::Bench
