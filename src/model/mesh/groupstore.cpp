#include "mesh/groupstore.h"

#include <algorithm>
#include <numeric>

#include <QtCore/QMessageLogger>

#include "glconstants.h"

namespace Atelier::Vel {

const MaterialGroup* GroupStore::find(const QString& name) const {
    const auto found = _groups.constFind(name);
    return found == _groups.constEnd() ? nullptr : &*found;
}

void GroupStore::create(const QString& name, const InstanceData& material, int id, quint64 flags,
                        const WhiteMaps& whiteMaps) {
    const int groupCount = _groups.size();
    MaterialGroup& group = _groups[name];
    group.name = name;
    group.material = material;
    group.id = id < 0 ? groupCount : id;
    group.flags = flags;
    group.whiteMaps = whiteMaps;
    group.objectName = QString();
    group.faces = GroupFaces();
    if (_input == Input::Kept)
        group.faces.setStream(_streams.make(kGlUnsignedInt, 0));
}

void GroupStore::createPart(const QString& key, const QString& material, const QString& objectName, int id) {
    create(key, InstanceData(), id, 0);
    MaterialGroup& group = _groups[key];
    group.name = material;
    group.objectName = objectName;
}

void GroupStore::adoptMaterials() {
    for (auto group = _groups.begin(); group != _groups.end(); ++group) {
        const MaterialGroup* const source = find(group->name);
        if (group.key() == group->name || source == nullptr)
            continue;
        group->material = source->material;
        group->whiteMaps = source->whiteMaps;
    }
}

void GroupStore::replaceMaterial(const QString& name, const InstanceData& material,
                                 const WhiteMaps& whiteMaps) {
    MaterialGroup& group = _groups[name];
    group.material = material;
    group.whiteMaps = whiteMaps;
}

bool GroupStore::addFaces(const QString& name, quint64 count, const unsigned int* faces,
                          const QString& objectName) {
    const auto group = _groups.find(name);
    if (group == _groups.end())
        return false;
    if (group->objectName.isNull())
        group->objectName = objectName;
    if (group->objectName != objectName)
        QMessageLogger().warning("adding object '%s'' to material group for object '%s'",
                                 objectName.toLocal8Bit().constData(),
                                 group->objectName.toLocal8Bit().constData());
    addFacesOf(*group, name, count, faces);
    return true;
}

void GroupStore::addFacesOf(MaterialGroup& group, const QString& name, quint64 count,
                            const unsigned int* faces) {
    if (_input == Input::Consumed)
        std::for_each(faces, faces + count, [&group](unsigned int face) { group.faces.addRun(face, 1); });
    else if (!appendWords(group.faces.stream().data(), count, faces))
        _streams.refuse(QStringLiteral("material group '%1'").arg(name));
}

bool GroupStore::addFaceRun(const QString& name, quint32 first, quint32 count) {
    const auto group = _groups.find(name);
    if (group == _groups.end())
        return false;
    if (_input == Input::Consumed) {
        group->faces.addRun(first, count);
    } else {
        std::vector<unsigned int> faces(count);
        std::iota(faces.begin(), faces.end(), first);
        addFacesOf(*group, name, count, faces.data());
    }
    return true;
}

std::vector<GroupStore::Entry> GroupStore::inOrder() {
    std::vector<Entry> groups;
    groups.reserve(static_cast<std::size_t>(_groups.size()));
    for (auto group = _groups.begin(); group != _groups.end(); ++group)
        groups.push_back(group);
    std::sort(groups.begin(), groups.end(), [](const Entry& a, const Entry& b) {
        return a->id != b->id ? a->id < b->id : a.key() < b.key();
    });
    return groups;
}

MaterialGroup GroupStore::handOver(const QString& name) {
    return _input == Input::Consumed ? _groups.take(name) : _groups.value(name);
}

void GroupStore::releaseFaces(MaterialGroup& group) const {
    if (_input == Input::Consumed)
        group.faces = GroupFaces();
}

void GroupStore::releaseAll() {
    if (_input == Input::Consumed)
        _groups.clear();
}

} // namespace Atelier::Vel
