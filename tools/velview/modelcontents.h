#pragma once

#include <QtCore/QSize>
#include <QtCore/QStringList>
#include <QtCore/QVector>
#include <QtGui/QColor>

#include <velmodel/loadreport.h>
#include <velmodel/modelfiles.h>

#include "modelbox.h"

namespace Atelier::Vel::Viewer {

/// One command of a model: the triangles of one object with one material.
struct ModelPart {
    int drawable = 0;
    int command = 0;
    QString object; ///< null if the file names none
    int material = 0;
    quint64 triangles = 0;
    ModelBox box;
};

/// A texture that a material names.
struct MaterialTexture {
    QString map; ///< the member of the material, such as "map_Kd"
    QString path;
    QSize size;        ///< in pixels; invalid if there is no readable image
    QStringList tried; ///< the paths that were tried in vain

    bool isMissing() const { return !size.isValid(); }
};

/// The values of a material that a user can change.
struct MaterialValues {
    QColor diffuse;
    float opacity = 1;
    float shininess = 0;
};

struct ModelMaterial {
    QString name;
    MaterialValues values;
    QVector<MaterialTexture> textures;

    bool hasMissingTexture() const;
};

/// What a model consists of.
struct ModelContents {
    QVector<ModelPart> parts; ///< in the order of the commands
    QVector<ModelMaterial> materials;
    ModelBox box;
};

/// Lists the parts and materials of draw data. The headers of the textures are read from `files`; `report` is
/// that of the load.
/// Threads: any thread. Cost: linear in the indices.
ModelContents contentsOf(const DrawData& data, const ModelFiles& files, const LoadReport& report);

/// The number of the part that a command draws; -1 if there is none.
int partOf(const ModelContents& contents, int drawable, int command);

} // namespace Atelier::Vel::Viewer
