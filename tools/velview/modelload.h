#pragma once

#include <memory>

#include <QtCore/QString>
#include <QtCore/QStringList>
#include <QtCore/QVector>

#include <velmodel/decodedtextures.h>
#include <velmodel/drawdata.h>
#include <velmodel/loadoptions.h>
#include <velmodel/loadreport.h>
#include <velmodel/picking.h>

#include "backgroundwork.h"
#include "modelcontents.h"

namespace Atelier::Vel::Viewer {

/// What to load, and how.
struct LoadRequest {
    QString path;
    LoadOptions options;
    bool isOptimised = false; ///< whether triangles and vertices are reordered
};

/// The steps of a load in their order. The first ones are those of LoadPhase.
enum class LoadStage { Reading, Merging, Triangulating, MakingNormals, Optimising, Examining, Decoding };
constexpr int kLoadStages = 7;
QString stageName(LoadStage stage);

struct LoadState {
    LoadStage stage = LoadStage::Reading;
    double done = 0; ///< of the whole load, from 0 to 1; never decreases
};

/// A model in memory, before OpenGL has it.
struct ReadModel {
    QString path;
    DrawData data;
    LoadReport report;
    ModelFiles files; ///< those that the model may name
    DecodedTextures textures;
    ModelContents contents;
    ModelPicker picker;
    DrawData::VertexCacheStatistics cache;
    double milliseconds[kLoadStages] = {}; ///< of each stage
    QString error;                         ///< why there is no model; null on success
    bool isCancelled = false;
};

/// A load on a thread of its own, which makes no OpenGL calls. The public functions are for one thread, that
/// of the window.
class ModelLoad {
public:
    explicit ModelLoad(const LoadRequest& request);

    void cancel() { _work.cancel(); }
    LoadState state() const;
    bool isFinished() const { return _work.isFinished(); }
    /// Waits until the load is finished. Returns: false if it is not within that time.
    bool waitFor(int milliseconds) const { return _work.waitFor(milliseconds); }
    /// Requires: isFinished(); called once.
    ReadModel take() { return _work.take(); }

private:
    class Meter;
    class Reader;

    std::shared_ptr<Meter> _meter;
    BackgroundWork<ReadModel> _work;
};

} // namespace Atelier::Vel::Viewer
