#pragma once

#include <QtCore/QHash>
#include <QtCore/QSet>
#include <QtCore/QString>
#include <QtCore/QStringList>
#include <QtCore/QVector>

#include <velmodel/modelcheck.h>

#include "check/faceexamination.h"
#include "check/findinglog.h"
#include "check/materialvaluescheck.h"
#include "check/skippedkeywords.h"
#include "check/texturecheck.h"
#include "import/diagnostics/diagnosticlog.h"
#include "import/mtl/materialdefinitions.h"
#include "import/references/filereferences.h"
#include "mesh/mesh.h"

namespace Atelier::Vel {

class TextInput;

/// Examines the material libraries of an OBJ file, and which materials its faces use.
class MaterialCheck {
public:
    /// `options` are those of the load. All arguments must outlive the object.
    MaterialCheck(const ModelFiles& files, const QString& model, const LoadOptions& options, FindingLog& log);

    /// Reads the libraries of an "mtllib" line, of which `rest` is the text after the keyword.
    void takeLibraries(const QString& rest);
    /// The material of the following faces.
    void use(MaterialName name);
    /// The number of the material that faces have now.
    int current();

    /// Must be called at the end. `faces` are those of each material, by number.
    void finish(const std::vector<MaterialFaces>& faces, const ObjLineCounts& counts);
    QStringList notExamined() const;

private:
    bool takeLibrary(const QString& name);
    void readLibrary(TextInput& text, const QString& path);
    void takeLine(MtlReader& reader, const QString& path);
    void examineMap(const MtlReader& reader, const FindingPlace& place);
    void startMaterial(const MtlReader& reader, const FindingPlace& place);
    void finishMaterial();
    void reportUnread(const MtlReader& reader, const FindingPlace& place);
    void examineCommas(const MtlReader& reader, const FindingPlace& place);
    void reportUnused(const std::vector<MaterialFaces>& faces);
    void reportMissing(int number, const MaterialFaces& faces, const ObjLineCounts& counts);
    int numberOf(const QString& group);

    QString _model;
    const LoadOptions& _options;
    FindingLog& _log;
    std::shared_ptr<ModelSource> _source;
    DiagnosticLog _diagnostics{DiagnosticLog::Use::Ignored}; ///< the load has reported them
    Mesh _mesh{Input::Consumed};
    MaterialDefinitions _definitions;
    FileReferences _references;
    TextureCheck _textures;
    SkippedKeywords _skipped;
    QSet<QString> _read; ///< libraries
    QStringList _notExamined;

    MaterialName _used;
    quint64 _revision = 0;
    int _current = -1; ///< -1 if it is not known
    QHash<QString, int> _numbers;
    QStringList _groups; ///< by number

    bool _hasMaterial = false;
    CheckedMaterial _material; ///< the one that lines are read of
    QVector<CheckedMaterial> _defined;
    QSet<QString> _mapped; ///< those with a map
};

} // namespace Atelier::Vel
