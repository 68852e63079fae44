// Loads material libraries into groups, and compares them with those of the literal reader.
#include <algorithm>
#include <cstddef>
#include <cstdint>

#include <velmodel/modelbuilder.h>
#include <velmodel/modelfiles.h>

#include "claim.h"
#include "files/filesource.h"
#include "fuzzedoptions.h"
#include "import/mtl/materialdefinitions.h"
#include "import/mtl/materials.h"
#include "import/references/filereferences.h"
#include "literal/literalmtlreader.h"
#include "memoryfile.h"
#include "mesh/mesh.h"
#include "support/modelbuilderaccess.h"

using namespace Atelier::Vel;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace {

bool isSame(const InstanceData& a, const InstanceData& b) {
    if (a.name() != b.name() || a.valueNames() != b.valueNames() || a.textureNames() != b.textureNames())
        return false;
    const QStringList values = a.valueNames();
    const QStringList textures = a.textureNames();
    return std::all_of(values.begin(), values.end(),
                       [&](const QString& name) { return a.value(name) == b.value(name); }) &&
           std::all_of(textures.begin(), textures.end(),
                       [&](const QString& name) { return a.texturePath(name) == b.texturePath(name); });
}

bool isSame(const QHash<QString, MaterialGroup>& a, const QHash<QString, MaterialGroup>& b) {
    if (a.size() != b.size())
        return false;
    for (auto group = a.begin(); group != a.end(); ++group) {
        const auto other = b.constFind(group.key());
        if (other == b.constEnd() || group->id != other->id || group->flags != other->flags ||
            !isSame(group->material, other->material))
            return false;
    }
    return true;
}

QHash<QString, MaterialGroup> groupsOf(const QString& path, const LoadOptions& options) {
    Mesh mesh(Input::Consumed);
    DiagnosticLog diagnostics;
    FileSource source{ModelFiles()};
    FileReferences references(source, path, options, diagnostics);
    MaterialDefinitions definitions(mesh.groups, options, diagnostics);
    Fuzzing::require(MaterialLibraries(source, references, options, definitions, diagnostics).load(path),
                     "a library that is a file loads");
    return mesh.groups.records();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static Fuzzing::MemoryFile text;
    static const QString path = text.path();
    text.write(data, size);
    ModelBuilder expected;
    Fuzzing::require(Testing::literalLoadMaterialLibrary(path, expected), "it loads literally, too");
    Fuzzing::require(isSame(groupsOf(path, LoadOptions()), ModelBuilderAccess(expected).groups()),
                     "groups are those of the literal reader");
    const LoadOptions options = Fuzzing::loadOptions(Fuzzing::optionBits(data, size));
    Fuzzing::require(isSame(groupsOf(path, options), groupsOf(path, options)),
                     "a library gives the same groups twice");
    return 0;
}
