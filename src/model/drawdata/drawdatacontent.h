#pragma once

#include <memory>
#include <utility>
#include <vector>

#include <QtCore/QList>
#include <QtCore/QSharedPointer>

#include <velmodel/drawdata.h>
#include <velmodel/modeldatastream.h>

#include "drawdata/pickingcache.h"
#include "mesh/whitemaps.h"
#include "streams/streamview.h"

namespace Atelier::Vel {

/// The data that all copies of a DrawData share.
struct DrawDataContent {
    /// The values of an attribute. Their address is queried only once, because the query may change a stream.
    struct Stream {
        QString name;
        int components = 0;
        QSharedPointer<ModelDataStream> values;
        const void* data = nullptr;
        quint64 bytes = 0;

        Stream(QString name, int components, QSharedPointer<ModelDataStream> values);
        /// The bytes per vertex; 0 if the attribute has none.
        quint64 stride() const;
    };

    struct ObjectName {
        int command = 0;
        QString name;
    };

    struct White {
        int command = 0;
        WhiteMaps maps;
    };

    /// The data of the commands are stored in columns, because there may be many commands.
    struct Drawable {
        quint64 key = 0;
        QVector<DrawElementsIndirectCommand> commands;
        QVector<QString> names;
        QList<InstanceData> materials;
        QVector<qint32> ids;
        QVector<ObjectName> objectNames; ///< of the commands that have one, ascending
        QVector<White> whites;           ///< of the commands whose materials have white maps

        QString objectName(int command) const;
    };

    QSharedPointer<ModelDataStreamAllocator> allocator; ///< of all streams
    QSharedPointer<ModelDataStream> indices;
    WordView indexWords; ///< queried once
    std::vector<Stream> attributes;
    int position = -1; ///< the attribute with the positions
    quint64 vertexCount = 0;
    std::vector<Drawable> drawables;
    PickingCache picking;

    /// Whether the positions are floats with at least three components.
    bool hasFloatPositions() const;
    /// See DrawData::commandBox().
    DrawData::Box commandBox(const DrawElementsIndirectCommand& command) const;
};

/// Makes draw data from its content, and takes the content out of draw data.
struct DrawDataAccess {
    static DrawData make(std::shared_ptr<DrawDataContent> content) { return DrawData(std::move(content)); }
    /// The content of `data`, which is null afterwards.
    static std::shared_ptr<DrawDataContent> take(DrawData& data) { return std::move(data._content); }
    /// Requires: `data` is not null.
    static const DrawDataContent& content(const DrawData& data) { return *data._content; }
};

} // namespace Atelier::Vel
