#pragma once

#include <QtCore/QString>

#include <velmodel/loadoptions.h>

#include "import/diagnostics/diagnosticlog.h"

namespace Atelier::Vel {

class FileReferences;
class MaterialLibraries;

/// Loads the material libraries that the lines of an OBJ text name.
class LibraryLines {
public:
    /// The references must outlive the object.
    LibraryLines(MaterialLibraries& libraries, FileReferences& references, const LoadRepairs& repairs,
                 DiagnosticLog& diagnostics);

    /// Loads the library that `line` calls `word`.
    /// Returns: false, with the reason in `error`, if the library is needed and cannot be read.
    bool load(const TextLine& line, const QString& word, QString& error);
    /// Loads the library that is named by the whole of `rest`, the text after the keyword, or else by each of
    /// its words. Returns: as load().
    bool loadMatching(const TextLine& line, const QString& rest, QString& error);

private:
    using Code = LoadDiagnostic::Code;

    /// The name of a library in a line, and what it is called by the source.
    struct Library {
        QString name;
        QString path;
    };

    Library find(const TextLine& line, const QString& name);
    bool read(const TextLine& line, const Library& library);
    bool leaveOut(const TextLine& line, const Library& library, QString& error);

    MaterialLibraries& _libraries;
    FileReferences& _references;
    const LoadRepairs& _repairs;
    DiagnosticLog& _diagnostics;
};

} // namespace Atelier::Vel
