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

/// Registers the "OBJMaterial" plan. Called once, when the library is loaded.
void registerObjMaterialPlan();

/// makeDefaultMaterial() without its white maps, which are made when a GL context is available.
InstanceData makeDefaultMaterialWithoutMaps();
WhiteMaps defaultWhiteMaps();

/// The material libraries of one load.
class MaterialLibraries {
public:
    /// `groups` must outlive the libraries.
    MaterialLibraries(ModelFiles files, GroupStore& groups) : _files(std::move(files)), _groups(groups) {}

    /// Reads an MTL file into material groups, in the order in which the file defines them. Existing groups
    /// are unchanged, so a file that was read before and has not changed since is not read again. A map
    /// outside of the allowed files is white, after a warning.
    /// Returns: false if the file is outside of the allowed files (after a warning), is not a regular file,
    /// or cannot be read.
    bool load(const QString& path);

private:
    ModelFiles _files;
    GroupStore& _groups;
    std::set<FileVersion> _read;
};

} // namespace Atelier::Vel
