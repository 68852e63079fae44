#pragma once

#include <cstdint>

#include <QtCore/QMap>
#include <QtCore/QSharedPointer>

#include <velgl/opengldevicecontext.h>

namespace Atelier::Vel::Bench {

/// What a context of this kind was given, by stream.
struct UploadLog {
    QMap<QString, std::uint64_t>
        streams;               ///< checksum of each vertex stream and its layout, by attribute name
    std::uint64_t indices = 0; ///< checksum of the index buffer and its type
};

/// A context that says yes to every upload and keeps nothing, so that no OpenGL driver is measured.
/// With a log, every upload is summed up there: slower.
QSharedPointer<OpenGLDeviceContext> makeAcceptingContext(UploadLog* log = nullptr);

} // namespace Atelier::Vel::Bench
