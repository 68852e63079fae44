// Loads material libraries into groups, and compares them with those of the literal reader.
#include <algorithm>
#include <cstddef>
#include <cstdint>

#include <velmodel/modelbuilder.h>
#include <velmodel/modelfiles.h>

#include "claim.h"
#include "files/filesource.h"
#include "import/filereferences.h"
#include "import/mtl/materials.h"
#include "literal/literalmtlreader.h"
#include "memoryfile.h"
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

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static Fuzzing::MemoryFile text;
    static const QString path = text.path();
    text.write(data, size);
    ModelBuilder builder;
    ModelBuilder expected;
    DiagnosticLog diagnostics;
    FileSource source{ModelFiles()};
    FileReferences references(source, path, LoadOptions(), diagnostics);
    GroupStore& groups = ModelBuilderAccess(builder).mesh().groups;
    Fuzzing::require(MaterialLibraries(source, references, groups).load(path),
                     "a library that is a file loads");
    Fuzzing::require(Testing::literalLoadMaterialLibrary(path, expected), "it loads literally, too");
    Fuzzing::require(isSame(ModelBuilderAccess(builder).groups(), ModelBuilderAccess(expected).groups()),
                     "groups are those of the literal reader");
    return 0;
}
