#pragma once

#include <set>
#include <utility>

#include <QtCore/QString>

#include <velgl/instancedata.h>
#include <velmodel/modelfiles.h>

#include "files/fileversion.h"
#include "mesh/whitemaps.h"

namespace Atelier::Vel {

class GroupStore;

/// Registers the "OBJMaterial" plan; called once, while the library is being loaded.
void registerObjMaterialPlan();

/// makeDefaultMaterial() without its white maps, which are made when there is a context.
InstanceData makeDefaultMaterialWithoutMaps();
WhiteMaps defaultWhiteMaps();

/// The material libraries of one load.
class MaterialLibraries {
public:
    /// `groups` must outlive the libraries.
    MaterialLibraries(ModelFiles files, GroupStore& groups) : _files(std::move(files)), _groups(groups) {}

    /// Reads an MTL file into material groups, in the order in which the file defines them.
    /// Groups that exist already stay as they are, so a file that was read before and has not changed since
    /// is not read again. A map that is none of the files is white, after a warning. Returns: false when the
    /// file is none of the files (after a warning), no regular file, or cannot be read.
    bool load(const QString& path);

private:
    ModelFiles _files;
    GroupStore& _groups;
    std::set<FileVersion> _read;
};

} // namespace Atelier::Vel
