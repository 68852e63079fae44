#include "import/mtl/materialdefinitions.h"

#include "import/mtl/materials.h"
#include "import/text/names.h"
#include "mesh/groupstore.h"

namespace Atelier::Vel {

namespace {

using Code = LoadDiagnostic::Code;

// A name is not empty where only its comment is: "#1" is a name.
QString nameWithoutComment(const QString& rest) {
    const QString name = unquoted(withoutComment(rest));
    return name.isEmpty() ? unquoted(rest) : name;
}

} // namespace

void MaterialDefinitions::define(const MaterialName& name, const InstanceData& material,
                                 const WhiteMaps& whiteMaps) {
    const QString group = newGroup(name);
    if (_missing.remove(group))
        _groups.replaceMaterial(group, material, whiteMaps);
    else if (!_groups.contains(group))
        _groups.create(group, material, -1, 0, whiteMaps);
    else
        return;
    ++_revision;
    if (!_options.repairs.matchNames)
        return;
    remember(name.rest, group);
    if (group != name.word)
        reportMatch(name, group);
}

// The group that a definition makes. If it exists and has a definition, the new one is ignored.
QString MaterialDefinitions::newGroup(const MaterialName& name) const {
    if (!_options.repairs.matchNames)
        return name.word;
    const QString whole = unquoted(name.rest);
    const QString known = _groupOf[kWhole].value(whole, whole);
    const QString uncommented = nameWithoutComment(name.rest);
    const bool isFree = !_groups.contains(uncommented) || _missing.contains(uncommented);
    return !_groups.contains(known) && isFree ? uncommented : known;
}

void MaterialDefinitions::remember(const QString& rest, const QString& group) {
    const QString readings[kReadings] = {unquoted(rest), nameWithoutComment(rest), wordsOf(rest).value(0)};
    for (int i = 0; i < kReadings; ++i)
        if (!_groupOf[i].contains(readings[i]))
            _groupOf[i].insert(readings[i], group);
}

QString MaterialDefinitions::matchingGroup(const MaterialName& name) const {
    // The usual case, without a list of candidates.
    if (const auto whole = _groupOf[kWhole].constFind(name.rest); whole != _groupOf[kWhole].constEnd())
        return *whole;
    for (const QString& candidate : nameCandidates(name.rest)) {
        for (const QHash<QString, QString>& groups : _groupOf)
            if (const auto found = groups.constFind(candidate); found != groups.constEnd())
                return *found;
        if (_groups.contains(candidate))
            return candidate;
    }
    return nameWithoutComment(name.rest);
}

bool MaterialDefinitions::defineMissing(const MaterialName& name) {
    if (!_options.repairs.defineMaterials)
        return false;
    const QString group = groupOf(name);
    _groups.create(group, makeDefaultMaterialWithoutMaps(layoutOf(_options)), -1, 0, defaultWhiteMaps());
    _missing.insert(group);
    ++_revision;
    _diagnostics.add(Code::UndefinedMaterial, name.line, group, [&] {
        return QStringLiteral("No library has defined the material '%1': the default material is used")
            .arg(group);
    });
    return true;
}

void MaterialDefinitions::reportMatch(const MaterialName& name, const QString& group) {
    _diagnostics.add(Code::MatchedName, name.line, name.rest, [&] {
        return QStringLiteral("'%1' is read as the name '%2', and not as '%3'")
            .arg(name.rest, group, name.word);
    });
}

void MaterialDefinitions::reportUndrawn(const MaterialName& name, quint64 faces) {
    const QString group = groupOf(name);
    const auto describe = [&] {
        return QStringLiteral("No library has defined the material '%1': its faces are not drawn").arg(group);
    };
    _diagnostics.add(Code::UndrawnFace, name.line, group, describe, faces);
}

} // namespace Atelier::Vel
