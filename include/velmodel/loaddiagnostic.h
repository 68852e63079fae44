#pragma once

#include <QtCore/QString>

namespace Atelier::Vel {

/// One observation of a load: what is wrong with a file, and how it was repaired.
struct LoadDiagnostic {
    enum class Code {
        MissingLibrary,    ///< a material library that could not be read was left out
        UndefinedMaterial, ///< a material that no library defines got the values of the default material
    };

    Code code = Code::MissingLibrary;
    QString file;    ///< the file that has the fault
    QString text;    ///< the text concerned, as it stands in the file
    QString message; ///< one sentence: the cause, and the repair
};

} // namespace Atelier::Vel
