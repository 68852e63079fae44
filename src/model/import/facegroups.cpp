#include "import/facegroups.h"

#include <utility>

#include "mesh/groupstore.h"

namespace Atelier::Vel {

FaceGroups::FaceGroups(GroupStore& groups, MaterialDefinitions& materials, Parts parts)
    : _groups(groups),
      _materials(materials),
      _material{QStringLiteral("<default>"), QStringLiteral("<default>")},
      _group(_material.word),
      _parts(parts) {}

void FaceGroups::use(MaterialName material) {
    _material = std::move(material);
    _isReported = false;
    _hasUndrawnFaces = false;
    findGroup();
}

void FaceGroups::findGroup() {
    _group = _materials.groupOf(_material);
    _revision = _materials.revision();
    _partGroup.clear();
}

void FaceGroups::useObject(const QString& name) {
    _object = name;
    _partGroup.clear();
}

void FaceGroups::useGroup(const QString& name) {
    _objectGroup = name;
    _partGroup.clear();
}

QString FaceGroups::part() const {
    if (_object.isEmpty() && _objectGroup.isEmpty())
        return {};
    const bool isBoth = !_object.isEmpty() && !_objectGroup.isEmpty();
    return isBoth ? _object + QLatin1Char('/') + _objectGroup : _object + _objectGroup;
}

void FaceGroups::findPartGroup() {
    const QString name = part();
    // No name contains the end of a line.
    _partGroup = name + QLatin1Char('\n') + _group;
    if (!_groups.contains(_partGroup))
        _groups.createPart(_partGroup, _group, name, _partGroups++);
}

bool FaceGroups::addToGroup(quint32 first, quint32 count) {
    if (_parts == Parts::Joined)
        return _groups.addFaceRun(_group, first, count);
    if (_partGroup.isNull() && _groups.contains(_group))
        findPartGroup();
    return !_partGroup.isNull() && _groups.addFaceRun(_partGroup, first, count);
}

void FaceGroups::finish() {
    if (_parts == Parts::Split)
        _groups.adoptMaterials();
}

void FaceGroups::reportUndrawn(quint32 faces) {
    if (_hasUndrawnFaces)
        _materials.reportMoreUndrawn(faces);
    else
        _materials.reportUndrawn(_material, faces);
    _hasUndrawnFaces = true;
}

bool FaceGroups::add(quint32 first, quint32 count) {
    if (_revision != _materials.revision())
        findGroup();
    const bool isAdded = addToGroup(first, count);
    if (!isAdded && !(_materials.defineMissing(_material) && addToGroup(first, count))) {
        reportUndrawn(count);
        return false;
    }
    if (!_isReported && _group != _material.word)
        _materials.reportMatch(_material, _group);
    _isReported = true;
    return true;
}

} // namespace Atelier::Vel
