#pragma once

#include <QtCore/QString>

namespace Atelier::Vel {

/// One observation of a load: what is wrong with a file, and how it was repaired.
struct LoadDiagnostic {
    enum class Code {
        MissingLibrary,    ///< a material library that could not be read is left out
        RelocatedLibrary,  ///< a material library is found by another path than the one in the file
        UndefinedMaterial, ///< a material without a definition has the values of the default material
        MatchedName,       ///< a name is more, or less, than the first word
        MapName,           ///< the file of a map is not named by the first word
        RelocatedTexture,  ///< a texture is found by another path than the one in the file
        UnplacedFace,      ///< faces with a corner that has no position are dropped
        MissingNormals,    ///< corners without a normal have generated ones: once for the whole file
    };

    Code code = Code::MissingLibrary;
    QString file;    ///< the file that has the fault
    QString text;    ///< the text concerned, as it stands in the file
    QString message; ///< one sentence: the cause, and the repair
};

} // namespace Atelier::Vel
