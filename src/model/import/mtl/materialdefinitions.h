#pragma once

#include <array>

#include <QtCore/QHash>
#include <QtCore/QSet>
#include <QtCore/QString>

#include <velgl/instancedata.h>
#include <velmodel/loadoptions.h>

#include "import/diagnostics/diagnosticlog.h"
#include "mesh/whitemaps.h"

namespace Atelier::Vel {

class GroupStore;

/// The name of a material as a line of text has it.
struct MaterialName {
    QString word;       ///< the first word after the keyword
    QString rest;       ///< all text after the keyword, which is needed only if names are matched
    TextLine line = {}; ///< which has the name
};

/// The materials that the libraries of a load define. Each is the group of its faces.
class MaterialDefinitions {
public:
    /// The arguments must outlive the object.
    MaterialDefinitions(GroupStore& groups, const LoadOptions& options, DiagnosticLog& diagnostics)
        : _groups(groups), _options(options), _diagnostics(diagnostics) {}

    /// Makes the group of a material, unless it was defined before.
    void define(const MaterialName& name, const InstanceData& material, const WhiteMaps& whiteMaps);
    /// The name of the group that faces join after "usemtl" with `name`. There need not be such a group.
    QString groupOf(const MaterialName& name) const {
        return _options.repairs.matchNames ? matchingGroup(name) : name.word;
    }
    /// Changes whenever groupOf() may change.
    quint64 revision() const { return _revision; }

    /// Makes a group with the default material for a name that no library has defined.
    /// Returns: false if that is not repaired.
    bool defineMissing(const MaterialName& name);
    /// Reports that the faces after `name` join a group that its first word does not name.
    void reportMatch(const MaterialName& name, const QString& group);
    /// Reports that `faces` faces after `name` are not drawn, because no library has defined the material.
    void reportUndrawn(const MaterialName& name, quint64 faces);
    /// Reports more such faces after the last such name.
    void reportMoreUndrawn(quint64 faces) { _diagnostics.addMore(LoadDiagnostic::Code::UndrawnFace, faces); }

private:
    // A material is found by all of its name, by its name without a comment, and by the first word of it.
    enum Reading { kWhole, kUncommented, kFirstWord, kReadings };

    QString newGroup(const MaterialName& name) const;
    QString matchingGroup(const MaterialName& name) const;
    void remember(const QString& rest, const QString& group);

    GroupStore& _groups;
    const LoadOptions& _options;
    DiagnosticLog& _diagnostics;
    QSet<QString> _missing; ///< groups without a definition
    std::array<QHash<QString, QString>, kReadings> _groupOf;
    quint64 _revision = 0;
};

} // namespace Atelier::Vel
