#pragma once

#include <ostream>
#include <vector>

#include <QtCore/QByteArray>
#include <QtCore/QString>
#include <QtCore/QStringList>

#include <velmodel/modelbuilder.h>

namespace Atelier::Vel::Testing {

/// All results of an upload.
struct Uploaded {
    QStringList calls; ///< of the context and its objects
    std::vector<QByteArray> buffers;
    QStringList facts; ///< of the model
    std::vector<QString> warnings;
    std::vector<quint64> statistics;

    friend bool operator==(const Uploaded& a, const Uploaded& b);
    friend void PrintTo(const Uploaded& uploaded, std::ostream* out);
};

/// Corners, vertices, triangles, faces without one, and values taken as zero.
std::vector<quint64> listed(const ModelBuilder::Statistics& statistics);

/// Uploads into a new model, with a context that keeps its uploads.
Uploaded upload(ModelBuilder& builder, const QString& positionAttribute);

} // namespace Atelier::Vel::Testing
