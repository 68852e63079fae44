#pragma once

#include <QtCore/QSet>
#include <QtCore/QString>
#include <QtCore/QStringList>

#include <velmodel/modelcheck.h>
#include <velmodel/modelfiles.h>
#include <velmodel/modelsource.h>

#include "check/findinglog.h"
#include "files/filefinder.h"

namespace Atelier::Vel {

/// Examines the textures that materials name: whether they are found, and can be decoded.
class TextureCheck {
public:
    /// Larger images are not decoded.
    static constexpr qint64 kMaxDecodedBytes = qint64(64) << 20;

    /// `model` is the path of the OBJ file. `log` must outlive the object.
    TextureCheck(const ModelFiles& files, const QString& model, const QStringList& searchPaths,
                 FindingLog& log);

    /// Examines the texture that the file `library` calls by one of `names`, the most probable first.
    void examine(const QString& library, const QStringList& names, const FindingPlace& place);
    QStringList notExamined() const { return _notExamined; }

private:
    void examineImage(const QString& path, const QString& name, const FindingPlace& place);
    void reportMissing(const QStringList& folders, const QStringList& names, const FindingPlace& place);
    void report(CheckCode code, const QString& name, const FindingPlace& place, const QString& message);

    ModelFiles _files;
    std::shared_ptr<ModelSource> _source;
    QString _modelFolder;
    FileFinder _finder;
    FindingLog& _log;
    QSet<QString> _examined; ///< paths
    QStringList _notExamined;
};

} // namespace Atelier::Vel
