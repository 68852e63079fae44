#include "uploaded.h"

#include <tuple>

#include <gmock/gmock.h>

#include <velgl/gpumodel.h>

#include "modeldescription.h"
#include "support/messagelog.h"
#include "support/recordingcontext.h"

namespace Atelier::Vel::Testing {

bool operator==(const Uploaded& a, const Uploaded& b) {
    return std::tie(a.calls, a.buffers, a.facts, a.warnings, a.statistics) ==
           std::tie(b.calls, b.buffers, b.facts, b.warnings, b.statistics);
}

void PrintTo(const Uploaded& uploaded, std::ostream* out) {
    *out << (uploaded.calls + uploaded.facts).join('\n').toStdString() << '\n'
         << testing::PrintToString(uploaded.warnings) << testing::PrintToString(uploaded.statistics);
}

std::vector<quint64> listed(const ModelBuilder::Statistics& statistics) {
    return {statistics.corners, statistics.vertices, statistics.triangles, statistics.untriangulatedFaces,
            statistics.substitutedCorners};
}

Uploaded upload(ModelBuilder& builder, const QString& positionAttribute) {
    const RecordingContext context;
    const MessageLog log;
    GPUModel model;
    Uploaded uploaded;
    builder.upload(&model, InstanceData(QStringLiteral("instance")), positionAttribute, QString(), 0x88E4, 4);
    uploaded.calls = context.calls();
    for (const Recording::Upload& buffer : context.recording().uploads)
        uploaded.buffers.push_back(buffer.bytes);
    uploaded.facts = describe(model);
    uploaded.warnings = log.texts(QtWarningMsg);
    uploaded.statistics = listed(builder.statistics());
    return uploaded;
}

} // namespace Atelier::Vel::Testing
