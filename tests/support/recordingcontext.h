#pragma once

#include <vector>

#include <QtCore/QByteArray>
#include <QtCore/QSharedPointer>
#include <QtCore/QString>
#include <QtCore/QStringList>

#include <velgl/bufferobject.h>
#include <velgl/opengldevicecontext.h>
#include <velgl/vertexarrayobject.h>

namespace Atelier::Vel::Testing {

/// What happened to the objects of a RecordingContext, one line per call, and what was uploaded.
struct Recording {
    struct Upload {
        QByteArray bytes;
        int count = 0;
        quint64 elementSize = 0;
    };

    QStringList calls;
    std::vector<Upload> uploads; ///< in order, one per buffer
};

/// Replaces an OpenGL context: accepts and keeps every upload and records the order of the calls. It is the
/// thread's current context during its lifetime.
class RecordingContext {
public:
    RecordingContext();
    ~RecordingContext();
    RecordingContext(const RecordingContext&) = delete;
    RecordingContext& operator=(const RecordingContext&) = delete;

    const Recording& recording() const { return *_recording; }
    const QStringList& calls() const { return _recording->calls; }
    void forget() { *_recording = {}; }

private:
    QSharedPointer<Recording> _recording;
};

} // namespace Atelier::Vel::Testing
