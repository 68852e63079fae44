#include "import/facegroups.h"

#include <utility>

#include "mesh/groupstore.h"

namespace Atelier::Vel {

FaceGroups::FaceGroups(GroupStore& groups, MaterialDefinitions& materials, QString file)
    : _groups(groups),
      _materials(materials),
      _file(std::move(file)),
      _material{QStringLiteral("<default>"), QStringLiteral("<default>")},
      _group(_material.word) {}

void FaceGroups::use(const MaterialName& material) {
    _material = material;
    _isReported = false;
    findGroup();
}

void FaceGroups::findGroup() {
    _group = _materials.groupOf(_material);
    _revision = _materials.revision();
}

bool FaceGroups::add(quint32 first, quint32 count) {
    if (_revision != _materials.revision())
        findGroup();
    const bool isAdded = _groups.addFaceRun(_group, first, count);
    if (!isAdded && !(_materials.defineMissing(_material, _file) && _groups.addFaceRun(_group, first, count)))
        return false;
    if (!_isReported && _group != _material.word)
        _materials.reportMatch(_material, _file, _group);
    _isReported = true;
    return true;
}

} // namespace Atelier::Vel
