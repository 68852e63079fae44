#include "import/librarylines.h"

#include <algorithm>
#include <vector>

#include <QtCore/QStringList>

#include "import/mtl/materials.h"
#include "import/references/filereferences.h"
#include "import/text/names.h"

namespace Atelier::Vel {

LibraryLines::LibraryLines(MaterialLibraries& libraries, FileReferences& references,
                           const LoadRepairs& repairs, DiagnosticLog& diagnostics)
    : _libraries(libraries), _references(references), _repairs(repairs), _diagnostics(diagnostics) {}

LibraryLines::Library LibraryLines::find(const TextLine& line, const QString& name) {
    return {name, _references.find(Code::RelocatedLibrary, line, name)};
}

bool LibraryLines::load(const TextLine& line, const QString& word, QString& error) {
    const Library library = find(line, word);
    return read(line, library) || leaveOut(line, library, error);
}

// Returns: whether the library could be read.
bool LibraryLines::read(const TextLine& line, const Library& library) {
    const bool isRead = _libraries.load(library.path);
    if (isRead)
        _references.list(ReferencedFile::Kind::Library, line, {library.name}, library.path, false);
    return isRead;
}

// Reports a library that cannot be read. Returns: false, with the error, if it may not be left out.
bool LibraryLines::leaveOut(const TextLine& line, const Library& library, QString& error) {
    _references.list(ReferencedFile::Kind::Library, line, {library.name}, library.path, true);
    const auto cause = [&] {
        return QStringLiteral("'%1': %2").arg(library.path, _references.causeOfUnreadable(library.path));
    };
    if (_repairs.skipMissingLibraries) {
        _diagnostics.add(Code::MissingLibrary, line, library.name,
                         [&] { return cause() + QStringLiteral("; the library is left out"); });
        return true;
    }
    _diagnostics.add(Code::UnreadableLibrary, line, library.name, cause);
    error = QStringLiteral("Failed to load MTL file '%1'").arg(library.path);
    return false;
}

bool LibraryLines::loadMatching(const TextLine& line, const QString& rest, QString& error) {
    const QStringList words = wordsOf(withoutComment(rest));
    if (words.size() < 2)
        return load(line, words.value(0), error);
    QStringList wholes = nameCandidates(rest);
    wholes.removeLast();
    for (const QString& whole : qAsConst(wholes)) {
        if (!read(line, find(line, whole)))
            continue;
        _diagnostics.add(Code::MatchedName, line, rest,
                         [&] { return QStringLiteral("'%1' is read as the name of one library").arg(rest); });
        return true;
    }
    std::vector<Library> missing;
    for (const QString& word : words)
        if (const Library library = find(line, word); !read(line, library))
            missing.push_back(library);
    // If no word names a library, the line probably names one library.
    if (missing.size() == static_cast<std::size_t>(words.size()) && _repairs.skipMissingLibraries)
        missing = {find(line, wholes.last())};
    return std::all_of(missing.cbegin(), missing.cend(),
                       [&](const Library& library) { return leaveOut(line, library, error); });
}

} // namespace Atelier::Vel
